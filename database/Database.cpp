#include "database/Database.h"

#include "core/EventLog.h"
#include "core/IniUtility.h"
#include "database/Schema.h"
#include "database/StoreKind.h"
#include "platform/Clock.h"
#include "platform/WholeFile.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QSqlError>
#include <QSqlRecord>
#include <QUrl>
#include <QUuid>

namespace {

Database::Error RunOn(const QSqlDatabase& connection, const Statement& statement) {
    if (!connection.isOpen())
        return QStringLiteral("The database is closed.");
    QSqlQuery query(connection);
    bool isGood = query.prepare(statement.text);
    for (const QVariant& value : statement.values)
        query.addBindValue(value);
    isGood = isGood && query.exec();
    if (isGood)
        return std::nullopt;
    return query.lastError().databaseText();
}

Database::Error RunTogetherOn(const QSqlDatabase& connection, const std::vector<Statement>& statements) {
    // Immediate: whoever else writes is waited for here, where nothing has been done yet.
    if (const auto error = RunOn(connection, {QStringLiteral("BEGIN IMMEDIATE")}))
        return error;
    for (const Statement& statement : statements) {
        if (const auto error = RunOn(connection, statement)) {
            RunOn(connection, {QStringLiteral("ROLLBACK")});
            return error;
        }
    }
    const auto error = RunOn(connection, {QStringLiteral("COMMIT")});
    if (error)
        RunOn(connection, {QStringLiteral("ROLLBACK")});
    return error;
}

/// A connection that never makes a file. Its name is its own, so that any number can be open.
QSqlDatabase OpenFile(const QString& path, const QString& mode) {
    QSqlDatabase connection =
        QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QUuid::createUuid().toString(QUuid::WithoutBraces));
    connection.setConnectOptions(QStringLiteral("QSQLITE_OPEN_URI;QSQLITE_BUSY_TIMEOUT=25000"));
    const QByteArray url = QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath()).toEncoded();
    connection.setDatabaseName(QString::fromLatin1(url) + QStringLiteral("?mode=") + mode);
    connection.open();
    return connection;
}

void DropConnection(QSqlDatabase& connection) {
    const QString name = connection.connectionName();
    connection.close();
    connection = QSqlDatabase();
    QSqlDatabase::removeDatabase(name);
}

/// Keeps a store as it is while it is copied: rolls back first what a crash has left half done, then holds off whoever
/// wants to write. A file that is no store needs nothing.
class HeldStore {
public:
    explicit HeldStore(const QString& path) {
        if (StoreKindOfFile(path) != StoreKind::Sqlite)
            return;
        m_connection = OpenFile(path, QStringLiteral("rw"));
        m_isHeld = m_connection.isOpen() && !RunOn(m_connection, {QStringLiteral("PRAGMA busy_timeout = 2000")}) &&
                   !RunOn(m_connection, {QStringLiteral("BEGIN")}) &&
                   !RunOn(m_connection, {QStringLiteral("SELECT COUNT(*) FROM sqlite_master")});
    }
    HeldStore(const HeldStore&) = delete;
    HeldStore& operator=(const HeldStore&) = delete;
    ~HeldStore() {
        if (m_connection.isValid())
            DropConnection(m_connection);
    }

    bool IsHeld() const { return m_isHeld; }

private:
    QSqlDatabase m_connection;
    bool m_isHeld = true;
};

struct AddedColumn {
    QString name;
    QString kind;
    QString nameInLog;
};

} // namespace

Database::Database(QString programFolder, IniUtility& ini, EventLog& log, const Clock& clock)
    : m_programFolder(std::move(programFolder))
    , m_ini(ini)
    , m_log(log)
    , m_clock(clock) {}

Database::~Database() {
    CloseDatabase();
}

void Database::OpenDatabase(const QString& path) {
    CloseDatabase();
    m_openError.clear();
    if (const Error error = Connect(path)) {
        CloseDatabase();
        m_openError = QStringLiteral("%1: %2").arg(path, *error);
        m_log.WriteLog(QStringLiteral("Can't open Queue database!"), EventLog::Error);
        m_log.WriteLog(m_openError, EventLog::Error);
    }
}

Database::Error Database::Connect(const QString& path) {
    if (!QFileInfo(path).isFile())
        return QStringLiteral("The file does not exist.");
    m_connection = OpenFile(path, QStringLiteral("rw"));
    if (!m_connection.isOpen())
        return m_connection.lastError().databaseText();

    // All that can be refused is looked at before anything is written.
    if (const Error error = Run({QStringLiteral("SELECT COUNT(*) FROM sqlite_master")}))
        return error;
    const QStringList tables = m_connection.tables();
    for (const schema::Table& table : schema::Tables()) {
        const QString name = QString::fromLatin1(table.name);
        if (!tables.contains(name, Qt::CaseInsensitive))
            return QStringLiteral("The file has no table %1.").arg(name);
    }
    for (const QString& setting :
         {QStringLiteral("PRAGMA journal_mode = DELETE"), QStringLiteral("PRAGMA synchronous = FULL"),
          QStringLiteral("PRAGMA foreign_keys = OFF")}) {
        if (const Error error = Run({setting}))
            return error;
    }
    UpgradeDatabase();
    // A store that others made may lack indexes; without them it is slower, but whole.
    for (const QString& statement : schema::IndexStatements())
        Run({statement});

    if (const Error error = ReadLastInfos())
        return error;
    m_path = path;
    return std::nullopt;
}

Database::Error Database::ReadLastInfos() {
    QString error;
    auto rows = Select({QStringLiteral("SELECT * FROM [Display] ORDER BY rowid")}, error);
    if (!rows)
        return error;
    // A store that others made may lack either column.
    const int number = rows->record().indexOf(QStringLiteral("d_Number"));
    const int text = rows->record().indexOf(QStringLiteral("LastInfo"));
    while (number >= 0 && text >= 0 && rows->next()) {
        bool isNumber = false;
        const double key = rows->value(number).toDouble(&isNumber);
        if (isNumber && !rows->isNull(number) && !m_lastInfos.contains(key))
            m_lastInfos.insert(key, rows->value(text).toString());
    }
    if (rows->lastError().isValid())
        return rows->lastError().databaseText();
    return std::nullopt;
}

void Database::UpgradeDatabase() {
    if (!IsOpen())
        return;
    std::vector<AddedColumn> columns = {
        {QStringLiteral("DateTimeFinish"), QStringLiteral("Date"), QStringLiteral("DateTimeFinish")},
        {QStringLiteral("Action"), QStringLiteral("smallint"), QStringLiteral("Act")},
        {QStringLiteral("Call"), QStringLiteral("smallint"), QStringLiteral("Call")},
        {QStringLiteral("TicketFlag"), QStringLiteral("Bit"), QStringLiteral("TicketFlag")},
    };
    const QSqlRecord data = m_connection.record(QStringLiteral("rData"));
    std::erase_if(columns, [&data](const AddedColumn& column) { return data.contains(column.name); });
    if (columns.empty())
        return;

    // Only `rData` is ever looked at, so a crash must not leave `qData` behind it.
    if (const Error error = Run({QStringLiteral("BEGIN IMMEDIATE")})) {
        m_log.WriteLog(QStringLiteral("The database is upgraded at the next start: %1").arg(*error), EventLog::Warning);
        return;
    }
    for (const AddedColumn& column : columns) {
        for (const QString& table : {QStringLiteral("rData"), QStringLiteral("qData")})
            Run({QStringLiteral("ALTER TABLE %1 ADD [%2] %3;").arg(table, column.name, column.kind)});
        m_log.WriteLog(QStringLiteral("Add [%1] field to rData and qData").arg(column.nameInLog));
    }
    if (Run({QStringLiteral("COMMIT")}))
        Run({QStringLiteral("ROLLBACK")});
}

void Database::CloseDatabase() {
    m_lastInfos.clear();
    m_path.clear();
    if (m_connection.isValid())
        DropConnection(m_connection);
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
    if (!held.IsHeld() || !original.open(QIODevice::ReadOnly) || !copy.Begin())
        return;
    qint64 copied = 0;
    while (copied < original.size()) {
        const QByteArray chunk = original.read(ChunkSize);
        if (chunk.isEmpty())
            return;
        if (!copy.Write(chunk))
            break;
        copied += chunk.size();
    }
    if (const Result<> written = copy.Finish(); !written)
        m_log.WriteLog(written.Error(), EventLog::Error);
}

Database::Error Database::Run(const Statement& statement) {
    return RunOn(m_connection, statement);
}

Database::Error Database::RunTogether(const std::vector<Statement>& statements) {
    return RunTogetherOn(m_connection, statements);
}

std::optional<QSqlQuery> Database::Select(const Statement& statement, QString& error) const {
    if (!IsOpen()) {
        error = QStringLiteral("The database is closed.");
        return std::nullopt;
    }
    QSqlQuery query(m_connection);
    query.setForwardOnly(true);
    bool isGood = query.prepare(statement.text);
    for (const QVariant& value : statement.values)
        query.addBindValue(value);
    isGood = isGood && query.exec();
    if (!isGood) {
        error = query.lastError().databaseText();
        return std::nullopt;
    }
    return query;
}

Database::Error Database::EmptyDatabase() {
    return RunTogether({
        {QStringLiteral("DELETE FROM [Queue-Display]")},
        {QStringLiteral("DELETE FROM Display")},
        {QStringLiteral("DELETE FROM Queue")},
        {QStringLiteral("DELETE FROM Hub")},
        {QStringLiteral("DELETE FROM [Info-direction]")},
        {QStringLiteral("DELETE FROM ScanPlan")},
        {QStringLiteral("DELETE FROM rData")},
        {QStringLiteral("DELETE FROM qData")},
    });
}

Database::Error Database::CreateEmpty(const QString& path) {
    const QString exists = QStringLiteral("%1: The file exists already.").arg(path);
    if (QFileInfo::exists(path))
        return exists;
    const QString temporary = QStringLiteral("%1.new-%2").arg(path).arg(QCoreApplication::applicationPid());
    QFile::remove(temporary);
    QSqlDatabase connection = OpenFile(temporary, QStringLiteral("rwc"));
    Error error;
    if (connection.isOpen()) {
        std::vector<Statement> statements;
        for (const QString& text : schema::CreateStatements())
            statements.push_back({text});
        RunOn(connection, {QStringLiteral("PRAGMA synchronous = FULL")});
        error = RunTogetherOn(connection, statements);
    } else {
        error = connection.lastError().databaseText();
    }
    DropConnection(connection);
    // The renaming itself refuses to replace a file that came up meanwhile.
    if (!error && !QFile::rename(temporary, path))
        error = QFileInfo::exists(path) ? exists : QStringLiteral("The file cannot be made.");
    if (error) {
        QFile::remove(temporary);
        return error->startsWith(path) ? error : QStringLiteral("%1: %2").arg(path, *error);
    }
    FlushFolderOf(path);
    return std::nullopt;
}
