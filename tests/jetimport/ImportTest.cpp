#include "database/JetTakeover.h"
#include "tests/jetimport/JetFixture.h"
#include "tests/support/Files.h"

#include <QDir>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace jetfixture;

namespace {

// Lists of texts fail unreadably.
std::string Lines(const QStringList& lines) {
    return lines.join(u'\n').toStdString();
}

QByteArray Wide(QStringView text) {
    return QByteArray(reinterpret_cast<const char*>(text.utf16()), text.size() * 2);
}

class Import : public ::testing::Test {
protected:
    QTemporaryDir m_folder;
    QString m_source = m_folder.filePath(QStringLiteral("old.mdb"));
    QString m_target = m_folder.filePath(QStringLiteral("new.db"));

    Finished Run(const QByteArray& content) {
        QFile::remove(m_target);
        WriteFile(m_source, content);
        const Finished finished = jetfixture::Import(m_source, m_target);
        EXPECT_EQ(ReadFile(m_source), content);
        // Whatever happened: a whole store, or nothing at all.
        QStringList expected = {QStringLiteral("old.mdb")};
        if (finished.code == 0) {
            expected.prepend(QStringLiteral("new.db"));
            EXPECT_EQ(JetTakeover::CheckStore(m_target).Error(), QString());
        } else {
            EXPECT_EQ(finished.code, 1);
            EXPECT_TRUE(finished.output.contains(QStringLiteral("error "))) << qPrintable(finished.output);
        }
        EXPECT_EQ(QDir(m_folder.path()).entryList(QDir::Files), expected);
        return finished;
    }

    QString Error(const QByteArray& content) {
        const Finished finished = Run(content);
        EXPECT_EQ(finished.code, 1);
        return finished.output.section(QStringLiteral("error "), 1).trimmed();
    }

    QStringList All(const char* table) {
        return Rows(m_target, QStringLiteral("SELECT * FROM [%1] ORDER BY rowid").arg(QString::fromLatin1(table)));
    }
};

} // namespace

TEST_F(Import, TakesEveryValueOver) {
    ASSERT_EQ(Run(Bytes()).code, 0);
    EXPECT_EQ(Lines(All("Queue")),
              Lines({u"1|1|1000|0|1|'G\u00F4\u00FBi tie\u00E0n'|'Qua\u00E0y $1'|'Deposits'|1"_qs,
                     u"2|2|2000|0|1|'Ru\u00F9t tie\u00E0n'|'Qua\u00E0y $1'|'Withdrawals'|2"_qs,
                     u"3|3|3000|0|1|'Chuye\u00E5n tie\u00E0n'|'Qua\u00E0y $1'|'Transfers'|3"_qs,
                     u"4|4|4000|3|1|'Ngoa\u00EFi te\u00E4'|'Qua\u00E0y $1'|'Shares the series of 3'|4"_qs,
                     u"5|5|5000|0|0|'The\u00FB'|'Qua\u00E0y $1'|'Not in use'|5"_qs,
                     u"6|6|-|-|1|'Kha\u00F9ch ha\u00F8ng \u00F6u tie\u00E2n'|-|-|-"_qs}));
    EXPECT_EQ(Lines(All("Display")),
              Lines({u"1|1|1|'Qua\u00E0y 1'|1|0|0|0|0|' V1 '|-|'3'"_qs, u"2|2|2|'Qua\u00E0y 2'|1|0|0|0|0|-|-|-"_qs,
                     u"3|3|3|'Qua\u00E0y 3'|1|0|9|0|1|'V3'|-|''"_qs, u"4|4|4|'Qua\u00E0y 4'|1|0|9|0|0|-|-|-"_qs,
                     u"5|5|4|'Qua\u00E0y 5'|1|0|0|0|0|-|-|-"_qs, u"6|1|32|'Ma\u00F9y in 1'|1|1|0|0|0|-|-|-"_qs,
                     u"7|2|33|'Ma\u00F9y in 2'|1|1|9|0|0|-|-|-"_qs,
                     u"8|1|40|'Ba\u00FBng ch\u00EDnh'|1|2|0|0|0|-|-|'100101110020222'"_qs,
                     u"9|1|64|'HUB 1'|1|3|0|0|0|-|-|-"_qs, u"10|9|9|'Qua\u00E0y cu\u00F5'|0|0|0|0|0|-|-|-"_qs}));
    EXPECT_EQ(All("Queue-Display").join(u' '),
              u"1|1|1 2|1|2 3|2|1 4|2|3 5|3|3 6|3|4 7|4|4 8|5|2 9|6|1 10|6|2 11|6|3"_qs);
    EXPECT_EQ(All("ScanPlan").join(u' '), u"1|1|1|- 2|2|2|- 3|3|3|- 4|4|4|- 5|10|5|-"_qs);
    EXPECT_EQ(All("Info-Direction").join(u' '), u"8|1|1|1 8|2|1|2 8|3|2|3 8|4|3|4 8|5|0|5"_qs);
    EXPECT_EQ(All("Hub") + All("Message"), QStringList());
    // Seven columns: the four of later days are the upgrade's to add.
    EXPECT_EQ(Lines(All("rData")),
              Lines({u"1|1001|1|0|'2026-11-22 08:00:05'|0|1"_qs, u"2|1002|1|-|'2026-11-22 08:01:10'|0|0"_qs,
                     u"3|1003|1|1|'2026-11-22 08:03:00'|0|1"_qs, u"4|2001|2|0|'2026-11-22 08:04:30'|0|0"_qs,
                     u"5|3001|4|0|'2026-11-22 08:05:00'|0|0"_qs, u"6|1004|1|3|'2026-11-22 08:07:59'|0|0"_qs,
                     u"7|9999|1|0|'2026-11-22 08:09:00'|1|0"_qs}));
    QStringList history;
    for (int id = 1; id <= 70; ++id) {
        const int month = (id - 1) % 10 + 1;
        history += QString::asprintf("%d|%d|%d|0|'%d-%02d-15 09:%02d:00'|0|1", id, 1000 + month, month % 4 + 1,
                                     2020 + (id - 1) / 10, month, month);
    }
    EXPECT_EQ(Lines(All("qData")), Lines(history));
}

TEST_F(Import, CountersGoOnBehindTheHighestKeyEverGiven) {
    ASSERT_EQ(Run(WithoutTickets()).code, 0);
    EXPECT_EQ(All("rData"), QStringList());
    EXPECT_EQ(Rows(m_target, QStringLiteral("SELECT name, seq FROM sqlite_sequence ORDER BY name")),
              (QStringList{u"'Display'|10"_qs, u"'Info-Direction'|5"_qs, u"'Queue'|6"_qs, u"'Queue-Display'|11"_qs,
                           u"'ScanPlan'|5"_qs, u"'qData'|70"_qs, u"'rData'|7"_qs}));
}

TEST_F(Import, FollowsAMovedRowAndReadsItOnce) {
    ASSERT_EQ(Run(Bytes()).code, 0);
    const QStringList tickets = All("rData");
    ASSERT_EQ(Run(WithMovedTicket(3)).code, 0);
    EXPECT_EQ(All("rData"), tickets);
}

TEST_F(Import, ReadsLongTextsWhereverTheyLie) {
    const QString text = QStringLiteral("Xin ch\u00E0o! ").repeated(40) + QChar(0x1EBF);
    ASSERT_EQ(Run(WithMessages(Wide(text))).code, 0);
    const QString quoted = u'\'' + text + u'\'';
    EXPECT_EQ(Lines(All("Message")),
              Lines({u"1|"_qs + quoted, u"2|"_qs + quoted, u"3|"_qs + quoted, QStringLiteral("4|-")}));
}

TEST_F(Import, CarriesUnknownColumnsAndMakesLackingOnes) {
    const auto place = Bytes().indexOf(Wide(u"Notes"), 33 * PageSize);
    ASSERT_LT(place, 34 * PageSize);
    const Finished finished = Run(Bytes().replace(place, 2, QByteArray("V\0", 2)));
    ASSERT_EQ(finished.code, 0);
    EXPECT_TRUE(finished.output.contains(u"note Table ScanPlan has no column Notes; it is made anew."_qs));
    EXPECT_EQ(Rows(m_target, QStringLiteral("SELECT name FROM pragma_table_info('ScanPlan')")).join(u' '),
              u"'ID' 'd_Id' 'Order' 'Notes' 'Votes'"_qs);
}

TEST_F(Import, AHundredThousandTicketsArrive) {
    const Finished finished = Run(WithTickets(100'000));
    ASSERT_EQ(finished.code, 0) << qPrintable(finished.output);
    EXPECT_EQ(finished.output.section(u'\n', -2), u"done 100114\n"_qs);
    EXPECT_EQ(Rows(m_target, QStringLiteral("SELECT count(*), min(ID), max(ID), sum(DisplayId IS NULL), sum(Announced)"
                                            " FROM rData WHERE ID > 7")),
              QStringList{u"100000|8|100007|10000|50000"_qs});
    EXPECT_EQ(Rows(m_target, QStringLiteral("SELECT * FROM rData WHERE ID IN (8, 100006, 100007)")),
              (QStringList{u"8|0|1|-|'2026-11-22 08:00:00'|0|1"_qs, u"100006|8|3|0|'2026-11-23 11:46:38'|0|1"_qs,
                           u"100007|9|4|0|'2026-11-23 11:46:39'|0|0"_qs}));
}

TEST_F(Import, SaysWhatIsWrongWithAFile) {
    const QByteArray good = Bytes();
    const auto flipped = [&](int place) {
        QByteArray bytes = good;
        bytes[place] = char(bytes[place] ^ 0x55);
        return bytes;
    };
    const struct {
        const char* what;
        QByteArray content;
        QString error;
    } cases[] = {
        {"zeros", QByteArray(100'000, '\0'), u"The file cannot be taken over: it is not an Access database."_qs},
        {"text", "hello", u"The file cannot be taken over: it is not an Access database."_qs},
        {"password", flipped(0x42), u"The file cannot be taken over: it is protected by a password."_qs},
        {"last byte of the password", flipped(0x69),
         u"The file cannot be taken over: it is protected by a password."_qs},
        {"encrypted", flipped(0x3E), u"The file cannot be taken over: it is encrypted."_qs},
        {"cut in the head", good.first(100), u"The file cannot be taken over: its first page is cut off."_qs},
        {"a table with another name", QByteArray(good).replace(Wide(u"ScanPlan"), Wide(u"ScanPlam")),
         u"It is no database of this program: the table(s) ScanPlan are missing."_qs},
        {"rows cut off", QByteArray(good).replace(TicketPage * PageSize, PageSize, QByteArray(PageSize, '\0')),
         u"The file is damaged: table rData: only 0 of its 7 rows can be read."_qs},
        // The second row of rData takes the key of the first.
        {"a key twice", QByteArray(good).replace(TicketPage * PageSize + 0xFCC, 1, "\1"),
         u"Table rData, row 2 (ID 1): Another row has the same key."_qs},
    };
    for (const auto& c : cases)
        EXPECT_EQ(Error(c.content).toStdString(), c.error.toStdString()) << c.what;
}

TEST_F(Import, LeavesNothingOfADamagedFile) {
    const QByteArray good = Bytes();
    for (qsizetype length = 1; length < good.size(); length += length < PageSize ? 511 : 3 * PageSize + 517)
        Run(good.first(length));
    QRandomGenerator random(20261122);
    for (int round = 0; round < 60; ++round) {
        QByteArray bytes = good;
        for (int flips = 1 + random.bounded(40); flips > 0; --flips) {
            // Half of them where the descriptions and the rows lie.
            const int pages[] = {2, 14, 15, 24, TicketDefinitionPage, 45, TicketPage, 62};
            const qsizetype place = flips % 2 == 0 ? random.bounded(qint64(bytes.size()))
                                                   : pages[random.bounded(8)] * PageSize + random.bounded(PageSize);
            bytes[place] = char(random.bounded(256));
        }
        Run(bytes);
        if (HasFailure())
            FAIL() << "round " << round;
    }
}

TEST_F(Import, NeverTouchesAnExistingFileAndNamesAFolderThatRefuses) {
    WriteFile(m_source, Bytes());
    WriteFile(m_target, "mine");
    EXPECT_EQ(jetfixture::Import(m_source, m_target).code, 1);
    EXPECT_EQ(ReadFile(m_target), "mine");
    // Nor a folder of somebody else's under the name that the import would work in.
    ASSERT_TRUE(QFile::remove(m_target));
    ASSERT_TRUE(QDir().mkdir(m_target + QStringLiteral(".work")));
    WriteFile(m_target + QStringLiteral(".work/mine"), "kept");
    EXPECT_EQ(jetfixture::Import(m_source, m_target).code, 1);
    EXPECT_EQ(ReadFile(m_target + QStringLiteral(".work/mine")), "kept");
    const Finished refused = jetfixture::Import(m_source, QStringLiteral("/proc/new.db"));
    EXPECT_EQ(refused.code, 1);
    EXPECT_TRUE(refused.output.startsWith(QStringLiteral("error The new store cannot be made")))
        << qPrintable(refused.output);
}
