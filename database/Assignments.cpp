#include "database/Assignments.h"

#include "database/Schema.h"

namespace {

Statement EmptyPlan() {
    return {QStringLiteral("DELETE FROM [ScanPlan]")};
}

Statement NewEntry(qint32 objectId, const QVariant& order) {
    return {QStringLiteral("INSERT INTO [ScanPlan] ([d_Id],[Order]) VALUES (?,?)"), {objectId, order}};
}

Failure Closed() {
    return {QStringLiteral("Can't open Queue database!")};
}

} // namespace

Result<> Assignments::Run(const std::vector<Statement>& statements) {
    const Result<> done = m_database.Edit({}, statements);
    return done ? done : Failure{schema::ReadableError(done.Error())};
}

Result<bool> Assignments::IsCounterServed(qint32 counterId, qint32 serviceId) const {
    if (!m_database.IsOpen())
        return Closed();
    auto query = m_database.Select(
        {QStringLiteral("SELECT * FROM [Queue-Display] INNER JOIN [Queue] ON [Queue].[q_Id]=[Queue-Display].[q_Id]"
                        " WHERE [d_Id]=? AND [Queue-Display].[q_Id]=?"),
         {counterId, serviceId}});
    if (!query)
        return Failure{schema::ReadableError(query.Error())};
    return query->next();
}

Result<> Assignments::AddServiceCounter(qint32 serviceId, qint32 counterId) {
    return Run({{QStringLiteral("INSERT INTO [Queue-Display] ([q_Id],[d_Id]) VALUES (?,?)"), {serviceId, counterId}}});
}

Result<> Assignments::RemoveServiceCounter(qint32 id) {
    return Run({{QStringLiteral("DELETE FROM [Queue-Display] WHERE [ID]=?"), {id}}});
}

Result<> Assignments::RemoveServiceCounters(qint32 serviceId) {
    return Run({{QStringLiteral("DELETE FROM [Queue-Display] WHERE [q_Id]=?"), {serviceId}}});
}

Result<> Assignments::AddToPlan(qint32 objectId, const QVariant& order) {
    return Run({NewEntry(objectId, order)});
}

Result<> Assignments::RemoveFromPlan(qint32 id) {
    return Run({{QStringLiteral("DELETE FROM [ScanPlan] WHERE [ID]=?"), {id}}});
}

Result<> Assignments::ClearPlan() {
    return Run({EmptyPlan()});
}

Result<> Assignments::BuildPlan(const std::vector<qint32>& objectIds) {
    std::vector<Statement> statements{EmptyPlan()};
    for (std::size_t i = 0; i < objectIds.size(); ++i)
        statements.push_back(NewEntry(objectIds[i], static_cast<qint32>(i + 1)));
    return Run(statements);
}

Result<> Assignments::SetHub(qint32 objectId, qint32 hubId) {
    return Run({{QStringLiteral("UPDATE [Display] SET [d_HubId]=? WHERE [d_Id]=?"), {hubId, objectId}}});
}

Result<> Assignments::ClearHub(qint32 hubId) {
    return Run({{QStringLiteral("UPDATE [Display] SET [d_HubId]=0 WHERE [d_HubId]=?"), {hubId}}});
}
