#include "tests/app/ProgramWorld.h"
#include "tests/app/SetupHands.h"

#include "simulator/BusInstallation.h"
#include "simulator/SimulatedBus.h"
#include "station/Station.h"

#include <QAction>
#include <QLabel>

namespace {

/// An installer's evening: from the empty store that the first start makes, through all four tabs, to configured
/// devices.
class SetupRoadTest : public ProgramWorld {
protected:
    void Begin(bool hasPort) {
        m_dialogs.emplace();
        m_dialogs->ExpectChoice(m_store);
        if (!hasPort)
            ExpectNoPort();
        Start();
        m_window = FindWindow<frmQueue>();
        m_window->resize(1280, 800);
        ASSERT_TRUE(QTest::qWaitForWindowActive(m_window));
        m_hands.emplace(*m_window);
        m_hands->GoToTab(1);
    }

    void End() {
        m_window->close();
        m_program.reset();
    }

    std::string Column(const char* grid, int column) const { return WindowDriver::Column(m_hands->Grid(grid), column); }

    void AssignCounters() {
        DataGrid& objects = m_hands->Grid("TDBGridDisplay");
        DataGrid& served = m_hands->Grid("TDBGridQD");
        m_hands->Assign(0, {});
        WindowDriver::Click(objects, 0, 0);
        m_hands->ClickButton("cmdNew");
        WindowDriver::Drag(objects, 1, 0, served);
        EXPECT_EQ(WindowDriver::Column(served, 2), "Q1|Q2");
        m_hands->Assign(1, {});
        EXPECT_EQ(m_hands->Find<QLabel>("lblService").text(), QStringLiteral("Loans"));
        EXPECT_EQ(WindowDriver::Column(served, 2), "");
        WindowDriver::Drag(objects, 1, 1, served);
        EXPECT_EQ(WindowDriver::Column(served, 2), "Q2");

        m_dialogs->ExpectMessage(BoxKind::Exclamation, QStringLiteral("Counter was assigned. "));
        m_hands->ClickButton("cmdNew");
        m_dialogs->ExpectMessage(BoxKind::Exclamation, QStringLiteral("Could not add this type to service."));
        WindowDriver::Drag(objects, 2, 0, served);
        EXPECT_EQ(WindowDriver::Column(served, 2), "Q2");
    }

    void BuildPlan() {
        DataGrid& list = m_hands->Grid("TDBGridDisplayList");
        DataGrid& plan = m_hands->Grid("TDBGridPlan");
        WindowDriver::Click(list, 2, 0);
        m_hands->ClickButton("cmdPlan_0");
        EXPECT_EQ(WindowDriver::Column(plan, 3), "11");
        m_dialogs->ExpectQuestion(BoxKind::Exclamation,
                                  QStringLiteral("This will delete all scan list. Do you want to continue?"), true);
        m_hands->ClickButton("cmdAuto");
        EXPECT_EQ(WindowDriver::Column(plan, 2), "Q1|Q2|P1|P2|D1|H1");
        EXPECT_EQ(WindowDriver::Column(plan, 3), "1|2|3|4|5|6");
        WindowDriver::Type(plan, 0, 3, QStringLiteral("9"));
        WindowDriver::Click(plan, 5, 2);
        m_hands->ClickButton("cmdPlan_1");
        EXPECT_EQ(WindowDriver::Column(plan, 2), "Q2|P1|P2|D1|Q1");
    }

    void ChooseDirections() {
        DataGrid& matrix = m_hands->Grid("TDBGrid1");
        WindowDriver::Choose(matrix, 0, 1, QStringLiteral("L"));
        WindowDriver::Choose(matrix, 0, 2, QStringLiteral("U"));
        m_dialogs->ExpectMessage(BoxKind::Plain, QStringLiteral("Update Done."));
        m_hands->ClickButton("cmdUpdate");
    }

    void AssignToHub() const {
        DataGrid& free = m_hands->Grid("TDBGridCounters");
        EXPECT_EQ(WindowDriver::Column(free, 0), "Q1|Q2|P1|P2|D1");
        WindowDriver::Click(m_hands->Grid("TDBGridHUB"), 0, 0);
        WindowDriver::Click(free, 3, 0);
        m_hands->ClickButton("cmdAddCounterToHub");
        WindowDriver::Drag(free, 1, 0, m_hands->Grid("TDBGridHubCounters"));
        EXPECT_EQ(WindowDriver::Column(free, 0), "Q1|P1|D1");
    }

    void ExpectAllIsThere() const {
        EXPECT_EQ(Column("TDBGridQueue", 1), "G\u00F6\u00FBi tie\u00E0n|Loans");
        EXPECT_EQ(Column("TDBGridQueue", 3), "Qua\u00E0y $1|To $1");
        EXPECT_EQ(Column("TDBGridQueue", 6), "Yes|Yes");
        EXPECT_EQ(Column("TDBGridDisplay", 0), "Q1|Q2|P1|P2|D1|H1");
        EXPECT_EQ(Column("TDBGridDisplay", 2), "1|2|32|33|40|64");
        EXPECT_EQ(Column("TDBGridDisplay", 3), "Counter|Counter|Printer|Printer|Display|Hub");
        EXPECT_EQ(Column("TDBGridQD", 2), "Q1|Q2");
        m_hands->GoToTab(2);
        EXPECT_EQ(Column("TDBGridPlan", 2), "Q2|P1|P2|D1|Q1");
        m_hands->GoToTab(3);
        EXPECT_EQ(Column("TDBGrid1", 0), "D1|--------");
        EXPECT_EQ(Column("TDBGrid1", 1), "Left|None");
        EXPECT_EQ(Column("TDBGrid1", 2), "Up|None");
        m_hands->GoToTab(4);
        EXPECT_EQ(Column("TDBGridHubCounters", 0), "Q2|P2");
        EXPECT_EQ(m_hands->Find<QPushButton>("cmdFindings").text(), QStringLiteral("Check: nothing found"));
    }

    void Command(const char* name, const QString& outcome) {
        m_dialogs->ExpectMessage(BoxKind::Information, outcome);
        m_window->findChild<QAction*>(QString::fromLatin1(name))->trigger();
        EXPECT_TRUE(WaitUntil([this] { return !m_program->TheStation().IsBusy(); }, 30'000)) << name;
    }

    frmQueue* m_window = nullptr;
    std::optional<SetupHands> m_hands;
};

} // namespace

TEST_F(SetupRoadTest, FromAnEmptyStoreToConfiguredDevices) {
    Begin(false);
    m_hands->EnterServices({{u"G\u1EEDi ti\u1EC1n"_qs, u"Qu\u1EA7y $1"_qs, 7}, {u"Loans"_qs, u"To $1"_qs, 8}});
    m_hands->EnterObjects({{u"Q1"_qs, 1, 1, u"C"_qs},
                           {u"Q2"_qs, 2, 2, u"C"_qs},
                           {u"P1"_qs, 11, 32, u"P"_qs},
                           {u"P2"_qs, 12, 33, u"P"_qs},
                           {u"D1"_qs, 21, 40, u"D"_qs},
                           {u"H1"_qs, 31, 64, u"H"_qs}});
    AssignCounters();
    m_hands->GoToTab(2);
    BuildPlan();
    m_hands->GoToTab(3);
    ChooseDirections();
    m_hands->GoToTab(4);
    AssignToHub();
    End();

    QString problem;
    const auto installation = BusInstallation::Read(m_store, problem);
    ASSERT_TRUE(installation.has_value()) << qPrintable(problem);
    SimulatedBus bus(*installation);
    ASSERT_EQ(bus.Open(), QString());
    WritePort(bus.SlavePath());
    Begin(true);
    ExpectAllIsThere();

    Command("mnSetServiceCfg", QStringLiteral("Set config to all objects OK."));
    Command("mnSetHub", QStringLiteral("Set config to all HUBs OK."));
    for (const int address : {32, 33}) {
        const TicketPrinter& printer = *bus.FindAs<TicketPrinter>(address);
        EXPECT_EQ(printer.Buttons(), (std::vector<quint8>{7, 8}));
        const std::map<int, TicketPrinter::ServiceRow> rows = {{0,
                                                                {0,
                                                                 "G\xF6\xFB"
                                                                 "i tie\xE0n",
                                                                 "Qua\xE0y 1, 2"}},
                                                               {1, {1, "Loans", "To 2"}}};
        EXPECT_EQ(printer.ServiceRows(), rows) << address;
    }
    // Two services, counters 1 and 2 with their first services, printers 11 and 12, the display with Left and Up.
    EXPECT_EQ(bus.FindAs<DeviceHub>(64)->Configuration(), QByteArray("21Na_Relt\0"
                                                                     "2"
                                                                     "1\x01\0"
                                                                     "2\x01\0"
                                                                     "2"
                                                                     "110"
                                                                     "220"
                                                                     "2;P<Q"
                                                                     "1X13",
                                                                     33));
    End();
}
