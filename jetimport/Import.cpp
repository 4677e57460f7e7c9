#include "jetimport/Import.h"

#include "database/Schema.h"
#include "jetimport/JetFile.h"

#include <QFile>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QUuid>

#include <fcntl.h>
#include <unistd.h>

#include <limits>
#include <stdexcept>
#include <utility>

namespace jet {
namespace {

constexpr int RowsPerReport = 1000;

// Only ever seen inside this file: `Import` turns it into its result.
class Abandoned : public std::runtime_error {
public:
    explicit Abandoned(const QString& text)
        : std::runtime_error(text.toStdString()) {}
};

/// The new store, open while this lives. Each operation throws `Abandoned`.
class Store {
public:
    explicit Store(const QString& path)
        : m_name(QUuid::createUuid().toString()) {
        m_database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_name);
        m_database.setDatabaseName(path);
        if (!m_database.open())
            throw Abandoned(QStringLiteral("The new store cannot be made: ") + m_database.lastError().text());
    }
    Store(const Store&) = delete;
    Store& operator=(const Store&) = delete;
    ~Store() {
        m_database.close();
        m_database = {};
        QSqlDatabase::removeDatabase(m_name);
    }

    void Run(const QString& statement) { (void)Ask(statement); }

    /// The first value of the first row; invalid if there is none.
    QVariant Ask(const QString& statement) {
        QSqlQuery query(m_database);
        if (!query.exec(statement))
            throw Abandoned(QStringLiteral("The new store: ") + query.lastError().text());
        return query.next() ? query.value(0) : QVariant();
    }

    QSqlQuery Prepare(const QString& statement) {
        QSqlQuery query(m_database);
        if (!query.prepare(statement))
            throw Abandoned(QStringLiteral("The new store: ") + query.lastError().text());
        return query;
    }

private:
    QString m_name;
    QSqlDatabase m_database;
};

QString Latin(const char* text) {
    return QString::fromLatin1(text);
}

bool Same(const QString& a, const QString& b) {
    return a.compare(b, Qt::CaseInsensitive) == 0;
}

QString Quoted(QString name) {
    return u'"' + name.replace(u'"', QStringLiteral("\"\"")) + u'"';
}

int IndexOf(const std::vector<Column>& columns, const QString& name) {
    for (size_t i = 0; i < columns.size(); ++i) {
        if (Same(columns[i].name, name))
            return static_cast<int>(i);
    }
    return -1;
}

bool IsTicketTable(const schema::Table& table) {
    return Same(Latin(table.name), QStringLiteral("rData")) || Same(Latin(table.name), QStringLiteral("qData"));
}

bool MayBeMissing(const schema::Table& table) {
    return Same(Latin(table.name), QStringLiteral("Hub")) || Same(Latin(table.name), QStringLiteral("Message"));
}

bool IsOfLaterDays(const schema::Column& column) {
    static const QStringList Names = {QStringLiteral("DateTimeFinish"), QStringLiteral("Action"),
                                      QStringLiteral("Call"), QStringLiteral("TicketFlag")};
    return Names.contains(Latin(column.name), Qt::CaseInsensitive);
}

QString Reason(const QSqlError& error) {
    if (error.databaseText().startsWith(QStringLiteral("UNIQUE")))
        return QStringLiteral("Another row has the same key.");
    return error.databaseText();
}

class Importer {
public:
    Importer(JetFile& file, Store& store, const Listener& listener)
        : m_file(file)
        , m_store(store)
        , m_listener(listener) {}

    qint64 Run() {
        const QStringList names = m_file.TableNames();
        FindTables(names);
        // The four columns are judged by rData alone, as the upgrade of the opened store does.
        const std::unique_ptr<Table> tickets = Open(QStringLiteral("rData"));
        // A value that its column would refuse is kept; who reads it says so and skips the row.
        m_store.Run(QStringLiteral("PRAGMA ignore_check_constraints = ON"));
        m_store.Run(QStringLiteral("PRAGMA synchronous = OFF"));
        m_store.Run(QStringLiteral("PRAGMA journal_mode = MEMORY"));
        m_store.Run(QStringLiteral("BEGIN"));
        qint64 rows = 0;
        for (const schema::Table& table : schema::Tables())
            rows += TakeOver(table, tickets->Columns());
        m_listener.Progress(QStringLiteral("Check"), 0, 0);
        for (const QString& statement : schema::IndexStatements())
            m_store.Run(statement);
        m_store.Run(QStringLiteral("COMMIT"));
        // Back to what the station expects of a store that it opens.
        m_store.Run(QStringLiteral("PRAGMA journal_mode = DELETE"));
        Check();
        return rows;
    }

private:
    struct Counted {
        QString table;
        qint64 rows;
    };

    void FindTables(const QStringList& names) {
        QStringList missing;
        for (const schema::Table& table : schema::Tables()) {
            QString found;
            for (const QString& name : names) {
                if (Same(name, Latin(table.name)))
                    found = name;
            }
            if (found.isEmpty() && !MayBeMissing(table))
                missing += Latin(table.name);
            m_names.insert(Latin(table.name), found);
        }
        if (!missing.isEmpty())
            throw Abandoned(QStringLiteral("It is no database of this program: the table(s) %1 are missing.")
                                .arg(missing.join(QStringLiteral(", "))));
        for (const QString& name : names) {
            if (!schema::FindTable(name))
                m_listener.Note(QStringLiteral("Table %1 is unknown and stays behind.").arg(name));
        }
    }

    std::unique_ptr<Table> Open(const QString& table) {
        Result<std::unique_ptr<Table>> opened = m_file.OpenTable(m_names.value(table));
        if (!opened)
            throw Abandoned(QStringLiteral("The file is damaged: %1.").arg(opened.Error()));
        return *std::move(opened);
    }

    void Read(Table& source, const QString& table, const Table::RowHandler& handler) {
        const Result<> read = source.ForEachRow(handler);
        if (!read)
            throw Abandoned(QStringLiteral("The file is damaged: table %1: %2.").arg(table, read.Error()));
    }

    void MakeTable(const schema::Table& table, Table* source, const std::vector<Column>& ticketColumns) {
        const QString name = Latin(table.name);
        m_store.Run(schema::CreateStatement(table));
        if (!source)
            return;
        for (const schema::Column& column : table.columns) {
            const QString columnName = Latin(column.name);
            if (IndexOf(source->Columns(), columnName) >= 0 || column.kind == schema::Kind::OwnKey)
                continue;
            if (column.kind == schema::Kind::Key && !MayBeMissing(table))
                throw Abandoned(QStringLiteral("It is no database of this program: table %1 has no column %2.")
                                    .arg(name, columnName));
            if (!IsTicketTable(table) || !IsOfLaterDays(column))
                m_listener.Note(QStringLiteral("Table %1 has no column %2; it is made anew.").arg(name, columnName));
            else if (IndexOf(ticketColumns, columnName) < 0)
                m_store.Run(QStringLiteral("ALTER TABLE %1 DROP COLUMN %2").arg(Quoted(name), Quoted(columnName)));
        }
        for (const Column& column : source->Columns()) {
            bool known = false;
            for (const schema::Column& candidate : table.columns)
                known = known || Same(Latin(candidate.name), column.name);
            if (!known)
                m_store.Run(QStringLiteral("ALTER TABLE %1 ADD COLUMN %2 %3")
                                .arg(Quoted(name), Quoted(column.name), column.sqlType));
        }
    }

    qint64 TakeOver(const schema::Table& table, const std::vector<Column>& ticketColumns) {
        const QString name = Latin(table.name);
        const std::unique_ptr<Table> source = m_names.value(name).isEmpty() ? nullptr : Open(name);
        MakeTable(table, source.get(), ticketColumns);
        if (!source) {
            m_listener.Note(QStringLiteral("Table %1 is missing; it is made empty.").arg(name));
            return 0;
        }

        QString keyName;
        for (const schema::Column& column : table.columns) {
            if (column.kind == schema::Kind::Key)
                keyName = Latin(column.name);
        }
        const int key = keyName.isEmpty() ? -1 : IndexOf(source->Columns(), keyName);
        QStringList columns;
        QStringList marks;
        for (const Column& column : source->Columns()) {
            columns += Quoted(column.name);
            marks += QStringLiteral("?");
        }
        QSqlQuery insert = m_store.Prepare(
            QStringLiteral("INSERT INTO %1 (%2) VALUES (%3)").arg(Quoted(name), columns.join(u','), marks.join(u',')));
        const qint64 total = source->RowCount();
        qint64 done = 0;
        m_listener.Progress(name, 0, total);
        Read(*source, name, [&](const QVariantList& values) {
            if (key >= 0 && values[key].isNull())
                throw Abandoned(QStringLiteral("Table %1: row %2 has no %3.").arg(name).arg(done + 1).arg(keyName));
            for (qsizetype i = 0; i < values.size(); ++i)
                insert.bindValue(static_cast<int>(i), values[i]);
            if (!insert.exec())
                throw Abandoned(
                    QStringLiteral("Table %1, row %2%3: %4")
                        .arg(name)
                        .arg(done + 1)
                        .arg(key >= 0 ? QStringLiteral(" (%1 %2)").arg(keyName, values[key].toString()) : QString())
                        .arg(Reason(insert.lastError())));
            if (++done % RowsPerReport == 0)
                m_listener.Progress(name, done, std::max(done, total));
            return true;
        });
        insert.finish();
        if (done > total)
            m_listener.Note(QStringLiteral("Table %1 has %2 rows and says %3.").arg(name).arg(done).arg(total));
        m_listener.Progress(name, done, done);
        m_counted.push_back({name, done});
        if (key >= 0)
            SetCounter(name, source->Counter());
        return done;
    }

    // The store raises its counter with every key that it is given; rows deleted in the file may have had higher ones.
    void SetCounter(const QString& name, qint64 counter) {
        // The last number of all would leave no key for another row.
        if (counter <= 0 || counter >= std::numeric_limits<qint32>::max())
            return;
        QSqlQuery set =
            m_store.Prepare(QStringLiteral("UPDATE sqlite_sequence SET seq = ? WHERE name = ? AND seq < ?"));
        const QVariant highest =
            m_store.Ask(QStringLiteral("SELECT seq FROM sqlite_sequence WHERE name = '%1'").arg(name));
        if (highest.isNull()) {
            set = m_store.Prepare(QStringLiteral("INSERT INTO sqlite_sequence (seq, name) VALUES (?, ?)"));
        } else {
            set.bindValue(2, counter);
        }
        set.bindValue(0, counter);
        set.bindValue(1, name);
        if (!set.exec())
            throw Abandoned(QStringLiteral("The counter of table %1: %2").arg(name, set.lastError().text()));
    }

    void Check() {
        const QString verdict = m_store.Ask(QStringLiteral("PRAGMA integrity_check")).toString();
        if (verdict != QStringLiteral("ok"))
            throw Abandoned(QStringLiteral("The new store is damaged: ") + verdict);
        for (const Counted& counted : m_counted) {
            const qint64 rows =
                m_store.Ask(QStringLiteral("SELECT count(*) FROM ") + Quoted(counted.table)).toLongLong();
            if (rows != counted.rows)
                throw Abandoned(
                    QStringLiteral("Table %1: %2 of %3 rows arrived.").arg(counted.table).arg(rows).arg(counted.rows));
        }
    }

    JetFile& m_file;
    Store& m_store;
    const Listener& m_listener;
    QHash<QString, QString> m_names; ///< schema's name to the file's own
    std::vector<Counted> m_counted;
};

void Flush(const QString& path) {
    const int file = open(QFile::encodeName(path).constData(), O_RDWR | O_CLOEXEC);
    const bool flushed = file >= 0 && fsync(file) == 0;
    if (file >= 0)
        close(file);
    if (!flushed)
        throw Abandoned(QStringLiteral("The new store cannot be written to the disk: ") + qt_error_string());
}

} // namespace

Result<qint64> Import(const QString& source, const QString& target, const Listener& listener) {
    const QFileInfo info(target);
    if (info.exists() || info.isSymLink())
        return Failure{QStringLiteral("The file %1 exists already.").arg(target)};
    const Result<std::unique_ptr<JetFile>> file = JetFile::Open(source);
    if (!file)
        return Failure{QStringLiteral("The file cannot be taken over: %1.").arg(file.Error())};
    try {
        qint64 rows = 0;
        {
            Store store(target);
            rows = Importer(**file, store, listener).Run();
        }
        Flush(target);
        return rows;
    } catch (const Abandoned& failure) {
        QFile::remove(target);
        QFile::remove(target + QStringLiteral("-journal"));
        return Failure{QString::fromUtf8(failure.what())};
    }
}

} // namespace jet
