#include "tests/app/ProgramWorld.h"

#include "designer/frmDesignTicket.h"
#include "designer/frmEditLogo.h"
#include "setup/frmNewFrom.h"
#include "setup/frmQueue.h"
#include "simulator/BusInstallation.h"
#include "simulator/SimulatedBus.h"
#include "station/Station.h"
#include "tests/support/StoreFile.h"
#include "utilities/frmHUBCfg.h"
#include "utilities/frmSetPort.h"

#include <QAction>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QSpinBox>
#include <QTest>

namespace {

class ProgramTest : public ProgramWorld {
protected:
    ProgramTest() { QFile::link(QStringLiteral(JETIMPORT), Path(QStringLiteral("JetImport"))); }

    template <typename Form = frmQueue>
    Form* Window() const {
        return FindWindow<Form>();
    }

    /// The messages of the log, without their stamps and without the option log.
    QStringList Messages() const {
        QStringList messages;
        for (const QByteArray& line : ReadFile(Path(QStringLiteral("Log/Log18.txt"))).split('\n')) {
            const QString message = QString::fromUtf8(line.mid(line.indexOf("##") + 2));
            if (!line.isEmpty() && !message.contains(u'=') && !message.startsWith(u'*'))
                messages += message;
        }
        return messages;
    }
};

} // namespace

TEST_F(ProgramTest, TheFirstStartInstallsAnEmptyDatabaseAndOffersIt) {
    const QString store = Path(QStringLiteral("Harbinet.mdb"));
    m_dialogs->ExpectChoice(store, store);
    ExpectNoPort();
    Start();
    ASSERT_NE(Window(), nullptr);
    EXPECT_TRUE(Window()->isVisible());
    EXPECT_EQ(m_program->TheStation().Model().LastTicketNumber, 1);
    EXPECT_EQ(
        Messages(),
        (QStringList{u"-"_qs, u"---System Startup---"_qs, u"---System Initialize.."_qs, u"before DBOpen.."_qs,
                     u"Main Display direction not built."_qs, u"Scan Plan not built"_qs, u"---Start load frMain"_qs,
                     u"----- Init picObjs & lblInfo.."_qs, u"----- Init lnTrucks.."_qs, u"----- Init Scrolling.."_qs,
                     u"----- Init COM.."_qs, u"----- Init Menu status.."_qs, u"----- Load Systray.."_qs,
                     u"----- Load Done."_qs, u"No COM to Initialize system."_qs, u"End initialize."_qs}));

    Window()->close();
    EXPECT_EQ(m_ended, 1);
    EXPECT_TRUE(m_clock.Waits.empty()) << "an idle line is not waited for";
    EXPECT_FALSE(m_program->TheStation().Store().IsOpen());
    EXPECT_EQ(ReadFile(Path(QStringLiteral("bak4.mdb"))), ReadFile(store));
}

TEST_F(ProgramTest, ThePortWindowComesFromTheMenuAsOftenAsItIsWanted) {
    const QString store = Path(QStringLiteral("Harbinet.mdb"));
    m_dialogs->ExpectChoice(store);
    ExpectNoPort();
    Start();
    auto* menu = Window()->findChild<QAction*>(QStringLiteral("mnSetCOM"));
    for (int time = 0; time < 2; ++time) {
        menu->trigger();
        ASSERT_NE(Window<frmSetPort>(), nullptr);
        EXPECT_TRUE(Window<frmSetPort>()->isVisible());
        Window<frmSetPort>()->close();
        EXPECT_TRUE(WaitUntil([this] { return Window<frmSetPort>() == nullptr; }));
    }
}

TEST_F(ProgramTest, AnotherDatabaseIsMadeOutOfTheOpenOneAndTheProgramBeginsAnewWithIt) {
    m_dialogs->ExpectChoice(m_store);
    ExpectNoPort();
    Start();
    EXPECT_EQ(Window()->windowTitle(), QStringLiteral("Setup Queue System - Harbinet.mdb"));
    ASSERT_TRUE(m_program->TheStation().Store().Run(
        {QStringLiteral("INSERT INTO Display (d_Number,d_Address,d_Name,d_On,d_Type) VALUES (3,5,'Quaày 3',1,0)")}));
    const QString other = Path(QStringLiteral("Other.mdb"));
    m_dialogs->ExpectChoice(m_store, m_store);
    Window()->findChild<QAction*>(QStringLiteral("mnNewFrom"))->trigger();
    auto* form = Window<frmNewFrom>();
    ASSERT_NE(form, nullptr);
    auto* make = form->findChild<QPushButton*>(QStringLiteral("cmdMake"));
    auto* address = form->findChild<QSpinBox*>(QStringLiteral("spnAddress"));
    address->setValue(122);
    EXPECT_FALSE(make->isEnabled());
    EXPECT_EQ(form->findChild<QLabel*>(QStringLiteral("lblResult"))->text(),
              QStringLiteral("Quầy 3: no device can have address 127"));
    address->setValue(10);
    form->findChild<QSpinBox*>(QStringLiteral("spnNumber"))->setValue(4);
    m_dialogs->ExpectChoice(other, {});
    m_dialogs->ExpectQuestion(BoxKind::Information, other + QStringLiteral(" is made.\nOpen it now?"), true);
    make->click();
    EXPECT_TRUE(WaitUntil([this] { return m_ended == 1; }));
    EXPECT_EQ(m_program->NextStore(), other);
    m_program->deleteLater();
    (void)m_program.release();
    m_running.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);

    m_dialogs.emplace();
    ExpectNoPort();
    Start(false, other);
    EXPECT_EQ(m_program->TheStation().Store().Path(), other);
    EXPECT_EQ(m_program->TheStation().Model().Object(0).Name, QStringLiteral("Quaày 7"));
    EXPECT_EQ(m_program->TheStation().Model().Object(0).Address, 15);
    auto* recent = Window()->findChild<QMenu*>(QStringLiteral("mnRecent"));
    Q_EMIT recent->aboutToShow();
    ASSERT_EQ(recent->actions().size(), 1);
    EXPECT_EQ(recent->actions()[0]->text(), m_store);

    const QString pdf = Path(QStringLiteral("hall.pdf"));
    m_dialogs->ExpectChoice(pdf);
    m_dialogs->ExpectMessage(BoxKind::Information, QStringLiteral("Saved to %1.").arg(pdf));
    Window()->findChild<QAction*>(QStringLiteral("mnDescription"))->trigger();
    EXPECT_TRUE(ReadFile(pdf).startsWith("%PDF"));
    m_program->ExitSystem();
    EXPECT_EQ(m_ended, 2);
    EXPECT_EQ(m_program->NextStore(), QString());
}

TEST_F(ProgramTest, TheCounterOptionIsTypedInItsWindow) {
    m_dialogs->ExpectChoice(Path(QStringLiteral("Harbinet.mdb")));
    ExpectNoPort();
    Start();
    Window()->findChild<QAction*>(QStringLiteral("mnSetHubCounter"))->trigger();
    auto* window = Window<frmHUBCfg>();
    ASSERT_NE(window, nullptr);
    auto* box = window->findChild<QLineEdit*>(QStringLiteral("txtFromTo"));
    auto* ok = window->findChild<QPushButton*>(QStringLiteral("cmdOK"));
    EXPECT_EQ(box->text(), QStringLiteral("5"));
    box->setText(QStringLiteral("11"));
    m_dialogs->ExpectMessage(BoxKind::Exclamation, QStringLiteral("Valid value is 1..10"));
    QTest::mouseClick(ok, Qt::LeftButton);
    ASSERT_TRUE(window->isVisible() && window->isEnabled());
    box->setText(QStringLiteral("3"));
    m_dialogs->ExpectMessage(BoxKind::Information, QStringLiteral("Set config to all HUBs OK."));
    QTest::mouseClick(ok, Qt::LeftButton);
    EXPECT_TRUE(WaitUntil([this] { return Window<frmHUBCfg>() == nullptr; }));
    EXPECT_TRUE(ReadFile(Path(QStringLiteral("Tallora.ini"))).contains("FromToval=3"));
}

TEST_F(ProgramTest, TheDesignerOpensForTheFamilyOfItsMenuEntry) {
    m_dialogs->ExpectChoice(Path(QStringLiteral("Harbinet.mdb")));
    ExpectNoPort();
    Start();
    const PrinterFamily& family = m_program->TheStation().Forms().Family();
    const struct {
        const char* entry;
        int family; ///< ZONE RICH, T81, DB25 as digits
    } entries[] = {{"mnPRPDB25", 1}, {"mnSetTicketZR", 101}, {"mnT81", 11}, {"mnPRPFB9", 0}};
    for (const auto& [entry, expected] : entries) {
        Window()->findChild<QAction*>(QString::fromLatin1(entry))->trigger();
        EXPECT_EQ(family.PrinterZoneRich * 100 + family.PrinterT81 * 10 + family.PrinterDB25, expected) << entry;
        auto* designer = Window<frmDesignTicket>();
        ASSERT_NE(designer, nullptr);
        designer->findChild<QAction*>(QStringLiteral("mnLogoEdit"))->trigger();
        ASSERT_NE(Window<frmEditLogo>(), nullptr);
        Window<frmEditLogo>()->close();
        designer->close();
        EXPECT_TRUE(WaitUntil([this] { return !Window<frmDesignTicket>() && !Window<frmEditLogo>(); }));
    }
    for (const char* entry : {"mnVNIFontZR", "mnVNIFont"}) {
        m_dialogs->ExpectMessage(BoxKind::Information, QStringLiteral("Done."));
        Window()->findChild<QAction*>(QString::fromLatin1(entry))->trigger();
        EXPECT_EQ(family.PrinterZoneRich, QByteArrayView(entry) == "mnVNIFontZR");
    }
}

TEST_F(ProgramTest, MissingLetterFilesAreToldAtTheStart) {
    QFile::remove(Path(QStringLiteral("VNIl.dat")));
    QFile::remove(Path(QStringLiteral("VCODE.dat")));
    m_dialogs->ExpectMessage(BoxKind::Exclamation, QString());
    m_dialogs->ExpectMessage(BoxKind::Plain, QStringLiteral("Error load VNI table"));
    m_dialogs->ExpectChoice(QString());
    Start();
    EXPECT_TRUE(Messages().filter(QStringLiteral("VNIl.dat cannot be read")).size() == 1);
}

TEST_F(ProgramTest, CancellingTheChoiceEndsInSilence) {
    m_dialogs->ExpectChoice(QString());
    Start();
    EXPECT_EQ(m_ended, 1);
    EXPECT_EQ(Window(), nullptr);
    EXPECT_EQ(Messages().last(), QStringLiteral("before DBOpen.."));
    EXPECT_FALSE(QFile::exists(Path(QStringLiteral("bak4.mdb"))));
}

TEST_F(ProgramTest, AFileThatIsNoDatabaseIsToldAndAnotherMayBeChosen) {
    const QString text = Path(QStringLiteral("notes.mdb"));
    WriteFile(text, "Dear diary, nothing in here is a database at all.");
    m_dialogs->ExpectChoice(text);
    m_dialogs->ExpectMessage(BoxKind::Critical, QString());
    m_dialogs->ExpectChoice(QString());
    Start();
    EXPECT_EQ(m_ended, 1);
    EXPECT_EQ(ReadFile(text), "Dear diary, nothing in here is a database at all.");
}

TEST_F(ProgramTest, OpensTheLineOfTheSettingsAndRecoversTickets) {
    const QString store = Path(QStringLiteral("Harbinet.mdb"));
    MakeStore(store, {QStringLiteral("INSERT INTO Queue (q_Number, q_On, q_Name) VALUES (1, 1, 'A')"),
                      QStringLiteral("INSERT INTO Display (d_Number, d_Address, d_On, d_Type) VALUES (1, 32, 1, 1)"),
                      QStringLiteral("INSERT INTO ScanPlan (d_Id, [Order]) VALUES (1, 1)"),
                      QStringLiteral("INSERT INTO [Info-Direction] (inf_Id,d_Id,Dir_Id) VALUES (1, 1, 1)"),
                      QStringLiteral("INSERT INTO rData (TicketNo, ServiceId, DateTime, Flags, Announced) VALUES (41, "
                                     "1, '2026-11-18 08:00:00', 0, 0)")});
    QString problem;
    SimulatedBus devices(*BusInstallation::Read(store, problem));
    ASSERT_EQ(devices.Open(), QString());
    WriteFile(Path(QStringLiteral("Tallora.ini")), "[Comm]\nDevice=" + devices.SlavePath().toUtf8() + "\nBaud=9600\n");
    m_dialogs->ExpectChoice(store);
    Start();
    EXPECT_EQ(Messages().last(2), (QStringList{u"Initialize system.."_qs, u"End initialize."_qs}));
    Station& station = m_program->TheStation();
    EXPECT_EQ(station.Model().LastTicketNumber, 42);
    EXPECT_EQ(station.Model().Service(0).WaitRing.Count, 1);
    EXPECT_EQ(devices.Counts().Commands, 0U) << "nothing goes on the bus at start-up";

    // Closing in the middle of a command ends it and everything behind it.
    devices.SetSilent(32, true);
    const auto load = station.SetServiceConfig();
    EXPECT_TRUE(WaitUntil([&] { return devices.Counts().Commands > 0; }));
    Window()->close();
    EXPECT_EQ(m_ended, 1);
    EXPECT_FALSE(station.Master().Sending());
    EXPECT_EQ(std::count(m_clock.Waits.begin(), m_clock.Waits.end(), 50), 60)
        << "3 seconds, for the command on the line";
    EXPECT_TRUE(load.isReady());
}

TEST_F(ProgramTest, AnAccessFileIsTakenOverAndOpened) {
    const QString file = Path(QStringLiteral("Old.mdb"));
    ASSERT_TRUE(QFile::copy(QStringLiteral(TEST_DATA_FOLDER "/Harbinet-jet4.mdb"), file));
    const QByteArray before = ReadFile(file);
    m_dialogs->ExpectChoice(file);
    m_dialogs->ExpectQuestion(BoxKind::Information, QString(), true);
    ExpectNoPort();
    Start();
    const model::Installation& installation = m_program->TheStation().Model();
    EXPECT_EQ(installation.NumServices, 5);
    EXPECT_EQ(installation.Service(0).Name, QStringLiteral("G\u00F4\u00FBi tie\u00E0n"));
    EXPECT_EQ(installation.NumObjects, 8);
    EXPECT_EQ(installation.LastTicketNumber, 3002);
    EXPECT_EQ(Messages().filter(QStringLiteral("field to rData and qData")).size(), 4);
    EXPECT_EQ(Messages().filter(QStringLiteral("Duplicate Address on display counter")).size(), 1);
    EXPECT_EQ(ReadFile(Path(QStringLiteral("Old.jet.mdb"))), before);
}

TEST_F(ProgramTest, WhereTheProgramLiesReadOnlyItsUserHasAFolderOfHisOwn) {
    const QString own = Path(QStringLiteral("home/share/Orvex"));
    EXPECT_EQ(PrepareFolders(m_folder.path(), own, true).user, m_folder.path());
    EXPECT_FALSE(QFile::exists(own));
    for (int start = 0; start < 2; ++start) {
        const ProgramFolders folders = PrepareFolders(m_folder.path(), own, false);
        EXPECT_EQ(folders.install, m_folder.path());
        EXPECT_EQ(folders.user, own);
        EXPECT_TRUE(QFileInfo(own + QStringLiteral("/Data")).isDir());
        EXPECT_EQ(ReadFile(own + QStringLiteral("/VCODE.dat")), ReadFile(Path(QStringLiteral("VCODE.dat"))));
        if (start == 0)
            WriteFile(own + QStringLiteral("/VNIl.dat"), "the user's own");
        EXPECT_EQ(ReadFile(own + QStringLiteral("/VNIl.dat")), "the user's own");
    }
}
