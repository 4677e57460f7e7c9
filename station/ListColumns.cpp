#include "station/ListColumns.h"

#include "core/Installation.h"
#include "database/Database.h"
#include "tickets/VniText.h"

#include <QCoreApplication>

#include <algorithm>

namespace lists {
namespace {

QString tr(const char* text) {
    return QCoreApplication::translate("ListTransfer", text);
}

constexpr Column Services[] = {
    {"ID", "q_Id", Holds::Key},
    {"Service Name", "q_Name", Holds::Text},
    {"Number", "q_Number", Holds::Number},
    {"Description", "q_Description", Holds::Text},
    {"Series", "q_Series", Holds::Number},
    {"Button", "q_Button", Holds::Number},
    {"Active", "q_On", Holds::YesNo},
    {"Route To", "q_route", Holds::Number},
    {"Notes", "q_Notes", Holds::Text},
};
constexpr Column Objects[] = {
    {"ID", "d_Id", Holds::Key},
    {"Counter Name", "d_Name", Holds::Text},
    {"Number", "d_Number", Holds::Number},
    {"Address", "d_Address", Holds::Number},
    {"Type", "d_Type", Holds::Type},
    {"Active", "d_On", Holds::YesNo},
    {"HUB", "d_HubId", Holds::Object, model::Hub},
};
constexpr Column Assignments[] = {{"Service", "q_Id", Holds::Service},
                                  {"Counter", "d_Id", Holds::Object, model::Counter}};
constexpr Column ScanPlan[] = {{"Order", "Order", Holds::Number}, {"Object", "d_Id", Holds::Object}};
constexpr Column Directions[] = {{"Display", "inf_Id", Holds::Object, model::Display},
                                 {"Counter", "d_Id", Holds::Object, model::Counter},
                                 {"Direction", "Dir_Id", Holds::Direction}};
constexpr Column HubMembers[] = {{"HUB", "d_HubId", Holds::Object, model::Hub}, {"Device", "d_Id", Holds::Object}};

constexpr Description Descriptions[] = {
    {List::Services, QT_TRANSLATE_NOOP("ListTransfer", "Services"), "Queue", "q_Number,q_Id", Services},
    {List::Objects, QT_TRANSLATE_NOOP("ListTransfer", "Objects"), "Display", "d_Id", Objects},
    {List::Assignments, QT_TRANSLATE_NOOP("ListTransfer", "Assignments"), "Queue-Display", "q_Id,ID", Assignments},
    {List::ScanPlan, QT_TRANSLATE_NOOP("ListTransfer", "Scan plan"), "ScanPlan", "[Order],ID", ScanPlan},
    {List::Directions, QT_TRANSLATE_NOOP("ListTransfer", "Directions"), "Info-Direction", "inf_Id,d_Id", Directions},
    {List::HubMembers, QT_TRANSLATE_NOOP("ListTransfer", "HUB members"), "Display", "d_HubId,d_Id", HubMembers},
};

} // namespace

const Description& Of(List list) {
    return *std::find_if(std::begin(Descriptions), std::end(Descriptions),
                         [list](const Description& one) { return one.list == list; });
}

Names::Names(const Database& database, bool areObjects)
    : m_areObjects(areObjects) {
    auto rows =
        database.Select({areObjects ? QStringLiteral("SELECT d_Id,d_Name,d_Number,d_Type FROM Display ORDER BY d_Id")
                                    : QStringLiteral("SELECT q_Id,q_Name,q_Number FROM Queue ORDER BY q_Id")});
    while (rows && rows->next()) {
        const qint32 id = rows->value(0).toInt();
        const Row row{vni::ToUnicode(rows->value(1).toString()).trimmed(), rows->value(2).toString(),
                      areObjects ? rows->value(3).toInt() : -1};
        m_byName[row.name] += id;
        m_byNumber[row.number] += id;
        m_rows.insert(id, row);
    }
}

QString Names::Text(qint32 id) const {
    const auto row = m_rows.find(id);
    if (row == m_rows.end())
        return {};
    for (const QString& text : {row->name, row->number}) {
        const Result<qint32> found = text.isEmpty() ? Failure{QString()} : Find(text);
        if (found && *found == id)
            return text;
    }
    return QStringLiteral("#%1").arg(id);
}

Result<qint32> Names::Find(const QString& text) const {
    for (const auto& known : {m_byName.value(text), m_byNumber.value(text)}) {
        if (known.size() == 1)
            return known.first();
        if (known.size() > 1)
            return Failure{tr("There are %1 with \"%2\".").arg(known.size()).arg(text)};
    }
    bool isNumber = false;
    const qint32 id = text.startsWith(u'#') ? QStringView(text).sliced(1).toInt(&isNumber) : 0;
    if (isNumber && m_rows.contains(id))
        return id;
    return Failure{m_areObjects ? tr("There is no object \"%1\".").arg(text)
                                : tr("There is no service \"%1\".").arg(text)};
}

int Names::TypeOf(qint32 id) const {
    const auto row = m_rows.find(id);
    return row == m_rows.end() ? -1 : row->type;
}

} // namespace lists
