#pragma once

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <map>
#include <optional>
#include <vector>

/// Rows of the store with a current one among them, over a table or over a query.
///
/// Over a table nothing is held but the current row: each move fetches the next one, in the order of the rows' keys, so
/// that a table of any length opens at once and a row shows what the table holds when it is reached. Over a query the
/// rows are read at once and do not change until `Requery`; such a recordset cannot be edited. A forward-only one
/// streams the rows of a query: it holds a lock on the store until it is at its end or closed.
///
/// Fields are named without regard to case. An operation that fails gives false, and `LastError` tells why. (`EOF` is
/// taken by the C library, so the two ends are called `IsEof` and `IsBof`.)
class Recordset {
public:
    enum class Cursor { Keyset, ForwardOnly };

    /// A recordset that is closed.
    Recordset() = default;
    Recordset(Recordset&&) = default;
    Recordset& operator=(Recordset&&) = default;
    Recordset(const Recordset&) = delete;
    Recordset& operator=(const Recordset&) = delete;

    /// Opens a table ("[rData]") or a SELECT statement, with `values` bound to its question marks, and goes to the
    /// first row. A table has no forward-only cursor.
    bool Open(const QSqlDatabase& connection, const QString& source, const QVariantList& values = {},
              Cursor cursor = Cursor::Keyset);
    void Close();
    /// True while open.
    bool State() const { return m_kind != Kind::Closed; }

    /// Behind the last row. An empty recordset is at both ends.
    bool IsEof() const { return m_atEnd; }
    bool IsBof() const { return m_isEmpty; }
    /// Rows that the filter lets through, counted now; -1 if they cannot be counted (forward-only, closed).
    qint64 RecordCount() const;

    /// Goes to the first row. A forward-only recordset can only do so before its first `MoveNext`.
    bool MoveFirst();
    /// Goes to the next row or behind the last one; nothing happens there. Unsaved changes of the row are dropped.
    bool MoveNext();

    /// Value of a field of the current row, changes that are not saved yet included. Null for a null; invalid if there
    /// is no such field or no current row.
    QVariant Field(QStringView name) const;
    /// Place of a field for `Value`, -1 if there is none of that name.
    int FieldIndex(QStringView name) const;
    /// Like `Field`, by place.
    QVariant Value(int index) const;
    QStringList FieldNames() const { return m_columns; }

    /// Shows only the rows in which `name` equals `value`, and goes to the first of them. A null equals nothing.
    bool Filter(QStringView name, const QVariant& value);
    /// Takes the filter off and goes to the first row.
    bool ClearFilter();

    /// Goes to the first row, from the current one on, in which `name` equals `value`. False and behind the last row if
    /// there is none; on a table the search uses an index on that column.
    bool Find(QStringView name, const QVariant& value);

    /// Begins a new row; its fields are set with `SetField`, those not set get the table's defaults.
    bool AddNew();
    /// Changes a field of the new or current row; `Update` saves it.
    bool SetField(QStringView name, const QVariant& value);
    /// Saves the new row, which becomes the current one, or the changes of the current row. False, with the changes
    /// kept, if the store refuses or the row is not there any more.
    bool Update();
    /// Drops the changes that are not saved.
    void CancelUpdate();
    /// Deletes the current row. There is no current row then until the next move. False if the row was not there any
    /// more.
    bool Delete();

    /// Reads everything anew, keeps the filter and goes to the first row.
    bool Requery();
    /// A second recordset over the same rows, without filter, at its first row.
    Recordset Clone() const;

    QString LastError() const { return m_error; }

private:
    enum class Kind { Closed, Table, Rows, Stream };
    struct Condition {
        int column;
        QVariant value;
    };
    using Row = std::vector<QVariant>;

    bool Fail(const QString& error) const;
    bool Run(QSqlQuery& query, const QString& statement, const QVariantList& values) const;
    bool IsMatch(const Row& row, const std::optional<Condition>& condition) const;
    std::optional<Condition> ConditionOf(QStringView name, const QVariant& value) const;
    QString ColumnName(int column) const;
    Row RowOf(const QSqlQuery& query, int first) const;
    void TakeColumns(const QSqlQuery& query, int first);
    bool Seek(qint64 from, const std::optional<Condition>& wanted);
    bool SeekInTable(qint64 from, const std::optional<Condition>& wanted);
    bool SeekInRows(qint64 from, const std::optional<Condition>& wanted);
    bool SeekInStream(qint64 from, const std::optional<Condition>& wanted);
    bool CanEdit(bool needsRow) const;

    Kind m_kind = Kind::Closed;
    QSqlDatabase m_connection;
    QString m_source; ///< a table's name in brackets or a statement
    QVariantList m_values;
    QStringList m_columns;
    std::optional<Condition> m_filter;
    std::vector<Row> m_rows; ///< of a query
    QSqlQuery m_stream;

    bool m_atEnd = true;
    bool m_isEmpty = true;
    qint64 m_position = 0; ///< rowid of a table's row, else index
    std::optional<Row> m_current;
    bool m_isAdding = false;
    std::map<int, QVariant> m_changes;
    mutable QString m_error;
};
