#pragma once

#include <QString>
#include <QStringList>

#include <span>

/// The tables of the station's store, an SQLite file. One description serves the empty database, the take-over of older
/// files and the checks of a foreign file.
namespace schema {

/// What a column holds. Every column but a key takes null: what a null means is settled where the column is read.
enum class Kind {
    Key,    ///< 32 bits signed, given by the database, never reused
    OwnKey, ///< the same, for a table that has no key elsewhere: only the store needs it, to tell rows apart
    Byte,   ///< 0 to 255
    Small,  ///< 16 bits signed
    Long,   ///< 32 bits signed
    YesNo,  ///< 0 or 1 (any value but 0 reads as yes)
    Text,   ///< text
    Moment, ///< date and time as text "yyyy-MM-dd hh:mm:ss"
};

struct Column {
    const char* name;
    Kind kind;
    const char* defaultValue = nullptr; ///< SQL literal, what a new row gets that names no value
};

struct Table {
    const char* name;
    std::span<const Column> columns;
};

/// A column of rData and qData that older files lack.
struct AddedColumn {
    const char* name;
    const char* type;
    const char* nameInLog;
};

/// What `UpgradeDatabase` adds, in order.
std::span<const AddedColumn> AddedColumns();

/// All tables, with the four columns that `UpgradeDatabase` adds to older files.
std::span<const Table> Tables();

/// Every column of `table`, which `name` names without regard to case; nullptr for an unknown one.
const Table* FindTable(QStringView name);

/// The key column of one of the tables, `OwnKey` included; empty for a table without one.
QString KeyOf(QStringView table);

/// The statement that makes a table, without its indexes.
QString CreateStatement(const Table& table);

/// The statements that make all tables and indexes in an empty file, in order.
/// A value outside its kind is refused with a constraint whose name says what the column takes.
QStringList CreateStatements();

/// The statements that make the indexes alone; each does nothing if its index is there. The ones on columns that
/// `UpgradeDatabase` adds are not among them.
QStringList IndexStatements();

/// The statements that make the tables of the program's own, each of which does nothing if its table is there: see
/// `LoadRecord` and `EditHistory`. No other table refers to them.
QStringList RecordStatements();

/// The words for a user in an error text of the store: "CHECK constraint failed: " and the like are taken off.
QString ReadableError(const QString& error);

} // namespace schema
