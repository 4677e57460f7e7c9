#include "link/CommLine.h"

#include "core/IniUtility.h"
#include "platform/SerialControl.h"
#include "tests/support/Files.h"
#include "tests/support/PseudoTerminal.h"
#include "tests/support/TestClock.h"
#include "tests/support/TestDialogs.h"
#include "tests/support/Waiting.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

namespace {

class CommLineTest : public ::testing::Test {
protected:
    CommLineTest() {
        QObject::connect(
            &m_line, &CommLine::StatusChanged, [this](const QString& device, const QString& baud, bool opened) {
                m_status = device + u' ' + baud + (opened ? QStringLiteral(" open") : QStringLiteral(" closed"));
            });
    }

    void Configure(const QString& device, const QString& baud) {
        m_line.Settings = {.CommDevice = device, .CommName = device, .CommBaud = baud};
    }

    QTemporaryDir m_folder;
    IniUtility m_ini{m_folder.filePath(QStringLiteral("Tallora.ini"))};
    TestClock m_clock;
    TestDialogs m_dialogs;
    SerialControl m_control;
    CommLine m_line{m_control, m_ini, m_dialogs, m_clock};
    QString m_status;
};

} // namespace

TEST_F(CommLineTest, LoadsAndSavesItsTwoKeys) {
    EXPECT_FALSE(m_line.LoadCommSettings());
    WriteFile(m_ini.IniPath, "[Comm]\nBaud=9600\n");
    EXPECT_FALSE(m_line.LoadCommSettings());
    EXPECT_TRUE(m_line.Settings.CommBaud.isEmpty());
    WriteFile(m_ini.IniPath, "[Comm]\nDevice=COM3\n");
    EXPECT_FALSE(m_line.LoadCommSettings());
    EXPECT_EQ(m_line.Settings.CommName, QStringLiteral("COM3"));
    Configure(QStringLiteral("ttyUSB1"), QStringLiteral("19200"));
    EXPECT_TRUE(m_line.SaveCommSettings());
    Configure({}, {});
    EXPECT_TRUE(m_line.LoadCommSettings());
    EXPECT_EQ(m_line.Settings.CommDevice, QStringLiteral("ttyUSB1"));
    EXPECT_EQ(m_line.Settings.CommBaud, QStringLiteral("19200"));
    EXPECT_EQ(ReadFile(m_ini.IniPath), "[Comm]\nDevice=ttyUSB1\nBaud=19200\n") << "nobody asked for more";
    m_line.Settings.LocalEcho = true;
    EXPECT_TRUE(m_line.SaveCommSettings());
    EXPECT_TRUE(m_line.LoadCommSettings());
    EXPECT_TRUE(m_line.Settings.LocalEcho && !m_line.Settings.StrictReplies);
    m_line.Settings.LocalEcho = false;
    EXPECT_TRUE(m_line.SaveCommSettings());
    EXPECT_EQ(ReadFile(m_ini.IniPath), "[Comm]\nDevice=ttyUSB1\nBaud=19200\nLocalEcho=no\n");
}

TEST_F(CommLineTest, OpensWithATrimmedSpeedAndReopens) {
    const PseudoTerminal terminal;
    Configure(terminal.Path(), QStringLiteral(" 9600 "));
    EXPECT_TRUE(Await(m_line.OpenPort()));
    EXPECT_EQ(m_line.Settings.CommState, 0);
    EXPECT_EQ(m_control.BaudRate(), 9600);
    m_line.Settings.CommBaud = QStringLiteral("300");
    EXPECT_TRUE(Await(m_line.OpenPort()));
    EXPECT_EQ(m_control.BaudRate(), 300);
    m_line.SetCommStatus(QStringLiteral("COM1"), QStringLiteral("300"), true);
    EXPECT_EQ(m_status, QStringLiteral("COM1 300 open"));
    EXPECT_EQ(m_line.TimeConnected(), m_clock.Time);
}

TEST_F(CommLineTest, ALineThatDoesNotOpenIsToldInABox) {
    const PseudoTerminal terminal;
    SerialControl other;
    ASSERT_TRUE(other.SetPort(terminal.Path(), QStringLiteral("9600,n,8,1")));
    ASSERT_TRUE(other.Open());
    for (const QString& device : {QString(), terminal.Path(), QStringLiteral("/dev/no-such-port")}) {
        Configure(device, QStringLiteral("9600"));
        m_dialogs.ExpectMessage(BoxKind::Critical, QStringLiteral("COM port used by another program!"));
        EXPECT_FALSE(Await(m_line.OpenPort())) << qPrintable(device);
        EXPECT_EQ(m_line.Settings.CommState, 1);
        EXPECT_FALSE(m_line.PortIsOpen());
    }
}

TEST_F(CommLineTest, SettingsThatMakeNoSenseKeepTheOldState) {
    const PseudoTerminal terminal;
    Configure(terminal.Path(), QStringLiteral("9600"));
    ASSERT_TRUE(Await(m_line.OpenPort()));
    m_line.Settings.CommBaud = QStringLiteral("fast");
    m_dialogs.ExpectMessage(BoxKind::Critical, QStringLiteral("\"fast\" is no speed in bit/s."));
    EXPECT_FALSE(Await(m_line.OpenPort()));
    EXPECT_TRUE(m_line.PortIsOpen());
    EXPECT_EQ(m_line.Settings.CommState, 0);
}

TEST_F(CommLineTest, ALineThatGoesAwayShowsAsClosed) {
    PseudoTerminal terminal;
    Configure(terminal.Path(), QStringLiteral("9600"));
    ASSERT_TRUE(Await(m_line.OpenPort()));
    terminal.HangUp();
    EXPECT_TRUE(WaitUntil([this] { return !m_line.PortIsOpen(); }));
    EXPECT_EQ(m_status, terminal.Path() + QStringLiteral(" 9600 closed"));
}
