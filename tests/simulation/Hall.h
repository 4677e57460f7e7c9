#pragma once

#include "simulator/DeviceBus.h"
#include "tests/simulation/Dice.h"

#include <QStringList>

struct sqlite3;

/// An installation that was thrown with the dice, as statements that describe it in an empty store, and as the devices
/// that really hang on the bus.
struct Hall {
    explicit Hall(Dice& dice);

    QStringList statements;
    QString devices; ///< in the text form of `BusInstallation`
    int services = 0;
    int objects = 0;
    std::vector<int> addresses;
};

/// What the devices of a hall have to hold, read from the store by statements of its own.
class Reference {
public:
    /// @param store must outlive the reference. @param routedSeries the option RoutedSeries.
    Reference(sqlite3* store, bool routedSeries)
        : m_store(store)
        , m_routedSeries(routedSeries) {}

    /// Why the printers do not hold the tables of the store; empty if they do.
    QString PrinterFault(const DeviceBus& bus) const;
    /// Why the hubs do not hold the block of the store; empty if they do.
    QString HubFault(const DeviceBus& bus) const;
    /// Why the hubs do not have the member lists of the store; empty if they do.
    QString MemberFault(const DeviceBus& bus) const;

private:
    using Rows = std::vector<std::vector<QString>>;
    Rows Select(const QString& statement) const;

    sqlite3* m_store;
    bool m_routedSeries;
};
