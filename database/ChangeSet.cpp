#include "database/ChangeSet.h"

#include "database/Sqlite.h"

#include <QFileInfo>
#include <QUrl>

#include <map>
#include <memory>

#define SQLITE_ENABLE_SESSION
#define SQLITE_ENABLE_PREUPDATE_HOOK
#include <sqlite3.h>

namespace {

constexpr const char* RecordedTables[] = {"Queue", "Display", "Queue-Display", "ScanPlan", "Info-Direction", "Hub"};

/// What SQLite's session extension gives, freed as it wants it.
struct Freed {
    void operator()(void* memory) const { sqlite3_free(memory); }
    void operator()(sqlite3_changeset_iter* rows) const { sqlite3changeset_finalize(rows); }
    void operator()(sqlite3_changegroup* group) const { sqlite3changegroup_delete(group); }
    void operator()(sqlite3_session* session) const { sqlite3session_delete(session); }
};

Failure FaultOf(int code) {
    switch (code & 0xFF) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        return {Sqlite::InUseText()};
    case SQLITE_CORRUPT:
        return {QStringLiteral("What was written down of the edits is damaged.")};
    default:
        return {QString::fromUtf8(sqlite3_errstr(code))};
    }
}

/// Takes over a result that the extension has allocated.
Result<QByteArray> Taken(int code, int size, void* memory) {
    const std::unique_ptr<void, Freed> held(memory);
    if (code != SQLITE_OK)
        return FaultOf(code);
    return QByteArray(static_cast<const char*>(memory), size);
}

using Rows = std::unique_ptr<sqlite3_changeset_iter, Freed>;

Result<Rows> Begin(const QByteArray& changes) {
    sqlite3_changeset_iter* rows = nullptr;
    // The iterator only reads what it is given.
    const int code = sqlite3changeset_start(&rows, static_cast<int>(changes.size()), const_cast<char*>(changes.data()));
    if (code != SQLITE_OK)
        return FaultOf(code);
    return Rows(rows);
}

QVariant ValueOf(sqlite3_value* value) {
    if (!value)
        return {};
    switch (sqlite3_value_type(value)) {
    case SQLITE_INTEGER:
        return QVariant(static_cast<qint64>(sqlite3_value_int64(value)));
    case SQLITE_FLOAT:
        return QVariant(sqlite3_value_double(value));
    case SQLITE_TEXT:
        return QVariant(
            QString::fromUtf8(reinterpret_cast<const char*>(sqlite3_value_text(value)), sqlite3_value_bytes(value)));
    case SQLITE_BLOB:
        return QVariant(QByteArray(static_cast<const char*>(sqlite3_value_blob(value)), sqlite3_value_bytes(value)));
    default:
        return {};
    }
}

/// What the station itself writes while it runs: it is nobody's edit.
bool IsOwn(const QString& column) {
    return column.compare(QLatin1String("LastInfo"), Qt::CaseInsensitive) == 0;
}

/// The row that an iterator stands at. @param columns their names, in the order of the table.
RowChange RowAt(sqlite3_changeset_iter* rows, const QStringList& columns) {
    const char* table = nullptr;
    int count = 0;
    int operation = 0;
    sqlite3changeset_op(rows, &table, &count, &operation, nullptr);
    unsigned char* isKey = nullptr;
    sqlite3changeset_pk(rows, &isKey, nullptr);
    RowChange change;
    change.table = QString::fromUtf8(table);
    change.kind = operation == SQLITE_INSERT   ? RowChange::Kind::Added
                  : operation == SQLITE_DELETE ? RowChange::Kind::Removed
                                               : RowChange::Kind::Changed;
    for (int i = 0; i < count; ++i) {
        sqlite3_value* before = nullptr;
        sqlite3_value* after = nullptr;
        if (change.kind != RowChange::Kind::Added)
            sqlite3changeset_old(rows, i, &before);
        if (change.kind != RowChange::Kind::Removed)
            sqlite3changeset_new(rows, i, &after);
        if (isKey && isKey[i])
            change.key = sqlite3_value_int64(before ? before : after);
        else if (before || after)
            change.fields.push_back({columns.value(i), ValueOf(before), ValueOf(after)});
    }
    std::erase_if(change.fields,
                  [](const RowChange::Field& field) { return field.before == field.after || IsOwn(field.column); });
    return change;
}

QStringList ColumnsOf(const Sqlite& file, const QString& table) {
    auto rows = file.Select({QStringLiteral("SELECT name FROM pragma_table_info(?)"), {table}});
    QStringList names;
    while (rows && rows->next())
        names += rows->value(0).toString();
    return names;
}

int CountOf(const QByteArray& changes) {
    const Result<Rows> rows = Begin(changes);
    int count = 0;
    while (rows && sqlite3changeset_next(rows->get()) == SQLITE_ROW)
        ++count;
    return count;
}

struct Applying {
    const Sqlite& file;
    std::optional<RowChange> obstacle = {};
};

/// A row that is to go is what it was then but for what the station itself has written.
bool IsSameButOwn(sqlite3_changeset_iter* rows, const QStringList& columns) {
    for (int i = 0; i < columns.size(); ++i) {
        sqlite3_value* then = nullptr;
        sqlite3_value* now = nullptr;
        if (sqlite3changeset_old(rows, i, &then) != SQLITE_OK || sqlite3changeset_conflict(rows, i, &now) != SQLITE_OK)
            return false;
        if (ValueOf(then) != ValueOf(now) && !IsOwn(columns[i]))
            return false;
    }
    return true;
}

int OnConflict(void* context, int kind, sqlite3_changeset_iter* rows) {
    auto& applying = *static_cast<Applying*>(context);
    RowChange row = RowAt(rows, {});
    if (kind == SQLITE_CHANGESET_DATA && row.kind == RowChange::Kind::Removed &&
        IsSameButOwn(rows, ColumnsOf(applying.file, row.table)))
        return SQLITE_CHANGESET_REPLACE;
    applying.obstacle = std::move(row);
    return SQLITE_CHANGESET_ABORT;
}

int IsRecorded(void*, const char* table) {
    for (const char* const recorded : RecordedTables) {
        if (sqlite3_stricmp(table, recorded) == 0)
            return 1;
    }
    return 0;
}

sqlite3_session* NewSession(const Sqlite& file) {
    sqlite3_session* session = nullptr;
    if (!file.Handle() || sqlite3session_create(file.Handle(), "main", &session) != SQLITE_OK)
        return nullptr;
    return session;
}

/// Takes values outside their columns' ranges, as they may have stood in an older store, for as long as this lives.
class Unchecked {
public:
    explicit Unchecked(const Sqlite& file)
        : m_file(file) {
        (void)m_file.Run({QStringLiteral("PRAGMA ignore_check_constraints = ON")});
    }
    ~Unchecked() { (void)m_file.Run({QStringLiteral("PRAGMA ignore_check_constraints = OFF")}); }
    Unchecked(const Unchecked&) = delete;
    Unchecked& operator=(const Unchecked&) = delete;

private:
    const Sqlite& m_file;
};

/// Another store beside the one that is open, for as long as this lives.
class Beside {
public:
    Beside(const Sqlite& file, const QString& path)
        : m_file(file)
        , m_attached(file.Run({QStringLiteral("ATTACH DATABASE ? AS Beside"), {UrlOf(path)}})) {}
    ~Beside() {
        if (m_attached)
            (void)m_file.Run({QStringLiteral("DETACH DATABASE Beside")});
    }
    Beside(const Beside&) = delete;
    Beside& operator=(const Beside&) = delete;

    const Result<>& Attached() const { return m_attached; }

private:
    static QString UrlOf(const QString& path) {
        const QByteArray url = QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath()).toEncoded();
        return QString::fromLatin1(url) + QStringLiteral("?mode=ro");
    }

    const Sqlite& m_file;
    Result<> m_attached;
};

} // namespace

const RowChange::Field* RowChange::Find(QLatin1StringView column) const {
    for (const Field& field : fields) {
        if (field.column.compare(column, Qt::CaseInsensitive) == 0)
            return &field;
    }
    return nullptr;
}

namespace changeset {

std::span<const char* const> Tables() {
    return RecordedTables;
}

Recorder::Recorder(const Sqlite& file)
    : m_session(NewSession(file)) {
    for (const char* const table : RecordedTables) {
        if (m_session && sqlite3session_attach(m_session, table) != SQLITE_OK) {
            sqlite3session_delete(m_session);
            m_session = nullptr;
        }
    }
}

Recorder::~Recorder() {
    if (m_session)
        sqlite3session_delete(m_session);
}

Result<QByteArray> Recorder::Changes() const {
    if (!m_session)
        return Failure{QStringLiteral("The edits cannot be written down.")};
    int size = 0;
    void* memory = nullptr;
    const int code = sqlite3session_changeset(m_session, &size, &memory);
    return Taken(code, size, memory);
}

Result<QByteArray> Inverted(const QByteArray& changes) {
    int size = 0;
    void* memory = nullptr;
    const int code = sqlite3changeset_invert(static_cast<int>(changes.size()), changes.data(), &size, &memory);
    return Taken(code, size, memory);
}

Result<QByteArray> Joined(const std::vector<QByteArray>& all) {
    sqlite3_changegroup* made = nullptr;
    if (const int code = sqlite3changegroup_new(&made); code != SQLITE_OK)
        return FaultOf(code);
    const std::unique_ptr<sqlite3_changegroup, Freed> group(made);
    for (const QByteArray& changes : all) {
        const int code =
            sqlite3changegroup_add(group.get(), static_cast<int>(changes.size()), const_cast<char*>(changes.data()));
        if (code != SQLITE_OK)
            return FaultOf(code);
    }
    int size = 0;
    void* memory = nullptr;
    const int code = sqlite3changegroup_output(group.get(), &size, &memory);
    return Taken(code, size, memory);
}

Result<std::optional<RowChange>> Apply(const Sqlite& file, const QByteArray& changes) {
    const Recorder recorder(file);
    const Unchecked unchecked(file);
    Applying applying{file};
    const int code = sqlite3changeset_apply(file.Handle(), static_cast<int>(changes.size()),
                                            const_cast<char*>(changes.data()), IsRecorded, OnConflict, &applying);
    if (code == SQLITE_ABORT && applying.obstacle)
        return applying.obstacle;
    if (code != SQLITE_OK)
        return FaultOf(code);
    // A table that has other columns than it had then is passed over in silence.
    const Result<QByteArray> done = recorder.Changes();
    if (!done)
        return Failure{done.Error()};
    if (CountOf(*done) != CountOf(changes))
        return Failure{QStringLiteral("The tables of the database are not what they were then.")};
    return std::optional<RowChange>();
}

Result<std::vector<RowChange>> Rows(const Sqlite& file, const QByteArray& changes) {
    const Result<::Rows> rows = Begin(changes);
    if (!rows)
        return Failure{rows.Error()};
    std::map<QString, QStringList> columns;
    std::vector<RowChange> all;
    int code = SQLITE_ROW;
    while ((code = sqlite3changeset_next(rows->get())) == SQLITE_ROW) {
        const char* name = nullptr;
        int count = 0;
        int operation = 0;
        sqlite3changeset_op(rows->get(), &name, &count, &operation, nullptr);
        const QString table = QString::fromUtf8(name);
        const auto [known, isNew] = columns.try_emplace(table);
        if (isNew)
            known->second = ColumnsOf(file, table);
        RowChange change = RowAt(rows->get(), known->second);
        if (change.kind != RowChange::Kind::Changed || !change.fields.empty())
            all.push_back(std::move(change));
    }
    if (code != SQLITE_DONE)
        return FaultOf(code);
    return all;
}

Result<QByteArray> Difference(const Sqlite& file, const QString& path) {
    const Beside other(file, path);
    if (!other.Attached())
        return Failure{other.Attached().Error()};
    const std::unique_ptr<sqlite3_session, Freed> session(NewSession(file));
    if (!session)
        return Failure{QStringLiteral("The database is closed.")};
    for (const char* const table : RecordedTables) {
        char* text = nullptr;
        int code = sqlite3session_attach(session.get(), table);
        if (code == SQLITE_OK)
            code = sqlite3session_diff(session.get(), "Beside", table, &text);
        const std::unique_ptr<char, Freed> held(text);
        if (code != SQLITE_OK)
            return text ? Failure{QString::fromUtf8(text)} : FaultOf(code);
    }
    int size = 0;
    void* memory = nullptr;
    const int code = sqlite3session_changeset(session.get(), &size, &memory);
    return Taken(code, size, memory);
}

} // namespace changeset
