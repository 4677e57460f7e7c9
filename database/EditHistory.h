#pragma once

#include "database/ChangeSet.h"

#include <QString>

#include <functional>
#include <map>
#include <optional>
#include <vector>

class Clock;
class EventLog;
class Sqlite;

/// One act of a user on the description of the installation, whatever rows it touched.
struct EditAct {
    enum class Kind : quint8 {
        Edit, ///< typed, clicked, dragged, imported, gone back
        Undo, ///< of an earlier act
        Redo, ///< of one that was undone
    };

    qint64 id = 0;
    QString moment; ///< "yyyy-MM-dd hh:mm:ss", local time
    QString user;
    QString name; ///< "remove all counters of Gửi tiền", Unicode; empty where the changes themselves say it
    Kind kind = Kind::Edit;
    qint64 of = 0; ///< the act that was undone or redone
};

/// What was done to the description of the installation, act by act, and the way back.
///
///     EditAct  ID, Moment, User, Name, Kind, Target: as in `EditAct`, where Target is `of`
///              Changes: see `changeset`, compressed if that is shorter (`qCompress`; what is not begins with "T")
///
/// An act and its row are one transaction: a kill leaves both or neither. Rows are only ever added; undoing is an act
/// of its own. What can be undone is what stood in the store when it was opened and what was done here since; acts of
/// another station on the same store are in the history, but are its own to undo.
class EditHistory {
public:
    using Change = std::function<Result<>()>;

    /// What a step back or forth has done.
    struct Step {
        QString name;                ///< of the act, see `EditAct`
        std::vector<RowChange> rows; ///< as they were changed now
    };

    /// The references must outlive the history. `file` is the open store.
    EditHistory(const Sqlite& file, const Clock& clock, EventLog& log);

    /// Who works here, for the acts to come.
    void SetUser(const QString& user) { m_user = user; }

    /// Takes over what the store holds. To be called after the store was opened. @param tables whether its tables could
    /// be made.
    void Open(const Result<>& tables);
    /// Forgets it.
    void Close();

    /// Does a change of the store as one act: whole or, where it fails, not at all. Nothing that `change` does may
    /// begin a transaction. An act within an act is part of the outer one. A change that leaves the rows as they were
    /// leaves no act.
    Result<> Do(const QString& name, const Change& change);

    /// The act that `Undo`, `Redo` take next; nothing if there is none.
    std::optional<EditAct> NextUndo() const;
    std::optional<EditAct> NextRedo() const;

    /// Takes the last act back that was not yet taken back, does the last one again that was. If another program has
    /// changed one of its rows since, nothing is done, and the act cannot be taken back or done again any more.
    Result<Step> Undo();
    Result<Step> Redo();

    /// Makes the description what it was before an act, as one new act. @param id of the act.
    Result<Step> GoBack(qint64 id, const QString& name);

    /// Makes the description what another store holds, as one new act.
    Result<Step> TakeFrom(const QString& path, const QString& name);
    /// What would be changed by that.
    Result<std::vector<RowChange>> CompareWith(const QString& path) const;

    /// The newest acts first, at most `most` of them.
    Result<std::vector<EditAct>> Read(int most) const;
    /// What an act has changed.
    Result<std::vector<RowChange>> Rows(qint64 id) const;

    /// What that act and all later ones have changed together.
    Result<std::vector<RowChange>> RowsSince(qint64 id) const;

    /// The name of a service or an object, VNI: the one it has now or, if it is gone, the one it had last; empty if
    /// nobody knows. @param table "Queue" or "Display".
    QString NameOfRow(QStringView table, qint64 key) const;

    /// Why acts are not written down, for a user; empty if they are.
    const QString& Fault() const { return m_fault; }

    /// Makes what the history needs of tables, where it could not be made when the store was opened.
    std::function<Result<>()> OnMissing = [] { return Result<>(); };
    /// Called when there is something new to undo or to redo.
    std::function<void()> OnChanged = [] {};

private:
    Result<> Write(EditAct act, const QByteArray& changes);
    Result<QByteArray> ChangesOf(qint64 id) const;
    Result<QByteArray> ChangesSince(qint64 id) const;
    Result<Step> Take(EditAct act, const QByteArray& changes);
    Result<Step> Back(std::vector<EditAct>& from, EditAct::Kind kind);
    void Note(const EditAct& act);
    void FindLostNames() const;
    QString Obstacle(const RowChange& row) const;

    const Sqlite& m_file;
    const Clock& m_clock;
    EventLog& m_log;
    QString m_user;
    QString m_fault;
    bool m_isDoing = false;
    qint64 m_lastId = 0; ///< of the last act that was done here
    std::vector<EditAct> m_undo;
    std::vector<EditAct> m_redo;

    using Place = std::pair<QString, qint64>;
    mutable std::map<Place, QString> m_lostNames; ///< of rows that were removed
    mutable qint64 m_namesUpTo = 0;               ///< the last act whose removed rows are among them
};
