#include "station/LineTest.h"

#include "tests/support/Outcomes.h"
#include "tests/support/SimulatedWorld.h"
#include "tests/support/StationWorld.h"

#include <random>

using namespace std::chrono_literals;

namespace {

/// A counter, a printer, a display, and a hub with a printer and a counter behind it.
QString Hall() {
    return QStringLiteral("INSERT INTO Display (d_Id, d_Number, d_Address, d_Name, d_On, d_Type, d_HubId) VALUES "
                          "(1, 5, 1, 'Counter', 1, 0, 0), (2, 1, 32, 'Main', 1, 1, 0), (3, 2, 33, 'Second', 1, 1, 5), "
                          "(4, 9, 40, 'Board', 1, 2, 0), (5, 1, 64, 'HUB', 1, 3, 0), (6, 6, 2, 'Behind', 1, 0, 5)");
}

/// The verdicts of the last test in object order.
std::string Verdicts(const Station& station) {
    QStringList texts;
    for (const LineTest::Device& device : station.Tested().devices)
        texts += LineTest::TextOf(device);
    return texts.join(u'|').toStdString();
}

class LineTestTest : public SimulatedWorld {
protected:
    explicit LineTestTest(const QStringList& statements = {Hall()})
        : SimulatedWorld(statements) {
        ::QObject::connect(&m_station->bus, &Bus::FrameSent, [this](quint8, const QByteArray& frame, int attempt) {
            const char letter = frame[5];
            m_letters += letter == 'N' ? frame[7] : letter;
            EXPECT_EQ(attempt, 1);
        });
    }

    ~LineTestTest() override { EXPECT_EQ(m_letters.count('P'), m_letters.size()) << "nothing else is ever sent"; }

    /// The verdicts in object order.
    std::string Test(int rounds) {
        EXPECT_EQ(Told(Await(m_station->TestLine(rounds))), "done Plain: ");
        return Verdicts(*m_station);
    }

    /// What was found that is no device of the database which answers: "address kind".
    std::string Scan(bool behindHubs) {
        EXPECT_EQ(Told(Await(m_station->ScanAddresses(behindHubs))), "done Plain: ");
        QStringList texts;
        for (const AddressScan::Row& row : m_station->Scanned().rows) {
            if (row.kind != AddressScan::Kind::Known)
                texts += QStringLiteral("%1 %2").arg(row.address).arg(static_cast<int>(row.kind));
        }
        return texts.join(u'|').toStdString();
    }

    QByteArray m_letters;
};

constexpr const char* Board = "does not answer P, which displays may not";

} // namespace

TEST_F(LineTestTest, EveryFaultOfALineHasItsVerdicts) {
    struct Case {
        const char* name;
        std::function<void(FaultSettings&)> strike;
        int rounds;
        bool localEcho;
        bool hasEcho;
        bool lacksEcho;
        std::string verdicts; ///< "*": none is healthy
    };
    const std::string board = Board;
    const std::string clean = "healthy|healthy|healthy|" + board + "|healthy|healthy";
    const std::string hub = "behind hub HUB, which is silent";
    const Case cases[] = {
        {"clean", [](FaultSettings&) {}, 3, false, false, false, clean},
        {"echo", [](FaultSettings& faults) { faults.Echo = true; }, 2, false, true, false,
         "only an echo|only an echo|only an echo|only an echo|only an echo|only an echo"},
        {"an echo that is passed over", [](FaultSettings& faults) { faults.Echo = true; }, 2, true, false, false,
         clean},
        {"an echo that does not come", [](FaultSettings&) {}, 1, true, false, true, "*"},
        {"echo without any device",
         [](FaultSettings& faults) {
             faults.Echo = true;
             faults.Silent = {1, 32, 33, 40, 64, 2};
         },
         1, false, true, false, "only an echo|only an echo|only an echo|only an echo|only an echo|only an echo"},
        {"late", [](FaultSettings& faults) { faults.LateMilliseconds = 900; }, 2, false, false, false, "*"},
        {"slow", [](FaultSettings& faults) { faults.LateMilliseconds = 650; }, 1, false, false, false,
         "slow|slow|slow|" + board + "|slow|slow"},
        {"a silent hub", [](FaultSettings& faults) { faults.Silent = {64}; }, 1, false, false, false,
         "healthy|healthy|" + hub + '|' + board + "|silent|" + hub},
        {"twin", [](FaultSettings& faults) { faults.Twins = {32}; }, 3, false, false, false,
         "healthy|two devices answer at this address|healthy|" + board + "|healthy|healthy"},
        {"bad sums", [](FaultSettings& faults) { faults.Corrupt = 1; }, 2, false, false, false, "*"},
        {"foreign", [](FaultSettings& faults) { faults.Foreign = 1; }, 1, false, false, false,
         "another device answers|another device answers|another device answers|" + board +
             "|another device answers|another device answers"},
    };
    for (const Case& one : cases) {
        for (const bool isStrict : {false, true}) {
            SCOPED_TRACE(std::string(one.name) + (isStrict ? ", strict" : ""));
            FaultSettings faults;
            one.strike(faults);
            m_line->SetFaults(faults);
            m_station->SetReplyRules(isStrict, one.localEcho);
            const std::string verdicts = Test(one.rounds);
            if (one.verdicts == "*")
                EXPECT_EQ(verdicts.find("healthy"), std::string::npos) << verdicts;
            else
                EXPECT_EQ(verdicts, one.verdicts);
            EXPECT_EQ(m_station->Tested().echo.has, one.hasEcho);
            EXPECT_EQ(m_station->Tested().echo.lacks, one.lacksEcho);
            EXPECT_EQ(m_station->Tested().echo.stranger, std::nullopt);
            // What is late must not come into the next test.
            PassTime(2s);
        }
    }
}

TEST_F(LineTestTest, OnNoLineIsADeviceFoundThatIsNotThereOrCalledHealthyThatIsNot) {
    std::mt19937 dice(7);
    const auto roll = [&dice](quint32 sides) { return static_cast<int>(dice() % sides); };
    const auto chance = [&] { return roll(2) == 0 ? 0.01 * roll(40) : 0.0; };
    constexpr quint8 addresses[] = {1, 32, 33, 40, 64, 2};
    for (int world = 0; world < 300; ++world) {
        SCOPED_TRACE(world);
        FaultSettings faults;
        faults.DropReply = chance();
        faults.Corrupt = chance();
        faults.Noise = chance();
        faults.Slice = chance();
        faults.Delay = chance();
        faults.DelayMilliseconds = roll(1500);
        faults.LateMilliseconds = roll(3) == 0 ? roll(1500) : 0;
        faults.Silent = {addresses[roll(6)], addresses[roll(6)]};
        if (roll(3) == 0)
            faults.Twins = {addresses[roll(6)]};
        faults.Seed = static_cast<quint32>(world);
        m_line->SetFaults(faults);
        m_station->SetReplyRules(roll(2) == 0, false);
        // What the database does not know is there all the same.
        const int unknown = roll(6);
        ASSERT_TRUE(m_station->database.Run(
            {QStringLiteral("UPDATE Display SET d_On = d_Address <> %1 OR d_Type = 3").arg(addresses[unknown])}));
        (void)m_station->reload.ReloadAll();
        Test(1 + roll(3));
        for (const LineTest::Device& device : m_station->Tested().devices) {
            EXPECT_EQ(device.answers + device.silent, device.asked);
            const bool isThere = !faults.Silent.contains(device.address) && device.type != model::Display;
            const bool isHealthy = device.verdict == LineTest::Verdict::Healthy;
            EXPECT_TRUE(!isHealthy || (isThere && device.silent == 0)) << device.address;
        }
        PassTime(2s);
        Scan(roll(2) == 0);
        for (const AddressScan::Row& row : m_station->Scanned().rows) {
            using Kind = AddressScan::Kind;
            const bool isUnknown = row.kind == Kind::Unknown && row.address == addresses[unknown];
            EXPECT_TRUE(isUnknown || (row.kind != Kind::Unknown && row.kind != Kind::Elsewhere)) << row.address;
            EXPECT_TRUE((row.kind != Kind::Known && !isUnknown) || !faults.Silent.contains(row.address)) << row.address;
        }
        PassTime(2s);
    }
}

TEST_F(LineTestTest, LostRoundsAreDisturbedAndCountForTheirDeviceAndNotForItsHub) {
    FaultSettings faults;
    faults.DropReply = 0.3;
    faults.Seed = 5;
    m_line->SetFaults(faults);
    const std::string verdicts = Test(4);
    EXPECT_NE(verdicts.find("disturbed"), std::string::npos) << verdicts;
    int lost = 0;
    for (const LineTest::Device& device : m_station->Tested().devices) {
        EXPECT_EQ(device.asked, 4);
        EXPECT_EQ(device.answers + device.silent, 4);
        EXPECT_EQ(device.trips.Count(), static_cast<quint64>(device.answers));
        lost += device.type == model::Display ? 0 : device.silent;
    }
    EXPECT_GT(lost, 0);

    // A device that its hub does not list gets nothing, and a closed line refuses.
    m_line->SetFaults({});
    m_station->installation->HubTable[4].Count = 1;
    EXPECT_EQ(Test(1), std::string("healthy|healthy|healthy|") + Board + "|healthy|not in its hub's list");
    m_station->CloseLine();
    EXPECT_EQ(Told(Await(m_station->TestLine(1))),
              "refused Exclamation: The line is closed. Please choose the COM port first.");
}

TEST_F(LineTestTest, TheSearchNamesStrangersAndMissingDevicesAndAddsOneToTheDatabase) {
    EXPECT_EQ(Scan(true), "40 4");
    ASSERT_TRUE(m_station->database.Run({
        QStringLiteral("UPDATE Display SET d_On=0 WHERE d_Id IN (2, 6)"),
    }));
    (void)m_station->reload.ReloadAll();
    FaultSettings silent;
    silent.Silent = {1};
    m_line->SetFaults(silent);
    EXPECT_EQ(Scan(true), "1 3|32 1|40 4|2 1");

    for (const auto& [device, text] :
         {std::pair(FoundDevice{32, model::Printer, 0}, "done Plain: "),
          {FoundDevice{2, model::Counter, 5}, "done Plain: "},
          {FoundDevice{2, model::Counter, 5}, "failed Exclamation: Address 2 is already that of \"Counter 2\"."},
          {FoundDevice{127, model::Counter, 0}, "failed Exclamation: No device can have address 127."},
          {FoundDevice{90, model::Counter, 1}, "failed Exclamation: The hub is no longer in the database."}})
        EXPECT_EQ(Told(m_station->AddScanned(device)), text);
    m_station->RefreshIfChanged();
    ASSERT_EQ(m_station->Model().NumObjects, 6);
    EXPECT_EQ(m_station->Model().Object(4).Name, QStringLiteral("Printer 32"));
    EXPECT_EQ(m_station->Model().Object(4).Number, 3) << "the lowest that no row has";
    m_line->SetFaults({});
    EXPECT_EQ(Scan(true), "40 4");

    FaultSettings faults;
    faults.Twins = {32};
    m_line->SetFaults(faults);
    EXPECT_EQ(Scan(false), "32 7|40 4");
    faults = {};
    faults.Echo = true;
    m_line->SetFaults(faults);
    EXPECT_EQ(Scan(true), "");
    EXPECT_TRUE(m_station->Scanned().echo.has);
}

namespace {

/// 32 devices, of which four are displays, and a hub with four more behind it.
QStringList LargeHall() {
    QStringList rows;
    for (int id = 1; id <= 36; ++id) {
        const int type = id == 1 ? 3 : id % 8 == 2 ? 2 : id % 2;
        rows +=
            QStringLiteral("(%1, %1, %2, 'Device %1', 1, %3, %4)").arg(id).arg(id * 5).arg(type).arg(id > 32 ? 1 : 0);
    }
    return {QStringLiteral("INSERT INTO Display (d_Id, d_Number, d_Address, d_Name, d_On, d_Type, d_HubId) VALUES ") +
            rows.join(u',')};
}

class LargeHallTest : public LineTestTest {
protected:
    LargeHallTest()
        : LineTestTest(LargeHall()) {}
};

class RealLineTest : public StationWorld {
protected:
    RealLineTest()
        : StationWorld({Hall()}) {
        (void)m_station.reload.ReloadAll();
        OpenLine();
    }
};

} // namespace

TEST_F(LargeHallTest, ASearchAmongAllAddressesTakesLessThanFortySeconds) {
    const Timeline::Moment begun = m_timeline.Now();
    EXPECT_EQ(Scan(false), "10 4|50 4|90 4|130 4");
    EXPECT_EQ(m_station->Scanned().rows.size(), 32U);
    const auto took = m_timeline.Now() - begun;
    RecordProperty("milliseconds", static_cast<int>(took / 1ms));
    EXPECT_LT(took, 40s);
}

TEST_F(RealLineTest, OnARealPortEveryDeviceHasItsVerdictTooAndAClosedPortEndsTheTest) {
    const std::string board = std::string("|") + Board + '|';
    FaultSettings faults;
    faults.Twins = {32};
    m_devices->SetFaults(faults);
    EXPECT_EQ(Told(m_station.TestLine(2)), "done Plain: ");
    EXPECT_EQ(Verdicts(m_station), "healthy|two devices answer at this address|healthy" + board + "healthy|healthy");
    faults = {};
    faults.Echo = true;
    m_devices->SetFaults(faults);
    EXPECT_EQ(Told(m_station.TestLine(1)), "done Plain: ");
    EXPECT_TRUE(m_station.Tested().echo.has);
    m_station.SetReplyRules(false, true);
    EXPECT_EQ(Told(m_station.TestLine(1)), "done Plain: ");
    EXPECT_EQ(Verdicts(m_station), "healthy|healthy|healthy" + board + "healthy|healthy");

    int steps = 0;
    ::QObject::connect(&m_station, &Station::ProgressChanged, [&] {
        if (++steps == 3)
            m_station.CancelOperation();
        if (steps == 8)
            QMetaObject::invokeMethod(
                &m_station, [this] { m_station.CloseLine(); }, Qt::QueuedConnection);
    });
    EXPECT_EQ(Told(m_station.TestLine(5)), "cancelled");
    EXPECT_EQ(Told(m_station.TestLine(5)), "failed Exclamation: The line was closed before everything was asked.");
}
