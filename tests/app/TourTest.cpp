#include "app/Program.h"

#include "commissioning/frmCommission.h"
#include "commissioning/frmHistory.h"
#include "commissioning/frmLineTest.h"
#include "commissioning/frmRecord.h"
#include "console/frmBusMonitor.h"
#include "console/frmTest.h"
#include "designer/frmDesignTicket.h"
#include "designer/frmEditLogo.h"
#include "designer/frmImportLogo.h"
#include "operator/ObjectPicture.h"
#include "operator/frmMain.h"
#include "setup/frmImport.h"
#include "simulator/BusInstallation.h"
#include "simulator/SimulatedBus.h"
#include "station/Station.h"
#include "tests/app/SetupHands.h"
#include "tests/support/Files.h"
#include "tests/support/TestClock.h"
#include "utilities/frmHUBCfg.h"
#include "utilities/frmSetPort.h"
#include "widgets/WindowDialogs.h"
#include "widgets/WindowFonts.h"

#include <QAction>
#include <QDir>
#include <QFileDialog>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QPainter>
#include <QPointer>
#include <QProgressBar>
#include <QRadioButton>
#include <QScreen>
#include <QSpinBox>
#include <QTableView>
#include <QTemporaryDir>

namespace {

/// An installer's way from an empty folder to a configured installation, with the boxes that he really sees, through
/// every window. The pictures of it go to the folder that ORVEX_TOUR names, if it does.
class TourTest : public ::testing::Test {
protected:
    TourTest()
        : m_pictures(qEnvironmentVariable("ORVEX_TOUR")) {
        CopyLetterFiles(m_folder.path());
        QDir(m_folder.path()).mkdir(QStringLiteral("Data"));
        for (const QString& name : {QStringLiteral("ticket.rtf"), QStringLiteral("bank.bmp")})
            QFile::copy(QStringLiteral(DATA_FOLDER "/demo/Data/") + name,
                        m_folder.filePath(QStringLiteral("Data/") + name));
    }

    template <typename Form>
    Form* Await() {
        Form* found = nullptr;
        EXPECT_TRUE(WaitUntil([&] {
            for (QWidget* widget : QApplication::topLevelWidgets()) {
                if (auto* form = qobject_cast<Form*>(widget); form && form->isVisible())
                    found = form;
            }
            return found != nullptr;
        }));
        return found;
    }

    /// Keeps a picture of a window, and of what is open above it.
    void Picture(const char* name, QWidget* window, std::initializer_list<QWidget*> above = {}) const {
        QApplication::processEvents();
        const QSize room = window->screen()->availableSize();
        EXPECT_TRUE(window->width() <= room.width() && window->height() < room.height()) << name;
        if (m_pictures.isEmpty())
            return;
        QPixmap picture = window->grab();
        QPainter painter(&picture);
        for (QWidget* one : above) {
            const QPoint place = qobject_cast<QMenu*>(one)
                                     ? window->mapFromGlobal(one->pos())
                                     : QPoint(window->width() - one->width(), window->height() - one->height()) / 2;
            painter.drawPixmap(place, one->grab());
            painter.setPen(Qt::darkGray);
            painter.drawRect(QRect(place, one->size()).adjusted(-1, -1, 0, 0));
        }
        painter.end();
        EXPECT_TRUE(picture.save(m_pictures + u'/' + QString::fromLatin1(name) + QStringLiteral(".png")));
    }

    /// Waits for a box, looks at its text and closes it.
    void Close(const QString& text) {
        auto* box = Await<QMessageBox>();
        ASSERT_NE(box, nullptr);
        EXPECT_EQ(box->text(), text);
        box->close();
        EXPECT_TRUE(WaitUntil([box = QPointer(box)] { return box.isNull(); }));
    }

    QAction* Item(QWidget* window, const char* name) const {
        return window->findChild<QAction*>(QString::fromLatin1(name));
    }

    void Ready() {
        EXPECT_TRUE(WaitUntil([this] { return !m_program->TheStation().IsBusy(); }, 30'000));
    }

    void Start() {
        m_program = std::make_unique<Program>(ProgramFolders{m_folder.path(), m_folder.path()}, m_clock, m_dialogs);
        m_running.emplace(m_program->Main());
        auto* open = Await<QFileDialog>();
        ASSERT_NE(open, nullptr);
        Picture("open", open);
        QTest::keyClick(open, Qt::Key_Return);
        Close(QStringLiteral("COM port used by another program!"));
        m_setup = Await<frmQueue>();
        ASSERT_NE(m_setup, nullptr);
        ASSERT_TRUE(QTest::qWaitForWindowActive(m_setup));
        m_hands.emplace(*m_setup);
    }

    void DescribeTheInstallation() {
        m_hands->EnterServices({{u"Gửi tiền"_qs, u"Quầy $1"_qs, 1},
                                {u"Rút tiền"_qs, u"Quầy $1"_qs, 2},
                                {u"Tín dụng"_qs, u"Quầy $1"_qs, 3}});
        m_hands->EnterObjects({{u"Quầy 1"_qs, 1, 1, u"C"_qs},
                               {u"Quầy 2"_qs, 2, 2, u"C"_qs},
                               {u"Quầy 3"_qs, 3, 3, u"C"_qs},
                               {u"Máy in"_qs, 11, 32, u"P"_qs},
                               {u"Máy in lầu 2"_qs, 12, 33, u"P"_qs},
                               {u"Bảng chính"_qs, 21, 40, u"D"_qs},
                               {u"HUB"_qs, 31, 64, u"H"_qs}});
        for (int service = 0; service < 3; ++service)
            m_hands->Assign(service, {service, (service + 1) % 3});
        PreviewAList();
        m_hands->ClickButton("cmdCheck");
        const auto& objects = m_hands->Find<DataGrid>("TDBGridDisplay");
        EXPECT_TRUE(WaitUntil(
            [&] { return objects.model()->index(3, 7).data().toString() == QStringLiteral("never loaded"); }));
        Picture("check-list", m_setup);
        m_hands->ClickButton("cmdCheck");
        Picture("setup-database", m_setup);
        m_hands->GoToTab(2);
        m_hands->ClickButton("cmdAuto");
        auto* question = Await<QMessageBox>();
        question->button(QMessageBox::Yes)->click();
        DataGrid& plan = m_hands->Grid("TDBGridPlan");
        EXPECT_TRUE(WaitUntil([&] { return plan.model()->rowCount() >= 7; }));
        Picture("setup-scan-plan", m_setup);
        m_hands->GoToTab(3);
        DataGrid& matrix = m_hands->Grid("TDBGrid1");
        for (int counter = 1; counter <= 3; ++counter)
            WindowDriver::Choose(matrix, 0, counter, counter == 2 ? QStringLiteral("U") : QStringLiteral("L"));
        m_hands->ClickButton("cmdUpdate");
        Close(QStringLiteral("Update Done."));
        Picture("setup-main-display", m_setup);
        m_hands->GoToTab(4);
        WindowDriver::Click(m_hands->Grid("TDBGridHUB"), 0, 0);
        for (const int free : {4, 2})
            WindowDriver::Drag(m_hands->Grid("TDBGridCounters"), free, 0, m_hands->Grid("TDBGridHubCounters"));
        EXPECT_EQ(WindowDriver::Column(m_hands->Grid("TDBGridHubCounters"), 0), "Quaày 3|Maùy in laàu 2");
        Picture("setup-hub-assignment", m_setup);
        m_hands->GoToTab(1);
        EXPECT_EQ(m_hands->Find<QPushButton>("cmdFindings").text(), QStringLiteral("Check: nothing found"));
    }

    void ConnectTheBus() {
        QString problem;
        m_devices = std::make_unique<SimulatedBus>(
            *BusInstallation::Read(m_folder.filePath(QStringLiteral("Harbinet.mdb")), problem));
        const QString link = QDir::tempPath() + QStringLiteral("/bus");
        QFile::remove(link);
        m_devices->SetLinkPath(link);
        ASSERT_EQ(m_devices->Open(), QString());
        Item(m_setup, "mnSetCOM")->trigger();
        auto* port = Await<frmSetPort>();
        const WindowDriver hands(*port);
        hands.Find<QComboBox>("cboModems").lineEdit()->selectAll();
        QTest::keyClicks(&hands.Find<QComboBox>("cboModems"), link);
        hands.Find<QComboBox>("cboBaud").setCurrentText(QStringLiteral("9600"));
        Picture("port", m_setup, {port});
        hands.ClickButton("cmdOK");
        EXPECT_TRUE(WaitUntil([port] { return !port->isVisible(); }));
        EXPECT_TRUE(m_program->TheStation().Line().PortIsOpen());
    }

    void LoadTheDevices() {
        auto* menu = m_setup->findChild<QMenu*>(QStringLiteral("mnCommand"));
        auto* printers = m_setup->findChild<QMenu*>(QStringLiteral("mnPrinter"));
        menu->popup(m_setup->mapToGlobal(QPoint(4, 24)));
        printers->popup(menu->geometry().topRight() + QPoint(0, 30));
        Picture("commands-menu", m_setup, {menu, printers});
        printers->close();
        menu->close();
        bool isShown = false;
        const auto progress =
            ::QObject::connect(&m_program->TheStation(), &Station::ProgressChanged, m_setup, [&](const QString& text) {
                if (!isShown && text.contains(QStringLiteral("2 of"))) {
                    isShown = true;
                    Picture("loading", m_setup);
                }
            });
        Item(m_setup, "mnSetServiceCfg")->trigger();
        Close(QStringLiteral("Set config to all objects OK."));
        EXPECT_TRUE(isShown);
        ::QObject::disconnect(progress);
        Item(m_setup, "mnSetHub")->trigger();
        Close(QStringLiteral("Set config to all HUBs OK."));
        Item(m_setup, "mnHubTime")->trigger();
        Close(QStringLiteral("done."));
        Item(m_setup, "mnSetHubCounter")->trigger();
        auto* option = Await<frmHUBCfg>();
        Picture("hub-option", m_setup, {option});
        option->close();
    }

    void DesignTheTicket() {
        Item(m_setup, "mnPRPFB9")->trigger();
        auto* designer = Await<frmDesignTicket>();

        Item(designer, "mnOpen")->trigger();
        auto* open = Await<QFileDialog>();
        open->selectFile(m_folder.filePath(QStringLiteral("Data/ticket.rtf")));
        QTest::keyClick(open, Qt::Key_Return);
        const QPointer<QFileDialog> chosen(open);
        EXPECT_TRUE(WaitUntil(
            [&] { return !chosen && !designer->findChild<QLabel*>(QStringLiteral("lblPreview"))->pixmap().isNull(); }));
        Picture("ticket-design", designer);
        Item(designer, "mnLogoEdit")->trigger();
        auto* editor = Await<frmEditLogo>();
        Item(editor, "mnOpen")->trigger();
        open = Await<QFileDialog>();
        open->selectFile(m_folder.filePath(QStringLiteral("Data/bank.bmp")));
        QTest::keyClick(open, Qt::Key_Return);
        EXPECT_TRUE(WaitUntil([&] {
            return editor->findChild<QLabel*>(QStringLiteral("Label1"))->text().contains(QStringLiteral("bank"));
        }));
        Picture("logo-editor", editor);
        ImportAPicture(editor);
        editor->close();
        EXPECT_TRUE(WaitUntil([e = QPointer(editor)] { return e.isNull(); }));
        designer->close();
        auto* question = Await<QMessageBox>();
        EXPECT_EQ(question->text(), QStringLiteral("File not saved, exit anyway?"));
        question->button(QMessageBox::Yes)->click();
        EXPECT_TRUE(WaitUntil([d = QPointer(designer)] { return d.isNull(); }));
    }

    void PreviewAList() {
        const QString file = m_folder.filePath(QStringLiteral("counters.csv"));
        WriteFile(file,
                  QStringLiteral("Number;Name;Address;Type;Active\n1;Quầy 1;1;Teller;Yes\n4;Quầy 4;4;Counter;Yes\n"
                                 "5;Quầy 5;five;Counter;Yes\n12;Máy in lầu 2;33;Printer;perhaps\n")
                      .toUtf8());
        auto* lists = m_setup->findChild<QMenu*>(QStringLiteral("mnImport"));
        lists->actions()[1]->trigger();
        auto* open = Await<QFileDialog>();
        open->selectFile(file);
        QTest::keyClick(open, Qt::Key_Return);
        auto* import = Await<frmImport>();
        ASSERT_NE(import, nullptr);
        Picture("import-list", import);
        import->close();
        EXPECT_TRUE(WaitUntil([i = QPointer(import)] { return i.isNull(); }));
    }

    void ImportAPicture(frmEditLogo* editor) {
        QImage photo(900, 300, QImage::Format_RGB32);
        photo.fill(Qt::white);
        QPainter painter(&photo);
        painter.setBrush(QGradient(QGradient::DeepBlue));
        painter.drawEllipse(40, 20, 260, 260);
        painter.setFont(QFont(QStringLiteral("DejaVu Sans"), 80, QFont::Bold));
        painter.drawText(QRect(320, 0, 580, 300), Qt::AlignCenter, QStringLiteral("BANK"));
        painter.end();
        const QString file = m_folder.filePath(QStringLiteral("photo.png"));
        EXPECT_TRUE(photo.save(file));
        Item(editor, "mnImport")->trigger();
        auto* open = Await<QFileDialog>();
        open->selectFile(file);
        QTest::keyClick(open, Qt::Key_Return);
        auto* import = Await<frmImportLogo>();
        ASSERT_NE(import, nullptr);
        Picture("import-logo", editor, {import});
        import->close();
        EXPECT_TRUE(WaitUntil([i = QPointer(import)] { return i.isNull(); }));
    }

    void TestTheLine(frmMain* main) {
        Item(main, "mnLineTest")->trigger();
        auto* test = Await<frmLineTest>();
        const WindowDriver hands(*test);
        hands.Find<QSpinBox>("spnRounds").setValue(2);
        hands.ClickButton("cmdTest");
        Ready();
        EXPECT_EQ(hands.Find<QLabel>("lblTested").text(),
                  QStringLiteral("Healthy: 6 of 7 devices. Displays that do not answer, as they may: 1."));
        Picture("line-test", test);
        auto& tabs = hands.Find<QTabWidget>("tabs");
        tabs.setCurrentIndex(1);
        hands.ClickButton("cmdScan");
        Ready();
        EXPECT_EQ(hands.Find<QTableView>("tblAddresses").model()->rowCount(), 5) << "without those behind the hub";
        Picture("find-devices", test);
        tabs.setCurrentIndex(2);
        Picture("line-counts", test);
        test->close();
    }

    void RunTheInstallation() {
        Item(m_setup, "mnMainWindow")->trigger();
        auto* main = Await<frmMain>();
        ASSERT_TRUE(QTest::qWaitForWindowActive(main));
        auto* gauge = main->findChild<QProgressBar*>(QStringLiteral("ProgressBar1"));
        ::QObject::connect(gauge, &QProgressBar::valueChanged, main, [&, main](int value) {
            if (value == 4)
                Picture("initializing", main);
        });
        main->findChild<QAction*>(QStringLiteral("mnInitObjects"))->trigger();
        Ready();
        EXPECT_TRUE(m_program->TheStation().Run().QueueRunning());
        QApplication::processEvents();
        Picture("main-window", main);
        const WindowDriver hands(*main);
        QTest::mouseClick(&hands.Find<ObjectPicture>("picQObj_3"), Qt::LeftButton);
        Picture("q-info", main);
        Item(main, "mnBusMonitor")->trigger();
        auto* monitor = Await<frmBusMonitor>();
        EXPECT_TRUE(WaitUntil(
            [&] { return monitor->findChild<QTableView*>(QStringLiteral("tblFrames"))->model()->rowCount() > 0; }));
        Picture("bus-monitor", monitor);
        monitor->close();
        Commission(main);
        TestTheLine(main);
        hands.ClickButton("Command1");
        auto* bench = Await<frmTest>();
        const WindowDriver benchHands(*bench);
        benchHands.ClickButton("cmdStatus");
        auto* answer = Await<QMessageBox>();
        EXPECT_TRUE(answer->text().startsWith(QStringLiteral("Serive table : Ok\nButton config table : Ok")));
        Picture("test-console", bench, {answer});
        answer->close();
        EXPECT_TRUE(WaitUntil([a = QPointer(answer)] { return a.isNull(); }));
        bench->close();
        hands.ClickButton("cmdStart");
        const std::pair<const char*, const char*> dialogs[] = {
            {"mnQOptions", "options"}, {"mnDBmaintenance", "data-maintenance"}, {"mnAbout", "about"}};
        for (const auto& [item, name] : dialogs) {
            Item(main, item)->trigger();
            QWidget* dialog = nullptr;
            EXPECT_TRUE(WaitUntil([&] { return (dialog = QApplication::activeModalWidget()) != nullptr; }));
            Picture(name, main, {dialog});
            dialog->close();
            EXPECT_TRUE(WaitUntil([d = QPointer(dialog)] { return d.isNull(); }));
        }
        Item(main, "mnExit")->trigger();
        EXPECT_TRUE(WaitUntil([this] { return !m_program->TheStation().Store().IsOpen(); }));
    }

    void Commission(QWidget* main) {
        Item(main, "mnCommission")->trigger();
        auto* window = Await<frmCommission>();
        const WindowDriver hands(*window);
        hands.ClickButton("cmdLoad");
        Close(QStringLiteral("All 3 devices that are loaded are in step."));
        auto& tree = hands.Find<QTreeView>("treHall");
        const auto stateOf = [&tree](int row) { return tree.model()->index(row, 1).data().toString(); };
        EXPECT_TRUE(WaitUntil([&] { return stateOf(3) == QStringLiteral("in step"); }));
        const Result<> renamed =
            m_program->TheStation().Store().Run({QStringLiteral("UPDATE Queue SET q_Name='Tieàn göûi' WHERE q_Id=1")});
        EXPECT_TRUE(renamed);
        m_program->TheStation().NoteStoreChanged();
        EXPECT_TRUE(WaitUntil([&] { return stateOf(3) == QStringLiteral("changed since"); }));
        tree.expand(tree.model()->index(3, 0));
        Picture("commissioning", window);
        hands.ClickButton("cmdLoad");
        Close(QStringLiteral("All 3 devices that are loaded are in step."));
        hands.ClickButton("cmdRecord");
        auto* record = Await<frmRecord>();
        Picture("record", record);
        record->close();
        Item(main, "mnHistory")->trigger();
        auto* history = Await<frmHistory>();
        auto& events = WindowDriver(*history).Find<QTreeView>("treEvents");
        const QModelIndex day = events.model()->index(0, 0);
        for (int row = 0; row < events.model()->rowCount(day); ++row) {
            if (events.model()->index(row, 2, day).data().toString() == QStringLiteral("Directions"))
                events.setCurrentIndex(events.model()->index(row, 0, day));
        }
        Picture("history", history);
        history->close();
        window->close();
    }

    const QString m_pictures;
    QTemporaryDir m_folder{QDir::tempPath() + QStringLiteral("/orvex-XXXXXX")};
    TestClock m_clock;
    WindowDialogs m_dialogs;
    std::unique_ptr<SimulatedBus> m_devices;
    std::unique_ptr<Program> m_program;
    std::optional<QCoro::Task<>> m_running;
    frmQueue* m_setup = nullptr;
    std::optional<SetupHands> m_hands;
};

} // namespace

TEST_F(TourTest, FromAnEmptyFolderThroughEveryWindow) {
    Start();
    ASSERT_NE(m_setup, nullptr);
    DescribeTheInstallation();
    ConnectTheBus();
    LoadTheDevices();
    DesignTheTicket();
    RunTheInstallation();
    for (const int address : {32, 33}) {
        EXPECT_EQ(m_devices->FindAs<TicketPrinter>(address)->Buttons(), (std::vector<quint8>{1, 2, 3})) << address;
        EXPECT_EQ(m_devices->FindAs<TicketPrinter>(address)->ServiceRows().size(), 3U) << address;
    }
    EXPECT_EQ(m_devices->FindAs<DeviceHub>(64)->Members(), (std::vector<DeviceHub::Member>{{0, 3}, {1, 33}}));
}
