#include "station/ListColumns.h"

#include "core/Installation.h"
#include "database/Database.h"
#include "database/Schema.h"
#include "tickets/VniText.h"

#include <QCoreApplication>
#include <QSqlRecord>

#include <algorithm>
#include <map>
#include <set>

namespace lists {
namespace {

QString tr(const char* text) {
    return QCoreApplication::translate("ListTransfer", text);
}

/// The number of a word or of its first letter, or a number that stands for none of them, as the store may hold it.
template <std::size_t N>
std::optional<int> IndexIn(const char* const (&names)[N], const QString& word) {
    for (std::size_t i = 0; i < N; ++i) {
        const QLatin1String name(names[i]);
        if (word.compare(name, Qt::CaseInsensitive) == 0 || word.compare(name.first(1), Qt::CaseInsensitive) == 0)
            return static_cast<int>(i);
    }
    bool isNumber = false;
    const int number = word.toInt(&isNumber);
    return isNumber ? std::optional(number) : std::nullopt;
}

QString Field(const Column& column) {
    return u'[' + QLatin1String(column.field) + u']';
}

/// One import on its way, within its act.
class Importer {
public:
    Importer(Database& database, const Incoming& incoming, Import& import)
        : m_database(database)
        , m_list(Of(incoming.list))
        , m_match(incoming.match)
        , m_origin(incoming.origin)
        , m_import(import) {}

    void Run(const std::vector<QStringList>& table) {
        if (table.empty() || !ReadTitles(table[0]))
            return;
        for (std::size_t row = 1; row < table.size(); ++row)
            TakeRow(static_cast<int>(row), table[row]);
    }

private:
    using Values = std::map<const Column*, QVariant>;

    void Note(int row, int column, const QString& why) { m_import.faults.push_back({row, column, why}); }

    bool ReadTitles(const QStringList& titles) {
        for (const QString& title : titles) {
            const auto known = std::find_if(m_list.columns.begin(), m_list.columns.end(), [&](const Column& column) {
                const auto is = [&title](const char* name) {
                    return title.trimmed().compare(QLatin1String(name), Qt::CaseInsensitive) == 0;
                };
                const bool isName = column.holds == Holds::Text && &column == &m_list.columns[1];
                return is(column.title) || is(column.field) || (isName && is("Name"));
            });
            m_columns.push_back(known == m_list.columns.end() ? nullptr : &*known);
            if (known == m_list.columns.end() && !title.trimmed().isEmpty())
                m_import.ignored += title.trimmed();
        }
        const auto has = [this](const Column& column) {
            return std::find(m_columns.begin(), m_columns.end(), &column) != m_columns.end();
        };
        const bool isLinks = m_list.list != List::Services && m_list.list != List::Objects;
        for (const Column& column : m_list.columns) {
            if (has(column) || !(isLinks || &column == MatchColumn()))
                continue;
            Note(0, -1, tr("The first row has no column \"%1\".").arg(QLatin1String(column.title)));
            return false;
        }
        return true;
    }

    const Column* MatchColumn() const {
        switch (m_match) {
        case Match::Key:
            return &m_list.columns[0];
        case Match::Name:
            return &m_list.columns[1];
        case Match::Number:
            return &m_list.columns[2];
        case Match::None:
            break;
        }
        return nullptr;
    }

    /// Read once, and anew after rows that others may name have changed.
    const Names& NamesOf(bool areObjects) const {
        std::optional<Names>& names = areObjects ? m_objects : m_services;
        if (!names)
            names.emplace(m_database, areObjects);
        return *names;
    }

    Result<QVariant> ValueOf(const Column& column, const QString& cell) const {
        QString text = cell.trimmed();
        // From a spreadsheet, which shows it as a text.
        if (text.size() > 1 && text[0] == u'\'' && QStringView(u"=+-@").contains(text[1]))
            text.remove(0, 1);
        const bool isObject = column.holds == Holds::Object;
        if (text.isEmpty())
            return isObject && qstrcmp(column.field, "d_HubId") == 0 ? QVariant(0) : QVariant();
        switch (column.holds) {
        case Holds::Text: {
            const QString stored = vni::FromUnicode(text, m_origin);
            if (stored.size() > LongestText)
                return Failure{tr("The text is longer than %1 characters.").arg(LongestText)};
            return QVariant(stored);
        }
        case Holds::YesNo:
            for (const char* const yes : {"yes", "1", "true", "-1"}) {
                if (text.compare(QLatin1String(yes), Qt::CaseInsensitive) == 0)
                    return QVariant(1);
            }
            for (const char* const no : {"no", "0", "false"}) {
                if (text.compare(QLatin1String(no), Qt::CaseInsensitive) == 0)
                    return QVariant(0);
            }
            return Failure{tr("\"%1\" is neither Yes nor No.").arg(text)};
        case Holds::Type:
            if (const std::optional<int> type = IndexIn(TypeNames, text))
                return QVariant(*type);
            return Failure{tr("\"%1\" is none of Counter, Printer, Display, Hub.").arg(text)};
        case Holds::Direction:
            if (const std::optional<int> direction = IndexIn(DirectionNames, text))
                return QVariant(*direction);
            return Failure{tr("\"%1\" is none of None, Left, Right, Up, Down.").arg(text)};
        case Holds::Object:
        case Holds::Service: {
            const Names& names = NamesOf(isObject);
            const Result<qint32> id = names.Find(text);
            if (!id)
                return Failure{id.Error()};
            if (column.type >= 0 && names.TypeOf(*id) != column.type)
                return Failure{tr("\"%1\" is no %2.").arg(text, QLatin1String(TypeNames[column.type]))};
            return QVariant(*id);
        }
        case Holds::Key:
        case Holds::Number:
            break;
        }
        bool isNumber = false;
        const qlonglong number = text.toLongLong(&isNumber);
        return isNumber ? Result<QVariant>(QVariant(number)) : Failure{tr("\"%1\" is no whole number.").arg(text)};
    }

    void TakeRow(int row, const QStringList& cells) {
        Values values;
        const auto faults = m_import.faults.size();
        for (qsizetype i = 0; i < cells.size(); ++i) {
            const Column* const column =
                i < static_cast<qsizetype>(m_columns.size()) ? m_columns[static_cast<std::size_t>(i)] : nullptr;
            if (!column)
                continue;
            const Result<QVariant> value = ValueOf(*column, cells[i]);
            if (value)
                values[column] = *value;
            else
                Note(row, static_cast<int>(i), value.Error());
        }
        if (m_import.faults.size() > faults)
            return;
        const Result<> done =
            m_list.list == List::Services || m_list.list == List::Objects ? TakeRecord(row, values) : TakeLink(values);
        if (!done)
            NoteRefusal(row, schema::ReadableError(done.Error()));
    }

    /// A refusal of the store names the column.
    void NoteRefusal(int row, QString why) {
        int at = -1;
        for (std::size_t i = 0; i < m_columns.size(); ++i) {
            const QString field = m_columns[i] ? QString::fromLatin1(m_columns[i]->field) + u' ' : QString();
            if (field.isEmpty() || !why.startsWith(field, Qt::CaseInsensitive))
                continue;
            why.replace(0, field.size() - 1, QLatin1String(m_columns[i]->title));
            at = static_cast<int>(i);
        }
        Note(row, at, why);
    }

    Result<std::vector<qint64>> Matching(const Values& values) const {
        const Column* const by = MatchColumn();
        const auto value = by ? values.find(by) : values.end();
        if (value == values.end() || value->second.isNull())
            return std::vector<qint64>();
        auto rows = m_database.Select({QStringLiteral("SELECT %1 FROM [%2] WHERE %3=?")
                                           .arg(Field(m_list.columns[0]), QLatin1String(m_list.table), Field(*by)),
                                       {value->second}});
        if (!rows)
            return Failure{rows.Error()};
        std::vector<qint64> keys;
        while (rows->next())
            keys.push_back(rows->value(0).toLongLong());
        if (keys.size() > 1)
            return Failure{tr("%1 rows are there with this %2.").arg(keys.size()).arg(QLatin1String(by->title))};
        if (keys.empty() && m_match == Match::Key)
            return Failure{tr("There is no row with ID %1.").arg(value->second.toString())};
        return keys;
    }

    /// The row is, or becomes, an object that others may stand behind.
    bool HoldsHub(const Values& values) const {
        return std::any_of(values.begin(), values.end(), [](const auto& value) {
            return value.first->holds == Holds::Type && value.second.toInt() == model::Hub;
        });
    }

    Result<> TakeRecord(int row, const Values& values) {
        const Result<std::vector<qint64>> keys = Matching(values);
        if (!keys)
            return Failure{keys.Error()};
        QStringList fields;
        QStringList marks;
        QVariantList bound;
        for (const auto& [column, value] : values) {
            if (column->holds == Holds::Key)
                continue;
            fields += keys->empty() ? Field(*column) : Field(*column) + QStringLiteral("=?");
            marks += QStringLiteral("?");
            bound += value;
        }
        if (fields.isEmpty())
            return {};
        if (!keys->empty()) {
            const auto [taken, isFirst] = m_takenBy.emplace(keys->front(), row);
            if (!isFirst)
                return Failure{
                    tr("Row %1 has this %2 too.").arg(taken->second).arg(QLatin1String(MatchColumn()->title))};
            const auto hub = std::find_if(values.begin(), values.end(), [](const auto& value) {
                return value.first->holds == Holds::Object && value.second.toLongLong() != 0;
            });
            if (hub != values.end() && hub->second.toLongLong() == keys->front())
                return Failure{tr("A hub cannot stand behind itself.")};
        }
        // Behind a hub of the same table: it may be one that has just been added.
        if (m_list.list == List::Objects && HoldsHub(values))
            m_objects.reset();
        if (keys->empty()) {
            ++m_import.added;
            auto added = m_database.Select({QStringLiteral("INSERT INTO [%1] (%2) VALUES (%3)")
                                                .arg(QLatin1String(m_list.table), fields.join(u','), marks.join(u',')),
                                            bound});
            if (!added)
                return Failure{added.Error()};
            m_takenBy.emplace(added->lastInsertId().toLongLong(), row);
            return {};
        }
        ++m_import.changed;
        bound += keys->front();
        return m_database.Run({QStringLiteral("UPDATE [%1] SET %2 WHERE %3=?")
                                   .arg(QLatin1String(m_list.table), fields.join(u','), Field(m_list.columns[0])),
                               bound});
    }

    Result<> TakeLink(const Values& values) {
        const auto value = [&](std::size_t place) {
            const auto found = values.find(&m_list.columns[place]);
            return found == values.end() ? QVariant() : found->second;
        };
        const QVariant first = value(0);
        const QVariant second = value(1);
        if (second.isNull() || (first.isNull() && m_list.list != List::ScanPlan))
            return Failure{tr("A cell is empty.")};
        if (m_list.list == List::Directions && value(2).isNull())
            return Failure{tr("A cell is empty.")};
        switch (m_list.list) {
        case List::Assignments:
            return Add(QStringLiteral("SELECT 1 FROM [Queue-Display] WHERE q_Id=? AND d_Id=?"), {first, second},
                       {QStringLiteral("INSERT INTO [Queue-Display] (q_Id,d_Id) VALUES (?,?)"), {first, second}}, {});
        case List::ScanPlan:
            return TakeEntry(first, second);
        case List::Directions:
            return Add(QStringLiteral("SELECT 1 FROM [Info-Direction] WHERE inf_Id=? AND d_Id=?"), {first, second},
                       {QStringLiteral("INSERT INTO [Info-Direction] (inf_Id,d_Id,Dir_Id) VALUES (?,?,?)"),
                        {first, second, value(2)}},
                       {QStringLiteral("UPDATE [Info-Direction] SET Dir_Id=? WHERE inf_Id=? AND d_Id=?"),
                        {value(2), first, second}});
        default:
            ++m_import.changed;
            return m_database.Run({QStringLiteral("UPDATE Display SET d_HubId=? WHERE d_Id=?"), {first, second}});
        }
    }

    /// A plan may hold an object several times: each row takes an entry of its own.
    Result<> TakeEntry(const QVariant& order, const QVariant& object) {
        auto entries =
            m_database.Select({QStringLiteral("SELECT ID FROM ScanPlan WHERE d_Id=? ORDER BY ID"), {object}});
        if (!entries)
            return Failure{entries.Error()};
        while (entries->next()) {
            const qint64 id = entries->value(0).toLongLong();
            if (!m_entries.insert(id).second)
                continue;
            entries->finish();
            ++m_import.changed;
            return m_database.Run({QStringLiteral("UPDATE ScanPlan SET [Order]=? WHERE ID=?"), {order, id}});
        }
        auto added =
            m_database.Select({QStringLiteral("INSERT INTO ScanPlan ([Order],d_Id) VALUES (?,?)"), {order, object}});
        if (!added)
            return Failure{added.Error()};
        m_entries.insert(added->lastInsertId().toLongLong());
        ++m_import.added;
        return {};
    }

    Result<> Add(const QString& looking, const QVariantList& bound, const Statement& adding,
                 const Statement& changing) {
        auto found = m_database.Select({looking, bound});
        if (!found)
            return Failure{found.Error()};
        const bool isThere = found->next();
        found->finish();
        ++(isThere ? m_import.changed : m_import.added);
        if (isThere)
            return changing.text.isEmpty() ? Result<>() : m_database.Run(changing);
        return m_database.Run(adding);
    }

    Database& m_database;
    const Description& m_list;
    const Match m_match;
    const vni::Origin m_origin;
    Import& m_import;
    std::vector<const Column*> m_columns;
    mutable std::optional<Names> m_objects;
    mutable std::optional<Names> m_services;
    std::map<qint64, int> m_takenBy; ///< rows of the store, by which rows of the table
    std::set<qint64> m_entries;      ///< of the scan plan that rows have taken
};

Import RunImport(Database& database, const Incoming& incoming, bool isReal) {
    Import import;
    bool isRolledBack = false;
    const Result<> done = database.Edit(tr("import %1").arg(NameOf(incoming.list)), [&]() -> Result<> {
        Importer(database, incoming, import).Run(incoming.table);
        isRolledBack = !isReal || !import.faults.empty();
        return isRolledBack ? Failure{QString()} : Result<>();
    });
    if (!done && !isRolledBack)
        import.error = schema::ReadableError(done.Error());
    return import;
}

} // namespace

QString NameOf(List list) {
    return tr(Of(list).name);
}

Result<std::vector<QStringList>> Export(const Database& database, List list) {
    const Description& description = Of(list);
    QStringList fields;
    QStringList titles;
    for (const Column& column : description.columns) {
        fields += Field(column);
        titles += QLatin1String(column.title);
    }
    const QString where = list == List::HubMembers ? QStringLiteral(" WHERE d_HubId<>0") : QString();
    auto rows = database.Select(
        {QStringLiteral("SELECT %1 FROM [%2]%3 ORDER BY %4")
             .arg(fields.join(u','), QLatin1String(description.table), where, QLatin1String(description.order))});
    if (!rows)
        return Failure{rows.Error()};
    const Names services(database, false);
    const Names objects(database, true);
    std::vector<QStringList> table{titles};
    while (rows->next()) {
        QStringList& cells = table.emplace_back();
        for (std::size_t i = 0; i < description.columns.size(); ++i) {
            const QVariant value = rows->value(static_cast<int>(i));
            const int number = value.toInt();
            switch (description.columns[i].holds) {
            case Holds::Text:
                cells += vni::ToUnicode(value.toString());
                break;
            case Holds::YesNo:
                cells += value.isNull() ? QString() : number != 0 ? QStringLiteral("Yes") : QStringLiteral("No");
                break;
            case Holds::Type:
                cells += !value.isNull() && number >= 0 && number < 4 ? QString::fromLatin1(TypeNames[number])
                                                                      : value.toString();
                break;
            case Holds::Direction:
                cells += !value.isNull() && number >= 0 && number < 5 ? QString::fromLatin1(DirectionNames[number])
                                                                      : value.toString();
                break;
            case Holds::Object:
                cells += number == 0 ? QString() : objects.Text(number);
                break;
            case Holds::Service:
                cells += services.Text(number);
                break;
            case Holds::Key:
            case Holds::Number:
                cells += value.toString();
                break;
            }
        }
    }
    return table;
}

Import Preview(Database& database, const Incoming& incoming) {
    return RunImport(database, incoming, false);
}

Import Take(Database& database, const Incoming& incoming) {
    return RunImport(database, incoming, true);
}

} // namespace lists
