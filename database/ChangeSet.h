#pragma once

#include "platform/Result.h"

#include <QByteArray>
#include <QVariant>

#include <optional>
#include <span>
#include <vector>

class Sqlite;
struct sqlite3_session;

/// One row that was added, changed or removed.
struct RowChange {
    enum class Kind : quint8 { Added, Changed, Removed };

    struct Field {
        QString column;
        QVariant before; ///< null in a row that was added
        QVariant after;  ///< null in a row that was removed
    };

    Kind kind = Kind::Changed;
    QString table;
    qint64 key = 0;
    std::vector<Field> fields; ///< those that differ; of a row that was added or removed those that are not null

    /// The field of that column, without regard to case; nullptr if it is not among them.
    const Field* Find(QLatin1StringView column) const;
};

/// What happened to the rows of the description of an installation, as SQLite's session extension writes it down: the
/// values before and after, so that it can be taken back.
///
/// Only tables with a primary key are written down, and only those of the description: services, objects, assignments,
/// scan plan, directions, hubs. Tickets are not, and `LastInfo`, which the station itself writes, stands in the way of
/// nothing and is told to nobody.
namespace changeset {

/// The tables that are written down.
std::span<const char* const> Tables();

/// Writes down what happens to a store as long as it lives, whoever of this connection does it.
class Recorder {
public:
    /// @param file must outlive the recorder and stay open.
    explicit Recorder(const Sqlite& file);
    ~Recorder();
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    /// What has happened so far; empty if the rows are what they were.
    Result<QByteArray> Changes() const;

private:
    sqlite3_session* m_session = nullptr;
};

/// What takes the changes back.
Result<QByteArray> Inverted(const QByteArray& changes);

/// The changes one after the other as one. What takes itself back is left out.
Result<QByteArray> Joined(const std::vector<QByteArray>& all);

/// Does the changes once more, within a transaction of the caller's, which rolls back after anything but success.
/// @return the row that stood in the way, as it is not what it was then; nothing if all was done.
Result<std::optional<RowChange>> Apply(const Sqlite& file, const QByteArray& changes);

/// The changes row by row, with the names of the columns of `file`.
Result<std::vector<RowChange>> Rows(const Sqlite& file, const QByteArray& changes);

/// What makes the rows of `file` of those of another store.
/// @param path the other store, which is only read.
Result<QByteArray> Difference(const Sqlite& file, const QString& path);

} // namespace changeset
