#pragma once

#include "database/EditHistory.h"
#include "database/Sqlite.h"

#include <QHash>

#include <vector>

class Clock;
class EventLog;
class IniUtility;

/// The store that describes the installation and holds the ticket records: one SQLite file and the one connection to
/// it.
///
/// Nothing is written behind the file's back: the roll-back journal is the only file beside it, and only while a change
/// is on its way. A store that another program holds locked is waited for up to 25 seconds.
class Database {
public:
    /// The references must outlive the database. `ini` is the settings file, for the marks of the backups.
    Database(QString programFolder, IniUtility& ini, EventLog& log, const Clock& clock);

    /// Opens the store at `path`, closing the one that is open, and upgrades it. A file that is missing, no SQLite file
    /// or without one of the station's tables or columns is left as it is: the log gets "Can't open Queue database!"
    /// and the reason, and the database stays closed.
    void OpenDatabase(const QString& path);

    /// Adds the columns DateTimeFinish, Action, Call and TicketFlag to `rData` and `qData` where `rData` lacks them,
    /// and logs each. A statement that fails does not stop the others. All of it is one transaction.
    void UpgradeDatabase();

    /// Nothing happens if it is closed. No query made on it may be in use any more.
    void CloseDatabase();

    /// Copies Harbinet.mdb of the program folder (whatever file was opened) to bak1.mdb (Sunday) to bak7.mdb, once a
    /// day: the key item1 to item7 of [Bakup] holds the date of the copy, and is written first, so that a copy that
    /// fails is not tried again that day. A failure is in the log; last week's copy then stays. To be called after
    /// `CloseDatabase`.
    void BackupDatabase();

    bool IsOpen() const { return m_file.IsOpen(); }
    /// Fails if the open file has another name now, or if its name is another file's: what is written would be lost.
    Result<> CheckPlace() const;
    /// The open file, empty while closed.
    QString Path() const { return m_path; }
    /// Why the last `OpenDatabase` failed, for a user to read; empty if it did not.
    QString OpenError() const { return m_openError; }
    /// The open file itself, for transactions and statements that need their query.
    const Sqlite& File() const { return m_file; }

    /// `LastInfo` of the first object with that `d_Number`, as it was when the store was opened; empty if there is
    /// none, and while the database is closed.
    QString LastInfo(quint8 number) const { return m_lastInfos.value(number); }

    /// These are those of `Sqlite`.
    Result<> Run(const Statement& statement) const { return m_file.Run(statement); }
    Result<> RunTogether(const std::vector<Statement>& statements) const { return m_file.RunTogether(statements); }
    Result<QSqlQuery> Select(const Statement& statement) const { return m_file.Select(statement); }

    /// Changes the description of the installation as one act that can be undone, see `EditHistory::Do`. Whatever a
    /// user changes goes this way. Fails if the file is closed or not where it was opened (`CheckPlace`).
    Result<> Edit(const QString& act, const EditHistory::Change& change);
    /// The same for statements, of which all are run or none.
    Result<> Edit(const QString& act, const std::vector<Statement>& statements);
    EditHistory& History() { return m_history; }
    const EditHistory& History() const { return m_history; }

    /// Makes the tables of the program's own where they are missing, see `schema::RecordStatements`. Opening does so; a
    /// store that could not be written to then may take them later.
    Result<> MakeOwnTables() const;

    /// Deletes all rows of all tables but `Message`, or none if one cannot be emptied. The model is not touched.
    Result<> EmptyDatabase();

    /// Makes an empty store of the full schema at `path`, whole or not at all. An existing file is never touched: it is
    /// an error.
    static Result<> CreateEmpty(const QString& path);

private:
    Result<> Connect(const QString& path);
    Result<> ReadLastInfos();

    QString m_programFolder;
    IniUtility& m_ini;
    EventLog& m_log;
    const Clock& m_clock;

    Sqlite m_file;
    EditHistory m_history;
    QString m_path;
    quint64 m_device = 0;
    quint64 m_inode = 0;
    QString m_openError;
    QHash<double, QString> m_lastInfos; ///< by `d_Number`
};
