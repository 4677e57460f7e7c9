#pragma once

#include "platform/Result.h"

class Database;
class EventLog;
class Loaders;
struct Snapshot;

namespace model {
struct Installation;
}

/// Builds the model anew from the store, whole or, while devices run, in the parts that can change under them. Where
/// the store is closed or cannot be read they fail, and the model is as it was.
class Reload {
public:
    /// The references must outlive this.
    Reload(Database& database, Loaders& loaders, model::Installation& installation, EventLog& log);

    /// Rebuilds everything: services, series, objects, directions, scan plan, first services, hub table, information
    /// texts. All rings are empty after it.
    Result<> ReloadAll();

    /// Rebuilds the directions alone.
    Result<> ReloadDirections();

    /// Rebuilds objects, directions and hub table, without first services.
    Result<> ReloadObjectsAndDirections();

    /// The store is ahead of the model.
    void NoteStoreChanged() { m_dbChanged = true; }
    bool IsStoreChanged() const { return m_dbChanged; }

    /// The lighter refresh, for a store that is ahead of the model. Reloads objects and scan plan, overwrites the
    /// loaded services in their places, numbers the series anew, and builds the hub table anew, since objects may stand
    /// in other places now. Next numbers, the services' rings and first services stay.
    /// @return the number of enabled services that are not loaded, for a warning each. After a failure the store still
    /// counts as changed.
    Result<int> Refresh();

    /// Sets `FirstServiceIndex` of every object.
    void AssignFirstServices();

    /// Puts the stored text into every information display.
    void LoadInfoTexts();

private:
    /// @return how many of the services are not loaded.
    int ReloadServices(const Snapshot& store);

    Database& m_database;
    Loaders& m_loaders;
    model::Installation& m_installation;
    EventLog& m_log;
    bool m_dbChanged = false;
};
