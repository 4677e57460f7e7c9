// Edits a store until it is killed: services through their grid records, the scan plan, the directions, and at times
// everything at once.
// usage: edit_rows DATABASE    makes the store if there is none, and prints "writing" once its first change is made.
//   What a whole store looks like:
//   Every service has "n" in its name and n in its number.
//   There are no rows at all, or services, 5 counters, 5 displays and 5 hubs.
//   The scan plan has 0, 10 or 15 entries with the orders from 1 on without gaps.
//   The directions are none, or one for each display and counter, all the same.

#include "core/EventLog.h"
#include "core/IniUtility.h"
#include "core/Installation.h"
#include "database/Assignments.h"
#include "database/Database.h"
#include "database/DirectionMatrix.h"
#include "database/GridRecords.h"
#include "platform/Clock.h"

#include <QApplication>
#include <QFileInfo>
#include <QTimer>

#include <cstdio>
#include <random>
#include <utility>

namespace {

class Editor {
public:
    explicit Editor(const QString& path)
        : m_folder(QFileInfo(path).absolutePath()) {
        m_database.OpenDatabase(path);
        (void)m_services.Requery();
        (void)m_objects.Requery();
        if (m_services.RecordCount() == 0)
            (void)Empty();
    }

    /// One change. @return false if the store refuses it.
    bool Step() {
        switch (m_random() % 40) {
        case 0:
            return static_cast<bool>(Empty());
        case 1:
            return static_cast<bool>(m_assignments.ClearPlan());
        case 2:
        case 3:
            return BuildPlan();
        case 4:
            return UpdateDirections();
        default:
            return EditService();
        }
    }

private:
    Result<> Empty() {
        Result<> done = m_database.EmptyDatabase();
        if (done) {
            done = m_database.RunTogether({
                {QStringLiteral("INSERT INTO Queue (q_Name, q_Number) VALUES ('1', 1)")},
                {QStringLiteral("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 15) INSERT "
                                "INTO Display (d_Number, d_Type) SELECT i, CASE i % 3 WHEN 0 THEN 3 WHEN 1 THEN 0 "
                                "ELSE 2 END FROM n")},
            });
        }
        (void)m_services.Requery();
        (void)m_objects.Requery();
        return done;
    }

    bool BuildPlan() {
        std::vector<qint32> ids;
        for (int row = 0; row < m_objects.RecordCount(); ++row)
            ids.push_back(m_objects.Key(row).toInt());
        ids.resize(m_random() % 2 == 0 ? 10 : 15);
        return static_cast<bool>(m_assignments.BuildPlan(ids));
    }

    bool UpdateDirections() {
        m_matrix.LoadDirectionGrid(m_objects, *m_installation);
        const QString direction = QString::number(m_random() % 5);
        for (int row = 0; row + 1 < m_matrix.rowCount(); ++row) {
            for (int column = 1; column < m_matrix.columnCount(); ++column)
                (void)m_matrix.Write(row, column, direction);
        }
        return static_cast<bool>(m_matrix.UpdateDataDir(m_database));
    }

    bool EditService() {
        const int rows = m_services.RecordCount();
        const auto row = static_cast<int>(m_random() % static_cast<unsigned>(rows + 1));
        if (rows > 40)
            return static_cast<bool>(m_services.Remove(row % rows));
        const QString number = QString::number(m_random() % 1000);
        return m_services.Write(row, 0, number) && m_services.Write(row, 1, number);
    }

    QString m_folder;
    SystemClock m_clock;
    EventLog m_log{m_folder, m_clock};
    IniUtility m_ini{m_folder + QStringLiteral("/Tallora.ini")};
    Database m_database{m_folder, m_ini, m_log, m_clock};
    Assignments m_assignments{m_database};
    GridRecords m_services{m_database,
                           {.table = QStringLiteral("Queue")},
                           {{.caption = QStringLiteral("Name"), .field = QStringLiteral("q_Name")},
                            {.caption = QStringLiteral("Number"), .field = QStringLiteral("q_Number")}}};
    GridRecords m_objects{m_database,
                          {.table = QStringLiteral("Display")},
                          {{.caption = QStringLiteral("Name"), .field = QStringLiteral("d_Name")},
                           {.caption = QStringLiteral("Type"), .field = QStringLiteral("d_Type")}}};
    DirectionMatrix m_matrix;
    std::unique_ptr<model::Installation> m_installation = std::make_unique<model::Installation>();
    std::mt19937 m_random{std::random_device{}()};
};

/// Whoever kills the program waits for this.
void Announce() {
    std::puts("writing");
    std::fflush(stdout);
}

} // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    const QString path = QApplication::arguments().value(1);
    if (!QFileInfo::exists(path))
        (void)Database::CreateEmpty(path);
    Editor editor(path);
    QTimer editing;
    bool hasWritten = false;
    QObject::connect(&editing, &QTimer::timeout, &application, [&] {
        if (!editor.Step())
            QApplication::exit(1);
        else if (!std::exchange(hasWritten, true))
            Announce();
    });
    editing.start(0);
    return QApplication::exec();
}
