#pragma once

#include "database/Loaders.h"

#include <qcoro/qcorotask.h>

#include <functional>

class Database;
class Dialogs;
class EventLog;
class TicketRecords;

namespace model {
struct Installation;
}

/// Builds the model anew from the store, whole or, while devices run, in the parts that can change under them.
class Reload {
public:
    /// The references must outlive this.
    Reload(Database& database, Loaders& loaders, TicketRecords& tickets, model::Installation& installation,
           EventLog& log);

    enum class Outcome {
        Loaded,     ///< everything is loaded
        NoScanPlan, ///< everything is loaded, but the scan plan has no entries
        NoDatabase, ///< no store is open or a statement failed (see the log): the model is as it was
    };

    /// Rebuilds everything: services, series, objects, directions, scan plan, first services, hub table, information
    /// texts. All rings are empty after it.
    Outcome ReloadAll();

    /// Overwrites the loaded services with what the store holds, in their places, and numbers the series anew. For each
    /// enabled service that is not loaded a warning is shown, one after the other, once all is done. Next numbers and
    /// rings stay.
    /// @return false, and nothing changed, if the store cannot be read.
    /// @param dialogs must outlive the operation.
    QCoro::Task<bool> ReloadServices(Dialogs& dialogs);

    /// The lighter refresh. If `DbChanged` is set, clears it and reloads objects, services (like `ReloadServices`) and
    /// scan plan, and builds the hub table anew, since objects may stand in other places now; first services stay as
    /// they are. Does nothing otherwise.
    /// @return false, and nothing changed, if the store cannot be read; `DbChanged` then stays set.
    QCoro::Task<bool> RefreshIfChanged(Dialogs& dialogs);

    /// Sets `FirstServiceIndex` of every object.
    void AssignFirstServices();

    /// Puts the stored text into every information display.
    void LoadInfoTexts();

    /// Called by the lighter refresh once the model is new, before the first warning is shown.
    std::function<void()> OnRefreshed = [] {};

    /// Set by edits in the setup window: the store is ahead of the model.
    bool DbChanged = false;

private:
    /// @return how many of the rows are of services that are not loaded.
    int RefreshServices(const std::vector<Loaders::ServiceRow>& rows);

    Database& m_database;
    Loaders& m_loaders;
    TicketRecords& m_tickets;
    model::Installation& m_installation;
    EventLog& m_log;
};
