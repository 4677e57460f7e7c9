#include "database/Sqlite.h"

#include <QFileInfo>
#include <QSqlDriver>
#include <QSqlError>
#include <QUrl>
#include <QUuid>

#include <utility>

#include <sqlite3.h>

namespace {

/// Nothing of the file's own runs. Triggers of the connection (TEMP) do.
bool DisarmSchema(sqlite3* file) {
    return file && sqlite3_db_config(file, SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr) == SQLITE_OK &&
           sqlite3_db_config(file, SQLITE_DBCONFIG_ENABLE_VIEW, 0, nullptr) == SQLITE_OK &&
           sqlite3_db_config(file, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr) == SQLITE_OK &&
           sqlite3_db_config(file, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr) == SQLITE_OK;
}

} // namespace

Result<> Sqlite::Open(const QString& path, Mode mode) {
    Close();
    // A name of its own lets any number be open.
    m_connection =
        QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QUuid::createUuid().toString(QUuid::WithoutBraces));
    m_connection.setConnectOptions(QStringLiteral("QSQLITE_OPEN_URI;QSQLITE_BUSY_TIMEOUT=%1").arg(BusyMilliseconds));
    const QByteArray url = QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath()).toEncoded();
    m_connection.setDatabaseName(QString::fromLatin1(url) +
                                 (mode == Mode::Create ? QStringLiteral("?mode=rwc") : QStringLiteral("?mode=rw")));
    if (!m_connection.open()) {
        const Failure failure{TextOf(m_connection.lastError())};
        Close();
        return failure;
    }
    if (!DisarmSchema(Handle())) {
        Close();
        return Failure{QStringLiteral("The library of the database cannot be set up.")};
    }
    return {};
}

sqlite3* Sqlite::Handle() const {
    if (!IsOpen())
        return nullptr;
    const QVariant handle = m_connection.driver()->handle();
    if (!handle.isValid() || qstrcmp(handle.typeName(), "sqlite3*") != 0)
        return nullptr;
    return *static_cast<sqlite3* const*>(handle.constData());
}

void Sqlite::Close() {
    if (!m_connection.isValid())
        return;
    const QString name = m_connection.connectionName();
    m_connection.close();
    m_connection = QSqlDatabase();
    QSqlDatabase::removeDatabase(name);
}

QString Sqlite::InUseText() {
    return QStringLiteral("The database is in use by another program.");
}

QString Sqlite::TextOf(const QSqlError& error) {
    // The low byte is the kind, whatever stands above it.
    switch (error.nativeErrorCode().toInt() & 0xFF) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        return InUseText();
    case SQLITE_READONLY:
        return QStringLiteral("The database cannot be written to: the file or its folder is read-only.");
    case SQLITE_FULL:
        return QStringLiteral("The disk is full.");
    default:
        return error.databaseText();
    }
}

bool Sqlite::IsInUse() const {
    if (!IsOpen())
        return false;
    QSqlQuery query(m_connection);
    query.exec(QStringLiteral("PRAGMA busy_timeout = 0"));
    const bool isRead = query.exec(QStringLiteral("SELECT COUNT(*) FROM sqlite_master"));
    const bool isInUse = !isRead && TextOf(query.lastError()) == InUseText();
    query.exec(QStringLiteral("PRAGMA busy_timeout = %1").arg(BusyMilliseconds));
    return isInUse;
}

Result<QSqlQuery> Sqlite::Select(const Statement& statement) const {
    if (!IsOpen())
        return Failure{QStringLiteral("The database is closed.")};
    if (m_isWithin && !m_lostBy.isEmpty())
        return Failure{m_lostBy};
    QSqlQuery query(m_connection);
    query.setForwardOnly(true);
    bool isGood = query.prepare(statement.text);
    for (const QVariant& value : statement.values)
        query.addBindValue(value);
    isGood = isGood && query.exec();
    if (!isGood) {
        const QString error = TextOf(query.lastError());
        if (sqlite3* const file = Handle(); m_isWithin && file && sqlite3_get_autocommit(file) != 0)
            m_lostBy = error;
        return Failure{error};
    }
    return Result<QSqlQuery>(std::move(query));
}

Result<> Sqlite::Run(const Statement& statement) const {
    const auto query = Select(statement);
    return query ? Result<>() : Failure{query.Error()};
}

Result<> Sqlite::RunTogether(const std::vector<Statement>& statements) const {
    Transaction transaction(*this, Transaction::Kind::Write);
    if (!transaction.Begun())
        return transaction.Begun();
    for (const Statement& statement : statements) {
        if (const Result<> done = Run(statement); !done)
            return done;
    }
    return transaction.Commit();
}

Transaction::Transaction(const Sqlite& file, Kind kind)
    : m_file(file)
    , m_begun(file.Run({kind == Kind::Write ? QStringLiteral("BEGIN IMMEDIATE") : QStringLiteral("BEGIN")}))
    , m_isOpen(static_cast<bool>(m_begun)) {
    if (m_isOpen)
        m_file.m_isWithin = true;
}

Transaction::~Transaction() {
    if (!m_isOpen)
        return;
    m_file.m_isWithin = false;
    if (std::exchange(m_file.m_lostBy, {}).isEmpty())
        (void)m_file.Run({QStringLiteral("ROLLBACK")});
}

Result<> Transaction::Commit() {
    Result<> done = m_file.Run({QStringLiteral("COMMIT")});
    m_isOpen = !done;
    m_file.m_isWithin = m_isOpen;
    return done;
}
