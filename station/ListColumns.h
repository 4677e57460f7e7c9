#pragma once

#include "station/ListTransfer.h"

#include <optional>
#include <span>

class Database;

namespace lists {

/// What stands in a column.
enum class Holds : quint8 { Key, Text, Number, YesNo, Type, Object, Service, Direction };

struct Column {
    const char* title;
    const char* field;
    Holds holds;
};

struct Description {
    List list;
    const char* name;
    const char* table;
    const char* order;
    std::span<const Column> columns;
};

inline constexpr int LongestText = 64; ///< characters, as the windows take them
inline constexpr const char* TypeNames[] = {"Counter", "Printer", "Display", "Hub"};
inline constexpr const char* DirectionNames[] = {"None", "Left", "Right", "Up", "Down"};

/// Where a list stands in the store, and what its columns are.
const Description& Of(List list);

/// The names and numbers of services or objects.
class Names {
public:
    Names(const Database& database, bool areObjects);

    /// The name, or the number where the name is another's too; empty for what is not there.
    QString Text(qint32 id) const;

    /// Who has that name, or else that number; a failure says that nobody has, or several.
    Result<qint32> Find(const QString& text) const;

private:
    struct Row {
        qint32 id;
        QString name;
        QString number;
    };

    qsizetype Count(QString Row::*field, const QString& text) const;

    bool m_areObjects;
    std::vector<Row> m_rows;
};

} // namespace lists
