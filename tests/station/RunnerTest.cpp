#include "tests/support/Outcomes.h"
#include "tests/support/StationWorld.h"

namespace {

/// A counter, a printer on the bus and one behind a hub.
class RunnerTest : public StationWorld {
protected:
    RunnerTest()
        : StationWorld(
              {QStringLiteral("INSERT INTO Queue (q_Id, q_Number, q_Series, q_On, q_Name, q_Button) VALUES "
                              "(1, 1, 1000, 1, 'A', 7)"),
               QStringLiteral("INSERT INTO Display (d_Id, d_Number, d_Address, d_Name, d_On, d_Type, d_HubId) VALUES "
                              "(1, 5, 1, 'Counter', 1, 0, 0), (2, 1, 32, 'Main', 1, 1, 0), "
                              "(3, 2, 33, 'Second', 1, 1, 4), (4, 1, 64, 'HUB', 1, 3, 0)")}) {}
};

} // namespace

TEST_F(RunnerTest, NothingThatConfiguresDevicesRunsBesideAnotherAndBusyIsExactlyThat) {
    OpenLine();
    (void)m_station.reload.ReloadAll();
    m_devices->SetSilent(32, true);
    std::vector<bool> busy;
    ::QObject::connect(&m_station, &Station::BusyChanged, [&](bool isBusy) {
        EXPECT_EQ(isBusy, m_station.IsBusy());
        busy.push_back(isBusy);
    });
    const std::function<QCoro::Task<Outcome>()> operations[] = {
        [this] { return m_station.SetServiceConfig(); },
        [this] { return m_station.ConfigPrinters(); },
        [this] { return m_station.SetHubs(); },
        [this] { return m_station.InitHubs(); },
        [this] { return m_station.SetHubClocks(); },
        [this] { return m_station.SetPrinterClocks(); },
        [this] { return m_station.InitAllObjects(); },
        [this] { return m_station.ResetSystem(); },
        [this] { return m_station.LoadVniFont(LetterSet::Table); },
        [this] { return m_station.SetHubCounter(u"3"_qs); },
        [this] { return m_station.SendForm(1, {}, {}, Logos::With); },
        [this] { return m_station.SendFormToAll({}, {}, Logos::Without); },
        [this] {
            m_dialogs.ExpectQuestion(BoxKind::Exclamation, QString(), true);
            return m_station.Maintenance().DeleteFromYear(u"2020"_qs);
        }};
    auto first = m_station.SetPrinterClocks();
    for (const auto& operation : operations) {
        EXPECT_EQ(Told(operation()),
                  "refused Exclamation: Devices are being configured. Please try again when this is done.");
    }
    // The bench is no such operation.
    EXPECT_EQ(Told(m_station.Console().TestHub(3)).substr(0, 15), "done Plain: Add");
    EXPECT_EQ(Told(std::move(first)), "failed Plain: .Done");
    EXPECT_EQ(busy, (std::vector<bool>{true, false}));
}

TEST_F(RunnerTest, TheEndCutsAnOperationOffWhereItStands) {
    const std::function<QCoro::Task<Outcome>(Station&)> operations[] = {
        [](Station& station) { return station.ResetSystem(); },
        [](Station& station) { return station.InitAllObjects(); },
        [](Station& station) { return station.SetServiceConfig(); },
        [](Station& station) { return station.SetHubs(); }};
    for (std::size_t which = 0; which < std::size(operations); ++which) {
        // From every command on: nothing is sent, deleted, logged or said behind the cut.
        int cuts = 0;
        for (int commands = 1;; ++commands) {
            TestClock clock;
            TestDialogs dialogs;
            SerialControl port;
            OpenStation station({m_folder.path(), m_folder.path()}, {clock, port, dialogs});
            ASSERT_TRUE(station.OpenStore(m_store).IsDone());
            ASSERT_TRUE(station.database.Run(
                {QStringLiteral("INSERT INTO rData (ServiceId, TicketNo, Flags) VALUES (1, 1007, 0)")}));
            Simulate(m_store);
            station.UsePort(m_devices->SlavePath(), u"115200"_qs);
            ASSERT_TRUE(Await(station.line.OpenPort()));
            int sent = 0;
            QStringList behind;
            int sentBefore = 0;
            const auto cut = [&] {
                sentBefore = sent;
                ::QObject::connect(&station.log, &EventLog::Written, [&](const QString& line) { behind += line; });
                station.Close();
            };
            ::QObject::connect(&station.bus, &Bus::FrameSent, &station, [&] {
                if (++sent == commands)
                    QMetaObject::invokeMethod(&station, cut, Qt::QueuedConnection);
            });
            const Outcome outcome = Await(operations[which](station));
            EXPECT_FALSE(station.IsBusy());
            if (sent < commands || outcome.end != Outcome::End::Cancelled)
                break;
            ++cuts;
            EXPECT_EQ(sent, sentBefore);
            EXPECT_EQ(behind, QStringList());
            EXPECT_EQ(station.tickets.GetMaxTicket(), 1007) << which << " after " << commands;
            EXPECT_FALSE(station.run.QueueRunning());
        }
        EXPECT_GE(cuts, 1) << which;
    }
}
