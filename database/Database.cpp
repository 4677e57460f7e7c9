#include "database/Database.h"

#include "core/EventLog.h"
#include "core/IniUtility.h"
#include "database/RowKeys.h"
#include "database/Schema.h"
#include "database/StoreCheck.h"
#include "database/StoreKind.h"
#include "platform/Clock.h"
#include "platform/WholeFile.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QSqlError>
#include <QSqlRecord>

#include <optional>

#include <sys/stat.h>

namespace {

/// Keeps a store as it is while it is copied: rolls back first what a crash has left half done, then holds off whoever
/// wants to write. A file that is no store needs nothing.
class HeldStore {
public:
    explicit HeldStore(const QString& path) {
        if (StoreKindOfFile(path) != StoreKind::Sqlite)
            return;
        m_isHeld = m_file.Open(path) && m_file.Run({QStringLiteral("PRAGMA busy_timeout = 2000")}) &&
                   m_hold.emplace(m_file, Transaction::Kind::Read).Begun() &&
                   m_file.Run({QStringLiteral("SELECT COUNT(*) FROM sqlite_master")});
    }

    bool IsHeld() const { return m_isHeld; }

private:
    Sqlite m_file;
    std::optional<Transaction> m_hold;
    bool m_isHeld = true;
};

} // namespace

Database::Database(QString programFolder, IniUtility& ini, EventLog& log, const Clock& clock)
    : m_programFolder(std::move(programFolder))
    , m_ini(ini)
    , m_log(log)
    , m_clock(clock)
    , m_history(m_file, clock, log) {
    m_history.OnMissing = [this]() -> Result<> {
        const Result<> given = GiveRowKeys(m_file);
        return given ? MakeOwnTables() : given;
    };
}

void Database::OpenDatabase(const QString& path) {
    CloseDatabase();
    m_openError.clear();
    if (const Result<> connected = Connect(path); !connected) {
        CloseDatabase();
        m_openError = QStringLiteral("%1: %2").arg(path, connected.Error());
        m_log.WriteLog(QStringLiteral("Can't open Queue database!"), EventLog::Error);
        m_log.WriteLog(m_openError, EventLog::Error);
    }
}

Result<> Database::Connect(const QString& path) {
    if (!QFileInfo(path).isFile())
        return Failure{QStringLiteral("The file does not exist.")};
    if (const Result<> opened = m_file.Open(path); !opened)
        return opened;

    // All that can be refused is looked at before anything is written.
    if (const Result<> read = m_file.Run({QStringLiteral("SELECT COUNT(*) FROM sqlite_master")}); !read)
        return read;
    if (const Result<> checked = CheckTables(m_file); !checked)
        return checked;
    // EXTRA: a change that was reported lasts through a power cut even before the journal's removal is on the disk.
    for (const QString& setting :
         {QStringLiteral("PRAGMA journal_mode = DELETE"), QStringLiteral("PRAGMA synchronous = EXTRA"),
          QStringLiteral("PRAGMA foreign_keys = OFF")}) {
        if (const Result<> done = m_file.Run({setting}); !done)
            return done;
    }
    UpgradeDatabase();
    if (const Result<> given = GiveRowKeys(m_file); !given)
        m_log.WriteLog(QStringLiteral("The directions cannot be told apart yet: %1").arg(given.Error()),
                       EventLog::Warning);
    // A store that others made may lack indexes and the record of loads; without them it is slower, but whole.
    for (const QString& statement : schema::IndexStatements())
        (void)m_file.Run({statement});
    const Result<> made = MakeOwnTables();

    if (const Result<> read = ReadLastInfos(); !read)
        return read;
    struct stat info {};
    if (::stat(QFile::encodeName(path).constData(), &info) != 0)
        return Failure{qt_error_string()};
    m_device = info.st_dev;
    m_inode = info.st_ino;
    m_path = path;
    m_history.Open(made);
    return {};
}

Result<> Database::CheckPlace() const {
    struct stat info {};
    if (!IsOpen() || (::stat(QFile::encodeName(m_path).constData(), &info) == 0 && info.st_dev == m_device &&
                      info.st_ino == m_inode))
        return {};
    return Failure{QStringLiteral("The database %1 was moved, deleted or replaced while it was open.").arg(m_path)};
}

Result<> Database::ReadLastInfos() {
    auto rows = m_file.Select(
        {QStringLiteral("SELECT [d_Number],[LastInfo] FROM [Display] WHERE [d_Number] IS NOT NULL ORDER BY rowid")});
    if (!rows)
        return Failure{rows.Error()};
    while (rows->next()) {
        bool isNumber = false;
        const double key = rows->value(0).toDouble(&isNumber);
        if (isNumber && !m_lastInfos.contains(key))
            m_lastInfos.insert(key, rows->value(1).toString());
    }
    if (rows->lastError().isValid())
        return Failure{Sqlite::TextOf(rows->lastError())};
    return {};
}

void Database::UpgradeDatabase() {
    if (!IsOpen())
        return;
    const auto all = schema::AddedColumns();
    std::vector<schema::AddedColumn> columns(all.begin(), all.end());
    const QSqlRecord data = m_file.Connection().record(QStringLiteral("rData"));
    std::erase_if(columns,
                  [&data](const schema::AddedColumn& column) { return data.contains(QLatin1String(column.name)); });
    if (columns.empty())
        return;

    // Only `rData` is ever looked at, so a crash must not leave `qData` behind it.
    Transaction upgrade(m_file, Transaction::Kind::Write);
    if (!upgrade.Begun()) {
        m_log.WriteLog(QStringLiteral("The database is upgraded at the next start: %1").arg(upgrade.Begun().Error()),
                       EventLog::Warning);
        return;
    }
    for (const schema::AddedColumn& column : columns) {
        for (const QString& table : {QStringLiteral("rData"), QStringLiteral("qData")}) {
            const Result<> added =
                m_file.Run({QStringLiteral("ALTER TABLE %1 ADD [%2] %3;")
                                .arg(table, QLatin1String(column.name), QLatin1String(column.type))});
            if (!added)
                m_log.WriteLog(QStringLiteral("Table %1: %2").arg(table, added.Error()), EventLog::Error);
        }
        m_log.WriteLog(QStringLiteral("Add [%1] field to rData and qData").arg(QLatin1String(column.nameInLog)));
    }
    if (const Result<> committed = upgrade.Commit(); !committed)
        m_log.WriteLog(QStringLiteral("The database is upgraded at the next start: %1").arg(committed.Error()),
                       EventLog::Error);
}

void Database::CloseDatabase() {
    m_lastInfos.clear();
    m_path.clear();
    m_history.Close();
    m_file.Close();
}

void Database::BackupDatabase() {
    const QDate today = m_clock.Now().date();
    const int weekday = today.dayOfWeek() % 7 + 1;
    const QString date = today.toString(QStringLiteral("dd/MM/yyyy"));
    const QString section = QStringLiteral("Bakup");
    const QString key = QStringLiteral("item%1").arg(weekday);
    QString lastDate;
    if (m_ini.ReadIni(section, key, lastDate) && lastDate == date)
        return;
    m_ini.WriteIni(section, key, date);

    constexpr qint64 ChunkSize = 1 << 20;
    QFile original(m_programFolder + QStringLiteral("/Harbinet.mdb"));
    const QString path = QStringLiteral("%1/bak%2.mdb").arg(m_programFolder).arg(weekday);
    WholeFile copy(path);
    // The original is closed last: closing it would end the hold.
    const HeldStore held(original.fileName());
    if (!original.exists())
        return;
    const auto failed = [&](const QString& reason) {
        m_log.WriteLog(QStringLiteral("No backup %1 was made: %2").arg(path, reason), EventLog::Error);
    };
    if (!held.IsHeld())
        return failed(Sqlite::InUseText());
    if (!original.open(QIODevice::ReadOnly))
        return failed(original.errorString());
    if (const Result<> begun = copy.Begin(); !begun)
        return failed(begun.Error());
    qint64 copied = 0;
    while (copied < original.size()) {
        const QByteArray chunk = original.read(ChunkSize);
        if (chunk.isEmpty())
            return failed(original.errorString());
        if (!copy.Write(chunk))
            break;
        copied += chunk.size();
    }
    if (const Result<> written = copy.Finish(); !written)
        failed(written.Error());
}

Result<> Database::MakeOwnTables() const {
    for (const QString& statement : schema::RecordStatements()) {
        if (Result<> made = m_file.Run({statement}); !made)
            return made;
    }
    return {};
}

Result<> Database::Edit(const QString& act, const EditHistory::Change& change) {
    if (Result<> there = CheckPlace(); !there)
        return there;
    return m_history.Do(act, change);
}

Result<> Database::Edit(const QString& act, const std::vector<Statement>& statements) {
    return Edit(act, [&]() -> Result<> {
        for (const Statement& statement : statements) {
            if (Result<> done = m_file.Run(statement); !done)
                return done;
        }
        return {};
    });
}

Result<> Database::EmptyDatabase() {
    const std::vector<Statement> statements = {
        {QStringLiteral("DELETE FROM [Queue-Display]")},
        {QStringLiteral("DELETE FROM Display")},
        {QStringLiteral("DELETE FROM Queue")},
        {QStringLiteral("DELETE FROM Hub")},
        {QStringLiteral("DELETE FROM [Info-direction]")},
        {QStringLiteral("DELETE FROM ScanPlan")},
        {QStringLiteral("DELETE FROM rData")},
        {QStringLiteral("DELETE FROM qData")},
    };
    return Edit(QStringLiteral("Empty Database"), statements);
}

Result<> Database::CreateEmpty(const QString& path) {
    const Failure exists{QStringLiteral("%1: The file exists already.").arg(path)};
    if (QFileInfo::exists(path))
        return exists;
    const QString temporary = QStringLiteral("%1.new-%2").arg(path).arg(QCoreApplication::applicationPid());
    QFile::remove(temporary);
    std::vector<Statement> statements;
    for (const QString& text : schema::CreateStatements())
        statements.push_back({text});
    Sqlite file;
    Result<> made = file.Open(temporary, Sqlite::Mode::Create);
    if (made)
        made = file.Run({QStringLiteral("PRAGMA synchronous = FULL")});
    if (made)
        made = file.RunTogether(statements);
    file.Close();
    // The renaming itself refuses to replace a file that came up meanwhile.
    if (made && QFile::rename(temporary, path))
        return FlushFolderOf(path);
    QFile::remove(temporary);
    if (made && QFileInfo::exists(path))
        return exists;
    return Failure{
        QStringLiteral("%1: %2").arg(path, made ? QStringLiteral("The file cannot be made.") : made.Error())};
}
