#include "link/CommandNames.h"

#include <QFile>
#include <QRegularExpression>

#include <gtest/gtest.h>

#include <map>

namespace {

using Meanings = std::map<QString, QString>; ///< by letter

/// What the tables of the protocol's description say, by the heading that they stand under.
std::map<QString, Meanings> DescribedCommands() {
    QFile file(QStringLiteral(TEST_DATA_FOLDER "/../../docs/protocol.md"));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    static const QRegularExpression row(QStringLiteral("^\\| `(.)` \\| ([^|]+) \\|"));
    std::map<QString, Meanings> described;
    QString heading;
    while (!file.atEnd()) {
        const QString line = QString::fromUtf8(file.readLine()).trimmed();
        if (line.startsWith(u'#'))
            heading = line.section(u' ', 1);
        else if (const QRegularExpressionMatch match = row.match(line); match.hasMatch())
            described[heading][match.captured(1)] = match.captured(2);
    }
    return described;
}

template <typename Lookup>
Meanings Known(Lookup lookup) {
    Meanings known;
    for (char letter = 'A'; letter <= 'Z'; ++letter) {
        if (const QString meaning = lookup(letter); !meaning.isEmpty())
            known[QString(QLatin1Char(letter))] = meaning;
    }
    return known;
}

TEST(CommandNames, TheDescriptionOfTheProtocolHasThemAll) {
    const auto of = [](std::optional<model::ObjectType> type) {
        return Known([type](char letter) { return commands::Meaning(type, letter); });
    };
    auto described = DescribedCommands();
    EXPECT_EQ(described[QStringLiteral("Counter keypad")], of(model::Counter));
    EXPECT_EQ(described[QStringLiteral("Ticket printer")], of(model::Printer));
    EXPECT_EQ(described[QStringLiteral("Information display")], of(model::Display));
    EXPECT_EQ(described[QStringLiteral("Hub")], of(model::Hub));
    EXPECT_EQ(described[QStringLiteral("Power unit and address 0")], of(std::nullopt));
    EXPECT_EQ(described[QStringLiteral("Broadcast commands")], Known(commands::BroadcastMeaning));
}

} // namespace
