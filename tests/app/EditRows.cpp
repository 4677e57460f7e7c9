// Edits the services of a store through their grid records until it is killed.
// usage: edit_rows DATABASE    makes the store if there is none. Every service has "n" in its name and n in its number.

#include "core/EventLog.h"
#include "core/IniUtility.h"
#include "database/Database.h"
#include "database/GridRecords.h"
#include "platform/Clock.h"

#include <QApplication>
#include <QFileInfo>
#include <QTimer>

#include <random>

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    const QString path = QApplication::arguments().value(1);
    const QString folder = QFileInfo(path).absolutePath();
    if (!QFileInfo::exists(path))
        Database::CreateEmpty(path);

    const SystemClock clock;
    EventLog log(folder, clock);
    IniUtility ini(folder + QStringLiteral("/Tallora.ini"));
    Database database(folder, ini, log, clock);
    database.OpenDatabase(path);
    GridRecords records(database, {.table = QStringLiteral("Queue")},
                        {{.caption = QStringLiteral("Name"), .field = QStringLiteral("q_Name")},
                         {.caption = QStringLiteral("Number"), .field = QStringLiteral("q_Number")}});
    if (records.Requery())
        return 1;

    std::mt19937 random{std::random_device{}()};
    QTimer editing;
    QObject::connect(&editing, &QTimer::timeout, &application, [&] {
        const auto row = static_cast<int>(random() % static_cast<unsigned>(records.rowCount()));
        const QString number = QString::number(random() % 1000);
        const int rows = records.rowCount();
        if (rows > 40)
            records.Remove(row);
        else if (records.Write(row, 0, number) || records.Write(row, 1, number))
            QApplication::exit(1);
    });
    editing.start(0);
    return QApplication::exec();
}
