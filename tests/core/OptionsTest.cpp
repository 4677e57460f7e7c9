#include "core/Options.h"

#include "core/EventLog.h"
#include "core/IniUtility.h"
#include "tests/support/Files.h"
#include "tests/support/TestClock.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

namespace {

class OptionsTest : public ::testing::Test {
protected:
    OptionsTest() {
        QObject::connect(&m_log, &EventLog::Written, [this](const QString& message) { m_messages += message; });
    }

    Options Read(const QByteArray& settings) {
        WriteFile(m_ini.IniPath, settings);
        m_messages.clear();
        return ReadOptions(m_ini, m_log);
    }

    QTemporaryDir m_folder;
    TestClock m_clock;
    EventLog m_log{m_folder.path(), m_clock};
    IniUtility m_ini{m_folder.filePath(QStringLiteral("Tallora.ini"))};
    QStringList m_messages;
};

} // namespace

TEST_F(OptionsTest, EveryKeyHasItsDefaultAndTheOptionLogShowsIt) {
    const Options options = Read("");
    EXPECT_EQ(options.InfoNumChars, 21);
    EXPECT_EQ(options.EndOfDay, 86400);
    EXPECT_TRUE(options.ReadAuto && options.PassNoNext && options.TransferNoNext && options.SendConfigOnError);
    EXPECT_EQ(options.AutoDeleteFromYear, QStringLiteral("2"));
    const QStringList expected = {
        u"**** Options ****"_qs, u"WakeupTime=15"_qs,        u"KeyDelayTime=3"_qs,       u"maxTxFail=3"_qs,
        u"MaxSilentTime=120"_qs, u"MultiTicketSeries=no"_qs, u"DisplayType=0"_qs,        u"MainDisplayType=0"_qs,
        u"ResetNew=no"_qs,       u"Voice Type=auto"_qs,      u"SendConfigOnStart=no"_qs, u"SendConfigOnError=yes"_qs,
        u"RoutedSeries=no"_qs,
    };
    EXPECT_EQ(m_messages, expected);
}

TEST_F(OptionsTest, ReadsValuesByTheirKind) {
    const Options options = Read("[System]\nInfoNumLine=4 lines\nEnd=17:30:05\nSchedule=YES\n"
                                 "[ReadData]\ninterval=1\nAuto=\" yes \"\n"
                                 "[Setup]\nPsd=bfl\n"
                                 "[options]\nPassNoNext=true\nMsgDelay=1.25s\nKeyDelayTime=abc\nMaxSilentTime "
                                 "=7\nFromToval=10\nRoutedSeries=yes\n"
                                 "[AutoReset]\nResetAt=06:05\n");
    EXPECT_EQ(options.InfoNumLine, 4);
    EXPECT_EQ(options.InfoNumChars, 28);
    EXPECT_EQ(options.EndOfDay, 17 * 3600 + 30 * 60 + 5);
    EXPECT_TRUE(options.Schedule && options.RoutedSeries);
    EXPECT_EQ(options.ReadInterval, 2);
    EXPECT_TRUE(options.ReadAuto);
    EXPECT_FALSE(options.PassNoNext);
    EXPECT_EQ(options.Psd, QStringLiteral("abc"));
    EXPECT_DOUBLE_EQ(options.MsgDelay, 1.25);
    EXPECT_EQ(options.KeyDelayTime, 0);
    EXPECT_EQ(options.MaxSilentTime, 7);
    EXPECT_EQ(options.FromToval, 10);
    EXPECT_EQ(options.ResetAt, QStringLiteral("060500"));
    EXPECT_TRUE(m_messages.contains(QStringLiteral("RoutedSeries=yes")));
}

TEST_F(OptionsTest, EveryOtherKeyIsReadUnderItsName) {
    const Options options =
        Read("[Setup]\nHourPerDay=9\n[options]\nActiveClients=yes\nWakeupTime=1\nSoftKeyDelay=yes\nPassPosition=2\n"
             "TransferNoNext=no\nMaxTxFail=4\nCmdRetry=5\ndelayStartup=6\nMultiTicketSeries=yes\nDisplayType=1\n"
             "MainDisplayType=1\nRunOverNight=yes\nSendConfigOnStart=yes\nSendConfigOnError=no\n"
             "[AutoDelete]\nEnable=yes\nFromYear=3\n[AutoReset]\nResetNew=yes\n");
    EXPECT_EQ(options.HourPerDay, 9);
    EXPECT_EQ(options.WakeupTime, 1);
    EXPECT_EQ(options.PassPosition, 2);
    EXPECT_EQ(options.MaxTxFail, 4);
    EXPECT_EQ(options.CmdRetry, 5);
    EXPECT_EQ(options.DelayStartup, 6);
    EXPECT_EQ(options.DisplayType, 1);
    EXPECT_EQ(options.MainDisplayType, 1);
    EXPECT_EQ(options.AutoDeleteFromYear, QStringLiteral("3"));
    EXPECT_TRUE(options.ActiveClients && options.SoftKeyDelay && options.MultiTicketSeries && options.RunOverNight);
    EXPECT_TRUE(options.SendConfigOnStart && options.AutoDeleteEnable && options.ResetNew);
    EXPECT_FALSE(options.TransferNoNext || options.SendConfigOnError);
}

TEST_F(OptionsTest, AnEmptyOrImpossibleValueLeavesTheDefault) {
    const Options options = Read("[ReadData]\ninterval=\n[System]\nInfoNumLine=9000\nEnd=25:00\n[options]\nWakeupTime="
                                 "70000\n[AutoReset]\nResetAt=noon\n");
    EXPECT_EQ(options.ReadInterval, 5);
    EXPECT_EQ(options.InfoNumLine, 3);
    EXPECT_EQ(options.WakeupTime, 15);
    EXPECT_EQ(options.EndOfDay, 86400);
    EXPECT_EQ(options.ResetAt, QStringLiteral("000000"));
    EXPECT_EQ(m_messages.filter(QStringLiteral("Settings: ")).size(), 4);
}

TEST_F(OptionsTest, TheVoiceTypeComesFromItsOwnFile) {
    const std::pair<QByteArray, int> cases[] = {
        {"[Comm]\nOrvexType=MSG\n", 1}, {"[comm]\norvextype=net\n", 2}, {"[Comm]\nOrvexType=tcp\n", 0}};
    for (const auto& [content, type] : cases) {
        WriteFile(m_folder.filePath(QStringLiteral("voice.ini")), content);
        EXPECT_EQ(Read("").VoiceType, type) << content.constData();
        EXPECT_EQ(m_ini.IniPath, m_folder.filePath(QStringLiteral("Tallora.ini")));
    }
}
