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

/// Which service of now is which one of before: the longest row of services that have kept their names and order, and
/// between those one after the other.
struct Matching {
    std::vector<std::pair<std::size_t, std::size_t>> same; ///< before, now
    std::vector<std::size_t> gone;
    std::vector<std::size_t> come;

    Matching(const std::vector<QByteArray>& before, const std::vector<QByteArray>& now) {
        // Length of the longest common row from here on.
        std::vector<std::vector<int>> length(before.size() + 1, std::vector<int>(now.size() + 1));
        for (std::size_t b = before.size(); b-- > 0;) {
            for (std::size_t n = now.size(); n-- > 0;)
                length[b][n] =
                    before[b] == now[n] ? length[b + 1][n + 1] + 1 : std::max(length[b + 1][n], length[b][n + 1]);
        }
        std::size_t b = 0;
        std::size_t n = 0;
        while (b < before.size() || n < now.size()) {
            const bool isKept = b < before.size() && n < now.size() && before[b] == now[n];
            if (isKept) {
                PairUp();
                same.emplace_back(b++, n++);
            } else if (n == now.size() || (b < before.size() && length[b + 1][n] >= length[b][n + 1])) {
                m_gone.push_back(b++);
            } else {
                m_come.push_back(n++);
            }
        }
        PairUp();
    }

private:
    void PairUp() {
        const std::size_t both = std::min(m_gone.size(), m_come.size());
        for (std::size_t i = 0; i < both; ++i)
            same.emplace_back(m_gone[i], m_come[i]);
        gone.insert(gone.end(), m_gone.begin() + qsizetype(both), m_gone.end());
        come.insert(come.end(), m_come.begin() + qsizetype(both), m_come.end());
        m_gone.clear();
        m_come.clear();
    }

    std::vector<std::size_t> m_gone; ///< since the last service that was kept
    std::vector<std::size_t> m_come;
};

/// Takes services that stand at another place out of those that have gone and come.
qsizetype TakeMoved(Matching& matching, const std::vector<QByteArray>& before, const std::vector<QByteArray>& now) {
    const std::size_t gone = matching.gone.size();
    std::erase_if(matching.gone, [&](std::size_t b) {
        const auto found = std::find_if(matching.come.begin(), matching.come.end(),
                                        [&](std::size_t n) { return now[n] == before[b]; });
        if (found == matching.come.end())
            return false;
        matching.same.emplace_back(b, *found);
        matching.come.erase(found);
        return true;
    });
    return static_cast<qsizetype>(gone - matching.gone.size());
}

QStringList OfTables(const QByteArray& before, const QByteArray& now) {
    const std::optional<Tables> old = Tables::Parse(before);
    const std::optional<Tables> wanted = Tables::Parse(now);
    QStringList words;
    if (!old || !wanted)
        return words;
    Matching matching(old->names, wanted->names);
    const qsizetype moved = TakeMoved(matching, old->names, wanted->names);
    const auto different = [&matching](const auto& before, const auto& now) {
        return std::count_if(matching.same.begin(), matching.same.end(), [&](const auto& places) {
            using Index = decltype(before.size());
            return before[static_cast<Index>(places.first)] != now[static_cast<Index>(places.second)];
        });
    };
    Count(words, static_cast<qsizetype>(matching.come.size()), Words::tr("1 service more"),
          Words::tr("%1 services more"));
    Count(words, static_cast<qsizetype>(matching.gone.size()), Words::tr("1 service fewer"),
          Words::tr("%1 services fewer"));
    Count(words, moved, Words::tr("1 service at another place"), Words::tr("%1 services at other places"));
    Count(words, different(old->names, wanted->names), Words::tr("1 service renamed"),
          Words::tr("%1 services renamed"));
    Count(words, different(old->descriptions, wanted->descriptions), Words::tr("1 description changed"),
          Words::tr("%1 descriptions changed"));
    Count(words, different(old->keys, wanted->keys), Words::tr("1 key changed"), Words::tr("%1 keys changed"));
    // Where services come and go the numbers of the series move with them.
    if (matching.come.empty() && matching.gone.empty() && moved == 0)
        Count(words, different(old->series, wanted->series), Words::tr("1 series changed"),
              Words::tr("%1 series changed"));
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
