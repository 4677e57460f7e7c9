#pragma once

#include "platform/Result.h"

#include <QString>
#include <QVariant>

#include <optional>
#include <vector>

class Database;
class EventLog;
struct Options;
struct Statement;

namespace model {
struct Installation;
}

/// What the loaders take out of the store: the rows of one moment.
struct Snapshot {
    using Row = std::vector<QVariant>;

    struct ObjectRow {
        Row fields;
        std::vector<Row> assignments; ///< key and `q_Id`
    };

    std::vector<Row> services;      ///< the enabled rows of `Queue`, each with its highest ticket
    std::vector<ObjectRow> objects; ///< the enabled rows of `Display`
    std::vector<Row> scanPlan;
    std::vector<Row> directions;
};

/// Fills the model from the store.
///
/// `Read` takes all rows out of the store before anything of the model is changed; the loaders put them into the model,
/// in the order of their keys. A row that lacks a needed number, or has one that does not fit its field, is logged by
/// column and key and skipped.
class Loaders {
public:
    /// The references must outlive the loaders.
    Loaders(Database& database, model::Installation& installation, const Options& options, EventLog& log);

    /// Reads everything in one transaction. Fails if the store is closed, or if a statement fails, which is logged.
    Result<Snapshot> Read() const;

    /// Fills `QServices`. @return how many, 0 to 64, for `NumServices`.
    qint16 LoadServices(const Snapshot& store);

    /// Gives each route target the highest next number of the services routed to it, one step deep. Only with the
    /// option RoutedSeries.
    void MergeRoutedNumbers();

    /// Numbers the series of the first `count` services.
    void AssignSeriesIndexes(qint16 count);

    /// Fills `QObjects`; the services must be loaded. An address that is taken already is logged and its row left out.
    /// @return how many, 0 to 64, for `NumObjects`.
    qint16 LoadCounters(const Snapshot& store);

    /// True if none of the objects 0 to `lastIndex` has that address.
    bool IsAddressFree(qint16 lastIndex, quint8 address) const;

    /// Fills `ScanOrder`; the objects must be loaded. A row of an object that is not loaded is logged and left out.
    /// @return how many, for `NumScanEntries`.
    qint16 LoadScanPlan(const Snapshot& store);

    /// Fills `DirectionTable`. @return how many, for `NumDirections`.
    qint16 LoadDirections(const Snapshot& store);

    /// Overwrites name, description, notes, button, number, route and series of the loaded service of that row.
    /// @return false if the service is not loaded; a row that cannot be taken is logged and counts as done.
    bool RefreshService(const Snapshot::Row& row);

    /// The visible numbers of all counters that serve a service, disabled ones too, as in "3, 5, 8". Empty if there
    /// are none or the query failed.
    QString CounterListOfService(qint32 serviceId) const;

private:
    struct ServiceFields;

    Result<std::vector<Snapshot::Row>> Rows(const Statement& statement, const char* table) const;
    Result<std::vector<Snapshot::Row>> ServiceRows() const;
    Result<std::vector<Snapshot::ObjectRow>> ObjectRows() const;
    std::optional<ServiceFields> FieldsOf(const Snapshot::Row& row) const;
    void TakeAssignments(qint16 object, const std::vector<Snapshot::Row>& assignments);

    Database& m_database;
    model::Installation& m_installation;
    const Options& m_options;
    EventLog& m_log;
};
