#pragma once

#include "database/Assignments.h"
#include "database/DirectionMatrix.h"
#include "database/GridRecords.h"

#include <QTimer>

class Station;

/// The recordsets of the setup window, and how they follow each other.
///
/// A change in one of the lists of services and objects shows in all lists that depend on it at once.
class SetupRecords final : public ::QObject {
    Q_OBJECT

public:
    /// Nothing is read yet. @param station must outlive the records.
    explicit SetupRecords(Station& station);

    GridRecords rsQueue;        ///< services, by number
    GridRecords rsDisplay;      ///< objects of all types; its last column tells how each is in step
    GridRecords rsDisplayList;  ///< the same objects, to choose from for the scan plan
    GridRecords rsQueueDisplay; ///< counters of one service
    GridRecords rsPlanView;     ///< scan plan, by order
    DirectionMatrix directions;
    GridRecords rsHubs;
    GridRecords rsFreeCounters; ///< devices that are no hubs and stand behind none
    GridRecords rsHubCounters;  ///< devices behind one hub

    Assignments assignments;

    /// Reads everything for the first time, but the lists of one service and of one hub.
    void Load();

    /// Lists the counters of a service; of none for a `serviceId` of 0.
    void LoadQueueDisplay(qint32 serviceId);
    /// Lists the devices behind a hub; of none for a `hubId` of 0.
    void LoadHubCounters(qint32 hubId);
    /// Makes the matrix of directions anew.
    void LoadDirectionGrid();

    /// Reads one list anew. A list that cannot be read is empty, and the log says why.
    void Requery(GridRecords& records);
    /// Reads all lists anew that depend on services and objects, and the objects themselves.
    void UpdateAll();
    /// Reads the scan plan, and the objects to choose from for it, anew.
    void RequeryPlan();
    /// Reads the lists of hubs and of the devices behind and before them anew.
    void RequeryHubs();

    /// To be called when an assignment has changed something.
    void NoteChange();

Q_SIGNALS:
    /// The store holds something else than before; comes once for all changes of one turn of the event loop.
    void StoreChanged();

private:
    void RequeryServiceCounters();

    Station& m_station;
    QTimer m_changed;
};
