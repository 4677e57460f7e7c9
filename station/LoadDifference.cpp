#include "station/LoadDifference.h"

#include "link/Encodings.h"
#include "printers/PrinterTables.h"

#include <QCoreApplication>
#include <QStringList>

#include <algorithm>
#include <set>

namespace {

struct Words {
    Q_DECLARE_TR_FUNCTIONS(LoadDifference)
};

/// Adds "1 service renamed" or "2 services renamed" if there are any.
void Count(QStringList& words, qsizetype count, const QString& one, const QString& many) {
    if (count > 0)
        words += count == 1 ? one : many.arg(count);
}

/// The tables taken apart.
struct Tables {
    QByteArrayList keys;
    std::vector<QByteArray> names;
    std::vector<QByteArray> descriptions;
    QByteArray series;

    static constexpr qsizetype FieldLength = PrinterTables::TextPlaces + 1;

    static std::optional<Tables> Parse(QByteArrayView content) {
        Tables tables;
        bool isNumber = false;
        const int count = content.first(std::min<qsizetype>(content.size(), 2)).toByteArray().toInt(&isNumber, 16);
        if (!isNumber || content.size() != 2 + count * (2 + qsizetype(PrinterTables::RowLength)))
            return std::nullopt;
        const QByteArrayView rows = content.sliced(2 + 2 * count);
        for (int i = 0; i < count; ++i) {
            const QByteArrayView row = rows.sliced(i * qsizetype(PrinterTables::RowLength), PrinterTables::RowLength);
            tables.keys += content.sliced(2 + 2 * i, 2).toByteArray();
            tables.series += row[2];
            tables.names.push_back(row.sliced(3, FieldLength).toByteArray());
            tables.descriptions.push_back(row.sliced(3 + FieldLength, FieldLength).toByteArray());
        }
        return tables;
    }
};

/// How many of the places that both lists have differ.
template <typename List>
qsizetype Different(const List& before, const List& now) {
    qsizetype count = 0;
    for (std::size_t i = 0; i < std::min<std::size_t>(before.size(), now.size()); ++i) {
        using Index = decltype(before.size());
        count += before[static_cast<Index>(i)] == now[static_cast<Index>(i)] ? 0 : 1;
    }
    return count;
}

QStringList OfTables(const QByteArray& before, const QByteArray& now) {
    const std::optional<Tables> old = Tables::Parse(before);
    const std::optional<Tables> wanted = Tables::Parse(now);
    QStringList words;
    if (!old || !wanted)
        return words;
    const qsizetype more = wanted->keys.size() - old->keys.size();
    Count(words, more, Words::tr("1 service more"), Words::tr("%1 services more"));
    Count(words, -more, Words::tr("1 service fewer"), Words::tr("%1 services fewer"));
    Count(words, Different(old->names, wanted->names), Words::tr("1 service renamed"),
          Words::tr("%1 services renamed"));
    Count(words, Different(old->descriptions, wanted->descriptions), Words::tr("1 description changed"),
          Words::tr("%1 descriptions changed"));
    Count(words, Different(old->keys, wanted->keys), Words::tr("1 key changed"), Words::tr("%1 keys changed"));
    Count(words, Different(old->series, wanted->series), Words::tr("1 series changed"), Words::tr("%1 series changed"));
    return words;
}

QStringList OfMembers(const QByteArray& before, const QByteArray& now) {
    const auto members = [](const QByteArray& list) {
        std::multiset<QByteArray> found;
        for (qsizetype i = 1; i + 1 < list.size(); i += 2)
            found.insert(list.mid(i, 2));
        return found;
    };
    const std::multiset<QByteArray> old = members(before);
    const std::multiset<QByteArray> wanted = members(now);
    const auto missing = [](const auto& from, const auto& in) {
        std::vector<QByteArray> lacking;
        std::set_difference(from.begin(), from.end(), in.begin(), in.end(), std::back_inserter(lacking));
        return static_cast<qsizetype>(lacking.size());
    };
    QStringList words;
    Count(words, missing(wanted, old), Words::tr("1 device more"), Words::tr("%1 devices more"));
    Count(words, missing(old, wanted), Words::tr("1 device fewer"), Words::tr("%1 devices fewer"));
    if (words.isEmpty())
        words += Words::tr("another order of the devices");
    return words;
}

/// The lists of services, counters, printers and displays of a block without stuffing; nothing if it is none.
std::optional<QByteArrayList> ListsOf(const QByteArray& block) {
    constexpr qsizetype Head = 10;
    QByteArrayList lists;
    qsizetype place = Head;
    int counters = 0;
    for (int list = 0; list < 4; ++list) {
        if (place >= block.size())
            return std::nullopt;
        const int count = encoding::FromSmallNumber(block[place]);
        if (list == 1)
            counters = count;
        const int lengths[] = {3, 3, 2, 1 + counters};
        const qsizetype length = 1 + qsizetype(count) * lengths[list];
        if (count < 0 || place + length > block.size())
            return std::nullopt;
        lists += block.mid(place, length);
        place += length;
    }
    return lists;
}

QStringList OfBlocks(const QByteArray& before, const QByteArray& now) {
    const std::optional<QByteArrayList> old = ListsOf(before);
    const std::optional<QByteArrayList> wanted = ListsOf(now);
    QStringList words;
    if (!old || !wanted)
        return words;
    const QString names[] = {Words::tr("services changed"), Words::tr("counters changed"),
                             Words::tr("printers changed"), Words::tr("displays or directions changed")};
    for (int list = 0; list < 4; ++list) {
        if ((*old)[list] != (*wanted)[list])
            words += names[list];
    }
    return words;
}

} // namespace

QString DifferenceOf(LoadKind kind, const QByteArray& before, const QByteArray& now) {
    QStringList words;
    switch (kind) {
    case LoadKind::Tables:
        words = OfTables(before, now);
        break;
    case LoadKind::Members:
        words = OfMembers(before, now);
        break;
    case LoadKind::Block:
        words = OfBlocks(before, now);
        break;
    case LoadKind::Form:
        words += Words::tr("the form was edited");
        break;
    case LoadKind::Logos:
        words += Words::tr("the logos were changed");
        break;
    case LoadKind::Letters:
        words += Words::tr("other letters");
        break;
    case LoadKind::Clock:
        words +=
            Words::tr("local time was %1, now it is %2").arg(QString::fromLatin1(before), QString::fromLatin1(now));
        break;
    }
    return words.isEmpty() ? Words::tr("the content is another one") : words.join(QStringLiteral(", "));
}
