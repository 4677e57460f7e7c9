#pragma once

#include "database/Assignments.h"
#include "database/Database.h"
#include "database/GridRecords.h"

#include <QRandomGenerator>
#include <QSqlRecord>

/// All rows of the description, with their keys.
inline QString DescriptionOf(const Database& database) {
    QString dump;
    for (const char* const table : changeset::Tables()) {
        auto rows = database.Select({QStringLiteral("SELECT * FROM [%1] ORDER BY 1,2").arg(QLatin1String(table))});
        while (rows && rows->next()) {
            dump += QLatin1String(table);
            for (int i = 0; i < rows->record().count(); ++i)
                dump += u'|' + rows->value(i).toString();
            dump += u'\n';
        }
    }
    return dump;
}

/// Somebody who edits at random, through what the windows edit with.
class RandomEditor {
public:
    RandomEditor(Database& database, quint32 seed)
        : m_database(database)
        , m_random(seed)
        , m_services(database, {.table = QStringLiteral("Queue"), .order = QStringLiteral("q_Number")},
                     {{.caption = QStringLiteral("Name"), .field = QStringLiteral("q_Name")},
                      {.caption = QStringLiteral("Button"), .field = QStringLiteral("q_Button")}})
        , m_objects(database, {.table = QStringLiteral("Display")},
                    {{.caption = QStringLiteral("Name"), .field = QStringLiteral("d_Name")},
                     {.caption = QStringLiteral("Address"), .field = QStringLiteral("d_Address")},
                     {.caption = QStringLiteral("Type"), .field = QStringLiteral("d_Type")}}) {}

    int Roll(int sides) { return static_cast<int>(m_random.bounded(sides)); }

    /// Does something; it may be refused.
    void Act() {
        switch (Roll(10)) {
        case 0:
        case 1:
            return Write(m_services);
        case 2:
        case 3:
            return Write(m_objects);
        case 4:
            (void)m_links.AddServiceCounter(Roll(8), Roll(20));
            return;
        case 5:
            (void)m_links.RemoveServiceCounters(Roll(8));
            return;
        case 6:
            (void)m_links.SetHub(Roll(20), Roll(3));
            return;
        case 7: {
            std::vector<qint32> plan;
            for (int i = Roll(12); i > 0; --i)
                plan.push_back(Roll(20));
            (void)m_links.BuildPlan(plan);
            return;
        }
        case 8: {
            std::vector<Statement> directions{{QStringLiteral("DELETE FROM [Info-Direction]")}};
            for (int i = Roll(12); i > 0; --i)
                directions.push_back(
                    {QStringLiteral("INSERT INTO [Info-Direction] (inf_Id,d_Id,Dir_Id) VALUES (?,?,?)"),
                     {Roll(3), Roll(5), Roll(5)}});
            (void)m_database.Edit(QStringLiteral("directions"), directions);
            return;
        }
        default:
            if (Roll(20) == 0) {
                (void)m_database.EmptyDatabase();
                return;
            }
            // An act of several parts, the last of which may be refused.
            (void)m_database.Edit(QStringLiteral("several"), [this]() -> Result<> {
                Act();
                Act();
                return Roll(3) == 0 ? Failure{QStringLiteral("No.")} : Result<>();
            });
        }
    }

private:
    void Write(GridRecords& records) {
        (void)records.Requery();
        const int row = Roll(records.rowCount());
        if (Roll(5) == 0) {
            (void)records.Remove(row);
            return;
        }
        const int column = Roll(records.columnCount());
        (void)records.Write(row, column, column == 0 ? u'N' + QString::number(Roll(5)) : QString::number(Roll(300)));
    }

    Database& m_database;
    QRandomGenerator m_random;
    GridRecords m_services;
    GridRecords m_objects;
    Assignments m_links{m_database};
};
