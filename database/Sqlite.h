#pragma once

#include "platform/Result.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QString>
#include <QVariant>

#include <vector>

struct sqlite3;

/// A statement with the values for its question marks.
struct Statement {
    QString text;
    QVariantList values = {};
};

/// One connection to one SQLite file. What a file from elsewhere wants to run is not run: its triggers, its views, and
/// functions of its schema that could do harm.
///
/// A failure is what SQLite says; while closed it is "The database is closed."
class Sqlite {
public:
    enum class Mode {
        Existing, ///< a file that is missing is a failure
        Create,   ///< a file that is missing is made
    };

    Sqlite() = default;
    ~Sqlite() { Close(); }
    Sqlite(const Sqlite&) = delete;
    Sqlite& operator=(const Sqlite&) = delete;

    /// How long another program's writing is waited for: no longer than a user takes for an answer.
    static constexpr int BusyMilliseconds = 300;

    /// Opens the file, closing the one that is open. Where another program holds it for longer than `BusyMilliseconds`,
    /// here or later, that is a failure: `IsInUse`.
    Result<> Open(const QString& path, Mode mode = Mode::Existing);
    /// Nothing happens if it is closed. No query may be in use any more.
    void Close();
    bool IsOpen() const { return m_connection.isOpen(); }
    /// Invalid while closed.
    const QSqlDatabase& Connection() const { return m_connection; }

    /// The library's own handle of the connection; nullptr while closed.
    sqlite3* Handle() const;

    /// Runs one statement without result.
    Result<> Run(const Statement& statement) const;
    /// Runs all statements or, if one fails, none.
    Result<> RunTogether(const std::vector<Statement>& statements) const;
    /// Runs a query whose rows the caller reads forward. It must be at its end or gone before the file is written to.
    Result<QSqlQuery> Select(const Statement& statement) const;

    /// Another program holds the file at this moment, so that it cannot be read. Never waits.
    bool IsInUse() const;

    /// What an error means, in words for a user where there are such.
    static QString TextOf(const QSqlError& error);
    /// The text of a failure because another program holds the file.
    static QString InUseText();

private:
    friend class Transaction;

    QSqlDatabase m_connection;
    mutable bool m_isWithin = false; ///< a transaction of `Transaction` runs
    mutable QString m_lostBy;        ///< why SQLite has rolled it back by itself
};

/// A transaction that is rolled back on every road but `Commit`.
///
/// A full disk or a fault of it can make SQLite roll back by itself. Every later statement, `Commit` included, is then
/// a failure of the same text: by itself it would be for good.
class Transaction {
public:
    enum class Kind {
        Read,  ///< all queries see one state of the file
        Write, ///< whoever else writes is waited for at the beginning, where nothing has been done yet
    };

    /// @param file must outlive the transaction, and may be closed before it.
    Transaction(const Sqlite& file, Kind kind);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    /// Whether it could be begun.
    const Result<>& Begun() const { return m_begun; }
    /// To be called once; after a failure everything is as it was.
    Result<> Commit();

private:
    const Sqlite& m_file;
    Result<> m_begun;
    bool m_isOpen;
};
