#include "database/Loaders.h"

#include "core/EventLog.h"
#include "core/Installation.h"
#include "core/Options.h"
#include "database/Database.h"
#include "database/RowReader.h"

#include <QHash>
#include <QSqlError>
#include <QSqlRecord>

#include <limits>

namespace {

using Row = Snapshot::Row;

constexpr std::size_t MostEntries = std::numeric_limits<qint16>::max(); ///< of a table whose count has 16 bits

// Columns of the statements below, behind the row's number in the store.
enum QueueColumn {
    q_RowId,
    q_Id,
    q_Number,
    q_Series,
    q_route,
    q_On,
    q_Name,
    q_Description,
    q_Notes,
    q_Button,
    MaxTicket
};
enum DisplayColumn {
    d_RowId,
    d_Id,
    d_Number,
    d_Address,
    d_Name,
    d_On,
    d_Type,
    d_HubId,
    d_direction,
    d_VoiceLocal,
    d_VoicerId
};

/// What the log calls a row: its key or, in a store that others made, its number.
const QVariant& KeyOf(const Row& row) {
    return row[1].isNull() ? row[0] : row[1];
}

} // namespace

struct Loaders::ServiceFields {
    qint16 id;
    quint8 button;
    qint16 number;
    qint16 route;
    qint32 series;

    void CopyTo(model::QService& service, const Row& row) const {
        service.Name = row[q_Name].toString();
        service.Description = row[q_Description].toString();
        service.Notes = row[q_Notes].toString();
        service.Button = button;
        service.Number = number;
        service.Route = route;
        service.Series = series;
    }
};

Loaders::Loaders(Database& database, model::Installation& installation, const Options& options, EventLog& log)
    : m_database(database)
    , m_installation(installation)
    , m_options(options)
    , m_log(log) {}

Result<std::vector<Row>> Loaders::Rows(const Statement& statement, const char* table) const {
    std::vector<Row> rows;
    auto query = m_database.Select(statement);
    QString error = query.Error();
    if (query) {
        const int count = query->record().count();
        while (query->next()) {
            Row& row = rows.emplace_back();
            row.reserve(static_cast<std::size_t>(count));
            for (int i = 0; i < count; ++i)
                row.push_back(query->value(i));
        }
        if (!query->lastError().isValid())
            return rows;
        error = Sqlite::TextOf(query->lastError());
    }
    m_log.WriteLog(QStringLiteral("Load database: %1: %2").arg(QString::fromLatin1(table), error), EventLog::Error);
    return Failure{QStringLiteral("The database cannot be read: %1").arg(error)};
}

Result<Snapshot> Loaders::Read() const {
    if (!m_database.IsOpen())
        return Failure{QStringLiteral("Can't open Queue database!")};
    const Transaction lock(m_database.File(), Transaction::Kind::Read);
    auto services = ServiceRows();
    if (!services)
        return Failure{services.Error()};
    auto objects = ObjectRows();
    if (!objects)
        return Failure{objects.Error()};
    auto directions =
        Rows({QStringLiteral("SELECT rowid,[inf_Id],[d_Id],[Dir_Id] FROM [Info-Direction] ORDER BY [inf_Id],rowid")},
             "Info-Direction");
    if (!directions)
        return Failure{directions.Error()};
    auto scanPlan =
        Rows({QStringLiteral("SELECT rowid,[ID],[d_Id] FROM [ScanPlan] ORDER BY [Order],rowid")}, "ScanPlan");
    if (!scanPlan)
        return Failure{scanPlan.Error()};
    return Snapshot{std::move(*services), std::move(*objects), std::move(*scanPlan), std::move(*directions)};
}

Result<std::vector<Row>> Loaders::ServiceRows() const {
    // The highest number of each service comes out of the index; the key 0 stands for all services.
    auto rows =
        Rows({QStringLiteral("SELECT rowid,[q_Id],[q_Number],[q_Series],[q_route],[q_On],[q_Name],[q_Description],"
                             "[q_Notes],[q_Button],CASE [q_Id] WHEN 0"
                             " THEN (SELECT MAX([TicketNo]) FROM [rData] WHERE Flags=0) ELSE"
                             " (SELECT MAX([TicketNo]) FROM [rData] WHERE Flags=0 AND ServiceId=[Queue].[q_Id]) END"
                             " FROM [Queue] ORDER BY rowid")},
             "Queue");
    if (!rows)
        return Failure{rows.Error()};
    std::vector<Row> services;
    for (Row& row : *rows) {
        if (RowReader::YesNo(row[q_On]))
            services.push_back(std::move(row));
    }
    return services;
}

Result<std::vector<Snapshot::ObjectRow>> Loaders::ObjectRows() const {
    auto rows = Rows({QStringLiteral("SELECT rowid,[d_Id],[d_Number],[d_Address],[d_Name],[d_On],[d_Type],[d_HubId],"
                                     "[d_direction],[d_VoiceLocal],[d_VoicerId] FROM [Display] ORDER BY rowid")},
                     "Display");
    if (!rows)
        return Failure{rows.Error()};
    auto assignments =
        Rows({QStringLiteral("SELECT rowid,[ID],[q_Id],[d_Id] FROM [Queue-Display] ORDER BY rowid")}, "Queue-Display");
    if (!assignments)
        return Failure{assignments.Error()};
    QHash<QString, std::vector<Row>> byObject;
    for (Row& assignment : *assignments) {
        const QVariant object = std::exchange(assignment.back(), {});
        assignment.pop_back();
        if (!object.isNull())
            byObject[object.toString()].push_back(std::move(assignment));
    }
    std::vector<Snapshot::ObjectRow> objects;
    for (Row& row : *rows) {
        if (!RowReader::YesNo(row[d_On]))
            continue;
        auto served = row[d_Id].isNull() ? std::vector<Row>() : byObject.value(row[d_Id].toString());
        objects.push_back({std::move(row), std::move(served)});
    }
    return objects;
}

std::optional<Loaders::ServiceFields> Loaders::FieldsOf(const Row& row) const {
    RowReader read(m_log, KeyOf(row));
    ServiceFields fields{};
    fields.id = read.Needed<qint16>(row[q_Id], "q_Id");
    fields.button = read.NeededOr<quint8>(row[q_Button], "q_Button", 0);
    fields.number = read.NeededOr<qint16>(row[q_Number], "q_Number", 0);
    fields.route = read.NeededOr<qint16>(row[q_route], "q_route", 0);
    fields.series = read.NeededOr<qint32>(row[q_Series], "q_Series", 1);
    return read.IsGood() ? std::optional(fields) : std::nullopt;
}

qint16 Loaders::LoadServices(const Snapshot& store) {
    qint16 count = 0;
    for (const Row& row : store.services) {
        const std::optional<ServiceFields> fields = FieldsOf(row);
        if (!fields)
            continue;
        model::QService& service = m_installation.Service(count);
        service.Id = fields->id;
        fields->CopyTo(service, row);
        service.SeriesIndex = 0;
        RowReader read(m_log, QStringLiteral("MAX"));
        const auto highest = read.NeededOr<qint32>(row[MaxTicket], "TicketNo", 0);
        const qint32 last = highest == 0 ? service.Series : highest;
        service.NextNumber = model::NumberAfter(last);
        service.WaitRing.ResetRing();
        service.FlaggedRing.ResetRing();
        if (++count == model::SlotCount) {
            m_log.WriteLog(QStringLiteral("Load database:Invalid Service Count."), EventLog::Error);
            break;
        }
    }
    return count;
}

bool Loaders::RefreshService(const Row& row) {
    const std::optional<ServiceFields> fields = FieldsOf(row);
    if (!fields)
        return true;
    const qint16 index = m_installation.FindServiceById(fields->id);
    if (index < 0)
        return false;
    fields->CopyTo(m_installation.Service(index), row);
    return true;
}

void Loaders::MergeRoutedNumbers() {
    if (!m_options.RoutedSeries)
        return;
    for (qint16 i = 0; i < m_installation.NumServices; ++i) {
        const model::QService& service = m_installation.Service(i);
        if (service.Route == 0)
            continue;
        model::QService& target = m_installation.Service(m_installation.FindServiceByNumber(service.Route));
        target.NextNumber = std::max(service.NextNumber, target.NextNumber);
    }
}

void Loaders::AssignSeriesIndexes(qint16 count) {
    qint16 next = 0;
    for (qint16 i = 0; i < count; ++i) {
        model::QService& service = m_installation.Service(i);
        if (!m_options.RoutedSeries || service.Route == 0)
            service.OwnSeriesIndex = next++;
    }
    for (qint16 i = 0; i < count; ++i) {
        model::QService& service = m_installation.Service(i);
        const bool isRouted = m_options.RoutedSeries && service.Route != 0;
        const qint16 owner = isRouted ? m_installation.FindServiceByNumber(service.Route) : i;
        service.SeriesIndex = m_installation.Service(owner).OwnSeriesIndex;
    }
}

qint16 Loaders::LoadCounters(const Snapshot& store) {
    qint16 count = 0;
    for (const auto& [row, assignments] : store.objects) {
        RowReader read(m_log, KeyOf(row));
        const auto address = read.Needed<quint8>(row[d_Address], "d_Address");
        if (!read.IsGood())
            continue;
        if (!IsAddressFree(static_cast<qint16>(count - 1), address)) {
            m_log.WriteLog(QStringLiteral("Duplicate Address on display counter '%1'").arg(row[d_Name].toString()),
                           EventLog::Warning);
            continue;
        }
        const auto id = read.Needed<qint32>(row[d_Id], "d_Id");
        const auto direction = read.Needed<quint8>(row[d_direction], "d_direction");
        const auto number = read.Needed<quint8>(row[d_Number], "d_Number");
        const bool isVoiceLocal = read.NeededYesNo(row[d_VoiceLocal], "d_VoiceLocal");
        const auto type = read.NeededOr<quint8>(row[d_Type], "d_Type", 0);
        const auto hubId = read.NeededOr<qint32>(row[d_HubId], "d_HubId", 0);
        if (!read.IsGood())
            continue;

        model::QObject& object = m_installation.Object(count);
        object.Id = id;
        object.Direction = direction;
        object.Number = number;
        object.Address = address;
        object.Name = row[d_Name].toString();
        object.VoiceLocal = isVoiceLocal;
        object.VoicerId = row[d_VoicerId].toString().trimmed().toLower();
        object.Type = static_cast<model::ObjectType>(type);
        object.HubId = hubId;
        object.State = 0;
        object.Changed = true;
        object.Dirty = true;
        object.CommandDelay = 0;
        object.RetryDelay = 0;
        object.WaitRing.ResetRing();
        object.FlaggedRing.ResetRing();
        object.InfoTable.reset();
        if (type == model::Display) {
            object.InfoTable = std::make_unique<clsInfTbl>(m_options.MainDisplayType);
            object.InfoTable->Init(m_options.InfoNumLine);
            object.InfoTable->SetName(object.Name);
        }
        TakeAssignments(count, assignments);
        if (++count == model::SlotCount) {
            m_log.WriteLog(QStringLiteral("Load database: Number of counter exceed maximum value."), EventLog::Error);
            break;
        }
    }
    return count;
}

void Loaders::TakeAssignments(qint16 index, const std::vector<Row>& assignments) {
    constexpr std::size_t ServiceId = 2;
    model::QObject& object = m_installation.Object(index);
    object.FirstServiceId = -1;
    object.ServiceCount = 0;
    bool hasFirst = false;
    for (const Row& row : assignments) {
        // The first row needs a service, a later one without is passed over.
        if (hasFirst && row[ServiceId].isNull())
            continue;
        RowReader read(m_log, KeyOf(row));
        const auto id = read.Needed<qint32>(row[ServiceId], "q_Id");
        if (!read.IsGood())
            continue;
        if (!hasFirst)
            object.FirstServiceId = id;
        hasFirst = true;
        const qint16 service = m_installation.FindServiceById(id);
        if (service >= 0 && object.ServiceCount < model::SlotCount)
            object.ServiceIndexes[static_cast<std::size_t>(object.ServiceCount++)] = static_cast<quint8>(service);
    }
}

bool Loaders::IsAddressFree(qint16 lastIndex, quint8 address) const {
    const auto begin = m_installation.QObjects.begin();
    return std::none_of(begin, begin + std::clamp(lastIndex + 1, 0, model::SlotCount),
                        [address](const model::QObject& object) { return object.Address == address; });
}

qint16 Loaders::LoadScanPlan(const Snapshot& store) {
    auto& order = m_installation.ScanOrder;
    order.clear();
    if (store.scanPlan.empty())
        m_log.WriteLog(QStringLiteral("Scan Plan not built"));
    for (const Row& row : store.scanPlan) {
        RowReader read(m_log, KeyOf(row));
        const auto id = read.Needed<qint32>(row[2], "d_Id");
        if (!read.IsGood())
            continue;
        const qint16 object = m_installation.FindObjectById(id);
        if (object < 0) {
            m_log.WriteLog(QStringLiteral("Error in Scan Plan Table"));
            continue;
        }
        if (order.size() == MostEntries) {
            m_log.WriteLog(QStringLiteral("Load database: ScanPlan has more than %1 rows.").arg(MostEntries),
                           EventLog::Error);
            break;
        }
        order.push_back(object);
    }
    return static_cast<qint16>(order.size());
}

qint16 Loaders::LoadDirections(const Snapshot& store) {
    auto& table = m_installation.DirectionTable;
    table.clear();
    if (store.directions.empty())
        m_log.WriteLog(QStringLiteral("Main Display direction not built."));
    for (const Row& row : store.directions) {
        // This table has no key.
        RowReader read(m_log, row[0]);
        model::DirectionRow direction;
        direction.inf_Id = read.Needed<qint16>(row[1], "inf_Id");
        direction.d_Id = read.Needed<qint16>(row[2], "d_Id");
        direction.Dir_Id = read.Needed<qint16>(row[3], "Dir_Id");
        if (!read.IsGood())
            continue;
        if (table.size() == MostEntries) {
            m_log.WriteLog(QStringLiteral("Load database: Info-Direction has more than %1 rows.").arg(MostEntries),
                           EventLog::Error);
            break;
        }
        table.push_back(direction);
    }
    return static_cast<qint16>(table.size());
}

QString Loaders::CounterListOfService(qint32 serviceId) const {
    const auto rows = Rows({QStringLiteral("SELECT Display.d_Number FROM [Queue-Display] INNER JOIN Display"
                                           " ON [Queue-Display].d_Id = Display.d_Id WHERE [Queue-Display].q_Id=?"
                                           " ORDER BY [Queue-Display].rowid"),
                            {serviceId}},
                           "Queue-Display");
    QStringList numbers;
    if (!rows)
        return {};
    for (const Row& row : *rows) {
        if (!row[0].isNull())
            numbers += row[0].toString();
    }
    return numbers.join(QStringLiteral(", "));
}
