#include "core/EventLog.h"

#include "tests/support/Files.h"
#include "tests/support/TestClock.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QTemporaryDir>

namespace {

class EventLogTest : public ::testing::Test {
protected:
    QString File(int day) const { return m_folder.filePath(QStringLiteral("Log/Log%1.txt").arg(day)); }

    QTemporaryDir m_folder;
    TestClock m_clock;
    EventLog m_log{m_folder.path(), m_clock};
};

} // namespace

TEST_F(EventLogTest, StampsEachLineAndNamesTheFileAfterTheDay) {
    m_clock.Time = QDateTime(QDate(2026, 3, 5), QTime(7, 8, 9));
    m_log.WriteLog(QStringLiteral("first"));
    m_clock.Time = QDateTime(QDate(2026, 4, 5), QTime(17, 0, 0));
    m_log.WriteLog(QStringLiteral("a month later"), EventLog::Error);
    m_clock.Time = QDateTime(QDate(2026, 4, 30), QTime(0, 0, 0));
    m_log.WriteLog(QStringLiteral("Máy"));
    EXPECT_EQ(ReadFile(File(5)), "2026-03-05 07:08:09##first\n2026-04-05 17:00:00##a month later\n");
    EXPECT_EQ(ReadFile(File(30)), "2026-04-30 00:00:00##M\xC3\xA1y\n");
}

TEST_F(EventLogTest, EmptiesAFileAboveAMillionBytesFirst) {
    QDir(m_folder.path()).mkdir(QStringLiteral("Log"));
    const struct {
        int size;
        bool emptied;
    } cases[] = {{1'000'000, false}, {1'000'001, true}};
    for (const auto& [size, emptied] : cases) {
        WriteFile(File(18), QByteArray(size, 'x'));
        m_log.AppendLogFile(QStringLiteral("line"));
        EXPECT_EQ(ReadFile(File(18)).size(), (emptied ? 0 : size) + 5) << size;
    }
}

TEST_F(EventLogTest, LosesALineWithoutHarmAndMakesItsFolderAnew) {
    m_log.WriteLog(QStringLiteral("gone"));
    ASSERT_TRUE(QDir(m_folder.filePath(QStringLiteral("Log"))).removeRecursively());
    WriteFile(m_folder.filePath(QStringLiteral("Log")), "a file in the folder's place");
    m_log.WriteLog(QStringLiteral("lost"));
    ASSERT_TRUE(QFile::remove(m_folder.filePath(QStringLiteral("Log"))));
    m_log.WriteLog(QStringLiteral("kept"));
    EXPECT_EQ(ReadFile(File(18)), "2026-11-18 06:13:38##kept\n");
}
