#include "station/TestConsole.h"

#include "core/Installation.h"
#include "core/Options.h"
#include "link/Bus.h"
#include "link/Encodings.h"
#include "link/Frames.h"
#include "platform/AnsiText.h"
#include "platform/Clock.h"
#include "platform/LeadingNumber.h"

#include <limits>

namespace {

constexpr quint8 SubAddress = 0; ///< to which `X` goes
constexpr quint8 MembersAddress = 64;
constexpr qint16 PollPause = 2; ///< seconds
constexpr qint16 LastTicket = std::numeric_limits<qint16>::max();

/// What a reply to `Q` of a printer tells.
struct TicketReply {
    enum Kind : char { Taken = '1', Value = '3' };

    char kind = 0;           ///< 0 if there is none
    qint16 serviceIndex = 0; ///< with `Taken`
    uint number = 0;
};

/// What a reply holds; empty if it is too short to hold anything.
QByteArrayView Content(const Reply& reply) {
    const std::optional<frames::Parts> parts = frames::Split(reply.frame);
    return parts ? parts->data : QByteArrayView();
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
    const QByteArrayView content = Content(reply);
    TicketReply ticket;
    ticket.kind = content.size() > 3 ? content[3] : '\0';
    ticket.serviceIndex = content.size() > 4 ? static_cast<qint16>(encoding::FromSmallNumber(content[4])) : qint16(-1);
    ticket.number = LeadingHexadecimal(
        content.size() > 5 ? content.sliced(5).first(std::min<qsizetype>(4, content.size() - 5)) : QByteArrayView());
    return ticket;
}

/// The address that a user typed, nothing for one that no byte holds.
std::optional<quint8> AddressOf(const QString& text) {
    const qint32 typed = number::TypedNumber(text);
    if (typed < 0 || typed > std::numeric_limits<quint8>::max())
        return std::nullopt;
    return static_cast<quint8>(typed);
}

Outcome InvalidAddress() {
    return Outcome::Refused(QStringLiteral("Invalid address."));
}

Outcome NoHub() {
    return Outcome::Refused(QStringLiteral("No hub selected."));
}

Outcome Told(bool ok, const QString& text, BoxKind good, BoxKind bad) {
    return ok ? Outcome::Done(good, text) : Outcome::Failed(text, bad);
}

} // namespace

TestConsole::TestConsole(Bus& bus, model::Installation& installation, const Options& options, Clock& clock,
                         Dialogs& dialogs)
    : m_bus(bus)
    , m_installation(installation)
    , m_options(options)
    , m_clock(clock)
    , m_dialogs(dialogs) {}

std::optional<quint8> TestConsole::HubAddress(qint16 hub) const {
    if (hub < 0 || hub >= m_installation.NumObjects || m_installation.Object(hub).Type != model::Hub)
        return std::nullopt;
    return m_installation.Object(hub).Address;
}

QCoro::Task<Outcome> TestConsole::ShowConnection(quint8 address) {
    const Reply reply = co_await m_bus.SendCommand(address, 'P', {});
    const QString addressed = QStringLiteral("Addr #%1").arg(address);
    const QString text =
        reply.ok ? addressed + QStringLiteral(" OK:") + ansi::Decode(reply.frame) : addressed + QStringLiteral(" Fail");
    co_return Told(reply.ok, text, BoxKind::Plain, BoxKind::Exclamation);
}

QCoro::Task<Outcome> TestConsole::TestConnection(QString address) {
    const std::optional<quint8> number = AddressOf(address);
    if (!number)
        co_return InvalidAddress();
    co_return co_await ShowConnection(*number);
}

QCoro::Task<Outcome> TestConsole::ShowShort(QString address, char letter, QByteArray data) {
    const std::optional<quint8> number = AddressOf(address);
    if (!number)
        co_return InvalidAddress();
    const Reply reply = co_await m_bus.SendCommand(*number, letter, data);
    const QString text = reply.ok ? QStringLiteral("OK:") + ansi::Decode(reply.frame) : QStringLiteral("Fail");
    co_return Told(reply.ok, text, BoxKind::Plain, BoxKind::Plain);
}

QCoro::Task<Outcome> TestConsole::SendOnly(std::optional<quint8> address, char letter, QByteArray data) {
    if (!address)
        co_return InvalidAddress();
    const Reply reply = co_await m_bus.SendCommand(*address, letter, data);
    co_return Told(reply.ok, {}, BoxKind::Plain, BoxKind::Plain);
}

QCoro::Task<Outcome> TestConsole::GetKey(QString address) {
    constexpr quint32 Key = 456;
    return ShowShort(address, 'Q', encoding::Hexadecimal(Key, 4));
}

QCoro::Task<Outcome> TestConsole::Display(QString address) {
    constexpr quint32 Shown = 123;
    return ShowShort(address, 'H', encoding::Hexadecimal(Shown, 4));
}

QString TestConsole::StatusText(const Reply& reply) {
    const struct {
        const char16_t* label;
        const char16_t* good;
        const char16_t* bad;
    } flags[] = {{u"Serive table : ", u"Ok", u"Error"},         {u"Button config table : ", u"Ok", u"Error"},
                 {u"Printer Form : ", u"Ok", u"Error"},         {u"VNI Table : ", u"Ok", u"Error"},
                 {u"Scheduler : ", u"Ok", u"Error or not Use"}, {u"XON : ", u"1", u"0"}};
    const QByteArrayView content = Content(reply);
    QString text;
    for (qsizetype i = 0; i < std::ssize(flags); ++i) {
        const auto& [label, good, bad] = flags[i];
        const char16_t* shown = i >= content.size() ? u"Error" : content[i] == '1' ? good : bad;
        text += QString::fromUtf16(label) + QString::fromUtf16(shown) + QStringLiteral("\r\n");
    }
    return text;
}

QCoro::Task<Outcome> TestConsole::PrinterStatus(QString address) {
    const std::optional<quint8> number = AddressOf(address);
    if (!number)
        co_return InvalidAddress();
    const Reply reply = co_await m_bus.SendCommand(*number, 'P', {});
    const QString text = reply.ok ? StatusText(reply) : QStringLiteral("Could Not connected!");
    co_return Told(reply.ok, text, BoxKind::Information, BoxKind::Exclamation);
}

QCoro::Task<Outcome> TestConsole::PrintTest(QString address) {
    return SendOnly(AddressOf(address), 'W', {});
}

QCoro::Task<Outcome> TestConsole::ResetPrinter(QString address) {
    return SendOnly(AddressOf(address), 'S', encoding::ClockText(m_clock.Now()));
}

QByteArray TestConsole::NextNumbers() const {
    QByteArray numbers;
    for (const model::QService& service : std::as_const(m_installation).LoadedServices()) {
        if (service.Route != 0)
            continue;
        const auto next = static_cast<quint16>(service.NextNumber);
        numbers += static_cast<char>(next / 256);
        numbers += static_cast<char>(next % 256);
    }
    return numbers;
}

void TestConsole::CountTicket(qint16 serviceIndex) {
    if (serviceIndex < 0 || serviceIndex >= m_installation.NumServices)
        return;
    model::QObject& bench = m_installation.Object(0);
    bench.TestService = serviceIndex;
    if (m_options.MultiTicketSeries) {
        model::QService& service = m_installation.Service(m_installation.Target(serviceIndex));
        bench.TestTicket = static_cast<qint16>(service.NextNumber);
        service.NextNumber = model::NumberAfter(service.NextNumber);
    } else {
        bench.TestTicket = m_installation.LastTicketNumber;
        if (m_installation.LastTicketNumber < LastTicket)
            ++m_installation.LastTicketNumber;
    }
}

QCoro::Task<Outcome> TestConsole::QueryTicket(QString address) {
    const std::optional<quint8> number = AddressOf(address);
    if (!number)
        co_return InvalidAddress();
    const Reply reply = co_await m_bus.SendCommand(*number, 'Q', frames::EscapeData(NextNumbers()));
    if (!reply.ok)
        co_return Outcome::Failed({});
    const TicketReply ticket = ReadTicket(reply);
    if (ticket.kind == TicketReply::Value)
        Q_EMIT TicketListed(QString::number(ticket.number));
    if (ticket.kind == TicketReply::Taken) {
        CountTicket(ticket.serviceIndex);
        Q_EMIT TicketListed(QString::number(ticket.number) + u'*');
    }
    co_return Outcome::Done();
}

QCoro::Task<Outcome> TestConsole::PoolTicket(QString address) {
    const std::optional<quint8> number = AddressOf(address);
    if (!number)
        co_return InvalidAddress();
    m_pollCancel = false;
    const int run = ++m_pollRun;
    while (!m_pollCancel && run == m_pollRun) {
        const QByteArray offer =
            encoding::Hexadecimal(static_cast<quint32>(m_pollTicket), 4) + encoding::TimeText(m_clock.Now());
        const Reply reply = co_await m_bus.SendCommand(*number, 'Q', offer);
        const TicketReply ticket = reply.ok ? ReadTicket(reply) : TicketReply();
        if (ticket.kind == TicketReply::Taken) {
            m_pollTicket = m_pollTicket == LastTicket ? qint16(1) : static_cast<qint16>(m_pollTicket + 1);
            Q_EMIT TicketListed(QString::number(ticket.number) + u'*');
        } else if (ticket.kind == TicketReply::Value) {
            Q_EMIT TicketListed(QString::number(ticket.number));
        }
        co_await m_clock.DelaySeconds(PollPause);
    }
    co_return Outcome::Cancelled();
}

QCoro::Task<Outcome> TestConsole::SetInfo(QString address, QString fill) {
    const std::optional<quint8> number = AddressOf(address);
    if (number && fill.isEmpty())
        co_return Outcome::Refused(QStringLiteral("Enter a fill character."));
    const QByteArray filled = ansi::Encode(fill).bytes.first(fill.isEmpty() ? 0 : 1).repeated(m_options.InfoNumChars);
    co_return co_await SendOnly(number, 'H', "0001" + filled);
}

QCoro::Task<Outcome> TestConsole::SwitchPower(QString address, bool on) {
    const std::optional<quint8> number = AddressOf(address);
    if (!number)
        co_return InvalidAddress();
    const QByteArray data = on ? "77" : "68";
    const char letter = on ? 'G' : 'T';
    const Reply reply = co_await m_bus.SendCommand(*number, letter, data);
    const QString text = reply.ok ? QStringLiteral("Command Ok.") : QStringLiteral("Command Error.");
    co_return Told(reply.ok, text, BoxKind::Information, BoxKind::Exclamation);
}

QCoro::Task<Outcome> TestConsole::TestHub(qint16 hub) {
    const std::optional<quint8> address = HubAddress(hub);
    if (!address)
        co_return NoHub();
    co_return co_await ShowConnection(*address);
}

QCoro::Task<Outcome> TestConsole::DumpHub(qint16 hub) {
    const std::optional<quint8> address = HubAddress(hub);
    if (!address)
        co_return NoHub();
    co_return co_await SendOnly(address, 'Z', {});
}

QCoro::Task<Outcome> TestConsole::QueryHub(qint16 hub) {
    const std::optional<quint8> address = HubAddress(hub);
    if (!address)
        co_return NoHub();
    const Reply reply = co_await m_bus.SendCommand(*address, 'Q', {}, Bus::RelayTimeout);
    co_return Told(reply.ok, {}, BoxKind::Plain, BoxKind::Plain);
}

QCoro::Task<Outcome> TestConsole::ShowSub(quint8 address, char letter, QByteArray data, QString sub) {
    const Reply reply = co_await m_bus.SendCommand(address, letter, data);
    const QString text =
        QStringLiteral("Sub %1 %2").arg(sub, reply.ok ? QStringLiteral("OK") : QStringLiteral("Error"));
    co_return Told(reply.ok, text, BoxKind::Plain, BoxKind::Critical);
}

QCoro::Task<Outcome> TestConsole::TestSub(qint16 hub, QString sub) {
    const std::optional<quint8> address = HubAddress(hub);
    if (!address)
        co_return NoHub();
    const qint32 member = number::TypedNumber(sub);
    if (member < 0 || member > encoding::LargestSmallNumber)
        co_return InvalidAddress();
    co_return co_await ShowSub(*address, 'Y', QByteArray(1, encoding::SmallNumber(member)), sub);
}

QCoro::Task<Outcome> TestConsole::ShowAtSub(QString address, QString sub, QString value) {
    const QByteArray digits = QByteArray::number(number::TypedNumber(value)).rightJustified(4, '0').right(4);
    return SendOnly(AddressOf(address), 'H', ansi::Encode(sub).bytes + digits);
}

QCoro::Task<Outcome> TestConsole::QuerySub(QString sub) {
    return ShowSub(SubAddress, 'X', ansi::Encode(sub).bytes, sub);
}

QCoro::Task<Outcome> TestConsole::SetTwoMembers() {
    const Reply reply = co_await m_bus.SendCommand(MembersAddress, 'W', "20108");
    co_return reply.ok ? Outcome::Done() : Outcome::Failed(QStringLiteral("Error!"), BoxKind::Plain);
}

QCoro::Task<Outcome> TestConsole::BroadcastClock() {
    return SendOnly(frames::Broadcast, 'U', encoding::ClockText(m_clock.Now()));
}

QCoro::Task<Outcome> TestConsole::BroadcastReset() {
    return SendOnly(frames::Broadcast, 'R', encoding::ClockText(m_clock.Now()));
}

QCoro::Task<Outcome> TestConsole::AskPassword() {
    co_await m_dialogs.AskText(QStringLiteral("Password:"));
    co_return Outcome::Done();
}
