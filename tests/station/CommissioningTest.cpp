#include "station/LoadWatch.h"

#include "simulator/SimulatedLine.h"
#include "simulator/SimulatedUser.h"
#include "tests/support/Files.h"
#include "tests/support/OpenStation.h"
#include "tests/support/StoreFile.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDir>

#include <random>

using namespace std::chrono_literals;
using What = Commissioning::What;

namespace {

/// A station and the devices of its hall, in simulated time, on a line of 9600 bit/s.
class CommissioningTest : public ::testing::Test {
protected:
    CommissioningTest() {
        CopyLetterFiles(m_folder.path());
        WriteFile(Path("Form.rtf"), "{\\rtf1 Ticket $VAR(4)\\par}");
        WriteFile(Path("Tallora.ini"),
                  "[Comm]\nDevice=COM1\nBaud=9600\n[Ticket]\nLastForm=" + Path("Form.rtf").toUtf8());
        MakeStore(
            m_store,
            {QStringLiteral("INSERT INTO Queue (q_Id, q_Number, q_Series, q_On, q_Name, q_Button, q_Route) VALUES "
                            "(1, 1, 1000, 1, 'A', 7, 0), (2, 2, 2000, 1, 'B', 8, 0), (3, 3, 3000, 1, 'C', 9, 0)"),
             QStringLiteral("INSERT INTO Display (d_Id, d_Number, d_Address, d_Name, d_On, d_Type, d_HubId) VALUES "
                            "(1, 5, 1, 'Counter', 1, 0, 0), (2, 1, 32, 'Main', 1, 1, 0), (3, 2, 33, 'Second', 1, 1, "
                            "5), (4, 9, 40, 'Board', 1, 2, 0), (5, 1, 64, 'HUB', 1, 3, 0)")});
    }

    ~CommissioningTest() override { m_station.reset(); }

    QString Path(const char* name) const { return m_folder.filePath(QString::fromLatin1(name)); }

    void
    Start(const char* devices = "counter 1 5 Counter\nprinter 32 1 Main\nhub 64 1 HUB\nprinter 33 2 hub=64 Second\n"
                                "display 40 9 Board\n") {
        QString problem;
        m_line = std::make_unique<SimulatedLine>(
            *BusInstallation::Parse(QString::fromLatin1(devices), QStringLiteral("hall"), problem), m_timeline);
        Restart();
    }

    void Restart() {
        m_station =
            std::make_unique<OpenStation>(ProgramFolders{m_folder.path(), m_folder.path()},
                                          Station::Machine{m_clock, *m_line, m_user, QStringLiteral("installer")});
        ::QObject::connect(&m_station->bus, &Bus::FrameSent,
                           [this](quint8, const QByteArray& frame, int) { m_sent += frame; });
        const Outcome started = Run([this]() -> QCoro::Task<Outcome> {
            co_await m_station->ReadSettings();
            co_return co_await m_station->Start(m_store);
        });
        EXPECT_TRUE(started.IsDone());
    }

    Outcome Run(const std::function<QCoro::Task<Outcome>()>& operation) {
        m_sent.clear();
        std::optional<Outcome> outcome;
        const auto watch = [](QCoro::Task<Outcome> task, std::optional<Outcome>& result) -> QCoro::Task<> {
            result = co_await task;
        };
        const QCoro::Task<> running = watch(operation(), outcome);
        const Timeline::Moment latest = m_timeline.Now() + 1h;
        while (!outcome && m_timeline.Step(latest))
            QCoreApplication::sendPostedEvents();
        EXPECT_TRUE(outcome.has_value()) << "it never ends";
        QCoreApplication::sendPostedEvents();
        return outcome.value_or(Outcome::Cancelled());
    }

    Outcome Commission(What what = What::NotInStep) {
        return Run([this, what] { return m_station->CommissionHall(what); });
    }

    void Edit(const QString& statement) {
        const Result<> done = m_station->database.Run({statement});
        ASSERT_TRUE(done) << qPrintable(done.Error());
    }

    /// "in step" or what is said of a thing.
    QString Told(qint32 key, LoadKind kind) {
        const std::vector<DeviceState> hall = *m_station->Hall();
        for (const DeviceState& device : hall) {
            for (const HeldItem& item : device.items) {
                if (device.key == key && item.kind == kind)
                    return item.state == StepState::InStep ? NameOf(item.state)
                                                           : NameOf(item.state) + QStringLiteral(": ") + item.what;
            }
        }
        return {};
    }

    int Rows(const QString& table) {
        auto rows = m_station->database.Select({QStringLiteral("SELECT COUNT(*) FROM ") + table});
        return rows && rows->next() ? rows->value(0).toInt() : -1;
    }

    QTemporaryDir m_folder;
    QString m_store = Path("Harbinet.mdb");
    Timeline m_timeline;
    SimulatedClock m_clock{m_timeline, QDateTime(QDate(2026, 11, 18), QTime(6, 13, 38))};
    SimulatedUser m_user{m_timeline, 1};
    std::unique_ptr<SimulatedLine> m_line;
    std::unique_ptr<OpenStation> m_station;
    QByteArrayList m_sent;
};

} // namespace

TEST_F(CommissioningTest, OneRunBringsTheHallIntoStepAndTheNextOneOnlyAsks) {
    Start();
    EXPECT_EQ(Told(2, LoadKind::Tables), QStringLiteral("never loaded: "));
    EXPECT_EQ(Commission().text, QStringLiteral("All 3 devices that are loaded are in step."));
    EXPECT_EQ(m_line->FindAs<DeviceHub>(64)->Members(), (std::vector<DeviceHub::Member>{{1, 33}}));
    EXPECT_EQ(m_line->FindAs<TicketPrinter>(33)->ServiceRows().size(), 3U);
    EXPECT_EQ(m_line->FindAs<TicketPrinter>(33)->Flags().first(4), "1111");

    const Timeline::Moment begun = m_timeline.Now();
    EXPECT_TRUE(Commission().IsDone());
    EXPECT_EQ(m_sent.size(), 5) << "a P for each device but the display, and one that looks for an echo";
    EXPECT_LT(m_timeline.Now() - begun, 1200ms);
    const QByteArrayList asked = m_sent;
    EXPECT_TRUE(Commission(What::Verify).IsDone());
    EXPECT_EQ(m_sent.size(), asked.size());

    Edit(QStringLiteral("UPDATE Queue SET q_Name='X' WHERE q_Id<3"));
    EXPECT_TRUE(Told(3, LoadKind::Tables).endsWith(QStringLiteral("since then: 2 services renamed")));
    EXPECT_EQ(Told(5, LoadKind::Block), QStringLiteral("in step")) << "no name goes to a hub";
    WriteFile(Path("Form.rtf"), "{\\rtf1 Another $VAR(4)\\par}");
    EXPECT_TRUE(Told(2, LoadKind::Form).endsWith(QStringLiteral("since then: the form was edited")));
    // What was loaded by whatever way counts.
    EXPECT_TRUE(Run([this] { return m_station->SetServiceConfig(); }).IsDone());
    EXPECT_TRUE(Told(2, LoadKind::Tables).startsWith(QStringLiteral("not verified: loaded")));
    EXPECT_FALSE(Commission(What::Verify).IsDone()) << "the form is another one";
    EXPECT_EQ(Told(2, LoadKind::Tables), QStringLiteral("in step"));
    EXPECT_TRUE(Commission().IsDone());
}

namespace {

struct Lie {
    const char* name;
    FaultSettings faults;
    const char* devices;  ///< that are really there, those of the store if null
    QStringList words;    ///< of the commissioning
    int inStep;           ///< things that are in step after it
    const char* givenBox; ///< of the given load, which no lie changes
};

std::vector<Lie> Lies() {
    FaultSettings echo;
    echo.Echo = true;
    FaultSettings deaf;
    deaf.Deaf = {{'M', 0}};
    FaultSettings late;
    late.LateMilliseconds = 900;
    return {{"EchoWithoutDevices",
             echo,
             "counter 99 1 Nobody\n",
             {QStringLiteral("The adapter echoes what is sent")},
             0,
             "Set config to all objects OK."},
            {"PrinterThatTakesNoRow0",
             deaf,
             nullptr,
             {QStringLiteral("2 of 5 devices are not in step"), QStringLiteral("service row 0 (A) was not taken")},
             8,
             "Set config to all objects OK."},
            {"EveryAnswerLate", late, nullptr, {QStringLiteral("4 of 5 devices are not in step")}, 0, nullptr}};
}

class CommissioningOfLiars : public CommissioningTest, public ::testing::WithParamInterface<Lie> {};

} // namespace

TEST_P(CommissioningOfLiars, AreToldInTheRightWords) {
    const Lie& lie = GetParam();
    if (lie.devices)
        Start(lie.devices);
    else
        Start();
    m_line->SetFaults(lie.faults);
    const Outcome outcome = Commission();
    EXPECT_EQ(outcome.end, Outcome::End::Failed);
    for (const QString& words : lie.words)
        EXPECT_TRUE(outcome.text.contains(words)) << qPrintable(words) << " is not in " << qPrintable(outcome.text);
    int inStep = 0;
    const std::vector<DeviceState> hall = *m_station->Hall();
    for (const DeviceState& device : hall) {
        for (const HeldItem& item : device.items)
            inStep += item.state == StepState::InStep ? 1 : 0;
    }
    EXPECT_EQ(inStep, lie.inStep);
    if (lie.givenBox) {
        EXPECT_EQ(Run([this] { return m_station->ConfigPrinters(); }).text, QString::fromLatin1(lie.givenBox));
    }
}

INSTANTIATE_TEST_SUITE_P(Lines, CommissioningOfLiars, ::testing::ValuesIn(Lies()),
                         [](const auto& lie) { return std::string(lie.param.name); });

TEST_F(CommissioningTest, AnEchoDoesNotPassForAHallThatWasInStep) {
    Start();
    ASSERT_TRUE(Commission().IsDone());
    FaultSettings faults;
    faults.Echo = true;
    for (int address = 0; address <= 207; ++address)
        faults.Silent.insert(static_cast<quint8>(address));
    m_line->SetFaults(faults);
    for (const What what : {What::Verify, What::NotInStep}) {
        const Outcome outcome = Commission(what);
        EXPECT_EQ(outcome.end, Outcome::End::Failed);
        EXPECT_TRUE(outcome.text.contains(QStringLiteral("echoes"))) << qPrintable(outcome.text);
    }
}

TEST_F(CommissioningTest, APrinterThatGoesAwayDoesNotHoldTheRunUp) {
    Start();
    FaultSettings faults;
    faults.Deaf = {{'K', std::nullopt}, {'M', std::nullopt}, {'N', std::nullopt}};
    m_line->SetFaults(faults);
    bool isGone = false;
    const QMetaObject::Connection watching = ::QObject::connect(
        &m_station->LastCommissioning(), &Commissioning::Advanced, &m_station->LastCommissioning(), [&] {
            for (const auto& [key, visit] : m_station->LastCommissioning().Visits())
                isGone |= visit.loading == LoadKind::Tables;
            if (isGone) {
                faults.Silent = {32, 33};
                m_line->SetFaults(faults);
            }
        });
    const Timeline::Moment begun = m_timeline.Now();
    const Outcome outcome = Commission();
    ::QObject::disconnect(watching);
    EXPECT_TRUE(isGone);
    EXPECT_EQ(outcome.end, Outcome::End::Failed);
    EXPECT_LT(m_timeline.Now() - begun, 120s) << "two tables of three rows, each tried once";
}

TEST_F(CommissioningTest, ServicesThatComeGoAndMoveAreToldApart) {
    Start();
    ASSERT_TRUE(Commission().IsDone());
    const auto told = [this](const char* edit) {
        EXPECT_TRUE(m_station->database.Edit(QStringLiteral("edit"), {{QString::fromLatin1(edit)}}));
        const QString words = Told(2, LoadKind::Tables);
        EXPECT_TRUE(m_station->UndoEdit().IsDone());
        return words.section(QStringLiteral("since then: "), 1);
    };
    EXPECT_EQ(told("DELETE FROM Queue WHERE q_Id=1"), QStringLiteral("1 service fewer"));
    EXPECT_EQ(told("UPDATE Queue SET q_Name='New' WHERE q_Id=2"), QStringLiteral("1 service renamed"));
    EXPECT_EQ(told("UPDATE Queue SET q_Id=q_Id+10 WHERE q_Id=1").section(u',', 0, 0),
              QStringLiteral("1 service at another place"));
}

TEST_F(CommissioningTest, WhatCannotBeWrittenDownIsAskedAboutAndStopsARun) {
    Start();
    const auto lock = [this](bool isLocked) {
        (void)m_station->database.Run(
            {isLocked ? QStringLiteral("CREATE TEMP TRIGGER full BEFORE UPDATE ON LoadIdentity BEGIN SELECT "
                                       "RAISE(ABORT,'the disk is full'); END")
                      : QStringLiteral("DROP TRIGGER IF EXISTS full")});
    };
    QString asked;
    m_user.OnBox = [&asked](const QString& text) { asked += text; };
    lock(true);
    // The user says yes or no as it comes.
    std::set<bool> answers;
    for (int i = 0; i < 20 && answers.size() < 2; ++i) {
        asked.clear();
        const Outcome outcome = Commission();
        EXPECT_TRUE(asked.contains(QStringLiteral("the disk is full"))) << qPrintable(asked);
        answers.insert(outcome.IsDone());
        EXPECT_EQ(m_line->FindAs<TicketPrinter>(32)->ServiceRows().empty(), answers == std::set<bool>{false});
    }
    EXPECT_EQ(answers.size(), 2U);

    // In the middle nobody is asked: the next load does not begin.
    lock(false);
    asked.clear();
    Edit(QStringLiteral("UPDATE Queue SET q_Name='X'"));
    const QMetaObject::Connection watching = ::QObject::connect(
        &m_station->LastCommissioning(), &Commissioning::Advanced, &m_station->LastCommissioning(), [&] {
            for (const auto& [key, visit] : m_station->LastCommissioning().Visits()) {
                if (visit.loading)
                    lock(true);
            }
        });
    const Outcome outcome = Commission();
    ::QObject::disconnect(watching);
    EXPECT_EQ(outcome.end, Outcome::End::Failed);
    EXPECT_TRUE(outcome.text.startsWith(QStringLiteral("The database no longer takes down what is loaded")))
        << qPrintable(outcome.text);
    EXPECT_EQ(asked, QString());
    EXPECT_NE(m_line->FindAs<TicketPrinter>(33)->ServiceRows().at(0).Name.left(1), "X");
    lock(false);
    EXPECT_TRUE(Commission().IsDone());
}

TEST_F(CommissioningTest, ASilentHubAndWhatStandsBehindItDoNotStopTheRest) {
    Start();
    FaultSettings faults;
    faults.Silent = {64};
    m_line->SetFaults(faults);
    const Outcome outcome = Commission();
    EXPECT_EQ(outcome.silent, QStringList{QStringLiteral("HUB")});
    EXPECT_TRUE(outcome.text.contains(QStringLiteral("Second: behind hub HUB, which is silent")));
    EXPECT_EQ(Told(2, LoadKind::Tables), QStringLiteral("in step"));
    EXPECT_EQ(Told(3, LoadKind::Tables), QStringLiteral("never loaded: "));
}

TEST_F(CommissioningTest, TheRecordOutlastsTheProgramTheEmptyingAndForeignRows) {
    Start();
    ASSERT_TRUE(Commission().IsDone());
    const int rows = Rows(QStringLiteral("LoadRecord"));
    const auto entries = *m_station->Record().Read(1000);
    EXPECT_GT(rows, static_cast<int>(entries.size())) << "a beginning is told by its end";
    for (const LoadEntry& entry : entries) {
        EXPECT_EQ(entry.user, QStringLiteral("installer"));
        EXPECT_TRUE(entry.event == LoadEntry::Event::Asked ||
                    (entry.end == LoadEntry::End::Done && entry.own == entry.frames && entry.tries == entry.frames));
    }
    (void)Run([this]() -> QCoro::Task<Outcome> {
        co_await m_station->End();
        co_return Outcome::Done();
    });
    m_line->Close();
    Restart();
    EXPECT_EQ(Told(3, LoadKind::Logos), QString()) << "its form has none";
    EXPECT_EQ(Told(3, LoadKind::Tables), QStringLiteral("in step"));

    // A device is what stands at its address: another one has never been loaded.
    Edit(QStringLiteral("UPDATE Display SET d_Address=34 WHERE d_Id=2"));
    EXPECT_EQ(Told(2, LoadKind::Tables), QStringLiteral("never loaded: "));
    Edit(QStringLiteral("UPDATE Display SET d_Address=32 WHERE d_Id=2"));
    EXPECT_EQ(Told(2, LoadKind::Tables), QStringLiteral("in step"));

    // Rows of another installation say nothing about this one.
    Edit(QStringLiteral("UPDATE LoadIdentity SET [Identity]='another'"));
    (void)m_station->OpenStore(m_store);
    EXPECT_EQ(Told(2, LoadKind::Tables), QStringLiteral("never loaded: "));
    EXPECT_TRUE(m_station->database.EmptyDatabase());
    EXPECT_EQ(Rows(QStringLiteral("LoadRecord")), rows);

    // A store of an earlier version gets the tables; one that takes nothing says why.
    for (const char* table : {"LoadIdentity", "LoadRecord", "LoadPayload"})
        Edit(QStringLiteral("DROP TABLE ") + QLatin1String(table));
    (void)m_station->OpenStore(m_store);
    EXPECT_EQ(Rows(QStringLiteral("LoadRecord")), 0);
    EXPECT_EQ(m_station->Record().Fault(), QString());
    for (const char* table : {"LoadIdentity", "LoadRecord", "LoadPayload"})
        Edit(QStringLiteral("DROP TABLE ") + QLatin1String(table));
    Edit(QStringLiteral("CREATE TABLE LoadRecord (x)"));
    (void)m_station->OpenStore(m_store);
    EXPECT_FALSE(m_station->Record().Fault().isEmpty());
    EXPECT_TRUE(m_station->Hall()) << "the states are shown all the same";
}

TEST_F(CommissioningTest, AnythingIsChangedExactlyWhereItsBytesDiffer) {
    Start();
    ASSERT_TRUE(Commission().IsDone());
    const auto bytes = [this] {
        (void)m_station->reload.ReloadAll();
        Payloads payloads({*m_station->installation, m_station->Forms(), m_station->Record(), m_clock,
                           [this](qint32 service) { return m_station->loaders.CounterListOfService(service); },
                           m_station->log});
        std::map<Commissioning::Choice, QByteArray> all;
        for (qint16 i = 0; i < m_station->installation->NumObjects; ++i) {
            for (const Payload& payload : payloads.Of(i))
                all[{m_station->installation->Object(i).Id, payload.kind}] = payload.content;
        }
        return all;
    };
    const auto loaded = bytes();
    std::mt19937 dice(7);
    const auto roll = [&dice](unsigned sides) { return static_cast<int>(dice() % sides); };
    int differing = 0;
    for (int edit = 0; edit < 300; ++edit) {
        const QString edits[] = {
            QStringLiteral("UPDATE Queue SET q_Name='%1' WHERE q_Id=%2").arg(QChar(u'A' + roll(4))).arg(1 + roll(3)),
            QStringLiteral("UPDATE Queue SET q_Button=%1 WHERE q_Id=%2").arg(6 + roll(4)).arg(1 + roll(3)),
            QStringLiteral("UPDATE Queue SET q_Series=%1 WHERE q_Id=%2").arg(1000 * (1 + roll(3))).arg(1 + roll(3)),
            QStringLiteral("UPDATE Queue SET q_On=%1 WHERE q_Id=%2").arg(roll(3) > 0).arg(1 + roll(3)),
            QStringLiteral("UPDATE Queue SET q_Notes='%1' WHERE q_Id=%2").arg(roll(9)).arg(1 + roll(3)),
            QStringLiteral("UPDATE Display SET d_HubId=%1 WHERE d_Id=1").arg(roll(2) * 5),
            QStringLiteral("UPDATE Display SET d_Number=%1 WHERE d_Id=%2").arg(1 + roll(9)).arg(1 + roll(5)),
        };
        Edit(edits[roll(std::size(edits))]);
        const Result<std::vector<DeviceState>> hall = m_station->Hall();
        const auto now = bytes();
        for (const DeviceState& device : *hall) {
            for (const HeldItem& item : device.items) {
                const Commissioning::Choice choice{device.key, item.kind};
                const bool differs = now.at(choice) != loaded.at(choice);
                differing += differs ? 1 : 0;
                ASSERT_EQ(item.state == StepState::Changed, differs) << edit << ' ' << qPrintable(NameOf(item.kind));
            }
        }
    }
    EXPECT_GT(differing, 300);
}
