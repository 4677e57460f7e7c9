#include "commissioning/frmLineTest.h"

#include "tests/support/Files.h"
#include "tests/support/StationWorld.h"
#include "tests/support/WindowDriver.h"

#include <QClipboard>
#include <QLabel>
#include <QMenu>
#include <QPointer>
#include <QSpinBox>
#include <QTabWidget>
#include <QTableView>

namespace {

/// A counter and a printer of the database, and a printer on the line that the database does not know.
class frmLineTestTest : public StationWorld {
protected:
    frmLineTestTest()
        : StationWorld(
              {QStringLiteral("INSERT INTO Display (d_Id, d_Number, d_Address, d_Name, d_On, d_Type, d_HubId) VALUES "
                              "(1, 1, 1, 'Quaày 1', 1, 0, 0), (2, 2, 32, 'Main', 1, 1, 0)")}) {
        const QString devices = m_folder.filePath(QStringLiteral("devices.txt"));
        WriteFile(devices, "counter 1 1 Counter\nprinter 32 2 Main\nprinter 33 3 New\n");
        Simulate(devices);
        (void)m_station.reload.ReloadAll();
        OpenLine();
        m_window = new frmLineTest(m_station);
        m_window->show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(m_window));
        m_hands.emplace(*m_window);
    }

    ~frmLineTestTest() override { delete m_window; }

    void Click(const char* button) {
        m_hands->ClickButton(button);
        EXPECT_TRUE(WaitUntil([this] { return !m_station.IsBusy(); }, 60'000));
    }

    std::string Column(const char* table, int column) {
        const QAbstractItemModel& model = *m_hands->Find<QTableView>(table).model();
        QStringList texts;
        for (int row = 0; row < model.rowCount(); ++row)
            texts += model.index(row, column).data().toString();
        return texts.join(u'|').toStdString();
    }

    QPointer<frmLineTest> m_window;
    std::optional<WindowDriver> m_hands;
};

} // namespace

TEST_F(frmLineTestTest, AnEchoIsSetOnDemandAndTheVerdictsCanBeCopiedAndSaved) {
    EXPECT_EQ(m_hands->Find<QSpinBox>("spnRounds").value(), 5);
    FaultSettings faults;
    faults.Echo = true;
    m_devices->SetFaults(faults);
    m_dialogs.ExpectQuestion(BoxKind::Exclamation,
                             QStringLiteral("The adapter echoes what is sent, so that every device seems to answer. "
                                            "Set \"The adapter echoes what is sent\" for the port, and try again?"),
                             true);
    Click("cmdTest");
    EXPECT_TRUE(m_station.bus.LocalEcho);
    QString saved;
    m_station.ini.ReadIni(QStringLiteral("Comm"), QStringLiteral("LocalEcho"), saved);
    EXPECT_EQ(saved, QStringLiteral("yes"));
    EXPECT_EQ(Column("tblDevices", 0), "Quầy 1|Main");
    EXPECT_EQ(Column("tblDevices", 10), "healthy|healthy");
    EXPECT_EQ(m_hands->Find<QLabel>("lblTested").text(), QStringLiteral("Healthy: 2 of 2 devices."));

    // Five questions to each device, and before and behind the echo those that look for one.
    m_hands->Find<QTabWidget>("tabs").setCurrentIndex(2);
    EXPECT_EQ(Column("tblCounts", 0).substr(0, 18), "All|Quầy 1|Main|");
    EXPECT_NE(Column("tblCounts", 2).find("|10|10|"), std::string::npos);
    m_hands->Find<QTabWidget>("tabs").setCurrentIndex(0);

    m_hands->ClickButton("cmdCopy");
    EXPECT_TRUE(QGuiApplication::clipboard()->text().contains(QStringLiteral("\nQuầy 1\t1\t\t5 of 5\t")));
    const QString path = m_folder.filePath(QStringLiteral("test.csv"));
    m_dialogs.ExpectChoice(path);
    m_dialogs.ExpectMessage(BoxKind::Information, QStringLiteral("Saved to %1.").arg(path));
    m_hands->ClickButton("cmdSaveCsv");
    EXPECT_EQ(ReadFile(path).count("\r\n"), 3);
    m_dialogs.ExpectChoice(m_folder.filePath(QStringLiteral("missing/test.csv")));
    m_dialogs.ExpectMessage(BoxKind::Exclamation, QString());
    m_hands->ClickButton("cmdSaveCsv");
}

TEST_F(frmLineTestTest, AFoundPrinterIsAddedAndAWindowMayCloseWhileItSearches) {
    m_hands->Find<QTabWidget>("tabs").setCurrentIndex(1);
    Click("cmdScan");
    EXPECT_EQ(Column("tblAddresses", 0), "1|32|33");
    EXPECT_EQ(Column("tblAddresses", 3), "answers|answers|answers but is not in the database");
    auto& table = m_hands->Find<QTableView>("tblAddresses");
    auto* add = m_window->findChild<QPushButton*>(QStringLiteral("cmdAdd"));
    table.selectRow(0);
    EXPECT_FALSE(add->isEnabled());
    table.selectRow(2);
    ASSERT_TRUE(add->isEnabled());
    add->menu()->actions()[1]->trigger();
    EXPECT_EQ(Column("tblAddresses", 2), "Quầy 1|Main|Printer 33");
    ASSERT_TRUE(WaitUntil([this] { return m_station.Model().NumObjects == 3; }));
    EXPECT_EQ(m_station.Model().Object(2).Name, QStringLiteral("Printer 33"));

    m_hands->ClickButton("cmdScan");
    EXPECT_TRUE(m_station.IsBusy());
    EXPECT_TRUE(m_hands->Find<QPushButton>("cmdCancel").isEnabled());
    m_window->close();
    EXPECT_TRUE(WaitUntil([this] { return m_window.isNull(); }));
    EXPECT_TRUE(WaitUntil([this] { return !m_station.IsBusy(); }, 5000));
}
