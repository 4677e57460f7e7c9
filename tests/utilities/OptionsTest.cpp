#include "utilities/frmOptions.h"

#include "tests/support/Files.h"
#include "tests/support/OpenStation.h"
#include "tests/support/WindowDriver.h"
#include "utilities/frmAbout.h"

#include <QCheckBox>
#include <QLabel>
#include <QPointer>

namespace {

class OptionsTest : public StationFolder {
protected:
    void Show() {
        m_window = new frmOptions(m_station, m_registry, QStringLiteral("/opt/orvex/Orvex /minimize /delay=60"));
        m_window->show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(m_window));
        m_hands.emplace(*m_window);
    }

    ~OptionsTest() override { delete m_window; }

    QString m_settings = m_folder.filePath(QStringLiteral("Tallora.ini"));
    QString m_autostart = m_folder.filePath(QStringLiteral("autostart"));
    RegistryStore m_registry{m_folder.filePath(QStringLiteral("Registry.json")), m_autostart};
    QPointer<frmOptions> m_window;
    std::optional<WindowDriver> m_hands;
};

} // namespace

TEST_F(OptionsTest, WhatIsSetIsStoredAndComesBackAtTheNextStart) {
    WriteFile(m_settings, "; mine\n[options]\nMaxTxFail=9\nWakeupTime=20\nMultiTicketSeries=yes\n[AutoReset]\n"
                          "ResetAt=063000\n");
    m_station.options = ReadOptions(m_station.ini, m_station.log);
    Show();
    EXPECT_EQ(m_hands->Find<QLineEdit>("txtValue_0").text(), QStringLiteral("20"));
    EXPECT_EQ(m_hands->Find<QLineEdit>("txtValue_2").text(), QStringLiteral("9"));
    EXPECT_EQ(m_hands->Find<QLineEdit>("txtRenewAt").text(), QStringLiteral("06:30:00"));
    EXPECT_FALSE(m_hands->Find<QCheckBox>("chkShowIcon").isChecked());
    m_dialogs.ExpectMessage(BoxKind::Exclamation,
                            QStringLiteral("Warning, change this option may cause system to re-print printed ticket if "
                                           "queue is running!"));
    m_hands->Find<QCheckBox>("chkTicketSeries").click();
    for (const char* box : {"chkOpt_0", "chkOpt_2", "chkAutoReset", "chkShowIcon"})
        m_hands->Find<QCheckBox>(box).click();
    const std::pair<const char*, const char*> typed[] = {{"txtValue_0", "7 s"},
                                                         {"txtValue_1", "none"},
                                                         {"txtValue_2", "2.6"},
                                                         {"txtValue_3", "99999"},
                                                         {"txtRenewAt", "7:45"}};
    for (const auto& [box, text] : typed)
        m_hands->Find<QLineEdit>(box).setText(QString::fromLatin1(text));
    m_hands->Find<QComboBox>("cboMainDispType").setCurrentIndex(1);
    m_hands->ClickButton("cmdOK");
    EXPECT_TRUE(WaitUntil([this] { return m_window.isNull(); }));

    EXPECT_EQ(m_station.options.ResetAt, QStringLiteral("074500"));
    const Options again = ReadOptions(m_station.ini, m_station.log);
    for (const Options& options : {m_station.options, again}) {
        EXPECT_TRUE(options.ActiveClients && !options.PassNoNext && options.ResetNew && !options.MultiTicketSeries);
        EXPECT_EQ(options.WakeupTime, 7);
        EXPECT_EQ(options.KeyDelayTime, 0);
        EXPECT_EQ(options.MaxTxFail, 3);
        EXPECT_EQ(options.MaxSilentTime, 32767);
        EXPECT_EQ(options.DisplayType, 0);
        EXPECT_EQ(options.MainDisplayType, 1);
        EXPECT_EQ(options.ResetAt, QStringLiteral("074500"));
    }
    EXPECT_TRUE(ReadFile(m_settings).contains("ResetAt=7:45")) << "as it was typed";
    EXPECT_TRUE(ReadFile(m_settings).startsWith("; mine"));
    EXPECT_TRUE(ReadFile(m_autostart + QStringLiteral("/orvex.desktop")).contains("\"/opt/orvex/Orvex\" /minimize"));

    Show();
    EXPECT_TRUE(m_hands->Find<QCheckBox>("chkShowIcon").isChecked());
    m_hands->Find<QCheckBox>("chkShowIcon").click();
    m_hands->ClickButton("cmdOK");
    EXPECT_FALSE(QFile::exists(m_autostart + QStringLiteral("/orvex.desktop")));
}

TEST_F(OptionsTest, CancelLeavesEverythingAndARefusalIsToldAfterTheSettingsAreWritten) {
    Show();
    m_hands->Find<QCheckBox>("chkOpt_0").click();
    m_hands->Find<QCheckBox>("chkShowIcon").click();
    m_hands->Find<QLineEdit>("txtRenewAt").setText(QStringLiteral("half past seven"));
    m_dialogs.ExpectMessage(BoxKind::Exclamation, QStringLiteral("Error in Date/Time format."));
    m_hands->ClickButton("cmdOK");
    m_hands->ClickButton("cmdCancel");
    EXPECT_FALSE(m_station.options.ActiveClients);
    EXPECT_FALSE(QFile::exists(m_settings));
    EXPECT_FALSE(QFile::exists(m_autostart));

    WriteFile(m_autostart, "in the way");
    Show();
    m_hands->Find<QCheckBox>("chkOpt_0").click();
    m_hands->Find<QCheckBox>("chkShowIcon").click();
    m_dialogs.ExpectMessage(
        BoxKind::Exclamation,
        QStringLiteral("Failed to set registry value Key: '-2147483646',Section: "
                       "'SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Run',Key: 'Orvex' to value: ''"));
    m_hands->ClickButton("cmdOK");
    EXPECT_TRUE(ReadFile(m_settings).contains("ActiveClients=yes"));
}

TEST_F(OptionsTest, TheAboutBoxTellsTheVersionAndHidesWhatNobodyFilledIn) {
    frmAbout about(QStringLiteral("1.2.3"), {QStringLiteral("Street 1")}, m_registry, m_dialogs);
    about.setAttribute(Qt::WA_DeleteOnClose, false);
    about.show();
    const WindowDriver hands(about);
    EXPECT_EQ(about.windowTitle(), QStringLiteral("About Orvex"));
    EXPECT_EQ(hands.Find<QLabel>("lblVersion").text(), QStringLiteral("Version 1.2.3"));
    EXPECT_EQ(hands.Find<QLabel>("Label1").text(), QStringLiteral("Street 1"));
    EXPECT_FALSE(about.findChild<QLabel*>(QStringLiteral("Label2"))->isVisible());
    m_dialogs.ExpectMessage(BoxKind::Critical, QStringLiteral("System Information Is Unavailable At This Time"));
    hands.ClickButton("cmdSysInfo");
    hands.ClickButton("cmdOK");
    EXPECT_FALSE(about.isVisible());
}
