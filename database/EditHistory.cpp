#include "database/EditHistory.h"

#include "core/EventLog.h"
#include "database/Schema.h"
#include "database/Sqlite.h"
#include "platform/Clock.h"

#include <QSqlQuery>

#include <algorithm>

namespace {

constexpr qsizetype WorthPacking = 200; ///< bytes

QByteArray Packed(const QByteArray& changes) {
    if (changes.size() < WorthPacking)
        return changes;
    QByteArray packed = qCompress(changes, 9);
    return packed.size() < changes.size() ? packed : changes;
}

QString DamagedText() {
    return QStringLiteral("What was written down of the edits is damaged.");
}

Result<QByteArray> Unpacked(const QByteArray& stored) {
    // Changes begin with a letter; the length in front of what is packed would be more than a gigabyte with it.
    if (stored.startsWith('T'))
        return stored;
    QByteArray changes = qUncompress(stored);
    return changes.isEmpty() ? Failure{DamagedText()} : Result<QByteArray>(std::move(changes));
}

constexpr const char* ActColumns = "SELECT ID,Moment,User,Name,Kind,Target FROM EditAct";

EditAct ActOf(const QSqlQuery& row) {
    EditAct act;
    act.id = row.value(0).toLongLong();
    act.moment = row.value(1).toString();
    act.user = row.value(2).toString();
    act.name = row.value(3).toString();
    act.kind = static_cast<EditAct::Kind>(std::clamp(row.value(4).toInt(), 0, 2));
    act.of = row.value(5).toLongLong();
    return act;
}

/// Which column of a table names its rows.
QLatin1StringView NameColumn(QStringView table) {
    if (table.compare(QLatin1String("Queue"), Qt::CaseInsensitive) == 0)
        return QLatin1StringView("q_Name");
    return table.compare(QLatin1String("Display"), Qt::CaseInsensitive) == 0 ? QLatin1StringView("d_Name")
                                                                             : QLatin1StringView();
}

} // namespace

EditHistory::EditHistory(const Sqlite& file, const Clock& clock, EventLog& log)
    : m_file(file)
    , m_clock(clock)
    , m_log(log) {}

void EditHistory::Open(const Result<>& tables) {
    const QString toldBefore = m_fault;
    Close();
    auto rows =
        m_file.Select({QString::fromLatin1(ActColumns) + QStringLiteral(" WHERE Changes IS NOT NULL ORDER BY ID")});
    if (!rows) {
        m_fault = tables ? rows.Error() : tables.Error();
        if (m_fault == toldBefore)
            return;
        m_log.WriteLog(QStringLiteral("Edits are not written down and cannot be undone: %1").arg(m_fault),
                       EventLog::Warning);
        return;
    }
    while (rows->next())
        Note(ActOf(*rows));
}

void EditHistory::Close() {
    m_undo.clear();
    m_redo.clear();
    m_lostNames.clear();
    m_namesUpTo = 0;
    m_fault.clear();
}

void EditHistory::Note(const EditAct& act) {
    const auto isIt = [&act](const EditAct& other) { return other.id == act.of; };
    if (act.kind == EditAct::Kind::Edit) {
        m_undo.push_back(act);
        m_redo.clear();
        return;
    }
    auto& from = act.kind == EditAct::Kind::Undo ? m_undo : m_redo;
    auto& to = act.kind == EditAct::Kind::Undo ? m_redo : m_undo;
    const auto found = std::find_if(from.begin(), from.end(), isIt);
    if (found == from.end())
        return;
    to.push_back(*found);
    from.erase(found);
}

Result<> EditHistory::Do(const QString& name, const Change& change) {
    if (m_isDoing)
        return change();
    if (!m_file.IsOpen())
        return Failure{QStringLiteral("Can't open Queue database!")};
    // What stood in the way when the store was opened may have gone.
    if (!m_fault.isEmpty()) {
        Open(OnMissing());
        OnChanged();
    }
    Transaction transaction(m_file, Transaction::Kind::Write);
    if (!transaction.Begun())
        return transaction.Begun();
    EditAct act;
    act.name = name;
    {
        const changeset::Recorder recorder(m_file);
        m_isDoing = true;
        const Result<> done = change();
        m_isDoing = false;
        if (!done)
            return done;
        const Result<QByteArray> changes = recorder.Changes();
        if (!changes)
            return Failure{changes.Error()};
        if (changes->isEmpty())
            return transaction.Commit();
        if (const Result<> written = Write(act, *changes); !written)
            return written;
    }
    if (const Result<> stored = transaction.Commit(); !stored)
        return stored;
    act.id = m_lastId;
    if (m_fault.isEmpty())
        Note(act);
    OnChanged();
    return {};
}

Result<> EditHistory::Write(EditAct act, const QByteArray& changes) {
    if (!m_fault.isEmpty())
        return {};
    auto written = m_file.Select(
        {QStringLiteral("INSERT INTO EditAct (Moment,User,Name,Kind,Target,Changes) VALUES (?,?,?,?,?,?)"),
         {m_clock.Now().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss")), m_user,
          act.name.isEmpty() ? QVariant() : act.name, static_cast<int>(act.kind),
          act.of == 0 ? QVariant() : QVariant(act.of), Packed(changes)}});
    if (!written)
        return Failure{written.Error()};
    m_lastId = written->lastInsertId().toLongLong();
    return {};
}

std::optional<EditAct> EditHistory::NextUndo() const {
    return m_undo.empty() ? std::nullopt : std::optional(m_undo.back());
}

std::optional<EditAct> EditHistory::NextRedo() const {
    return m_redo.empty() ? std::nullopt : std::optional(m_redo.back());
}

Result<QByteArray> EditHistory::ChangesOf(qint64 id) const {
    auto row = m_file.Select({QStringLiteral("SELECT Changes FROM EditAct WHERE ID=?"), {id}});
    if (!row)
        return Failure{row.Error()};
    if (!row->next())
        return Failure{QStringLiteral("This act is not in the history any more.")};
    return Unpacked(row->value(0).toByteArray());
}

Result<EditHistory::Step> EditHistory::Take(EditAct act, const QByteArray& changes) {
    Transaction transaction(m_file, Transaction::Kind::Write);
    if (!transaction.Begun())
        return Failure{transaction.Begun().Error()};
    const Result<std::optional<RowChange>> applied = changeset::Apply(m_file, changes);
    if (!applied)
        return Failure{applied.Error()};
    if (*applied) {
        if (act.kind == EditAct::Kind::Undo)
            m_undo.pop_back();
        else if (act.kind == EditAct::Kind::Redo)
            m_redo.pop_back();
        return Failure{Obstacle(**applied)};
    }
    if (const Result<> written = Write(act, changes); !written)
        return Failure{written.Error()};
    if (const Result<> stored = transaction.Commit(); !stored)
        return Failure{stored.Error()};
    act.id = m_lastId;
    Note(act);
    Result<std::vector<RowChange>> rows = changeset::Rows(m_file, changes);
    return Step{act.name, rows ? std::move(*rows) : std::vector<RowChange>()};
}

QString EditHistory::Obstacle(const RowChange& row) const {
    const QString name = NameOfRow(row.table, row.key);
    return QStringLiteral("It was not done: a row of table %1 (%2) was changed since by other means. Everything is as "
                          "it was.")
        .arg(row.table, name.isEmpty() ? QString::number(row.key) : name);
}

Result<EditHistory::Step> EditHistory::Back(std::vector<EditAct>& from, EditAct::Kind kind) {
    if (from.empty())
        return Failure{QStringLiteral("There is nothing to undo or to redo.")};
    const EditAct target = from.back();
    Result<QByteArray> changes = ChangesOf(target.id);
    if (changes && kind == EditAct::Kind::Undo)
        changes = changeset::Inverted(*changes);
    if (!changes) {
        // Those before it need not be lost with it.
        if (changes.Error() == DamagedText()) {
            from.pop_back();
            OnChanged();
        }
        return Failure{changes.Error()};
    }
    EditAct act;
    act.name = target.name;
    act.kind = kind;
    act.of = target.id;
    Result<Step> step = Take(act, *changes);
    OnChanged();
    return step;
}

Result<EditHistory::Step> EditHistory::Undo() {
    return Back(m_undo, EditAct::Kind::Undo);
}

Result<EditHistory::Step> EditHistory::Redo() {
    return Back(m_redo, EditAct::Kind::Redo);
}

Result<QByteArray> EditHistory::ChangesSince(qint64 id) const {
    auto rows = m_file.Select({QStringLiteral("SELECT Changes FROM EditAct WHERE ID>=? ORDER BY ID"), {id}});
    if (!rows)
        return Failure{rows.Error()};
    std::vector<QByteArray> all;
    while (rows->next()) {
        Result<QByteArray> changes = Unpacked(rows->value(0).toByteArray());
        if (!changes)
            return changes;
        all.push_back(std::move(*changes));
    }
    return changeset::Joined(all);
}

Result<std::vector<RowChange>> EditHistory::RowsSince(qint64 id) const {
    const Result<QByteArray> changes = ChangesSince(id);
    if (!changes)
        return Failure{changes.Error()};
    return changeset::Rows(m_file, *changes);
}

Result<EditHistory::Step> EditHistory::GoBack(qint64 id, const QString& name) {
    Result<QByteArray> joined = ChangesSince(id);
    if (joined)
        joined = changeset::Inverted(*joined);
    if (!joined)
        return Failure{joined.Error()};
    if (joined->isEmpty())
        return Failure{QStringLiteral("The description is what it was then.")};
    EditAct act;
    act.name = name;
    Result<Step> step = Take(act, *joined);
    OnChanged();
    return step;
}

Result<EditHistory::Step> EditHistory::TakeFrom(const QString& path, const QString& name) {
    Result<QByteArray> changes = changeset::Difference(m_file, path);
    if (changes)
        changes = changeset::Inverted(*changes);
    if (!changes)
        return Failure{changes.Error()};
    const qint64 before = m_lastId;
    const Result<> done = Do(name, [&]() -> Result<> {
        // The station's own writing stays as it is.
        if (const Result<> kept = m_file.Run({QStringLiteral("CREATE TEMP TABLE KeptInfo AS SELECT d_Id,LastInfo FROM "
                                                             "Display")});
            !kept)
            return kept;
        const Result<std::optional<RowChange>> applied = changeset::Apply(m_file, *changes);
        if (!applied)
            return Failure{applied.Error()};
        if (*applied)
            return Failure{Obstacle(**applied)};
        Result<> kept = m_file.Run({QStringLiteral("UPDATE Display SET LastInfo=(SELECT LastInfo FROM KeptInfo WHERE "
                                                   "KeptInfo.d_Id=Display.d_Id) WHERE d_Id IN (SELECT d_Id FROM "
                                                   "KeptInfo)")});
        return kept ? m_file.Run({QStringLiteral("DROP TABLE temp.KeptInfo")}) : kept;
    });
    if (!done)
        return Failure{done.Error()};
    if (m_fault.isEmpty() && m_lastId == before)
        return Failure{QStringLiteral("The description is what it was then.")};
    Result<std::vector<RowChange>> rows = changeset::Rows(m_file, *changes);
    return Step{name, rows ? std::move(*rows) : std::vector<RowChange>()};
}

Result<std::vector<RowChange>> EditHistory::CompareWith(const QString& path) const {
    Result<QByteArray> changes = changeset::Difference(m_file, path);
    if (changes)
        changes = changeset::Inverted(*changes);
    if (!changes)
        return Failure{changes.Error()};
    return changeset::Rows(m_file, *changes);
}

Result<std::vector<EditAct>> EditHistory::Read(int most) const {
    auto rows = m_file.Select({QString::fromLatin1(ActColumns) + QStringLiteral(" ORDER BY ID DESC LIMIT ?"), {most}});
    if (!rows)
        return Failure{rows.Error()};
    std::vector<EditAct> acts;
    while (rows->next())
        acts.push_back(ActOf(*rows));
    return acts;
}

Result<std::vector<RowChange>> EditHistory::Rows(qint64 id) const {
    const Result<QByteArray> changes = ChangesOf(id);
    if (!changes)
        return Failure{changes.Error()};
    return changeset::Rows(m_file, *changes);
}

void EditHistory::FindLostNames() const {
    auto rows = m_file.Select({QStringLiteral("SELECT ID,Changes FROM EditAct WHERE ID>? ORDER BY ID"), {m_namesUpTo}});
    while (rows && rows->next()) {
        m_namesUpTo = rows->value(0).toLongLong();
        const Result<QByteArray> changes = Unpacked(rows->value(1).toByteArray());
        const auto changed = changes ? changeset::Rows(m_file, *changes) : Failure{changes.Error()};
        if (!changed)
            continue;
        for (const RowChange& row : *changed) {
            const RowChange::Field* const name =
                row.kind == RowChange::Kind::Removed ? row.Find(NameColumn(row.table)) : nullptr;
            if (name)
                m_lostNames[{row.table.toLower(), row.key}] = name->before.toString();
        }
    }
}

QString EditHistory::NameOfRow(QStringView table, qint64 key) const {
    const QString column = NameColumn(table);
    if (column.isEmpty())
        return {};
    auto row = m_file.Select(
        {QStringLiteral("SELECT [%1] FROM [%2] WHERE [%3]=?").arg(column, table, schema::KeyOf(table)), {key}});
    if (row && row->next())
        return row->value(0).toString();
    FindLostNames();
    const auto lost = m_lostNames.find({table.toString().toLower(), key});
    return lost == m_lostNames.end() ? QString() : lost->second;
}
