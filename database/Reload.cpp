#include "database/Reload.h"

#include "core/EventLog.h"
#include "core/HubTable.h"
#include "core/Installation.h"
#include "database/Database.h"
#include "database/TicketRecords.h"
#include "platform/Dialogs.h"

#include <algorithm>

namespace {

QCoro::Task<> Warn(Dialogs& dialogs, int times) {
    const QString warning =
        QStringLiteral("Warning, Queue system has changed, you must restart program to apply these changes.");
    for (; times > 0; --times)
        co_await dialogs.ShowMessage(BoxKind::Exclamation, warning);
}

} // namespace

Reload::Reload(Database& database, Loaders& loaders, TicketRecords& tickets, model::Installation& installation,
               EventLog& log)
    : m_database(database)
    , m_loaders(loaders)
    , m_tickets(tickets)
    , m_installation(installation)
    , m_log(log) {}

Reload::Outcome Reload::ReloadAll() {
    if (!m_database.IsOpen())
        return Outcome::NoDatabase;
    // Everything is read before the model is touched.
    std::optional<Transaction> lock;
    lock.emplace(m_database.File(), Transaction::Kind::Read);
    const auto services = m_loaders.ReadServices(true);
    const auto counters = services ? m_loaders.ReadCounters() : std::nullopt;
    const auto directions = counters ? m_loaders.ReadDirections() : std::nullopt;
    const auto scanPlan = directions ? m_loaders.ReadScanPlan() : std::nullopt;
    lock.reset();
    if (!scanPlan)
        return Outcome::NoDatabase;

    m_installation.NumServices = m_loaders.TakeServices(*services);
    m_loaders.MergeRoutedNumbers();
    m_loaders.AssignSeriesIndexes(m_installation.NumServices);
    m_installation.NumObjects = m_loaders.TakeCounters(*counters);
    m_installation.NumDirections = m_loaders.TakeDirections(*directions);
    m_installation.NumScanEntries = m_loaders.TakeScanPlan(*scanPlan);
    AssignFirstServices();
    BuildHubTable(m_installation, m_log);
    LoadInfoTexts();
    return m_installation.NumScanEntries > 0 ? Outcome::Loaded : Outcome::NoScanPlan;
}

QCoro::Task<bool> Reload::ReloadServices(Dialogs& dialogs) {
    const auto services = m_loaders.ReadServices(false);
    if (!services)
        co_return false;
    const int unknown = RefreshServices(*services);
    co_await Warn(dialogs, unknown);
    co_return true;
}

QCoro::Task<bool> Reload::RefreshIfChanged(Dialogs& dialogs) {
    if (!DbChanged)
        co_return true;
    std::optional<Transaction> lock;
    lock.emplace(m_database.File(), Transaction::Kind::Read);
    const auto counters = m_loaders.ReadCounters();
    const auto services = counters ? m_loaders.ReadServices(false) : std::nullopt;
    const auto scanPlan = services ? m_loaders.ReadScanPlan() : std::nullopt;
    lock.reset();
    if (!scanPlan)
        co_return false;
    // Cleared before the first box: an edit made while one stands open asks for another refresh.
    DbChanged = false;
    m_installation.NumObjects = m_loaders.TakeCounters(*counters);
    // The boxes come last: nobody must see a model that is half new while one of them stands open.
    const int unknown = RefreshServices(*services);
    m_installation.NumScanEntries = m_loaders.TakeScanPlan(*scanPlan);
    BuildHubTable(m_installation, m_log);
    OnRefreshed();
    co_await Warn(dialogs, unknown);
    co_return true;
}

int Reload::RefreshServices(const std::vector<Loaders::ServiceRow>& rows) {
    const auto unknown = std::count_if(
        rows.begin(), rows.end(), [this](const Loaders::ServiceRow& row) { return !m_loaders.RefreshService(row); });
    m_loaders.AssignSeriesIndexes(m_installation.NumServices);
    return static_cast<int>(unknown);
}

void Reload::AssignFirstServices() {
    for (qint16 i = 0; i < m_installation.NumObjects; ++i)
        m_installation.QObjects[static_cast<std::size_t>(i)].FirstServiceIndex = m_installation.FirstServiceOf(i);
}

void Reload::LoadInfoTexts() {
    for (qint16 i = 0; i < m_installation.NumObjects; ++i) {
        const model::QObject& object = m_installation.QObjects[static_cast<std::size_t>(i)];
        if (object.InfoTable)
            object.InfoTable->AddStringItems(m_database.LastInfo(object.Number));
    }
}
