#include "database/Reload.h"

#include "core/HubTable.h"
#include "core/Installation.h"
#include "database/Database.h"
#include "database/Loaders.h"

#include <algorithm>

Reload::Reload(Database& database, Loaders& loaders, model::Installation& installation, EventLog& log)
    : m_database(database)
    , m_loaders(loaders)
    , m_installation(installation)
    , m_log(log) {}

Result<> Reload::ReloadAll() {
    const Result<Snapshot> store = m_loaders.Read();
    if (!store)
        return Failure{store.Error()};
    m_installation.NumServices = m_loaders.LoadServices(*store);
    m_loaders.MergeRoutedNumbers();
    m_loaders.AssignSeriesIndexes(m_installation.NumServices);
    m_installation.NumObjects = m_loaders.LoadCounters(*store);
    m_installation.NumDirections = m_loaders.LoadDirections(*store);
    m_installation.NumScanEntries = m_loaders.LoadScanPlan(*store);
    AssignFirstServices();
    BuildHubTable(m_installation, m_log);
    LoadInfoTexts();
    return {};
}

Result<> Reload::ReloadDirections() {
    const Result<Snapshot> store = m_loaders.Read();
    if (!store)
        return Failure{store.Error()};
    m_installation.NumDirections = m_loaders.LoadDirections(*store);
    return {};
}

Result<> Reload::ReloadObjectsAndDirections() {
    const Result<Snapshot> store = m_loaders.Read();
    if (!store)
        return Failure{store.Error()};
    m_installation.NumObjects = m_loaders.LoadCounters(*store);
    m_installation.NumDirections = m_loaders.LoadDirections(*store);
    // The objects may stand in other places now.
    BuildHubTable(m_installation, m_log);
    return {};
}

Result<int> Reload::Refresh() {
    const Result<Snapshot> store = m_loaders.Read();
    if (!store)
        return Failure{store.Error()};
    m_dbChanged = false;
    m_installation.NumObjects = m_loaders.LoadCounters(*store);
    const int unknown = ReloadServices(*store);
    m_installation.NumScanEntries = m_loaders.LoadScanPlan(*store);
    BuildHubTable(m_installation, m_log);
    return unknown;
}

int Reload::ReloadServices(const Snapshot& store) {
    const auto unknown = std::count_if(store.services.begin(), store.services.end(),
                                       [this](const Snapshot::Row& row) { return !m_loaders.RefreshService(row); });
    m_loaders.AssignSeriesIndexes(m_installation.NumServices);
    return static_cast<int>(unknown);
}

void Reload::AssignFirstServices() {
    for (qint16 i = 0; i < m_installation.NumObjects; ++i)
        m_installation.Object(i).FirstServiceIndex = m_installation.FirstServiceOf(i);
}

void Reload::LoadInfoTexts() {
    for (qint16 i = 0; i < m_installation.NumObjects; ++i) {
        const model::QObject& object = m_installation.Object(i);
        if (object.InfoTable)
            object.InfoTable->AddStringItems(m_database.LastInfo(object.Number));
    }
}
