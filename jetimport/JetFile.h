#pragma once

#include <QStringList>
#include <QVariant>

#include <functional>
#include <memory>
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
    /// @return what is damaged; empty if all rows that the file says it has were read, or `handler` stopped.
    QString ForEachRow(const RowHandler& handler);

private:
    QString ReadRow(int row, QVariantList* values, bool* present);
    QString ReadLongValue(const QByteArray& reference, QByteArray* value) const;

    S_MdbTableDef* m_definition;
    std::vector<Column> m_columns;
    qint64 m_counter = 0;
    bool m_jet3;
};

/// A Jet 3, Jet 4 or ACE file, open for reading.
class JetFile {
public:
    /// @return null, and the reason in `error`, if `path` is no such file, is protected, or has no readable catalogue.
    static std::unique_ptr<JetFile> Open(const QString& path, QString* error);

    JetFile(const JetFile&) = delete;
    JetFile& operator=(const JetFile&) = delete;
    ~JetFile();

    /// The names of the user's own tables (no system tables, no links into other files).
    QStringList TableNames() const;

    /// The table of that exact name; nothing, and the reason in `error`, if its description cannot be read.
    std::unique_ptr<Table> OpenTable(const QString& name, QString* error);

private:
    struct Handle;
    explicit JetFile(std::unique_ptr<Handle> handle);

    std::unique_ptr<Handle> m_handle;
};

} // namespace jet
