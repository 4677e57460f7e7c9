#pragma once

#include "station/ListTransfer.h"

#include <QHash>

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
    int type = -1; ///< that an object must have here, -1 for any
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

    /// The name or, where that does not say which, the number; where neither does, "#" and the key. Empty for what is
    /// not there.
    QString Text(qint32 id) const;

    /// Who has that name, or else that number, or else, behind "#", that key; a failure says that nobody has, or
    /// several.
    Result<qint32> Find(const QString& text) const;

    /// The type of an object, -1 for what is not there.
    int TypeOf(qint32 id) const;

private:
    struct Row {
        QString name;
        QString number;
        int type = -1;
    };

    bool m_areObjects;
    QHash<qint32, Row> m_rows;
    QHash<QString, QList<qint32>> m_byName;
    QHash<QString, QList<qint32>> m_byNumber;
};

} // namespace lists
