#include "station/TestConsole.h"

#include "link/Encodings.h"
#include "link/Frames.h"
#include "platform/AnsiText.h"
#include "platform/Clock.h"
#include "platform/Dialogs.h"
#include "platform/LeadingNumber.h"
#include "station/Station.h"

#include <limits>

namespace {

constexpr int ContentStart = 6;  ///< characters before the content of a reply
constexpr int BehindContent = 3; ///< check sum and ETX
constexpr quint8 SubAddress = 0; ///< to which `X` goes
constexpr quint8 MembersAddress = 64;
constexpr qint16 PollPause = 2; ///< seconds
constexpr qint16 LastTicket = std::numeric_limits<qint16>::max();

/// What a reply to `Q` of a printer tells.
struct TicketReply {
    enum Kind : char { Taken = '1', Value = '3' };

    char kind = 0;        ///< 0 if there is none
    int serviceIndex = 0; ///< with `Taken`
    uint number = 0;
};

/// The content of a reply, without check sum and ETX; empty if it is too short to have one.
QByteArray Content(const Reply& reply) {
    return reply.frame.size() < ContentStart + BehindContent ? QByteArray()
                                                             : reply.frame.sliced(ContentStart).chopped(BehindContent);
}

/// The number of hexadecimal digits that `text` begins with.
uint LeadingHexadecimal(QByteArrayView text) {
    uint number = 0;
    for (const char digit : text) {
        bool isDigit = false;
        const uint value = QByteArray(1, digit).toUInt(&isDigit, 16);
        if (!isDigit)
            break;
        number = number * 16 + value;
    }
    return number;
}

TicketReply ReadTicket(const Reply& reply) {
    // Positions 10, 11 and 12 to 15 of the reply.
    const QByteArray content = Content(reply);
    TicketReply ticket;
    ticket.kind = content.size() > 3 ? content[3] : '\0';
    ticket.serviceIndex = content.size() > 4 ? encoding::FromSmallNumber(content[4]) : -1;
    ticket.number = LeadingHexadecimal(content.mid(5, 4));
    return ticket;
}

} // namespace

TestConsole::TestConsole(Station& station)
    : m_station(station) {
    connect(&station, &Station::Closing, this, &TestConsole::CancelPoll);
}

QCoro::Task<> TestConsole::Tell(BoxKind kind, QString text) {
    co_await m_station.dialogs.ShowMessage(kind, text);
}

QCoro::Task<std::optional<quint8>> TestConsole::AddressOf(QString text) {
    const qint32 typed = number::TypedNumber(text);
    if (typed >= 0 && typed <= std::numeric_limits<quint8>::max())
        co_return static_cast<quint8>(typed);
    const QString invalid = QStringLiteral("Invalid address.");
    co_await Tell(BoxKind::Exclamation, invalid);
    co_return std::nullopt;
}

QCoro::Task<std::optional<quint8>> TestConsole::HubAddress(qint16 hub) {
    const auto objects = std::as_const(*m_station.installation).LoadedObjects();
    const auto index = static_cast<std::size_t>(hub);
    if (hub >= 0 && index < objects.size() && objects[index].Type == model::Hub)
        co_return objects[index].Address;
    const QString none = QStringLiteral("No hub selected.");
    co_await Tell(BoxKind::Exclamation, none);
    co_return std::nullopt;
}

QCoro::Task<> TestConsole::ShowConnection(quint8 address) {
    const QByteArray nothing;
    const Reply reply = co_await m_station.bus.SendCommand(address, 'P', nothing);
    const QString addressed = QStringLiteral("Addr #%1").arg(address);
    const QString text =
        reply.ok ? addressed + QStringLiteral(" OK:") + ansi::Decode(reply.frame) : addressed + QStringLiteral(" Fail");
    co_await Tell(reply.ok ? BoxKind::Plain : BoxKind::Exclamation, text);
}

QCoro::Task<> TestConsole::TestConnection(QString address) {
    const auto number = co_await AddressOf(address);
    if (number)
        co_await ShowConnection(*number);
}

QCoro::Task<> TestConsole::ShowShort(QString address, char letter, QByteArray data) {
    const auto number = co_await AddressOf(address);
    if (!number)
        co_return;
    const Reply reply = co_await m_station.bus.SendCommand(*number, letter, data);
    const QString text = reply.ok ? QStringLiteral("OK:") + ansi::Decode(reply.frame) : QStringLiteral("Fail");
    co_await Tell(BoxKind::Plain, text);
}

QCoro::Task<> TestConsole::GetKey(QString address) {
    constexpr quint32 Key = 456;
    const QByteArray data = encoding::Hexadecimal(Key, 4);
    co_await ShowShort(address, 'Q', data);
}

QCoro::Task<> TestConsole::Display(QString address) {
    constexpr quint32 Shown = 123;
    const QByteArray data = encoding::Hexadecimal(Shown, 4);
    co_await ShowShort(address, 'H', data);
}

QString TestConsole::StatusText(const Reply& reply) {
    const struct {
        const char16_t* label;
        const char16_t* good;
        const char16_t* bad;
    } flags[] = {{u"Serive table : ", u"Ok", u"Error"},         {u"Button config table : ", u"Ok", u"Error"},
                 {u"Printer Form : ", u"Ok", u"Error"},         {u"VNI Table : ", u"Ok", u"Error"},
                 {u"Scheduler : ", u"Ok", u"Error or not Use"}, {u"XON : ", u"1", u"0"}};
    const QByteArray content = Content(reply);
    QString text;
    for (qsizetype i = 0; i < std::ssize(flags); ++i) {
        const auto& [label, good, bad] = flags[i];
        const char16_t* shown = i >= content.size() ? u"Error" : content[i] == '1' ? good : bad;
        text += QString::fromUtf16(label) + QString::fromUtf16(shown) + QStringLiteral("\r\n");
    }
    return text;
}

QCoro::Task<> TestConsole::PrinterStatus(QString address) {
    const auto number = co_await AddressOf(address);
    if (!number)
        co_return;
    const QByteArray nothing;
    const Reply reply = co_await m_station.bus.SendCommand(*number, 'P', nothing);
    const QString text = reply.ok ? StatusText(reply) : QStringLiteral("Could Not connected!");
    co_await Tell(reply.ok ? BoxKind::Information : BoxKind::Exclamation, text);
}

QCoro::Task<> TestConsole::PrintTest(QString address) {
    const auto number = co_await AddressOf(address);
    const QByteArray nothing;
    if (number)
        co_await m_station.bus.SendCommand(*number, 'W', nothing);
}

QCoro::Task<> TestConsole::ResetPrinter(QString address) {
    const auto number = co_await AddressOf(address);
    const QByteArray clock = encoding::ClockText(m_station.clock.Now());
    if (number)
        co_await m_station.bus.SendCommand(*number, 'S', clock);
}

QByteArray TestConsole::NextNumbers() const {
    QByteArray numbers;
    for (const model::QService& service : std::as_const(*m_station.installation).LoadedServices()) {
        if (service.Route != 0)
            continue;
        const auto next = static_cast<quint16>(service.NextNumber);
        numbers += static_cast<char>(next / 256);
        numbers += static_cast<char>(next % 256);
    }
    return numbers;
}

void TestConsole::CountTicket(int serviceIndex) {
    model::Installation& model = *m_station.installation;
    if (serviceIndex < 0 || serviceIndex >= model.NumServices)
        return;
    model::QObject& bench = model.QObjects[0];
    bench.TestService = static_cast<qint16>(serviceIndex);
    if (m_station.options.MultiTicketSeries) {
        model::QService* service = &model.QServices[static_cast<std::size_t>(serviceIndex)];
        if (service->Route != 0)
            service = &model.QServices[static_cast<std::size_t>(model.FindServiceByNumber(service->Route))];
        bench.TestTicket = static_cast<qint16>(service->NextNumber);
        ++service->NextNumber;
    } else {
        bench.TestTicket = model.LastTicketNumber;
        if (model.LastTicketNumber < LastTicket)
            ++model.LastTicketNumber;
    }
}

QCoro::Task<> TestConsole::QueryTicket(QString address) {
    const auto number = co_await AddressOf(address);
    if (!number)
        co_return;
    const QByteArray numbers = frames::EscapeData(NextNumbers());
    const Reply reply = co_await m_station.bus.SendCommand(*number, 'Q', numbers);
    if (!reply.ok)
        co_return;
    const TicketReply ticket = ReadTicket(reply);
    if (ticket.kind == TicketReply::Value)
        Q_EMIT TicketListed(QString::number(ticket.number));
    if (ticket.kind == TicketReply::Taken) {
        CountTicket(ticket.serviceIndex);
        Q_EMIT TicketListed(QString::number(ticket.number) + u'*');
    }
}

QCoro::Task<> TestConsole::PoolTicket(QString address) {
    const auto number = co_await AddressOf(address);
    if (!number)
        co_return;
    m_pollCancel = false;
    const int run = ++m_pollRun;
    while (!m_pollCancel && run == m_pollRun) {
        const QByteArray offer =
            encoding::Hexadecimal(static_cast<quint32>(m_pollTicket), 4) + encoding::TimeText(m_station.clock.Now());
        const Reply reply = co_await m_station.bus.SendCommand(*number, 'Q', offer);
        const TicketReply ticket = reply.ok ? ReadTicket(reply) : TicketReply();
        if (ticket.kind == TicketReply::Taken) {
            m_pollTicket = m_pollTicket == LastTicket ? qint16(1) : static_cast<qint16>(m_pollTicket + 1);
            Q_EMIT TicketListed(QString::number(ticket.number) + u'*');
        } else if (ticket.kind == TicketReply::Value) {
            Q_EMIT TicketListed(QString::number(ticket.number));
        }
        co_await m_station.clock.DelaySeconds(PollPause);
    }
}

QCoro::Task<> TestConsole::SetInfo(QString address, QString fill) {
    const auto number = co_await AddressOf(address);
    if (!number)
        co_return;
    if (fill.isEmpty()) {
        const QString missing = QStringLiteral("Enter a fill character.");
        co_await Tell(BoxKind::Exclamation, missing);
        co_return;
    }
    const QByteArray filled = ansi::Encode(fill).bytes.first(1).repeated(m_station.options.InfoNumChars);
    const QByteArray text = "0001" + filled;
    co_await m_station.bus.SendCommand(*number, 'H', text);
}

QCoro::Task<> TestConsole::SwitchPower(QString address, bool on) {
    const auto number = co_await AddressOf(address);
    if (!number)
        co_return;
    const QByteArray data = on ? "77" : "68";
    const Reply reply = co_await m_station.bus.SendCommand(*number, on ? 'G' : 'T', data);
    const QString text = reply.ok ? QStringLiteral("Command Ok.") : QStringLiteral("Command Error.");
    co_await Tell(reply.ok ? BoxKind::Information : BoxKind::Exclamation, text);
}

QCoro::Task<> TestConsole::TestHub(qint16 hub) {
    const auto address = co_await HubAddress(hub);
    if (address)
        co_await ShowConnection(*address);
}

QCoro::Task<> TestConsole::DumpHub(qint16 hub) {
    const auto address = co_await HubAddress(hub);
    const QByteArray nothing;
    if (address)
        co_await m_station.bus.SendCommand(*address, 'Z', nothing);
}

QCoro::Task<> TestConsole::QueryHub(qint16 hub) {
    const auto address = co_await HubAddress(hub);
    const QByteArray nothing;
    if (address)
        co_await m_station.bus.SendCommand(*address, 'Q', nothing, Bus::RelayTimeout);
}

QCoro::Task<> TestConsole::ShowSub(quint8 address, char letter, QByteArray data, QString sub) {
    const Reply reply = co_await m_station.bus.SendCommand(address, letter, data);
    const QString text =
        QStringLiteral("Sub %1 %2").arg(sub, reply.ok ? QStringLiteral("OK") : QStringLiteral("Error"));
    co_await Tell(reply.ok ? BoxKind::Plain : BoxKind::Critical, text);
}

QCoro::Task<> TestConsole::TestSub(qint16 hub, QString sub) {
    const auto address = co_await HubAddress(hub);
    if (!address)
        co_return;
    const qint32 member = number::TypedNumber(sub);
    if (member < 0 || member > encoding::LargestSmallNumber) {
        const QString invalid = QStringLiteral("Invalid address.");
        co_await Tell(BoxKind::Exclamation, invalid);
        co_return;
    }
    const QByteArray data(1, encoding::SmallNumber(member));
    co_await ShowSub(*address, 'Y', data, sub);
}

QCoro::Task<> TestConsole::ShowAtSub(QString address, QString sub, QString value) {
    const auto number = co_await AddressOf(address);
    if (!number)
        co_return;
    const QByteArray digits = QByteArray::number(number::TypedNumber(value)).rightJustified(4, '0').right(4);
    const QByteArray data = ansi::Encode(sub).bytes + digits;
    co_await m_station.bus.SendCommand(*number, 'H', data);
}

QCoro::Task<> TestConsole::QuerySub(QString sub) {
    const QByteArray data = ansi::Encode(sub).bytes;
    co_await ShowSub(SubAddress, 'X', data, sub);
}

QCoro::Task<> TestConsole::SetTwoMembers() {
    const QByteArray members = "20108";
    const Reply reply = co_await m_station.bus.SendCommand(MembersAddress, 'W', members);
    if (reply.ok)
        co_return;
    const QString failed = QStringLiteral("Error!");
    co_await Tell(BoxKind::Plain, failed);
}

QCoro::Task<> TestConsole::BroadcastClock() {
    const QByteArray clock = encoding::ClockText(m_station.clock.Now());
    co_await m_station.bus.SendCommand(frames::Broadcast, 'U', clock);
}

QCoro::Task<> TestConsole::BroadcastReset() {
    const QByteArray clock = encoding::ClockText(m_station.clock.Now());
    co_await m_station.bus.SendCommand(frames::Broadcast, 'R', clock);
}

QCoro::Task<> TestConsole::AskPassword() {
    const QString prompt = QStringLiteral("Password:");
    const QString typed = co_await m_station.dialogs.AskText(prompt);
    Q_UNUSED(typed);
}
