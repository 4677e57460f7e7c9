#pragma once

#include "platform/Result.h"

#include <QStringList>
#include <QVariant>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

struct S_MdbTableDef;

namespace jet {

struct Column {
    QString name;
    QString sqlType; ///< declared type of a column that takes such values
};

/// One table of an open `JetFile`; must not outlive it.
class Table {
public:
    explicit Table(S_MdbTableDef* definition);
    Table(Table&& other) noexcept;
    Table& operator=(Table&&) = delete;
    ~Table();

    const std::vector<Column>& Columns() const { return m_columns; }

    /// The number of rows that the file says it has.
    qint64 RowCount() const;

    /// The highest number that the table's counter column was ever given, as the file says; 0 if none.
    qint64 Counter() const { return m_counter; }

    using RowHandler = std::function<bool(const QVariantList& values)>;

    /// Hands each row to `handler` in the file's order, one value a column. Yes/no is 0 or 1, a date is text
    /// "yyyy-MM-dd hh:mm:ss", an empty text is not null. Stops when `handler` says false.
    /// @return failed with what is damaged, unless all rows that the file says it has were read, or `handler` stopped.
    Result<> ForEachRow(const RowHandler& handler);

private:
    /// Where a row's bytes lie in the page buffer.
    struct Place {
        int start;
        size_t size;
    };

    // Of a row that is deleted, or that is read elsewhere, there is neither place nor values.
    Result<std::optional<QVariantList>> ReadRow(int row);
    Result<std::optional<Place>> FindRow(int row);
    Result<std::vector<QByteArray>> ReadFields(Place place);
    Result<QByteArray> ReadLongValue(const QByteArray& reference) const;

    S_MdbTableDef* m_definition;
    std::vector<Column> m_columns;
    qint64 m_counter = 0;
    bool m_jet3;
};

/// A Jet 3, Jet 4 or ACE file, open for reading.
class JetFile {
public:
    /// @return failed if `path` is no such file, is protected, or has no readable catalogue.
    static Result<std::unique_ptr<JetFile>> Open(const QString& path);

    JetFile(const JetFile&) = delete;
    JetFile& operator=(const JetFile&) = delete;
    ~JetFile();

    /// The names of the user's own tables (no system tables, no links into other files).
    QStringList TableNames() const;

    /// The table of that exact name; failed if its description cannot be read.
    Result<std::unique_ptr<Table>> OpenTable(const QString& name);

private:
    struct Handle;
    explicit JetFile(std::unique_ptr<Handle> handle);

    std::unique_ptr<Handle> m_handle;
};

} // namespace jet
