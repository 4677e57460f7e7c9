#include "station/InstallationCheck.h"

#include "database/Database.h"
#include "hubs/HubConfig.h"
#include "link/Encodings.h"
#include "printers/PrinterTables.h"
#include "tickets/VniText.h"

#include <QSqlQuery>

#include <algorithm>
#include <map>

namespace {

constexpr int BroadcastAddress = 127;
constexpr int LargestDirectionId = 32767;
constexpr qsizetype LongestData = 254; ///< characters; with the command's letter the length field is full

QString ServiceText(const QString& name) {
    return QStringLiteral("Service '%1': ").arg(vni::ToUnicode(name));
}

QString ObjectText(const QString& name) {
    return QStringLiteral("Object '%1': ").arg(vni::ToUnicode(name));
}

const char* TableOf(BlockFault::Of of) {
    switch (of) {
    case BlockFault::Of::Service:
        return "Queue";
    case BlockFault::Of::Object:
        return "Display";
    case BlockFault::Of::Direction:
        break;
    }
    return "Info-Direction";
}

} // namespace

InstallationCheck::InstallationCheck(Database& database, const Options& options, const Clock& clock)
    : m_database(database)
    , m_quiet(QString(), clock)
    , m_scratch(std::make_unique<model::Installation>())
    , m_loaders(database, *m_scratch, options, m_quiet) {}

InstallationCheck::~InstallationCheck() = default;

std::vector<Finding> InstallationCheck::FindFaults() {
    m_findings.clear();
    if (!m_database.IsOpen())
        return {};
    if (const Result<> loaded = LoadScratch(); !loaded)
        return {Finding{loaded.Error(), {}, 0, {}}};
    FindLostServices();
    CheckServices();
    FindLostObjects();
    CheckObjects();
    CheckHubs();
    FindOrphans();
    CheckBlock();
    return std::move(m_findings);
}

Result<> InstallationCheck::LoadScratch() {
    const Result<Snapshot> store = m_loaders.Read();
    if (!store)
        return Failure{store.Error()};
    m_scratch->NumServices = m_loaders.LoadServices(*store);
    m_scratch->NumObjects = m_loaders.LoadCounters(*store);
    m_scratch->NumDirections = m_loaders.LoadDirections(*store);
    for (qint16 i = 0; i < m_scratch->NumObjects; ++i)
        m_scratch->Object(i).FirstServiceIndex = m_scratch->FirstServiceOf(i);
    return {};
}

void InstallationCheck::Add(const char* table, qint32 key, const char* field, const QString& text) {
    m_findings.push_back({text, QString::fromLatin1(table), key, QString::fromLatin1(field)});
}

std::vector<InstallationCheck::ActiveRow> InstallationCheck::ActiveRows(const QString& statement) const {
    std::vector<ActiveRow> rows;
    auto query = m_database.Select({statement});
    while (query && query->next())
        rows.push_back({query->value(0).toInt(), query->value(1).toString(), query->value(2), query->value(3)});
    return rows;
}

void InstallationCheck::FindLostServices() {
    for (const ActiveRow& row : ActiveRows(
             QStringLiteral("SELECT [q_Id],[q_Name],[q_Number],NULL FROM [Queue] WHERE [q_On] ORDER BY rowid"))) {
        if (m_scratch->FindServiceById(row.key) >= 0)
            continue;
        const bool isFull = m_scratch->NumServices == model::SlotCount;
        Add("Queue", row.key, "q_On",
            ServiceText(row.name) + (isFull
                                         ? QStringLiteral("only 64 active services are loaded, not this one.")
                                         : QStringLiteral("it cannot be loaded; the log of the next load says why.")));
    }
}

void InstallationCheck::FindLostObjects() {
    for (const ActiveRow& row : ActiveRows(QStringLiteral(
             "SELECT [d_Id],[d_Name],[d_Number],[d_Address] FROM [Display] WHERE [d_On] ORDER BY rowid"))) {
        if (m_scratch->FindObjectById(row.key) >= 0)
            continue;
        const bool isNumber = !row.address.isNull() && row.number.isNull();
        Add("Display", row.key, isNumber ? "d_Number" : "d_Address", ObjectText(row.name) + WhyLost(row));
    }
}

QString InstallationCheck::WhyLost(const ActiveRow& row) const {
    if (row.address.isNull())
        return QStringLiteral("it has no address and is not loaded.");
    if (row.number.isNull())
        return QStringLiteral("it has no number and is not loaded.");
    for (const model::QObject& object : m_scratch->LoadedObjects()) {
        if (object.Address == row.address.toInt())
            return QStringLiteral("address %1 is taken by '%2', so it is not loaded.")
                .arg(object.Address)
                .arg(vni::ToUnicode(object.Name));
    }
    if (m_scratch->NumObjects == model::SlotCount)
        return QStringLiteral("only 64 active objects are loaded, not this one.");
    return QStringLiteral("it cannot be loaded; the log of the next load says why.");
}

void InstallationCheck::CheckServices() {
    std::map<qint16, QString> numbers;
    for (qint16 i = 0; i < m_scratch->NumServices; ++i) {
        const model::QService& service = m_scratch->Service(i);
        const auto [first, isFirst] = numbers.try_emplace(service.Number, service.Name);
        if (!isFirst) {
            Add("Queue", service.Id, "q_Number",
                ServiceText(service.Name) + QStringLiteral("number %1 is also that of '%2'.")
                                                .arg(service.Number)
                                                .arg(vni::ToUnicode(first->second)));
        }
        if (service.Route != 0) {
            // 0 is also the answer for a number that nobody has.
            const qint16 found = m_scratch->FindServiceByNumber(service.Route);
            const model::QService& target = m_scratch->Service(found);
            if (target.Number != service.Route) {
                Add("Queue", service.Id, "q_route",
                    ServiceText(service.Name) +
                        QStringLiteral("no active service has the number %1 of its route.").arg(service.Route));
            } else if (target.Route != 0) {
                Add("Queue", service.Id, "q_route",
                    ServiceText(service.Name) + QStringLiteral("its route leads to '%1', which is routed itself.")
                                                    .arg(vni::ToUnicode(target.Name)));
            }
        }
        CheckTexts(i);
    }
}

void InstallationCheck::CheckTexts(qint16 index) {
    const model::QService& service = m_scratch->Service(index);
    const auto counters = [this](qint32 id) { return m_loaders.CounterListOfService(id); };
    const QString description = ExpandServiceText(service.Description, index, *m_scratch, counters);
    if (service.Name.size() > PrinterTables::TextPlaces) {
        Add("Queue", service.Id, "q_Name",
            ServiceText(service.Name) +
                QStringLiteral("the name has %1 characters, printers take 63.").arg(service.Name.size()));
    }
    if (description.size() > PrinterTables::TextPlaces) {
        Add("Queue", service.Id, "q_Description",
            ServiceText(service.Name) +
                QStringLiteral("the description has %1 characters with its counters, printers take 63.")
                    .arg(description.size()));
    }
}

void InstallationCheck::CheckObjects() {
    std::map<quint8, QString> numbers;
    for (const model::QObject& object : m_scratch->LoadedObjects()) {
        const auto [first, isFirst] = numbers.try_emplace(object.Number, object.Name);
        if (!isFirst) {
            Add("Display", object.Id, "d_Number",
                ObjectText(object.Name) + QStringLiteral("number %1 is also that of '%2'.")
                                              .arg(object.Number)
                                              .arg(vni::ToUnicode(first->second)));
        }
        if (object.Address == BroadcastAddress) {
            Add("Display", object.Id, "d_Address",
                ObjectText(object.Name) + QStringLiteral("address 127 is that of the broadcast."));
        }
        if (object.Address > encoding::LargestSmallNumber) {
            Add("Display", object.Id, "d_Address",
                ObjectText(object.Name) +
                    QStringLiteral("nothing can be sent to address %1, only to 0 to 207.").arg(object.Address));
        }
        const bool hasDirections = object.Type == model::Counter || object.Type == model::Display;
        if (hasDirections && object.Id > LargestDirectionId) {
            Add("Display", object.Id, "d_Name",
                ObjectText(object.Name) +
                    QStringLiteral("no direction can be stored for it, since its key %1 is above 32767.")
                        .arg(object.Id));
        }
    }
}

void InstallationCheck::CheckHubs() {
    std::map<qint32, int> members;
    for (const model::QObject& object : m_scratch->LoadedObjects()) {
        const qint16 hub = object.HubId == 0 ? qint16(-1) : m_scratch->FindObjectById(object.HubId);
        if (hub >= 0 && m_scratch->Object(hub).Type == model::Hub && ++members[object.HubId] > model::HubMembers) {
            Add("Display", object.Id, "d_Name",
                ObjectText(object.Name) + QStringLiteral("hub '%1' has 16 devices already.")
                                              .arg(vni::ToUnicode(m_scratch->Object(hub).Name)));
        }
    }
    for (const ActiveRow& row :
         ActiveRows(QStringLiteral("SELECT o.[d_Id],o.[d_Name],NULL,NULL FROM [Display] o INNER JOIN [Display] h ON "
                                   "h.[d_Id]=o.[d_HubId] WHERE o.[d_On] AND h.[d_Type]=3 ORDER BY o.rowid"))) {
        const qint16 index = m_scratch->FindObjectById(row.key);
        if (index >= 0 && m_scratch->FindObjectById(m_scratch->Object(index).HubId) < 0) {
            Add("Display", row.key, "d_Name",
                ObjectText(row.name) + QStringLiteral("the hub that it stands behind is not loaded."));
        }
    }
}

void InstallationCheck::FindOrphans() {
    for (const ActiveRow& row : ActiveRows(QStringLiteral(
             "SELECT [d_Id],[d_Name],NULL,NULL FROM [Display] WHERE [d_On] AND [d_Type] IS NULL ORDER BY rowid"))) {
        Add("Display", row.key, "d_Type",
            ObjectText(row.name) +
                QStringLiteral("it has no type. It is taken for a counter, and the hubs' lists lack it."));
    }
    for (const ActiveRow& row : ActiveRows(QStringLiteral(
             "SELECT o.[d_Id],o.[d_Name],NULL,NULL FROM [Display] o LEFT JOIN [Display] h ON h.[d_Id]=o.[d_HubId] "
             "WHERE o.[d_HubId]<>0 AND IFNULL(h.[d_Type],0)<>3 ORDER BY o.rowid"))) {
        Add("Display", row.key, "d_HubId",
            ObjectText(row.name) + QStringLiteral("it stands behind a hub that does not exist. Click to free it."));
        m_findings.back().mend = QStringLiteral("Put '%1' on the bus itself?").arg(vni::ToUnicode(row.name));
    }
    for (const ActiveRow& row : ActiveRows(
             QStringLiteral("SELECT [ID],NULL,[d_Id],[Order] FROM [ScanPlan] WHERE [d_Id] IS NULL OR [d_Id] NOT IN "
                            "(SELECT [d_Id] FROM [Display]) ORDER BY [Order],rowid"))) {
        const QString entry = QStringLiteral("order %1, counter %2")
                                  .arg(row.address.isNull() ? QStringLiteral("none") : row.address.toString(),
                                       row.number.isNull() ? QStringLiteral("none") : row.number.toString());
        Add("ScanPlan", row.key, "d_Id",
            QStringLiteral("Scan plan: an entry (%1) names no object. Click to remove it.").arg(entry));
        m_findings.back().mend = QStringLiteral("Remove the entry (%1) from the scan plan?").arg(entry);
    }
}

void InstallationCheck::CheckBlock() {
    const std::vector<BlockFault> faults = BlockFaults(*m_scratch);
    for (const BlockFault& fault : faults) {
        // An address that nothing can be sent to has been found already.
        if (fault.field == QStringLiteral("d_Address"))
            continue;
        m_findings.push_back({fault.text, QString::fromLatin1(TableOf(fault.of)), fault.id, fault.field});
    }
    const auto objects = m_scratch->LoadedObjects();
    const bool hasHub =
        std::any_of(objects.begin(), objects.end(), [](const model::QObject& o) { return o.Type == model::Hub; });
    if (!faults.empty() || !hasHub)
        return;
    const qsizetype length = BuildHubConfig(*m_scratch).size();
    if (length > LongestData) {
        Add("", 0, "",
            QStringLiteral("The configuration of the hubs has %1 characters; above 254 the length field of its frame "
                           "wraps.")
                .arg(length));
    }
}
