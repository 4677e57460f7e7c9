#include "tests/app/ProgramWorld.h"

#include "console/frmBusMonitor.h"
#include "console/frmTest.h"
#include "designer/frmDesignTicket.h"
#include "operator/ObjectMap.h"
#include "operator/ObjectPicture.h"
#include "operator/frmMain.h"
#include "setup/frmQueue.h"
#include "simulator/BusInstallation.h"
#include "simulator/CounterKeypad.h"
#include "simulator/SimulatedBus.h"
#include "station/Station.h"
#include "tests/support/StoreFile.h"
#include "tests/support/WindowDriver.h"
#include "utilities/frmSetPort.h"
#include "widgets/DataGrid.h"
#include "widgets/WindowDialogs.h"

#include <QAction>
#include <QFileDialog>
#include <QGroupBox>
#include <QLocalServer>
#include <QLocalSocket>
#include <QMessageBox>

namespace {

/// A technician's round at an installed system, by the icon in the notification area and the main window.
class OperatorTourTest : public ProgramWorld {
protected:
    OperatorTourTest() {
        MakeStore(
            m_store,
            {QStringLiteral("INSERT INTO Queue (q_Id, q_Number, q_Series, q_On, q_Name, q_Button) VALUES "
                            "(1, 1, 1000, 1, 'A', 7)"),
             QStringLiteral("INSERT INTO Display (d_Id, d_Number, d_Address, d_Name, d_On, d_Type, "
                            "d_HubId, LastInfo) VALUES (1, 5, 1, 'Counter', 1, 0, 0, '3'), (2, 6, "
                            "2, 'Far', 1, 0, 5, NULL), (3, 1, 32, 'Printer', 1, 1, 0, NULL), (4, 9, 40, "
                            "'Board', 1, 2, 0, NULL), (5, 1, 64, 'HUB', 1, 3, 0, NULL)"),
             QStringLiteral("INSERT INTO rData (ID, ServiceId, TicketNo, Flags, Announced) VALUES (3, 1, 1007, 0, 1)"),
             QStringLiteral("INSERT INTO [Queue-Display] (q_Id, d_Id) VALUES (1, 1)"),
             QStringLiteral("INSERT INTO ScanPlan (d_Id, [Order]) VALUES (1, 1)")});
        QString problem;
        m_devices = std::make_unique<SimulatedBus>(*BusInstallation::Read(m_store, problem));
        EXPECT_EQ(m_devices->Open(), QString());
        WritePort(m_devices->SlavePath());
        m_dialogs->ExpectChoice(m_store);
    }

    void Begin() {
        Start(true);
        m_main = FindWindow<frmMain>();
        m_setup = FindWindow<frmQueue>();
        ASSERT_TRUE(m_main && m_setup);
    }

    QAction* Item(const char* name) const { return m_main->findChild<QAction*>(QString::fromLatin1(name)); }

    void RunInit() {
        Item("mnInitObjects")->trigger();
        EXPECT_TRUE(WaitUntil([this] { return !m_program->TheStation().IsBusy(); }, 30'000));
    }

    std::unique_ptr<SimulatedBus> m_devices;
    frmMain* m_main = nullptr;
    frmQueue* m_setup = nullptr;
};

} // namespace

TEST_F(OperatorTourTest, FromTheTrayOverMapAndRunToTheExit) {
    QLocalServer::removeServer(QStringLiteral("KTL_SONDREL"));
    QLocalServer voiceProgram;
    ASSERT_TRUE(voiceProgram.listen(QStringLiteral("KTL_SONDREL")));
    WriteFile(Path(QStringLiteral("voice.ini")), "[Comm]\nOrvexType=MSG\n");
    Begin();
    EXPECT_TRUE(m_setup->isVisible());
    EXPECT_FALSE(m_main->isVisible());
    EXPECT_EQ(m_devices->Counts().Commands, 0U) << "nothing goes on the bus at start-up";
    Q_EMIT m_shell->Notified(ShellIcon::LeftDoubleClick);
    ASSERT_TRUE(QTest::qWaitForWindowActive(m_main));
    const WindowDriver hands(*m_main);
    QTest::mouseClick(&hands.Find<ObjectPicture>("picQObj_0"), Qt::LeftButton);
    EXPECT_TRUE(hands.Find<QGroupBox>("Frame1").isVisible());

    RunInit();
    EXPECT_EQ(hands.Find<QPushButton>("cmdStart").text(), QStringLiteral("STOP"));
    EXPECT_EQ(m_devices->FindAs<CounterKeypad>(1)->DisplayText(), "1007");
    EXPECT_EQ(hands.Find<ObjectPicture>("picQObj_0").Written(), QStringList{QStringLiteral("1007")});
    EXPECT_EQ(m_devices->FindAs<DeviceHub>(64)->SlotTexts().at(0), "0");
    EXPECT_EQ(m_devices->FindAs<DeviceHub>(64)->Members(), (std::vector<DeviceHub::Member>{{0, 2}}));

    m_dialogs->ExpectMessage(BoxKind::Exclamation, QStringLiteral("Please Stop Queue first"));
    Item("mnExit")->trigger();
    hands.ClickButton("cmdStart");
    m_program->TheStation().CancelInit();
    const quint64 sent = m_devices->Counts().Commands;
    RunInit();
    EXPECT_EQ(m_devices->Counts().Commands, sent + 2) << "the reset and the first object";
    EXPECT_EQ(hands.Find<QPushButton>("cmdStart").text(), QStringLiteral("START"));

    Item("mnExit")->trigger();
    ASSERT_TRUE(WaitUntil([this] { return m_ended == 1; }));
    EXPECT_TRUE(WaitUntil([&] { return voiceProgram.hasPendingConnections(); })) << "the voice program is told";
    EXPECT_FALSE(m_program->TheStation().Store().IsOpen());
    EXPECT_TRUE(QFile::exists(Path(QStringLiteral("bak4.mdb"))));
}

TEST_F(OperatorTourTest, TheMainWindowOpensTheOthers) {
    Begin();
    m_setup->findChild<QAction*>(QStringLiteral("mnMainWindow"))->trigger();
    ASSERT_TRUE(QTest::qWaitForWindowActive(m_main));
    const WindowDriver hands(*m_main);
    Item("mnDataBase")->trigger();
    EXPECT_TRUE(QTest::qWaitForWindowActive(m_setup));
    Item("mnSetpoty")->trigger();
    ASSERT_TRUE(FindWindow<frmSetPort>());
    EXPECT_EQ(FindWindow<frmSetPort>()->parentWidget(), m_main);
    FindWindow<frmSetPort>()->close();
    const std::pair<const char*, const char*> dialogs[] = {
        {"mnQOptions", "frmOptions"}, {"mnDBmaintenance", "frmUtils"}, {"mnAbout", "frmAbout"}};
    for (const auto& [item, name] : dialogs) {
        Item(item)->trigger();
        auto* dialog = m_main->findChild<QDialog*>(QString::fromLatin1(name));
        ASSERT_TRUE(dialog && dialog->isVisible() && dialog->isModal()) << name;
        dialog->close();
    }
    Item("mnTicketForm")->trigger();
    ASSERT_TRUE(FindWindow<frmDesignTicket>());
    FindWindow<frmDesignTicket>()->close();
    Item("mnBusMonitor")->trigger();
    ASSERT_TRUE(FindWindow<frmBusMonitor>() && FindWindow<frmBusMonitor>()->isVisible());
    hands.ClickButton("Command1");
    ASSERT_TRUE(FindWindow<frmTest>());
    const QPointer<frmTest> bench = FindWindow<frmTest>();
    bench->hide();
    hands.ClickButton("Command1");
    EXPECT_EQ(FindWindow<frmTest>(), bench) << "hidden it is the same one that comes back";
    EXPECT_TRUE(bench->isVisible());

    m_dialogs->ExpectMessage(BoxKind::Information, QStringLiteral("Init done."));
    Item("mnInitHub")->trigger();
    m_dialogs->ExpectMessage(BoxKind::Information, QStringLiteral("Set config to all objects OK."));
    EXPECT_TRUE(WaitUntil([this] { return Item("mnSendConfig")->isEnabled(); }));
    Item("mnSendConfig")->trigger();
    EXPECT_TRUE(WaitUntil([this] { return !m_program->TheStation().IsBusy(); }, 30'000));
    m_dialogs->ExpectMessage(BoxKind::Information, QStringLiteral("Done."));
    Item("mnVNIFont")->trigger();
    EXPECT_TRUE(WaitUntil([this] { return !m_program->TheStation().IsBusy(); }, 30'000));
    m_dialogs->ExpectMessage(BoxKind::Information, QStringLiteral("System reset done. Please restart Orvex."));
    Item("mnuReset")->trigger();
    EXPECT_TRUE(WaitUntil([this] { return !m_program->TheStation().IsBusy(); }, 30'000));
    // No manual lies beside the program here.
    m_dialogs->ExpectMessage(BoxKind::Exclamation, QString());
    Item("mnuHelp")->trigger();
    m_dialogs->ExpectMessage(BoxKind::Exclamation, QString());
    QTest::keyClick(bench, Qt::Key_F1);

    m_main->close();
    ASSERT_TRUE(WaitUntil([this] { return m_ended == 1; }));
    EXPECT_TRUE(WaitUntil([&] { return bench.isNull(); }));
}

TEST_F(OperatorTourTest, AnExitWaitsForWhatNobodyHasSavedYet) {
    Begin();
    ASSERT_TRUE(QTest::qWaitForWindowActive(m_setup));
    DataGrid& objects = *m_setup->findChild<DataGrid*>(QStringLiteral("TDBGridDisplay"));
    WindowDriver::Click(objects, 0, 1);
    WindowDriver::Keys(QStringLiteral("999"));
    m_main->Open();
    m_dialogs->ExpectMessage(BoxKind::Exclamation, QString());
    m_main->close();
    QApplication::processEvents();
    EXPECT_EQ(m_ended, 0) << "a number that no object can have is not thrown away";
    EXPECT_TRUE(m_setup->isVisible() && m_main->isVisible());
    ASSERT_TRUE(WaitUntil([] { return WindowDriver::Editor() != nullptr; })) << "the typed text is gone on with";
    WindowDriver::Press(Qt::Key_Escape);
    WindowDriver::Press(Qt::Key_Escape);

    Item("mnTicketForm")->trigger();
    auto* designer = FindWindow<frmDesignTicket>();
    ASSERT_TRUE(designer);
    QTest::keyClicks(designer->findChild<QWidget*>(QStringLiteral("rtfPrintForm")), QStringLiteral("x"));
    m_dialogs->ExpectQuestion(BoxKind::Exclamation, QStringLiteral("File not saved, exit anyway?"), false);
    m_main->close();
    QApplication::processEvents();
    EXPECT_EQ(m_ended, 0);
    EXPECT_TRUE(designer->isVisible());
    m_dialogs->ExpectQuestion(BoxKind::Exclamation, QStringLiteral("File not saved, exit anyway?"), true);
    m_main->close();
    ASSERT_TRUE(WaitUntil([this] { return !FindWindow<frmDesignTicket>(); }));
    EXPECT_EQ(m_ended, 0) << "the exit is asked for anew";
    m_main->close();
    EXPECT_TRUE(WaitUntil([this] { return m_ended == 1; }));
}

TEST_F(OperatorTourTest, TheNotificationAreaWorksWhileTheFirstBoxStands) {
    QFile::remove(Path(QStringLiteral("Tallora.ini")));
    Await(m_dialogs->ChooseFile({}, {}));
    const auto shown = [](auto* form) {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (auto* found = qobject_cast<decltype(form)>(widget); found && found->isVisible())
                form = found;
        }
        return form;
    };
    for (const char* entry : {"mnDataBase", "mnExit"}) {
        WindowDialogs boxes;
        Program program({m_folder.path(), m_folder.path()}, m_clock, boxes);
        bool ended = false;
        QObject::connect(&program, &Program::Ended, [&] { ended = true; });
        const auto running = program.Main();
        ASSERT_TRUE(WaitUntil([&] { return shown(static_cast<QFileDialog*>(nullptr)) != nullptr; }));
        QTest::keyClick(shown(static_cast<QFileDialog*>(nullptr)), Qt::Key_Return);
        ASSERT_TRUE(WaitUntil([&] { return shown(static_cast<QMessageBox*>(nullptr)) != nullptr; }));
        FindWindow<frmMain>()->findChild<QAction*>(QString::fromLatin1(entry))->trigger();
        if (QByteArrayView(entry) == "mnDataBase") {
            EXPECT_TRUE(FindWindow<frmQueue>()->isVisible());
            FindWindow<frmQueue>()->close();
        }
        EXPECT_TRUE(WaitUntil([&] { return ended; })) << entry;
        EXPECT_FALSE(program.TheStation().Store().IsOpen());
        EXPECT_TRUE(running.isReady());
    }
}
