#include "operator/frmMain.h"

#include "operator/ObjectMap.h"
#include "operator/ObjectPicture.h"
#include "tests/support/KeptShell.h"
#include "tests/support/StationWorld.h"
#include "tests/support/WindowDriver.h"
#include "widgets/LogBox.h"

#include <QAction>
#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QMenu>
#include <QProgressBar>
#include <QScrollBar>
#include <QTimer>
#include <QToolButton>

namespace {

/// 20 services; a counter with one of them, a counter with none, a printer, a display and a hub.
class frmMainTest : public StationWorld {
protected:
    frmMainTest()
        : StationWorld(
              {QStringLiteral("WITH RECURSIVE n(i) AS (SELECT 1 UNION SELECT i + 1 FROM n WHERE i < 20) "
                              "INSERT INTO Queue (q_Id, q_Number, q_Series, q_On, q_Name, q_Button) "
                              "SELECT i, i, 100 * i, 1, 'service ' || i, i FROM n"),
               QStringLiteral("INSERT INTO Display (d_Id, d_Number, d_Address, d_Name, d_On, d_Type, d_HubId) VALUES "
                              "(1, 5, 1, 'Counter', 1, 0, 0), (2, 6, 2, 'Idle', 1, 0, 0), (3, 1, 32, 'Printer', 1, 1, "
                              "0), (4, 9, 40, 'Board', 1, 2, 0), (5, 1, 64, 'HUB', 1, 3, 0)"),
               QStringLiteral("INSERT INTO [Queue-Display] (q_Id, d_Id) VALUES (3, 1)"),
               QStringLiteral("INSERT INTO ScanPlan (d_Id, [Order]) VALUES (1, 1)")}) {
        (void)m_station.reload.ReloadAll();
    }

    void Show(bool hasTray = false) {
        std::unique_ptr<KeptShell> shell;
        if (hasTray)
            shell = std::make_unique<KeptShell>(m_told, true);
        m_shell = shell.get();
        m_window = std::make_unique<frmMain>(m_station, std::move(shell), m_website);
        ::QObject::connect(m_window.get(), &frmMain::ExitWanted, [this] { ++m_exits; });
        EXPECT_FALSE(m_window->isVisible()) << "it is loaded hidden";
        m_window->Open();
        ASSERT_TRUE(QTest::qWaitForWindowActive(m_window.get()));
        m_hands.emplace(*m_window);
    }

    QAction* Item(const char* name) const { return m_window->findChild<QAction*>(QString::fromLatin1(name)); }
    void ClickObject(int index) const {
        QTest::mouseClick(&m_hands->Find<ObjectPicture>(qPrintable(QStringLiteral("picQObj_%1").arg(index))),
                          Qt::LeftButton);
    }
    void Tick() { m_station.run.CountSecond(); }
    QStringList Info() const {
        QStringList lines;
        for (int i = 0; i < 17; ++i) {
            const auto* label = m_window->findChild<QLabel*>(QStringLiteral("lblInfo_%1").arg(i));
            if (!label->isHidden())
                lines += label->text();
        }
        return lines;
    }
    bool HasInfo() const { return m_window->findChild<QGroupBox*>(QStringLiteral("Frame1"))->isVisible(); }

    QString m_website;
    QStringList m_told; ///< by the tray to the shell
    KeptShell* m_shell = nullptr;
    std::unique_ptr<frmMain> m_window;
    std::optional<WindowDriver> m_hands;
    int m_exits = 0;
};

} // namespace

TEST_F(frmMainTest, TheSwitchGuardsSetupAndExit) {
    Show();
    auto& start = m_hands->Find<QPushButton>("cmdStart");
    EXPECT_EQ(start.text(), QStringLiteral("START"));
    start.click();
    EXPECT_EQ(start.text(), QStringLiteral("STOP"));
    EXPECT_TRUE(start.styleSheet().contains(QStringLiteral("#3FA03F")));
    EXPECT_FALSE(m_window->findChild<QMenu*>(QStringLiteral("mnSetup"))->menuAction()->isEnabled());
    EXPECT_FALSE(Item("mnRestore")->isEnabled());
    EXPECT_TRUE(Item("mnExit")->isEnabled() && Item("mnVoiceClient")->isEnabled());
    m_dialogs.ExpectMessage(BoxKind::Exclamation, QStringLiteral("Please Stop Queue first"));
    Item("mnExit")->trigger();
    EXPECT_EQ(m_exits, 0);
    m_dialogs.ExpectMessage(BoxKind::Information, QStringLiteral("No voice clients for this Version."));
    Item("mnVoiceClient")->trigger();
    m_dialogs.ExpectMessage(BoxKind::Information, QStringLiteral("All queue objects are marked as active."));
    Item("mnActiveQAlls")->trigger();

    start.click();
    EXPECT_EQ(start.text(), QStringLiteral("START"));
    EXPECT_TRUE(start.styleSheet().contains(QStringLiteral("#D03F3F")));
    EXPECT_TRUE(m_window->findChild<QMenu*>(QStringLiteral("mnSetup"))->menuAction()->isEnabled());
    Item("mnExit")->trigger();
    EXPECT_EQ(m_exits, 1);

    start.click();
    m_window->close();
    EXPECT_EQ(m_exits, 2) << "its frame ends the program, started or not";
    EXPECT_FALSE(m_station.run.QueueRunning());
    EXPECT_TRUE(m_window->isVisible()) << "until the program takes it away";
}

TEST_F(frmMainTest, AClickOnAnObjectShowsItsFigures) {
    Show();
    model::Installation& model = *m_station.installation;
    ASSERT_TRUE(model.QServices[2].WaitRing.RingAdd({.TicketNo = 301}));
    model.QObjects[0].CurrentTicket.TicketNo = 300;
    ClickObject(3);
    EXPECT_FALSE(HasInfo()) << "a display leaves the frame as it is";
    ClickObject(0);
    EXPECT_TRUE(HasInfo());
    EXPECT_EQ(Info(), (QStringList{u"Address : 1"_qs, u"Service   : service 3"_qs, u"Wait        : 1"_qs,
                                   u"Current   : 300"_qs}));
    ClickObject(1);
    EXPECT_EQ(Info(), (QStringList{u"Address : 2"_qs, QString(), QString(), u"Current   : 0"_qs}))
        << "a counter without service";
    ClickObject(2);
    EXPECT_EQ(Info().size(), 17) << "16 services at most";
    EXPECT_EQ(Info().first(4),
              (QStringList{u"Address: 32"_qs, u"service 1: 0"_qs, u"service 2: 0"_qs, u"service 3: 1"_qs}));
    ClickObject(4);
    EXPECT_EQ(Info(), QStringList{u"Address: 64"_qs});

    for (int second = 0; second < 4; ++second)
        Tick();
    EXPECT_TRUE(HasInfo());
    Tick();
    EXPECT_FALSE(HasInfo()) << "it closes by itself after 5 seconds";
    ClickObject(0);
    m_hands->Find<QToolButton>("cmdCloseInf_1").click();
    for (int second = 0; second < 9; ++second)
        Tick();
    EXPECT_TRUE(HasInfo()) << "kept open";
    m_hands->Find<QToolButton>("cmdCloseInf_0").click();
    EXPECT_FALSE(HasInfo());
}

TEST_F(frmMainTest, TheMapScrollsAndAClickStillReachesItsObject) {
    Show();
    m_window->resize(900, 560);
    auto& bar = m_hands->Find<QScrollBar>("VScroll1");
    ASSERT_TRUE(WaitUntil([&] { return bar.maximum() > 0; }));
    bar.setValue(60);
    EXPECT_EQ(m_hands->Find<ObjectMap>("frmQObjs").y(), -60);
    ClickObject(1);
    EXPECT_EQ(Info().first(1), QStringList{u"Address : 2"_qs});
}

TEST_F(frmMainTest, TheLineIsShownChosenAndTimed) {
    m_station.line.Settings.CommName = QStringLiteral("COM3");
    m_station.line.Settings.CommBaud = QStringLiteral("115200");
    Show();
    EXPECT_EQ(m_hands->Find<QComboBox>("cboModems").currentText(), QStringLiteral("COM3"));
    EXPECT_EQ(m_hands->Find<QComboBox>("cboBaud").currentIndex(), -1) << "it is not preset";
    m_dialogs.ExpectMessage(BoxKind::Critical, QStringLiteral("Please select a Device and Baudrate!"));
    m_hands->ClickButton("cmdOK");
    int ticks = 0;
    ::QObject::connect(&m_station.run, &RunControl::SecondPassed, [&ticks] { ++ticks; });
    m_station.line.SetCommStatus(QStringLiteral("COM3"), QStringLiteral("115200"), false);
    EXPECT_EQ(m_hands->Find<QComboBox>("cboBaud").currentText(), QStringLiteral("115200"));

    m_station.line.Settings.CommName = m_devices->SlavePath();
    m_station.line.SetCommStatus(m_devices->SlavePath(), QStringLiteral("9600"), false);
    m_hands->ClickButton("cmdOK");
    EXPECT_TRUE(m_station.line.PortIsOpen());
    EXPECT_EQ(m_hands->Find<QLabel>("TimeConnect").text(), QStringLiteral("since 06:13"));
    EXPECT_TRUE(WaitUntil([&ticks] { return ticks > 0; }));
    m_window->CloseComm();
    EXPECT_EQ(m_window->findChild<QLabel*>(QStringLiteral("TimeConnect"))->text(), QString());
    EXPECT_EQ(m_hands->Find<QLabel>("lblDevice").text(), m_devices->SlavePath());

    auto& box = m_hands->Find<LogBox>("txtLog1");
    m_window->AddLog1(QString(300, u'a'));
    m_window->AddLog1(QStringLiteral("b"));
    EXPECT_EQ(box.Content().size(), 301);
    m_window->AddLog1(QStringLiteral("c"));
    EXPECT_EQ(box.Content(), QStringLiteral("c"));
}

TEST_F(frmMainTest, ARunShowsItsGaugeAndIsCancelledForGood) {
    Show();
    OpenLine();
    std::vector<int> values;
    int looks = 0;
    auto* gauge = m_window->findChild<QProgressBar*>(QStringLiteral("ProgressBar1"));
    ::QObject::connect(gauge, &QProgressBar::valueChanged, [&](int value) {
        values.push_back(value);
        if (value == 2) {
            ++looks;
            EXPECT_TRUE(gauge->isVisible());
            EXPECT_FALSE(Item("mnInitObjects")->isEnabled() || Item("mnTicketForm")->isEnabled());
            EXPECT_FALSE(m_window->findChild<QPushButton*>(QStringLiteral("cmdForm"))->isEnabled());
        }
    });
    Silence({2});
    Item("mnInitObjects")->trigger();
    ASSERT_TRUE(WaitUntil([&] { return m_station.run.QueueRunning(); }));
    EXPECT_EQ(values, (std::vector<int>{0, 1, 2, 3, 4, 5, 0}));
    EXPECT_EQ(looks, 1);
    EXPECT_FALSE(gauge->isVisible());
    EXPECT_EQ(m_hands->Find<QPushButton>("cmdStart").text(), QStringLiteral("STOP"));
    ASSERT_TRUE(WaitUntil([&] { return Item("mnInitObjects")->isEnabled(); }));
    EXPECT_EQ(m_hands->Find<QLabel>("lblProgress").text(), QStringLiteral("Initialized, no answer from Idle."));
    EXPECT_EQ(m_window->findChild<ObjectMap*>()->Picture(2).Written(), QStringList());
    EXPECT_EQ(m_window->findChild<ObjectMap*>()->Picture(0).Written(), QStringList{u"0000"_qs});

    m_hands->ClickButton("cmdStart");
    values.clear();
    const auto cancel =
        ::QObject::connect(gauge, &QProgressBar::valueChanged, [&] { m_hands->ClickButton("cmdMsgCancel"); });
    Item("mnInitObjects")->trigger();
    ASSERT_TRUE(WaitUntil([&] { return !m_station.IsBusy(); }));
    ::QObject::disconnect(cancel);
    EXPECT_EQ(values, (std::vector<int>{1, 0}));
    EXPECT_FALSE(m_station.run.QueueRunning());
    values.clear();
    Item("mnInitObjects")->trigger();
    ASSERT_TRUE(WaitUntil([&] { return !m_station.IsBusy(); }));
    EXPECT_TRUE(values.empty()) << "nothing but the start of the program forgets the cancel";
}

TEST_F(frmMainTest, TheNotificationAreaOpensHidesAndEndsIt) {
    Show(true);
    m_shell->Notified(ShellIcon::RightDown);
    EXPECT_EQ(m_told.takeLast(), QStringLiteral("*&Open Orvex|-|&Exit"));
    m_shell->Notified(ShellIcon::LeftUp);
    EXPECT_EQ(m_told.takeLast(), QStringLiteral("balloon 27 9 1 30000"));

    m_window->showMinimized();
    ASSERT_TRUE(WaitUntil([&] { return !m_window->isVisible(); }));
    m_shell->Notified(ShellIcon::LeftDoubleClick);
    EXPECT_TRUE(m_window->isVisible() && !m_window->isMinimized());

    const QString question =
        QStringLiteral("Exit Orvex will stop your queue system, are you sure you want to continue?");
    QAction* exit = m_shell->Menu->actions().at(2);
    for (const bool yes : {false, true}) {
        m_dialogs.ExpectQuestion(BoxKind::Exclamation, question, yes);
        exit->trigger();
        QApplication::processEvents();
        EXPECT_EQ(m_exits, yes ? 1 : 0);
    }
    m_window->UnloadTray();
    m_window->showMinimized();
    QApplication::processEvents();
    EXPECT_TRUE(m_window->isVisible()) << "without an icon it must stay within reach";
}

TEST_F(frmMainTest, TheWebsiteIsOfferedOnlyWhereThereIsOne) {
    Show();
    EXPECT_FALSE(Item("mnWeb")->isVisible());
    m_website = QStringLiteral("https://example.org");
    Show(true);
    EXPECT_TRUE(Item("mnWeb")->isVisible());
    EXPECT_FALSE(Item("mnWeb")->isEnabled());
    m_shell->Notified(ShellIcon::RightDown);
    EXPECT_EQ(m_told.takeLast(), QStringLiteral("*&Open Orvex|-|&KTL Website|-|&Exit"));
}

TEST_F(frmMainTest, ComingBackToItTakesUpWhatWasEdited) {
    Show();
    QWidget other;
    other.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
    ASSERT_TRUE(m_station.database.Run({QStringLiteral("UPDATE Display SET d_Name='New' WHERE d_Id=1")}));
    m_station.reload.NoteStoreChanged();
    m_window->activateWindow();
    ASSERT_TRUE(WaitUntil([&] { return !m_station.reload.IsStoreChanged(); }));
    EXPECT_EQ(m_station.installation->QObjects[0].Name, QStringLiteral("New"));
}

TEST_F(frmMainTest, ThePictureOfTheComputerHidesTheBenchAndTheLogBox) {
    Show();
    int benches = 0;
    ::QObject::connect(m_window.get(), &frmMain::TestConsoleWanted, [&] { ++benches; });
    auto* computer = m_window->findChild<QWidget*>(QStringLiteral("picPC"));
    auto* box = m_window->findChild<LogBox*>(QStringLiteral("txtLog1"));
    QTest::mouseClick(computer, Qt::LeftButton);
    QTest::mouseClick(computer, Qt::LeftButton, Qt::ShiftModifier | Qt::ControlModifier);
    EXPECT_EQ(benches, 0);
    QTest::mouseClick(computer, Qt::LeftButton, Qt::ShiftModifier);
    EXPECT_EQ(benches, 1);
    QTest::mouseClick(computer, Qt::RightButton);
    EXPECT_TRUE(box->isVisible());
    QTest::mouseClick(computer, Qt::RightButton, Qt::ControlModifier);
    EXPECT_FALSE(box->isVisible());
}
