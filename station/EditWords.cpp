#include "station/EditWords.h"

#include "tickets/VniText.h"

#include <QCoreApplication>

#include <map>

namespace {

QString tr(const char* text) {
    return QCoreApplication::translate("EditWords", text);
}

struct ColumnName {
    const char* column;
    const char* name;
};

constexpr ColumnName ColumnNames[] = {
    {"q_Number", QT_TRANSLATE_NOOP("EditWords", "Number")},
    {"q_Series", QT_TRANSLATE_NOOP("EditWords", "Series")},
    {"q_route", QT_TRANSLATE_NOOP("EditWords", "Route")},
    {"q_On", QT_TRANSLATE_NOOP("EditWords", "Active")},
    {"q_Name", QT_TRANSLATE_NOOP("EditWords", "Name")},
    {"q_Description", QT_TRANSLATE_NOOP("EditWords", "Description")},
    {"q_Notes", QT_TRANSLATE_NOOP("EditWords", "Notes")},
    {"q_Button", QT_TRANSLATE_NOOP("EditWords", "Button")},
    {"d_Number", QT_TRANSLATE_NOOP("EditWords", "Number")},
    {"d_Address", QT_TRANSLATE_NOOP("EditWords", "Address")},
    {"d_Name", QT_TRANSLATE_NOOP("EditWords", "Name")},
    {"d_On", QT_TRANSLATE_NOOP("EditWords", "Active")},
    {"d_Type", QT_TRANSLATE_NOOP("EditWords", "Type")},
    {"d_HubId", QT_TRANSLATE_NOOP("EditWords", "HUB")},
    {"d_direction", QT_TRANSLATE_NOOP("EditWords", "Direction")},
    {"d_Description", QT_TRANSLATE_NOOP("EditWords", "Description")},
    {"h_Name", QT_TRANSLATE_NOOP("EditWords", "Name")},
};

bool Is(const QString& name, const char* other) {
    return name.compare(QLatin1String(other), Qt::CaseInsensitive) == 0;
}

/// Puts rows of one history in words.
class Words {
public:
    explicit Words(const EditHistory& history)
        : m_history(history) {}

    QStringList Lines(const std::vector<RowChange>& rows) {
        QStringList lines;
        for (const RowChange& row : rows) {
            if (Is(row.table, "Info-Direction"))
                NoteDirection(row);
            else
                lines += LineOf(row);
        }
        for (const auto& [pair, change] : m_directions) {
            if (change.before != change.after)
                lines += tr("Direction at %1 to %2: %3 to %4")
                             .arg(NameOf("Display", pair.first), NameOf("Display", pair.second),
                                  DirectionName(change.before), DirectionName(change.after));
        }
        return lines;
    }

private:
    struct Direction {
        QVariant before;
        QVariant after;
    };

    /// A name in quotes, or the key of what has none.
    QString NameOf(const char* table, qint64 key) const {
        const QString name = vni::ToUnicode(m_history.NameOfRow(QString::fromLatin1(table), key));
        return name.isEmpty() ? tr("no. %1").arg(key) : name;
    }

    static QString DirectionName(const QVariant& direction) {
        const char* const names[] = {"None", "Left", "Right", "Up", "Down"};
        const int number = direction.toInt();
        return direction.isNull()           ? tr("none stored")
               : number >= 0 && number <= 4 ? QString::fromLatin1(names[number])
                                            : QString::number(number);
    }

    static QVariant Of(const RowChange& row, const char* column) {
        const RowChange::Field* const field = row.Find(QLatin1StringView(column));
        return !field ? QVariant() : field->after.isNull() ? field->before : field->after;
    }

    void NoteDirection(const RowChange& row) {
        // A stored matrix is deleted and made anew: what counts is the pair.
        if (row.kind == RowChange::Kind::Changed)
            return;
        const std::pair pair(Of(row, "inf_Id").toLongLong(), Of(row, "d_Id").toLongLong());
        Direction& direction = m_directions[pair];
        (row.kind == RowChange::Kind::Added ? direction.after : direction.before) = Of(row, "Dir_Id");
    }

    QString LineOf(const RowChange& row) const {
        if (Is(row.table, "Queue-Display"))
            return Pair(row);
        if (Is(row.table, "ScanPlan"))
            return PlanEntry(row);
        QStringList values;
        for (const RowChange::Field& field : row.fields) {
            const QString name = ColumnText(field.column);
            const bool isName = Is(field.column, "d_Name") || Is(field.column, "q_Name");
            if (row.kind == RowChange::Kind::Changed)
                values +=
                    tr("%1 %2 to %3").arg(name, Value(field.column, field.before), Value(field.column, field.after));
            else if (!isName)
                values +=
                    name + u' ' + Value(field.column, row.kind == RowChange::Kind::Added ? field.after : field.before);
        }
        const bool isService = Is(row.table, "Queue");
        const QString name = isService                  ? NameOf("Queue", row.key)
                             : Is(row.table, "Display") ? NameOf("Display", row.key)
                                                        : tr("no. %1").arg(row.key);
        const QString list = values.join(QStringLiteral(", "));
        if (row.kind == RowChange::Kind::Changed)
            return tr("%1: %2").arg(name, list);
        const QString what = row.kind == RowChange::Kind::Added ? isService ? tr("New service") : tr("New object")
                             : isService ? tr("Service deleted")
                                                                : tr("Object deleted");
        return values.isEmpty() ? tr("%1: %2").arg(what, name) : tr("%1: %2 (%3)").arg(what, name, list);
    }

    QString Pair(const RowChange& row) const {
        const QString counter = NameOf("Display", Of(row, "d_Id").toLongLong());
        const QString service = NameOf("Queue", Of(row, "q_Id").toLongLong());
        return row.kind == RowChange::Kind::Removed ? tr("%1 no longer serves %2").arg(counter, service)
                                                    : tr("%1 serves %2").arg(counter, service);
    }

    QString PlanEntry(const RowChange& row) const {
        if (row.kind == RowChange::Kind::Changed) {
            QStringList values;
            for (const RowChange::Field& field : row.fields)
                values += tr("%1 %2 to %3")
                              .arg(ColumnText(field.column), Value(field.column, field.before),
                                   Value(field.column, field.after));
            return tr("Scan plan: %1").arg(values.join(QStringLiteral(", ")));
        }
        const QString name = NameOf("Display", Of(row, "d_Id").toLongLong());
        return row.kind == RowChange::Kind::Added ? tr("Scan plan: %1 added").arg(name)
                                                  : tr("Scan plan: %1 taken out").arg(name);
    }

    static QString ColumnText(const QString& column) {
        for (const ColumnName& name : ColumnNames) {
            if (Is(column, name.column))
                return tr(name.name);
        }
        return column;
    }

    QString Value(const QString& column, const QVariant& value) const {
        if (value.isNull() || value.toString().isEmpty())
            return tr("(empty)");
        if (Is(column, "q_On") || Is(column, "d_On"))
            return value.toInt() != 0 ? QStringLiteral("Yes") : QStringLiteral("No");
        if (Is(column, "d_Type")) {
            const char* const types[] = {"Counter", "Printer", "Display", "Hub"};
            const int type = value.toInt();
            return type >= 0 && type <= 3 ? QString::fromLatin1(types[type]) : value.toString();
        }
        if (Is(column, "d_HubId"))
            return value.toLongLong() == 0 ? tr("none") : NameOf("Display", value.toLongLong());
        return vni::ToUnicode(value.toString());
    }

    const EditHistory& m_history;
    std::map<std::pair<qint64, qint64>, Direction> m_directions; ///< by display and counter
};

} // namespace

namespace editwords {

QStringList Lines(const EditHistory& history, const std::vector<RowChange>& rows) {
    return Words(history).Lines(rows);
}

QString Title(const EditHistory& history, const EditAct& act) {
    if (!act.name.isEmpty())
        return act.name;
    const Result<std::vector<RowChange>> rows = history.Rows(act.id);
    const QStringList lines = rows ? Lines(history, *rows) : QStringList();
    if (lines.isEmpty())
        return tr("a change");
    return lines.size() == 1 ? lines.first() : tr("%1, and %2 more").arg(lines.first()).arg(lines.size() - 1);
}

QString TableName(const QString& table) {
    constexpr std::pair<const char*, const char*> names[] = {
        {"Queue", QT_TRANSLATE_NOOP("EditWords", "Services")},
        {"Display", QT_TRANSLATE_NOOP("EditWords", "Objects")},
        {"Queue-Display", QT_TRANSLATE_NOOP("EditWords", "Assignments")},
        {"ScanPlan", QT_TRANSLATE_NOOP("EditWords", "Scan plan")},
        {"Info-Direction", QT_TRANSLATE_NOOP("EditWords", "Directions")},
    };
    for (const auto& [name, text] : names) {
        if (Is(table, name))
            return tr(text);
    }
    return table;
}

} // namespace editwords
