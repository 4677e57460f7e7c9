// What the user edits, takes back and does again, and what the store remembers of it.

#include "database/Assignments.h"
#include "database/GridRecords.h"
#include "simulator/FaultyDisk.h"
#include "tests/simulation/World.h"
#include "tests/support/TestClock.h"

#include <sqlite3.h>

#include <algorithm>

namespace {

/// Rows as text, in an order of their own.
QStringList TextOf(const std::vector<RowChange>& rows) {
    QStringList lines;
    for (const RowChange& row : rows) {
        QString line = QStringLiteral("%1 %2 %3").arg(row.table).arg(row.key).arg(static_cast<int>(row.kind));
        for (const RowChange::Field& field : row.fields)
            line += QStringLiteral(" %1:%2>%3").arg(field.column, field.before.toString(), field.after.toString());
        lines += line;
    }
    lines.sort();
    return lines;
}

} // namespace

/// What a user edits: what the store holds afterwards, and the operation that the windows use for it.
struct World::Edited {
    QStringList statements;
    std::function<Result<>(Database&)> operation;
};

World::Edited World::ThrowEdit(Dice& dice) const {
    const int service = 1 + dice.Roll(m_hall.services);
    const int object = 1 + dice.Roll(m_hall.objects);
    const auto cell = [service](const char* field, const QString& text) {
        return [service, text, column = QString::fromLatin1(field)](Database& database) -> Result<> {
            GridRecords records(database, {.table = QStringLiteral("Queue")}, {{.caption = {}, .field = column}});
            if (const Result<> read = records.Requery(); !read)
                return read;
            return records.Write(service - 1, 0, text);
        };
    };
    switch (dice.Roll(6)) {
    case 0: {
        const QString name = QStringLiteral("Dòch vuï %1").arg(dice.Roll(1000));
        return {{QStringLiteral("UPDATE Queue SET q_Name='%1' WHERE q_Id=%2").arg(name).arg(service)},
                cell("q_Name", name)};
    }
    case 1: {
        const int button = dice.Roll(256);
        return {{QStringLiteral("UPDATE Queue SET q_Button=%1 WHERE q_Id=%2").arg(button).arg(service)},
                cell("q_Button", QString::number(button))};
    }
    case 2:
        return {{QStringLiteral("DELETE FROM [Queue-Display] WHERE q_Id=%1").arg(service)},
                [service](Database& database) { return Assignments(database).RemoveServiceCounters(service); }};
    case 3:
        return {{QStringLiteral("INSERT INTO [Queue-Display] (q_Id,d_Id) VALUES (%1,%2)").arg(service).arg(object)},
                [=](Database& database) { return Assignments(database).AddServiceCounter(service, object); }};
    case 4: {
        std::vector<qint32> order;
        QStringList statements{QStringLiteral("DELETE FROM ScanPlan")};
        for (int i = 1; i <= m_hall.objects; ++i) {
            order.push_back(1 + (i + object) % m_hall.objects);
            statements += QStringLiteral("INSERT INTO ScanPlan (d_Id,[Order]) VALUES (%1,%2)").arg(order.back()).arg(i);
        }
        return {statements, [order](Database& database) { return Assignments(database).BuildPlan(order); }};
    }
    default: {
        const QString statement = QStringLiteral("UPDATE Queue SET q_On=1-q_On WHERE q_Id=%1").arg(service);
        return {{statement}, [statement](Database& database) { return database.Edit({}, {Statement{statement}}); }};
    }
    }
}

void World::Edit(Dice& dice) {
    const FaultyDisk& disk = FaultyDisk::Instance();
    const auto [statements, operation] = ThrowEdit(dice);
    Trace(QStringLiteral("edit ") + statements.join(u';'));
    ++m_edits;
    const bool isHindered =
        disk.IsFaulty() || m_other || !m_station->database.IsOpen() || m_station->Maintenance().IsRunning();
    const Result<> done = operation(m_station->database);
    if (!done && !isHindered)
        Break(QStringLiteral("nothing stands in the way of an edit, and yet: ") + done.Error());
    Trace(done ? QStringLiteral("edited") : QStringLiteral("not edited: ") + done.Error());
    const bool wasAlive = !disk.IsDead();
    sqlite3_exec(m_shadow, "SAVEPOINT edit", nullptr, nullptr, nullptr);
    for (const QString& statement : statements)
        sqlite3_exec(m_shadow, statement.toUtf8().constData(), nullptr, nullptr, nullptr);
    const QByteArray after = Digest(m_shadow);
    m_states.insert(after);
    if (done && wasAlive) {
        if (m_possible != std::set<QByteArray>{after}) {
            m_undone.clear();
            m_done.push_back(*m_possible.begin());
        }
        m_possible = {after};
        sqlite3_exec(m_shadow, "RELEASE edit", nullptr, nullptr, nullptr);
        m_station->NoteStoreChanged();
        return;
    }
    m_possible.insert(after);
    // Which of both it is is seen in the store itself, unless the machine is dead.
    const bool isDone = wasAlive && StoredDigest() == after;
    sqlite3_exec(m_shadow, isDone ? "RELEASE edit" : "ROLLBACK TO edit; RELEASE edit", nullptr, nullptr, nullptr);
    if (wasAlive)
        m_possible = {Digest(m_shadow)};
}

void World::FollowStore() {
    sqlite3* store = nullptr;
    sqlite3_open(m_store.toUtf8().constData(), &store);
    sqlite3_backup* const copy = sqlite3_backup_init(m_shadow, "main", store, "main");
    sqlite3_backup_step(copy, -1);
    sqlite3_backup_finish(copy);
    sqlite3_close(store);
    m_possible = {Digest(m_shadow)};
    m_states.insert(*m_possible.begin());
}

void World::StepBack(Dice& dice) {
    const bool isUndo = !dice.OnceIn(3);
    const EditHistory& history = m_station->database.History();
    if (!(isUndo ? history.NextUndo() : history.NextRedo()))
        return;
    const FaultyDisk& disk = FaultyDisk::Instance();
    const bool isHindered =
        disk.IsFaulty() || m_other || !m_station->database.IsOpen() || m_station->Maintenance().IsRunning();
    auto& from = isUndo ? m_done : m_undone;
    auto& to = isUndo ? m_undone : m_done;
    ++m_edits;
    const Outcome stepped = isUndo ? m_station->UndoEdit() : m_station->RedoEdit();
    Trace((isUndo ? QStringLiteral("undo: ") : QStringLiteral("redo: ")) + stepped.text);
    if (!stepped.IsDone() && !isHindered)
        Break(QStringLiteral("nothing stands in the way of a step back, and yet: ") + stepped.text);
    if (disk.IsDead()) {
        // It may have come through or not.
        if (from.empty())
            m_isAnyPossible = true;
        else
            m_possible.insert(from.back());
        return;
    }
    const QByteArray before = Digest(m_shadow);
    const QByteArray now = StoredDigest();
    const QByteArray expected = !stepped.IsDone() ? before : from.empty() ? now : from.back();
    if (!m_other && now != expected)
        Break(QStringLiteral("a step back has left something else than there was"));
    if (!stepped.IsDone())
        return;
    if (!from.empty())
        from.pop_back();
    to.push_back(before);
    FollowStore();
}

void World::CheckHistory() {
    Sqlite file;
    if (!file.Open(m_store))
        return;
    TestClock clock;
    EventLog log(m_first.path(), clock);
    const EditHistory history(file, clock, log);
    const Result<std::vector<RowChange>> told = history.RowsSince(0);
    const Result<QByteArray> difference = changeset::Difference(file, m_first.filePath(QStringLiteral("first.mdb")));
    const Result<std::vector<RowChange>> found =
        difference ? changeset::Rows(file, *difference) : Failure{difference.Error()};
    if (!told || !found)
        Trace(QStringLiteral("the history cannot be read: ") + (told ? found.Error() : told.Error()));
    else if (TextOf(*told) != TextOf(*found))
        Break(QStringLiteral("the store holds something else than its history tells: %1 | %2")
                  .arg(TextOf(*told).join(u';'), TextOf(*found).join(u';')));
}
