#include "database/Assignments.h"

#include "database/Schema.h"

#include <QSqlQuery>

namespace {

Statement EmptyPlan() {
    return {QStringLiteral("DELETE FROM [ScanPlan]")};
}

Statement NewEntry(qint32 objectId, const QVariant& order) {
    return {QStringLiteral("INSERT INTO [ScanPlan] ([d_Id],[Order]) VALUES (?,?)"), {objectId, order}};
}

QString ClosedText() {
    return QStringLiteral("Can't open Queue database!");
}

} // namespace

Assignments::Error Assignments::Run(const std::vector<Statement>& statements) {
    if (!m_database.IsOpen())
        return ClosedText();
    Error error = m_database.RunTogether(statements);
    if (error)
        error = schema::ReadableError(*error);
    return error;
}

Assignments::Error Assignments::CheckCounterServed(qint32 counterId, qint32 serviceId, bool& served) const {
    if (!m_database.IsOpen())
        return ClosedText();
    QString problem;
    auto query = m_database.Select(
        {QStringLiteral("SELECT * FROM [Queue-Display] INNER JOIN [Queue] ON [Queue].[q_Id]=[Queue-Display].[q_Id]"
                        " WHERE [d_Id]=? AND [Queue-Display].[q_Id]=?"),
         {counterId, serviceId}},
        problem);
    if (!query)
        return schema::ReadableError(problem);
    served = query->next();
    return std::nullopt;
}

Assignments::Error Assignments::AddServiceCounter(qint32 serviceId, qint32 counterId) {
    return Run({{QStringLiteral("INSERT INTO [Queue-Display] ([q_Id],[d_Id]) VALUES (?,?)"), {serviceId, counterId}}});
}

Assignments::Error Assignments::RemoveServiceCounter(qint32 id) {
    return Run({{QStringLiteral("DELETE FROM [Queue-Display] WHERE [ID]=?"), {id}}});
}

Assignments::Error Assignments::RemoveServiceCounters(qint32 serviceId) {
    return Run({{QStringLiteral("DELETE FROM [Queue-Display] WHERE [q_Id]=?"), {serviceId}}});
}

Assignments::Error Assignments::AddToPlan(qint32 objectId, const QVariant& order) {
    return Run({NewEntry(objectId, order)});
}

Assignments::Error Assignments::RemoveFromPlan(qint32 id) {
    return Run({{QStringLiteral("DELETE FROM [ScanPlan] WHERE [ID]=?"), {id}}});
}

Assignments::Error Assignments::ClearPlan() {
    return Run({EmptyPlan()});
}

Assignments::Error Assignments::BuildPlan(const std::vector<qint32>& objectIds) {
    std::vector<Statement> statements{EmptyPlan()};
    for (std::size_t i = 0; i < objectIds.size(); ++i)
        statements.push_back(NewEntry(objectIds[i], static_cast<qint32>(i + 1)));
    return Run(statements);
}

Assignments::Error Assignments::SetHub(qint32 objectId, qint32 hubId) {
    return Run({{QStringLiteral("UPDATE [Display] SET [d_HubId]=? WHERE [d_Id]=?"), {hubId, objectId}}});
}

Assignments::Error Assignments::ClearHub(qint32 hubId) {
    return Run({{QStringLiteral("UPDATE [Display] SET [d_HubId]=0 WHERE [d_HubId]=?"), {hubId}}});
}
