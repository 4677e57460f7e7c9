#pragma once

#include "database/Database.h"

/// The links between the records of an installation: who serves what, the scan plan, and who stands behind which hub.
///
/// Each operation is one transaction: it is done whole or not at all, also if the program is killed in the middle. An
/// error is what the store said, or that it is closed.
class Assignments {
public:
    /// @param database must outlive the assignments.
    explicit Assignments(Database& database)
        : m_database(database) {}

    /// Whether the counter serves the service.
    Result<bool> IsCounterServed(qint32 counterId, qint32 serviceId) const;
    Result<> AddServiceCounter(qint32 serviceId, qint32 counterId);
    /// Takes one pair away. @param id `ID` of the pair.
    Result<> RemoveServiceCounter(qint32 id);
    /// Takes all counters of a service away.
    Result<> RemoveServiceCounters(qint32 serviceId);

    /// Adds an object to the scan plan, which may hold it already. @param order its place, null for none.
    Result<> AddToPlan(qint32 objectId, const QVariant& order);
    /// @param id `ID` of the entry.
    Result<> RemoveFromPlan(qint32 id);
    Result<> ClearPlan();
    /// Makes the plan anew of these objects, with the orders 1, 2, 3 and so on.
    Result<> BuildPlan(const std::vector<qint32>& objectIds);

    /// Puts a device behind a hub, or on the bus itself with a `hubId` of 0.
    Result<> SetHub(qint32 objectId, qint32 hubId);
    /// Puts all devices of a hub on the bus itself.
    Result<> ClearHub(qint32 hubId);

private:
    Result<> Run(const std::vector<Statement>& statements);

    Database& m_database;
};
