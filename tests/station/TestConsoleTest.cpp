#include "tests/support/ConsoleWorld.h"

#include "link/Frames.h"
#include "platform/AnsiText.h"
#include "platform/Clock.h"
#include "tests/support/Outcomes.h"
#include "tests/support/PseudoTerminal.h"

#include <QElapsedTimer>

namespace {

class TestConsoleTest : public ConsoleWorld {};

constexpr qint16 Hub = 4;

/// Real waits, a tenth as long.
class HastyClock final : public SystemClock {
public:
    QCoro::Task<> DelayMilliseconds(qint16 n) override { return SystemClock::DelayMilliseconds(n / 10); }
    QCoro::Task<> DelaySeconds(qint16 n) override { return DelayMilliseconds(static_cast<qint16>(n * 1000)); }
};

Reply ReplyWith(const QByteArray& content) {
    return {.ok = true, .frame = frames::BuildFrame("P002P" + content)};
}

} // namespace

TEST_F(TestConsoleTest, EachButtonSendsItsCommand) {
    // Nobody is on this line: only what goes out counts.
    PseudoTerminal nobody;
    m_devices.reset();
    Line& control = m_station.control;
    ASSERT_TRUE(control.SetPort(nobody.Path(), QStringLiteral("115200,n,8,1")));
    ASSERT_TRUE(control.Open());
    m_clock.Time = QDateTime(QDate(2016, 12, 31), QTime(23, 59, 59));
    const QByteArray clock("\x47\x6B\x6B\x40\x3C\x4F\x37");
    m_station.options.InfoNumChars = 4;
    const QString fail = QStringLiteral("Fail");
    struct Case {
        std::function<QCoro::Task<Outcome>()> start;
        QByteArray sent;
        std::optional<std::pair<BoxKind, QString>> box;
    };
    TestConsole& c = m_console;
    const auto text = [](const char16_t* t) { return QString::fromUtf16(t); };
    const Case cases[] = {
        {[&] { return c.TestConnection(text(u"7")); }, "7 P", {{BoxKind::Exclamation, text(u"Addr #7 Fail")}}},
        {[&] { return c.TestConnection(text(u"no number")); }, "0 P", {{BoxKind::Exclamation, text(u"Addr #0 Fail")}}},
        {[&] { return c.GetKey(text(u"1")); }, "1 Q01C8", {{BoxKind::Plain, fail}}},
        {[&] { return c.Display(text(u"1.6 m")); }, "2 H007B", {{BoxKind::Plain, fail}}},
        {[&] { return c.PrinterStatus(text(u"32")); }, "32 P", {{BoxKind::Exclamation, text(u"Could Not connected!")}}},
        {[&] { return c.PrintTest(text(u"32")); }, "32 W", {}},
        {[&] { return c.ResetPrinter(text(u"32")); }, "32 S" + clock, {}},
        {[&] { return c.QueryTicket(text(u"32")); }, "32 Q\xC0\x23\xE9\x07\xD1", {}},
        {[&] { return c.SetInfo(text(u"40"), text(u"8x")); }, "40 H00018888", {}},
        {[&] { return c.SwitchPower(text(u"100"), true); },
         "100 G77",
         {{BoxKind::Exclamation, text(u"Command Error.")}}},
        {[&] { return c.SwitchPower(text(u"100"), false); },
         "100 T68",
         {{BoxKind::Exclamation, text(u"Command Error.")}}},
        {[&] { return c.TestHub(Hub); }, "64 P", {{BoxKind::Exclamation, text(u"Addr #64 Fail")}}},
        {[&] { return c.DumpHub(Hub); }, "64 Z", {}},
        {[&] { return c.QueryHub(Hub); }, "64 Q", {}},
        {[&] { return c.TestSub(Hub, text(u"10")); }, "64 Y:", {{BoxKind::Critical, text(u"Sub 10 Error")}}},
        {[&] { return c.TestSub(Hub, text(u"Combo1")); }, "64 Y0", {{BoxKind::Critical, text(u"Sub Combo1 Error")}}},
        {[&] { return c.ShowAtSub(text(u"64"), text(u"3"), text(u"Value")); }, "64 H30000", {}},
        {[&] { return c.ShowAtSub(text(u"64"), text(u"3"), text(u"12345")); }, "64 H32345", {}},
        {[&] { return c.QuerySub(text(u"12")); }, "0 X12", {{BoxKind::Critical, text(u"Sub 12 Error")}}},
        {[&] { return c.SetTwoMembers(); }, "64 W20108", {{BoxKind::Plain, text(u"Error!")}}},
        {[&] { return c.BroadcastClock(); }, "127 U" + clock, {}},
        {[&] { return c.BroadcastReset(); }, "127 R" + clock, {}},
    };
    m_station.installation->QServices[0].NextNumber = 1001;
    // All at once: the line serves them in turn, and the time-outs are the only thing to wait for.
    for (const Case& one : cases) {
        m_sent.clear();
        auto running = one.start();
        EXPECT_EQ(m_sent, QByteArrayList{one.sent});
        // What is not answered by now never will be.
        control.Close();
        ASSERT_TRUE(running.isReady());
        const Outcome outcome = Await(std::move(running));
        EXPECT_EQ(outcome.text, one.box ? one.box->second : QString()) << one.sent.toStdString();
        if (one.box) {
            EXPECT_EQ(outcome.kind, one.box->first) << one.sent.toStdString();
        }
        ASSERT_TRUE(control.Open());
    }
}

TEST_F(TestConsoleTest, WhatCannotBeSentIsToldAndNotSent) {
    OpenLine();
    const QString address = QStringLiteral("Invalid address.");
    const QString hub = QStringLiteral("No hub selected.");
    const auto expect = [this](const QString& text, const std::function<QCoro::Task<Outcome>()>& start) {
        EXPECT_EQ(Told(start()), "refused Exclamation: " + text.toStdString());
    };
    for (const QString& typed : {QStringLiteral("256"), QStringLiteral("-1"), QStringLiteral("99999999999")}) {
        expect(address, [&] { return m_console.TestConnection(typed); });
        expect(address, [&] { return m_console.QueryTicket(typed); });
        expect(address, [&] { return m_console.PoolTicket(typed); });
        expect(address, [&] { return m_console.SetInfo(typed, QStringLiteral("0")); });
        expect(address, [&] { return m_console.TestSub(Hub, typed); });
    }
    expect(QStringLiteral("Enter a fill character."), [&] { return m_console.SetInfo(QStringLiteral("40"), {}); });
    for (const qint16 none : {qint16(-1), qint16(0), qint16(60)}) {
        expect(hub, [&] { return m_console.TestHub(none); });
        expect(hub, [&] { return m_console.DumpHub(none); });
        expect(hub, [&] { return m_console.QueryHub(none); });
        expect(hub, [&] { return m_console.TestSub(none, QStringLiteral("1")); });
    }
    EXPECT_EQ(m_sent, QByteArrayList());
}

TEST_F(TestConsoleTest, WhatTheDevicesAnswerIsShown) {
    OpenLine();
    const auto shown = [](const std::string& start, const QByteArray& body) {
        return start + ansi::Decode(frames::BuildFrame(body)).toStdString();
    };
    EXPECT_EQ(Told(m_console.TestConnection(u"1"_qs)), shown("done Plain: Addr #1 OK:", "1001P"));
    EXPECT_EQ(Told(m_console.GetKey(u"1"_qs)), shown("done Plain: OK:", "1102Q0"));
    EXPECT_EQ(Told(m_console.PrinterStatus(u"32"_qs)),
              "done Information: Serive table : Error\r\nButton config table : Error\r\nPrinter Form : Error\r\n"
              "VNI Table : Error\r\nScheduler : Error or not Use\r\nXON : 1\r\n");
    EXPECT_EQ(Told(m_console.SwitchPower(u"100"_qs, true)), "done Information: Command Ok.");
    EXPECT_TRUE(m_devices->FindAs<PowerUnit>(100)->IsOn());
    EXPECT_EQ(Told(m_console.TestSub(Hub, u"0"_qs)), "done Plain: Sub 0 OK");
    EXPECT_EQ(Told(m_console.SetInfo(u"40"_qs, u"8"_qs)), "done Plain: ");
    EXPECT_EQ(m_devices->FindAs<InformationDisplay>(40)->Text(), QByteArray(21, '8'));
    m_dialogs.ExpectText(QStringLiteral("Password:"), QStringLiteral("anything"));
    EXPECT_EQ(Told(m_console.AskPassword()), "done Plain: ");
}

TEST(PrinterStatusTest, MissingAndOddFlagsShowAsErrors) {
    const struct {
        QByteArray content;
        QStringList shown;
    } cases[] = {
        {"111111", {u"Ok"_qs, u"Ok"_qs, u"Ok"_qs, u"Ok"_qs, u"Ok"_qs, u"1"_qs}},
        {"0x9 a01", {u"Error"_qs, u"Error"_qs, u"Error"_qs, u"Error"_qs, u"Error or not Use"_qs, u"0"_qs}},
        // The check sum behind a short reply is no flag, even where it is made of ones.
        {"1", {u"Ok"_qs, u"Error"_qs, u"Error"_qs, u"Error"_qs, u"Error"_qs, u"Error"_qs}},
        {"", {u"Error"_qs, u"Error"_qs, u"Error"_qs, u"Error"_qs, u"Error"_qs, u"Error"_qs}},
    };
    for (const auto& [content, shown] : cases) {
        QStringList values;
        for (const QString& line :
             TestConsole::StatusText(ReplyWith(content)).split(QStringLiteral("\r\n"), Qt::SkipEmptyParts))
            values += line.section(QStringLiteral(" : "), 1);
        EXPECT_EQ(values, shown) << content.toStdString();
    }
}

TEST_F(TestConsoleTest, ATicketThatThePrinterTookIsCounted) {
    // The printer answers as each case says.
    PseudoTerminal printer;
    m_devices.reset();
    ASSERT_TRUE(m_station.control.SetPort(printer.Path(), QStringLiteral("115200,n,8,1")));
    ASSERT_TRUE(m_station.control.Open());
    const struct {
        QByteArray content;
        bool multi;
        QString listed;
        int service; ///< counted there, -1 for none
    } cases[] = {
        {"100303E", true, u"62"_qs, -1}, // the check sum behind it is no part of the number
        {"1003003E9", true, u"1001"_qs, -1},
        {"1001103E9", true, u"1001*"_qs, 1},
        {"1001203E9", true, u"1001*"_qs, 0}, // routed to the first service
        {"1001103E9", false, u"1001*"_qs, 1},
        {"1001FFFFF", true, u"65535*"_qs, -1},
        {"1001!0zzz", true, u"0*"_qs, -1},
        {"1000/0000", true, QString(), -1},
        {"", true, QString(), -1},
    };
    model::Installation& model = *m_station.installation;
    for (const auto& [content, multi, listed, service] : cases) {
        m_tickets.clear();
        m_station.options.MultiTicketSeries = multi;
        model.QObjects[0].TestService = -1;
        for (int i = 0; i < 3; ++i)
            model.QServices[static_cast<std::size_t>(i)].NextNumber = 100 * (i + 1);
        model.LastTicketNumber = 50;
        const auto running = m_console.QueryTicket(QStringLiteral("32"));
        QByteArray line;
        ASSERT_TRUE(WaitUntil([&] { return (line += printer.Read()).contains(frames::Etx); }));
        printer.Write(frames::BuildFrame("P002Q" + content));
        ASSERT_TRUE(WaitUntil([&] { return running.isReady(); }));
        EXPECT_EQ(m_tickets, listed.isNull() ? QStringList() : QStringList{listed}) << content.toStdString();
        std::array<int, 3> expected = {100, 200, 300};
        if (service >= 0 && multi)
            ++expected[static_cast<std::size_t>(service)];
        for (std::size_t i = 0; i < 3; ++i)
            EXPECT_EQ(model.QServices[i].NextNumber, expected[i]) << content.toStdString();
        EXPECT_EQ(model.LastTicketNumber, service >= 0 && !multi ? 51 : 50);
        if (service >= 0) {
            EXPECT_EQ(model.QObjects[0].TestTicket, multi ? 100 * (service + 1) : 50);
        }
    }
}

TEST_F(TestConsoleTest, PollingOffersTheNextNumberUntilItIsCancelledAndCanBeginAgain) {
    OpenLine();
    Await(m_station.printers.SendPrinterConfig(1, PrinterConfig::Load::Full));
    TicketPrinter& printer = *m_devices->FindAs<TicketPrinter>(32);
    ASSERT_TRUE(printer.PressButton(8));
    ASSERT_TRUE(printer.PressButton(7));
    m_sent.clear();
    auto polling = m_console.PoolTicket(QStringLiteral("32"));
    ASSERT_TRUE(WaitUntil([this] { return m_sent.size() >= 4; }));
    m_console.CancelPoll();
    ASSERT_TRUE(WaitUntil([&] { return polling.isReady(); }));
    EXPECT_EQ(m_tickets, (QStringList{u"1*"_qs, u"2*"_qs}));
    EXPECT_EQ(m_sent[0].first(8), "32 Q0001");
    EXPECT_EQ(m_sent[2].first(8), "32 Q0003");
    EXPECT_EQ(m_sent[3].first(8), "32 Q0003") << "only a ticket taken counts";

    // A poll that is begun while another one still waits takes its place.
    const auto older = m_console.PoolTicket(QStringLiteral("32"));
    m_console.CancelPoll();
    polling = m_console.PoolTicket(QStringLiteral("32"));
    ASSERT_TRUE(WaitUntil([&] { return older.isReady(); }));
    EXPECT_FALSE(polling.isReady());
    m_console.CancelPoll();
    ASSERT_TRUE(WaitUntil([&] { return polling.isReady(); }));

    const qsizetype sent = m_sent.size();
    polling = m_console.PoolTicket(QStringLiteral("32"));
    ASSERT_TRUE(WaitUntil([&] { return m_sent.size() > sent + 1; }));
    // The end of the program ends it, though no wait holds it up any more.
    m_station.Close();
    ASSERT_TRUE(WaitUntil([&] { return polling.isReady(); }));
}
