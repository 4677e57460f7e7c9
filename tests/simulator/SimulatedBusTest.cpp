#include "link/Encodings.h"
#include "simulator/BusConsole.h"
#include "simulator/InformationDisplay.h"
#include "tests/simulator/BusClient.h"

#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QLocalSocket>
#include <QTemporaryDir>

namespace {

using Content = std::optional<QByteArray>;
const QByteArray Clock("6=VJ;B4");

BusInstallation Installation() {
    QString problem;
    const QString text =
        QStringLiteral("counter 1 1 First\ncounter 8 2 hub=64 Behind\nprinter 32 1 Main\n"
                       "printer 33 2 hub=64 Second\ndisplay 40 1 Board\nhub 64 1 Hall\npower 100 1 Supply\n");
    return BusInstallation::Parse(text, QStringLiteral("test"), problem).value_or(BusInstallation());
}

QByteArray Row(int index, int series, const QByteArray& name, const QByteArray& description) {
    return encoding::Hexadecimal(quint32(index), 2) + encoding::SmallNumber(series) + name.leftJustified(64, '\0') +
           description.leftJustified(64, '\0');
}

class SimulatedBusTest : public testing::Test {
protected:
    SimulatedBusTest() { EXPECT_EQ(m_bus.Open(), QString()); }

    void LoadTables(BusClient& client) {
        EXPECT_TRUE(client.Ask(32, 'K', "0205071"));
        EXPECT_TRUE(client.Ask(32, 'M', Row(0, 0, "Cash", "Desk 1")));
        EXPECT_TRUE(client.Ask(32, 'M', Row(1, 1, QByteArray(63, 'n'), "")));
    }

    SimulatedBus m_bus{Installation()};
    TicketPrinter& m_printer = *m_bus.FindAs<TicketPrinter>(32);
    TicketPrinter& m_second = *m_bus.FindAs<TicketPrinter>(33);
    DeviceHub& m_hub = *m_bus.FindAs<DeviceHub>(64);
};

} // namespace

TEST_F(SimulatedBusTest, AnswersKnownCommandsAndIsSilentOnOthers) {
    BusClient client(m_bus);
    const Content silence;
    const struct {
        int address;
        char letter;
        QByteArray data;
        Content content;
    } rows[] = {
        {1, 'H', "0012", ""},
        {1, 'P', "", "0012"},
        {1, 'H', "012", silence},
        {1, 'Z', "", silence},
        {1, 'S', "6=V", ""},
        {2, 'P', "", silence},
        {8, 'P', "", silence},
        {32, 'P', "", "000001"},
        {32, 'S', Clock, ""},
        {32, 'K', "02051", silence},
        {32, 'K', "001", ""},
        {32, 'P', "", "110001"},
        {32, 'M', "00", silence},
        {32, 'Q', "0001000", "1000/0000"},
        {40, 'H', "0000Hello", ""},
        {40, 'S', "", ""},
        {64, 'L', "0ANa_Relt", silence},
        {64, 'L', QByteArray("0ANa_Relt\0", 10), ""},
        {64, 'K', ":", ""},
        {64, 'J', "0", ""},
        {64, 'J', "2", silence},
        {100, 'G', "77", ""},
        {100, 'G', "78", silence},
    };
    for (const auto& row : rows)
        EXPECT_EQ(client.Ask(row.address, row.letter, row.data), row.content) << row.address << row.letter;
    EXPECT_EQ(m_bus.FindAs<InformationDisplay>(40)->Text(), "Hello");
    EXPECT_EQ(m_hub.Option(), 10);
    EXPECT_TRUE(m_hub.InTransfer());

    const QByteArray good = frames::BuildFrame(frames::Body(1, '0', 'P', {}));
    EXPECT_FALSE(client.Exchange(good).isEmpty());
    QByteArray badSum = good;
    badSum[badSum.size() - 2] = '!';
    EXPECT_EQ(client.Exchange(badSum), QByteArray());
    EXPECT_EQ(client.Exchange(frames::BuildFrame("1002P")), QByteArray());
}

TEST_F(SimulatedBusTest, PrinterReportsWhatItHolds) {
    BusClient client(m_bus);
    int loaded = 0;
    QObject::connect(&m_bus, &SimulatedBus::PrinterLoaded, [&](int address) { loaded += address; });
    LoadTables(client);
    EXPECT_TRUE(client.Ask(32, 'N'));
    EXPECT_EQ(loaded, 32);
    EXPECT_EQ(m_printer.ServiceRows().at(0), (TicketPrinter::ServiceRow{0, "Cash", "Desk 1"}));
    EXPECT_EQ(m_printer.ServiceRows().at(1).Name, QByteArray(63, 'n'));
    EXPECT_EQ(client.Ask(32, 'P'), "110001");
    EXPECT_TRUE(
        m_printer.Summary().contains(QStringLiteral("service 0: series 0, name \"Cash\", description \"Desk 1\"")));
    EXPECT_TRUE(client.Ask(32, 'K', "0205071"));
    EXPECT_EQ(client.Ask(32, 'P'), "010001") << "a new button table empties the rows";

    const QByteArray form = QByteArray::fromHex("03D91B401B741B453002") + QByteArray(3, 0x02);
    QByteArray good = form;
    quint16 sum = 0;
    for (const char byte : form.sliced(2))
        sum = quint16(sum + quint8(byte));
    good[0] = char(sum / 256);
    good[1] = char(sum % 256);
    const QByteArray length = encoding::Hexadecimal(quint32(form.size()), 4);
    const struct {
        QByteArray form;
        QByteArray announced;
        const char* flags;
    } forms[] = {
        {good, length, "011001"}, {good, "0040", "010001"}, {good, length, "011001"}, {form, length, "010001"}};
    for (const auto& row : forms) {
        EXPECT_TRUE(client.Ask(32, 'L', row.announced));
        EXPECT_TRUE(client.Ask(32, 'O', frames::EscapeData(row.form)));
        EXPECT_TRUE(client.Ask(32, 'V', "1"));
        EXPECT_EQ(client.Ask(32, 'P'), row.flags);
        EXPECT_EQ(m_printer.Form(), row.flags[2] == '1' ? good : QByteArray());
    }

    EXPECT_TRUE(client.Ask(32, 'G'));
    EXPECT_TRUE(client.Ask(32, 'J', frames::EscapeData("\x03\x06z")));
    EXPECT_EQ(client.Ask(32, 'P'), "010001");
    EXPECT_TRUE(client.Ask(32, 'T'));
    EXPECT_EQ(client.Ask(32, 'P'), "010101");
    EXPECT_EQ(m_printer.Letters(), "\x03\x06z");
}

TEST_F(SimulatedBusTest, RetryIsAnsweredButNotAppliedAgain) {
    BusClient client(m_bus);
    LoadTables(client);
    EXPECT_FALSE(m_printer.PressButton(6));
    EXPECT_TRUE(m_printer.PressButton(7));
    EXPECT_TRUE(m_printer.PressButton(5));
    const QByteArray numbers = frames::EscapeData(QByteArray::fromHex("03E907D1"));
    EXPECT_EQ(client.Ask(32, 'Q', numbers, false), "100"
                                                   "11"
                                                   "07D1");
    EXPECT_EQ(client.Ask(32, 'Q', numbers), "100"
                                            "11"
                                            "07D1");
    EXPECT_EQ(client.Ask(32, 'Q', numbers), "100"
                                            "10"
                                            "03E9");
    EXPECT_EQ(client.Ask(32, 'Q', numbers), "1000/0000");
    EXPECT_EQ(m_printer.PrintedTickets(), (std::vector<TicketPrinter::Ticket>{{7, 1, 2001}, {5, 0, 1001}}));
    EXPECT_EQ(m_bus.Counts().Retries, 1u);
}

TEST_F(SimulatedBusTest, HubRelaysToItsMembersOnly) {
    BusClient client(m_bus);
    EXPECT_EQ(client.Ask(64, 'N', "QP"), "P000001");
    EXPECT_EQ(client.Ask(64, 'N', "PP"), Content()) << "the main printer is not attached";
    EXPECT_EQ(client.Ask(64, 'W', "10"), Content());
    EXPECT_EQ(client.Ask(64, 'W', "108"), "");
    EXPECT_EQ(client.Ask(64, 'N', "QP"), Content()) << "the list does not name it";
    EXPECT_EQ(client.Ask(64, 'N', "8H0012"), "H");
    EXPECT_EQ(client.Ask(64, 'W', "2081Q"), "");
    EXPECT_EQ(client.Ask(64, 'N', "QK00!"), "K");
    EXPECT_EQ(m_second.LoadFlag(), '!');
    m_bus.SetSilent(33, true);
    EXPECT_EQ(client.Ask(64, 'N', "QP"), Content());

    m_bus.SetSilent(33, false);
    EXPECT_EQ(client.Exchange(frames::BuildFrame(frames::Body(frames::Broadcast, '*', 'R', Clock))), QByteArray());
    EXPECT_EQ(m_second.ClockText(), Clock);
    EXPECT_EQ(m_bus.Find(8)->ClockText(), Clock.first(3));
}

TEST_F(SimulatedBusTest, LiesInEachWayThatLinesAndDevicesDo) {
    BusClient client(m_bus);
    const QByteArray status = frames::BuildFrame(frames::Body(32, '4', 'P', {}));
    const QByteArray answer = frames::BuildFrame(frames::Body(32, '4', 'P', "000001"));
    const auto exchange = [&](const FaultSettings& faults, qsizetype length) {
        m_bus.SetFaults(faults);
        client.Write(status);
        QByteArray heard;
        EXPECT_TRUE(WaitUntil([&] { return (heard += client.Read()).size() >= length; }));
        client.Ack();
        return heard;
    };
    FaultSettings echo;
    echo.Echo = true;
    echo.Silent = {32};
    EXPECT_EQ(exchange(echo, status.size()), status) << "the answer of an empty line";
    EXPECT_TRUE(WaitUntil([&] { return client.Read() == QByteArray(1, frames::Ack); }));
    FaultSettings foreign;
    foreign.Foreign = 1;
    const QByteArray other = exchange(foreign, answer.size());
    EXPECT_EQ(other.mid(2), frames::BuildFrame(frames::Body(quint8(other[1] - '0'), '4', 'P', "000001")).mid(2));
    EXPECT_NE(other, answer);
    FaultSettings twins;
    twins.Twins = {32};
    EXPECT_EQ(exchange(twins, 2 * answer.size()), answer + answer);

    FaultSettings deaf;
    deaf.Deaf = {{'M', 1}, {'P', {}}};
    m_bus.SetFaults(deaf);
    EXPECT_TRUE(client.Ask(32, 'K', "0205071"));
    EXPECT_TRUE(client.Ask(32, 'M', Row(0, 0, "Cash", "")));
    EXPECT_EQ(client.Ask(32, 'M', Row(1, 0, "Loan", "")), Content());
    EXPECT_EQ(client.Ask(64, 'N', "QP"), Content()) << "behind a hub too";
    EXPECT_EQ(m_printer.ServiceRows().size(), 1u);

    FaultSettings forget;
    forget.Forget = true;
    m_bus.SetFaults(forget);
    EXPECT_TRUE(client.Ask(32, 'K', "0205071"));
    EXPECT_EQ(client.Ask(32, 'P'), "000001");
}

TEST_F(SimulatedBusTest, APowerCycleLosesWhatWasJustComing) {
    BusClient client(m_bus);
    LoadTables(client);
    EXPECT_TRUE(client.Ask(32, 'S', Clock));
    EXPECT_TRUE(client.Ask(32, 'G'));
    EXPECT_TRUE(client.Ask(32, 'J', "abc"));
    EXPECT_TRUE(m_bus.PowerCycle(32));
    EXPECT_TRUE(client.Ask(32, 'T'));
    EXPECT_EQ(m_printer.Letters(), QByteArray());
    EXPECT_EQ(m_printer.ClockText(), QByteArray());
    EXPECT_EQ(m_printer.ServiceRows().size(), 2u);
}

TEST_F(SimulatedBusTest, TheStateIsToldToPrograms) {
    BusClient client(m_bus);
    LoadTables(client);
    EXPECT_TRUE(client.Ask(64, 'W', "108"));
    const QTemporaryDir folder;
    BusConsole console(m_bus);
    const QString path = folder.filePath(QStringLiteral("control"));
    ASSERT_EQ(console.Listen(path), QString());
    QLocalSocket program;
    program.connectToServer(path);
    program.write("state\n");
    ASSERT_TRUE(WaitUntil([&] { return program.canReadLine(); }));
    const QJsonArray devices =
        QJsonDocument::fromJson(program.readLine()).object()[QStringLiteral("devices")].toArray();
    ASSERT_EQ(devices.size(), 7);
    for (const auto& device : devices) {
        const QJsonObject state = device.toObject();
        const int address = state[QStringLiteral("address")].toInt();
        if (address == 32) {
            EXPECT_EQ(state[QStringLiteral("services")].toArray().at(1)[QStringLiteral("series")].toInt(), 1);
            EXPECT_EQ(state[QStringLiteral("flags")].toString(), QStringLiteral("110001"));
        }
        if (address == 64) {
            EXPECT_EQ(state[QStringLiteral("members")].toArray().at(0)[QStringLiteral("address")].toInt(), 8);
        }
    }
}

TEST_F(SimulatedBusTest, PacingKeepsToTheWireTime) {
    m_bus.SetBaudRate(9600);
    BusClient client(m_bus);
    constexpr int rounds = 20;
    const double perRound = (9 + 15 + 1) * 10 / 9600.0;
    QElapsedTimer time;
    time.start();
    for (int i = 0; i < rounds; ++i)
        EXPECT_EQ(client.Ask(32, 'P'), "000001");
    const double seconds = double(time.nsecsElapsed()) / 1e9;
    // The last ACK is still on its way; above there is room for a loaded machine.
    EXPECT_GE(seconds, rounds * perRound - 0.002);
    EXPECT_LE(seconds, rounds * perRound * 1.25);
}

TEST_F(SimulatedBusTest, HangsUpAndOpensAgain) {
    FaultSettings faults;
    faults.HangUpAfter = 2;
    m_bus.SetFaults(faults);
    {
        BusClient client(m_bus);
        EXPECT_TRUE(client.Ask(1, 'H', "0007"));
        client.Write(frames::BuildFrame(frames::Body(1, '1', 'P', {})));
        EXPECT_TRUE(WaitUntil([&] { return !m_bus.IsOpen(); }));
    }
    ASSERT_EQ(m_bus.Open(), QString());
    for (int station = 0; station < 2; ++station) {
        BusClient client(m_bus);
        EXPECT_EQ(client.Ask(1, 'P'), "0007") << "the second one opens a line that the first one left";
    }
}

TEST_F(SimulatedBusTest, TranscriptTellsWhatHappened) {
    QStringList lines;
    m_bus.Log().OnLine = [&](const QString& line) { lines += line.sliced(13); };
    BusClient client(m_bus);
    client.Ask(64, 'N', "QP", false);
    client.Ask(64, 'N', "QP");
    client.Ask(32, 'E');
    client.Exchange("\x02"
                    "1002P1D\x03");
    const QString all = lines.join(u'\n');
    for (const QString& expected :
         {QStringLiteral(
              ">> hub 64 \"Hall\", seq 0, N relay to printer 33 \"Second\", P status, data \"QP\" [02 70 30"),
          QStringLiteral("<< hub 64 \"Hall\", seq 0, N relay to printer 33 \"Second\", P status, data \"P000001\" ["),
          QStringLiteral("(retry, not applied)"), QStringLiteral("-- silent: unknown letter"),
          QStringLiteral("(bad check sum)\n-- silent: bad check sum")})
        EXPECT_TRUE(all.contains(expected)) << qPrintable(expected) << "\nin\n" << qPrintable(all);
}

TEST_F(SimulatedBusTest, LogosAreKeptOnlyWhole) {
    BusClient client(m_bus);
    const QByteArray block = QByteArray::fromHex("1C7101") + QByteArray(61, 0x06);
    EXPECT_TRUE(client.Ask(32, 'Y', "early"));
    EXPECT_TRUE(client.Ask(32, 'X'));
    EXPECT_TRUE(client.Ask(32, 'Y', frames::EscapeData(block)));
    EXPECT_EQ(m_printer.Logos(), QByteArray());
    EXPECT_TRUE(client.Ask(32, 'Y', "end"));
    EXPECT_TRUE(client.Ask(32, 'Z'));
    EXPECT_EQ(m_printer.Logos(), block + "end");

    EXPECT_TRUE(client.Ask(32, 'X'));
    const QByteArray chunk(240, 'x');
    for (qsizetype sent = 0; sent <= TicketPrinter::LargestBlock; sent += chunk.size())
        EXPECT_TRUE(client.Ask(32, 'Y', chunk));
    EXPECT_TRUE(client.Ask(32, 'Z'));
    EXPECT_EQ(m_printer.Logos(), block + "end") << "an endless block does not replace a good one";
}

TEST_F(SimulatedBusTest, ConsoleCommandsAreCarriedOutOrExplained) {
    BusClient client(m_bus);
    LoadTables(client);
    BusConsole console(m_bus);
    const struct {
        const char* line;
        const char* answer;
    } rows[] = {
        {"press 32 7", "pressed"},
        {"press 32 9", "the button table of printer 32 \"Main\" has no key \"9\""},
        {"press 1 7", "no printer at address \"1\""},
        {"silent 40 on", "display 40 \"Board\" is silent"},
        {"silent 41 on", "no device at address \"41\""},
        {"silent 40", "silent ADDRESS on|off"},
        {"  ", ""},
    };
    for (const auto& row : rows)
        EXPECT_EQ(console.Execute(QString::fromUtf8(row.line)).toStdString(), row.answer) << row.line;
    EXPECT_EQ(client.Ask(32, 'Q', "0065000"), "100"
                                              "11"
                                              "0065");
    EXPECT_EQ(client.Ask(40, 'S'), Content());
    console.Execute(QStringLiteral("hangup"));
    EXPECT_FALSE(m_bus.IsOpen());
    const QString opened = console.Execute(QStringLiteral("open"));
    EXPECT_TRUE(m_bus.IsOpen());
    EXPECT_EQ(opened, m_bus.SlavePath());
}
