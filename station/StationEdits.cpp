// Edits of the description: undone, redone, taken back as a whole.

#include "platform/DelimitedText.h"
#include "platform/WholeFile.h"
#include "station/EditWords.h"
#include "station/Station.h"

#include <QDir>
#include <QFileInfo>

void Station::JoinHistory() {
    database.History().SetUser(m_user);
    database.History().OnChanged = [this] { Q_EMIT EditsChanged(); };
}

QString Station::NextUndo() const {
    const std::optional<EditAct> act = database.History().NextUndo();
    return act ? editwords::Title(database.History(), *act) : QString();
}

QString Station::NextRedo() const {
    const std::optional<EditAct> act = database.History().NextRedo();
    return act ? editwords::Title(database.History(), *act) : QString();
}

Outcome Station::Stepped(const Result<EditHistory::Step>& step) {
    if (!step)
        return Outcome::Failed(step.Error());
    FollowRows(step->rows);
    return Outcome::Done();
}

void Station::FollowRows(const std::vector<RowChange>& rows) {
    const bool hasDirections = std::any_of(rows.begin(), rows.end(), [](const RowChange& row) {
        return row.table.compare(QStringLiteral("Info-Direction"), Qt::CaseInsensitive) == 0;
    });
    // As when they are stored: the matrix shows the model.
    if (hasDirections) {
        if (const Result<> loaded = reload.ReloadDirections(); !loaded)
            log.WriteLog(loaded.Error(), EventLog::Error);
    }
    NoteStoreChanged();
    const auto there = std::find_if(rows.begin(), rows.end(),
                                    [](const RowChange& row) { return row.kind != RowChange::Kind::Removed; });
    const RowChange shown = there != rows.end() ? *there : rows.empty() ? RowChange() : rows.front();
    Q_EMIT RowsChanged(shown.table, shown.key, shown.fields.empty() ? QString() : shown.fields.front().column);
}

Result<> Station::UsableStore() const {
    if (!database.IsOpen())
        return Failure{QStringLiteral("Can't open Queue database!")};
    return database.CheckPlace();
}

Outcome Station::UndoEdit() {
    const Result<> usable = UsableStore();
    return usable ? Stepped(database.History().Undo()) : Outcome::Failed(usable.Error());
}

Outcome Station::RedoEdit() {
    const Result<> usable = UsableStore();
    return usable ? Stepped(database.History().Redo()) : Outcome::Failed(usable.Error());
}

QCoro::Task<bool> Station::CopyStore(QString before) {
    const Result<> copied = copies.Take(before);
    if (copied) {
        Q_EMIT EditsChanged();
        co_return true;
    }
    log.WriteLog(QStringLiteral("No copy of the database was made: %1").arg(copied.Error()), EventLog::Warning);
    const QString question = tr("No copy of the database could be made first: %1\n\nGo on all the same?");
    const bool goesOn = co_await dialogs.AskYesNo(BoxKind::Exclamation, question.arg(copied.Error()));
    co_return goesOn;
}

QCoro::Task<Outcome> Station::EmptyStore() {
    if (const Result<> usable = UsableStore(); !usable)
        co_return Outcome::Failed(usable.Error());
    const bool goesOn = co_await CopyStore(QStringLiteral("empty"));
    if (!goesOn)
        co_return Outcome::Cancelled();
    const Result<> emptied = database.EmptyDatabase();
    if (!emptied)
        co_return Outcome::Failed(emptied.Error());
    Q_EMIT RowsChanged({}, 0, {});
    co_return Outcome::Done();
}

QCoro::Task<Outcome> Station::GoBackTo(SiteEvent event) {
    if (const Result<> usable = UsableStore(); !usable)
        co_return Outcome::Failed(usable.Error());
    if (event.kind == SiteEvent::Kind::Load)
        co_return Outcome::Refused(tr("A load cannot be taken back: the devices hold what they were sent."));
    const bool goesOn = co_await CopyStore(QStringLiteral("going back"));
    if (!goesOn)
        co_return Outcome::Cancelled();
    if (event.kind == SiteEvent::Kind::Copy)
        co_return Stepped(database.History().TakeFrom(event.path, tr("go back to the copy of %1").arg(event.moment)));
    co_return Stepped(
        database.History().GoBack(event.act, tr("go back to before \"%1\" of %2").arg(event.what, event.moment)));
}

Outcome Station::MakeStoreFrom(const QString& source, const QString& target, StoreTemplate::Shift shift) {
    const Result<> made = StoreTemplate(source).Make(target, shift);
    if (!made)
        return Outcome::Failed(made.Error());
    QStringList lines{tr("%1 is made.").arg(target)};
    const QDir from(QFileInfo(source).absolutePath() + QStringLiteral("/Data"));
    const QDir to(forms.DataFolder());
    const bool isSame = from.canonicalPath() == to.canonicalPath();
    const QStringList names =
        isSame
            ? QStringList()
            : from.entryList({QStringLiteral("*.rtf"), QStringLiteral("*.bin"), QStringLiteral("*.bmp")}, QDir::Files);
    QStringList kept;
    QStringList failed;
    for (const QString& name : names) {
        if (QFileInfo::exists(to.filePath(name)))
            kept += name;
        else if (!QFile::copy(from.filePath(name), to.filePath(name)))
            failed += name;
    }
    const qsizetype taken = names.size() - kept.size() - failed.size();
    if (taken > 0)
        lines += tr("%n form(s) and logo(s) were taken over.", nullptr, static_cast<int>(taken));
    if (!kept.isEmpty())
        lines += tr("There were others of these names, which stay: %1").arg(kept.join(QStringLiteral(", ")));
    if (!failed.isEmpty())
        lines += tr("These could not be copied: %1").arg(failed.join(QStringLiteral(", ")));
    if (taken > 0)
        NoteFormsChanged();
    return Outcome::Done(BoxKind::Information, lines.join(u'\n'));
}

QCoro::Task<Outcome> Station::ImportList(lists::Incoming incoming) {
    if (const Result<> usable = UsableStore(); !usable)
        co_return Outcome::Failed(usable.Error());
    const bool goesOn = co_await CopyStore(QStringLiteral("import"));
    if (!goesOn)
        co_return Outcome::Cancelled();
    const std::optional<EditAct> before = database.History().NextUndo();
    const lists::Import import = lists::Take(database, incoming);
    if (!import.error.isEmpty())
        co_return Outcome::Failed(import.error);
    if (!import.faults.empty())
        co_return Outcome::Failed(tr("Nothing was imported: %1").arg(import.faults.front().why));
    const std::optional<EditAct> act = database.History().NextUndo();
    const Result<std::vector<RowChange>> rows = act && (!before || before->id != act->id)
                                                    ? database.History().Rows(act->id)
                                                    : Result<std::vector<RowChange>>(std::vector<RowChange>());
    if (rows)
        FollowRows(*rows);
    co_return Outcome::Done(BoxKind::Information, tr("%1: %2 rows added, %3 rows taken over that were there.")
                                                      .arg(lists::NameOf(incoming.list))
                                                      .arg(import.added)
                                                      .arg(import.changed));
}

Outcome Station::ExportList(lists::List list, const QString& path) {
    const Result<std::vector<QStringList>> table = lists::Export(database, list);
    if (!table)
        return Outcome::Failed(table.Error());
    const Result<> written = WriteWhole(path, delimited::Write(*table));
    return written ? Outcome::Done(BoxKind::Information, tr("Saved to %1.").arg(path))
                   : Outcome::Failed(written.Error());
}
