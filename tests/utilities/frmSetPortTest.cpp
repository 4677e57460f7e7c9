#include "utilities/frmSetPort.h"

#include "tests/support/OpenStation.h"
#include "tests/support/PseudoTerminal.h"
#include "tests/support/Waiting.h"

#include <gtest/gtest.h>

#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

namespace {

class frmSetPortTest : public StationFolder {
protected:
    void Show(const QString& savedPort, const QString& savedBaud) {
        m_station.UsePort(savedPort, savedBaud);
        m_window = std::make_unique<frmSetPort>(
            m_station, QList<SerialControl::Port>{{m_terminal.Path(), QStringLiteral("Adapter")}});
        m_window->show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(m_window.get()));
    }

    QComboBox& Box(const char* name) const { return *m_window->findChild<QComboBox*>(QLatin1String(name)); }

    void Set() const {
        auto* button = m_window->findChild<QPushButton*>(QStringLiteral("cmdOK"));
        ASSERT_TRUE(button->isVisible() && button->isEnabled());
        QTest::mouseClick(button, Qt::LeftButton);
    }

    QString Saved(const QString& key) const {
        QString value;
        m_station.ini.ReadIni(QStringLiteral("Comm"), key, value);
        return value;
    }

    PseudoTerminal m_terminal;
    std::unique_ptr<frmSetPort> m_window;
};

} // namespace

TEST_F(frmSetPortTest, OffersNamedAndRealPortsAndShowsTheSavedChoice) {
    const struct {
        QString port;
        QString baud;
        QString shownBaud;
    } cases[] = {
        {QStringLiteral("COM3"), QStringLiteral(" 9600 "), QStringLiteral("9600")},
        {m_terminal.Path(), QStringLiteral("57600"), QString()},
        {QStringLiteral("ttyACM7"), QStringLiteral("115200"), QString()},
        {QString(), QString(), QString()},
        {QStringLiteral("COM1"), QStringLiteral("00"), QString()},
    };
    for (const auto& [port, baud, shownBaud] : cases) {
        Show(port, baud);
        EXPECT_EQ(Box("cboModems").currentText(), port);
        EXPECT_EQ(Box("cboBaud").currentText(), shownBaud);
        EXPECT_EQ(Box("cboModems").itemText(7), QStringLiteral("COM8"));
        EXPECT_EQ(Box("cboModems").itemText(8), m_terminal.Path());
        EXPECT_EQ(Box("cboModems").itemData(8, Qt::ToolTipRole).toString(), QStringLiteral("Adapter"));
        EXPECT_EQ(Box("cboBaud").count(), 10);
    }
}

TEST_F(frmSetPortTest, AnIncompleteChoiceChangesNothing) {
    Show(m_terminal.Path(), QStringLiteral("115200"));
    m_dialogs.ExpectMessage(BoxKind::Critical, QStringLiteral("Please select a Device and Baudrate!"));
    Set();
    EXPECT_TRUE(m_window->isVisible());
    EXPECT_FALSE(m_station.control.IsOpen());
    EXPECT_TRUE(Saved(QStringLiteral("Device")).isEmpty());
}

TEST_F(frmSetPortTest, AGoodChoiceIsSavedOpenedAndRemembered) {
    Show(QString(), QString());
    Box("cboModems").lineEdit()->clear();
    QTest::keyClicks(&Box("cboModems"), m_terminal.Path());
    Box("cboBaud").setCurrentText(QStringLiteral("115200"));
    Set();
    EXPECT_TRUE(WaitUntil([this] { return !m_window->isVisible(); }));
    EXPECT_TRUE(m_station.line.PortIsOpen());
    EXPECT_EQ(m_station.control.BaudRate(), 115200);
    EXPECT_EQ(Saved(QStringLiteral("Device")), m_terminal.Path());
    EXPECT_EQ(Saved(QStringLiteral("Baud")), QStringLiteral("115200"));

    // The line test follows an open line, and what it has found about the adapter is shown.
    int tests = 0;
    ::QObject::connect(m_window.get(), &frmSetPort::LineTestWanted, [&tests] { ++tests; });
    m_station.SetReplyRules(false, true);
    m_window->show();
    EXPECT_TRUE(m_window->findChild<QAbstractButton*>(QStringLiteral("chkLocalEcho"))->isChecked());
    QTest::mouseClick(m_window->findChild<QPushButton*>(QStringLiteral("cmdLineTest")), Qt::LeftButton);
    EXPECT_TRUE(WaitUntil([&] { return tests == 1; }));
    EXPECT_FALSE(m_window->isVisible());
    EXPECT_EQ(Saved(QStringLiteral("LocalEcho")), QStringLiteral("yes"));

    // Set again, the line is closed and opened anew.
    m_window->show();
    EXPECT_EQ(Box("cboBaud").currentText(), QStringLiteral("115200"));
    m_terminal.HangUp();
    m_dialogs.ExpectMessage(BoxKind::Critical, QStringLiteral("COM port used by another program!"));
    Set();
    EXPECT_TRUE(m_window->isVisible() && m_window->isEnabled());
    EXPECT_FALSE(m_station.line.PortIsOpen());
    EXPECT_EQ(Saved(QStringLiteral("Device")), m_terminal.Path());
}
