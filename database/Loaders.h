#pragma once

#include "database/Database.h"

#include <QString>
#include <QVariant>

#include <optional>
#include <vector>

class EventLog;
class RowReader;
class TicketRecords;
struct Options;

namespace model {
struct Installation;
}

/// Fills the model from the store.
///
/// Rows are taken in the order of their keys. A row that lacks a needed number, or has one that does not fit its field,
/// is logged by column and key and skipped. Where a result is optional it is missing if a statement failed; that is
/// logged then and the model is as it was.
///
/// Each loader is in two halves, so that a reload can read everything before it changes anything: `Read...` takes the
/// rows out of the store, `Take...` puts them into the model and writes the log lines.
class Loaders {
public:
    /// The references must outlive the loaders.
    Loaders(Database& database, const TicketRecords& tickets, model::Installation& installation, const Options& options,
            EventLog& log);

    using Row = std::vector<QVariant>;

    struct ServiceRow {
        Row fields;
        qint32 maxTicket = 0;
    };

    struct CounterRow {
        Row fields;
        std::vector<Row> assignments; ///< key and `q_Id`
    };

    /// Fills `QServices` with the enabled rows of `Queue`. @return how many, 0 to 64, for `NumServices`.
    std::optional<qint16> LoadServices();

    /// Gives each route target the highest next number of the services routed to it, one step deep. Only with the
    /// option RoutedSeries.
    void MergeRoutedNumbers();

    /// Numbers the series of the first `count` services.
    void AssignSeriesIndexes(qint16 count);

    /// Fills `QObjects` with the enabled rows of `Display`; the services must be loaded. An address that is taken
    /// already is logged and its row left out. @return how many, 0 to 64, for `NumObjects`.
    std::optional<qint16> LoadCounters();

    /// True if none of the objects 0 to `lastIndex` has that address.
    bool IsAddressFree(qint16 lastIndex, quint8 address) const;

    /// Fills `ScanOrder`; the objects must be loaded. A row of an object that is not loaded is logged and left out.
    /// @return how many, for `NumScanEntries`.
    std::optional<qint16> LoadScanPlan();

    /// Fills `DirectionTable`. @return how many, for `NumDirections`.
    std::optional<qint16> LoadDirections();

    /// The visible numbers of all counters that serve a service, disabled ones too, as in "3, 5, 8". Empty if there
    /// are none or the query failed.
    QString CounterListOfService(qint32 serviceId) const;

    /// The enabled rows of `Queue`; their highest tickets only if asked for.
    std::optional<std::vector<ServiceRow>> ReadServices(bool withTickets) const;
    std::optional<std::vector<CounterRow>> ReadCounters() const;
    std::optional<std::vector<Row>> ReadScanPlan() const;
    std::optional<std::vector<Row>> ReadDirections() const;

    qint16 TakeServices(const std::vector<ServiceRow>& rows);
    qint16 TakeCounters(const std::vector<CounterRow>& rows);
    qint16 TakeScanPlan(const std::vector<Row>& rows);
    qint16 TakeDirections(const std::vector<Row>& rows);

    /// Overwrites name, description, notes, button, number, route and series of the loaded service of that row.
    /// @return false if the service is not loaded; a row that cannot be taken is logged and counts as done.
    bool RefreshService(const ServiceRow& row);

private:
    struct ServiceFields;

    std::optional<std::vector<Row>> Read(const Statement& statement, const char* table) const;
    std::optional<ServiceFields> FieldsOf(const Row& row) const;
    void TakeAssignments(qint16 object, const std::vector<Row>& assignments);

    Database& m_database;
    const TicketRecords& m_tickets;
    model::Installation& m_installation;
    const Options& m_options;
    EventLog& m_log;
};
