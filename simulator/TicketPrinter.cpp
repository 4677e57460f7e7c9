#include "simulator/TicketPrinter.h"

#include "link/Encodings.h"
#include "link/Frames.h"
#include "platform/AnsiText.h"

#include <QJsonArray>

#include <algorithm>

namespace {

constexpr qsizetype ClockLength = 7;
constexpr qsizetype RowLength = 131;
constexpr qsizetype FieldLength = 63;
constexpr qsizetype NamePlace = 3;
constexpr qsizetype DescriptionPlace = 67;
/// Check sum and the two option bytes.
constexpr qsizetype ShortestForm = 4;
constexpr qsizetype PollLength = 7;

std::optional<int> ReadHexadecimal(const QByteArray& digits) {
    int value = 0;
    for (const char digit : digits) {
        const bool decimal = digit >= '0' && digit <= '9';
        if (!decimal && !(digit >= 'A' && digit <= 'F'))
            return std::nullopt;
        value = value * 16 + (decimal ? digit - '0' : digit - 'A' + 10);
    }
    return value;
}

QByteArray Unpadded(const QByteArray& field) {
    const qsizetype end = field.indexOf('\0');
    return end < 0 ? field : field.first(end);
}

bool HasGoodSum(const QByteArray& form) {
    if (form.size() < ShortestForm)
        return false;
    quint16 sum = 0;
    for (const char byte : form.sliced(2))
        sum = static_cast<quint16>(sum + static_cast<quint8>(byte));
    return static_cast<quint8>(form[0]) == sum / 256 && static_cast<quint8>(form[1]) == sum % 256;
}

} // namespace

void TicketPrinter::Transfer::Begin() {
    *this = {};
    Running = true;
}

void TicketPrinter::Transfer::Take(const QByteArray& data) {
    if (!Running)
        return;
    const QByteArray chunk = frames::UnescapeData(data);
    if (Bytes.size() + chunk.size() > LargestBlock)
        Overrun = true;
    else
        Bytes += chunk;
}

bool TicketPrinter::Transfer::End() {
    const bool good = Running && !Overrun && !Bytes.isEmpty();
    Running = false;
    return good;
}

QByteArray TicketPrinter::Flags() const {
    bool rowsComplete = m_buttons.has_value();
    for (int i = 0; rowsComplete && i < static_cast<int>(m_buttons->size()); ++i)
        rowsComplete = m_rows.count(i) > 0;
    QByteArray flags;
    for (const bool good : {rowsComplete, m_buttons.has_value(), !m_form.isEmpty(), !m_letters.isEmpty(), false, true})
        flags += good ? '1' : '0';
    return flags;
}

bool TicketPrinter::PressButton(quint8 button) {
    if (!m_buttons || std::find(m_buttons->begin(), m_buttons->end(), button) == m_buttons->end())
        return false;
    m_pressed.push_back(button);
    return true;
}

SimulatedDevice::Answer TicketPrinter::Handle(char letter, const QByteArray& data) {
    switch (letter) {
    case 'K':
        return TakeButtons(data);
    case 'M':
        return TakeRow(data);
    case 'V':
        return EndForm(data);
    case 'Q':
        return Poll(data);
    case 'S':
    case 'U':
        return data.size() == ClockLength ? SetClock(data, ClockLength) : WrongLength(data);
    case 'L': {
        if (data.size() != 4)
            return WrongLength(data);
        const std::optional<int> length = ReadHexadecimal(data);
        if (!length)
            return Refused(QStringLiteral("the length of the form is no number"));
        m_announcedForm = *length;
        m_formTransfer.Begin();
        return Reply();
    }
    case 'O':
        m_formTransfer.Take(data);
        return Reply();
    case 'Y':
        m_logoTransfer.Take(data);
        return Reply();
    case 'J':
        m_letterTransfer.Take(data);
        return Reply();
    case 'P':
    case 'N':
    case 'X':
    case 'Z':
    case 'G':
    case 'T':
    case 'W':
        return data.isEmpty() ? HandleBare(letter) : WrongLength(data);
    default:
        return UnknownLetter();
    }
}

SimulatedDevice::Answer TicketPrinter::HandleBare(char letter) {
    switch (letter) {
    case 'P':
        return Reply(Flags());
    case 'N':
        ++m_loads;
        if (OnLoaded)
            OnLoaded();
        break;
    case 'X':
        m_logoTransfer.Begin();
        break;
    case 'Z':
        if (m_logoTransfer.End())
            m_logos = m_logoTransfer.Bytes;
        break;
    case 'G':
        m_letterTransfer.Begin();
        break;
    case 'T':
        if (m_letterTransfer.End())
            m_letters = m_letterTransfer.Bytes;
        break;
    case 'W':
        Print({-1, -1, 0});
        break;
    default:
        return UnknownLetter();
    }
    return Reply();
}

SimulatedDevice::Answer TicketPrinter::TakeButtons(const QByteArray& data) {
    const std::optional<int> count = data.size() < 3 ? std::nullopt : ReadHexadecimal(data.first(2));
    if (!count || data.size() != 3 + 2 * static_cast<qsizetype>(*count))
        return WrongLength(data);
    std::vector<quint8> buttons;
    for (int i = 0; i < *count; ++i) {
        const std::optional<int> button = ReadHexadecimal(data.sliced(2 + 2 * i, 2));
        if (!button)
            return Refused(QStringLiteral("key %1 of the button table is no number").arg(i));
        buttons.push_back(static_cast<quint8>(*button));
    }
    m_buttons = std::move(buttons);
    m_loadFlag = data.back();
    m_rows.clear();
    return Reply();
}

SimulatedDevice::Answer TicketPrinter::TakeRow(const QByteArray& data) {
    if (data.size() != RowLength)
        return WrongLength(data);
    const std::optional<int> index = ReadHexadecimal(data.first(2));
    if (!index)
        return Refused(QStringLiteral("the index of the row is no number"));
    m_rows[*index] = {encoding::FromSmallNumber(data[2]), Unpadded(data.sliced(NamePlace, FieldLength)),
                      Unpadded(data.sliced(DescriptionPlace, FieldLength))};
    return Reply();
}

SimulatedDevice::Answer TicketPrinter::EndForm(const QByteArray& data) {
    if (data.size() != 1)
        return WrongLength(data);
    // Without an `L` no form has come, neither a good nor a bad one.
    if (!m_formTransfer.Running)
        return Reply();
    const bool whole = m_formTransfer.End() && m_formTransfer.Bytes.size() == m_announcedForm;
    m_form = whole && HasGoodSum(m_formTransfer.Bytes) ? m_formTransfer.Bytes : QByteArray();
    return Reply();
}

SimulatedDevice::Answer TicketPrinter::Poll(const QByteArray& data) {
    // Two bytes for each series, or one number for all and the time. Numbers of series are even in length.
    const QByteArray numbers = frames::UnescapeData(data);
    const bool common = numbers.size() == PollLength;
    const std::optional<int> commonNumber = common ? ReadHexadecimal(numbers.first(4)) : std::nullopt;
    if ((common && !commonNumber) || (!common && numbers.size() % 2 != 0))
        return WrongLength(data);

    // The head of a poll reply; kind "0" and no service where no key was pressed.
    const QByteArray head = QByteArrayLiteral("100");
    if (m_pressed.empty())
        return Reply(head + "0/0000");
    const quint8 button = m_pressed.front();
    int service = -1;
    if (m_buttons) {
        const auto found = std::find(m_buttons->begin(), m_buttons->end(), button);
        service = found == m_buttons->end() ? -1 : static_cast<int>(found - m_buttons->begin());
    }
    const auto row = m_rows.find(service);
    const qsizetype place = 2 * static_cast<qsizetype>(row == m_rows.end() ? service : row->second.SeriesIndex);
    if (service < 0 || (!common && (place < 0 || place + 1 >= numbers.size())))
        return Reply(head + "0/0000");
    const int number =
        common ? *commonNumber : static_cast<quint8>(numbers[place]) * 256 + static_cast<quint8>(numbers[place + 1]);
    m_pressed.erase(m_pressed.begin());
    Print({button, service, number});
    return Reply(head + '1' + encoding::SmallNumber(service) + encoding::Hexadecimal(static_cast<quint32>(number), 4));
}

void TicketPrinter::Print(const Ticket& ticket) {
    m_tickets.push_back(ticket);
    if (OnPrinted)
        OnPrinted(ticket);
}

void TicketPrinter::Hear(char letter, const QByteArray& data) {
    if (letter == 'R' || letter == 'U')
        SetClock(data, ClockLength);
}

QString TicketPrinter::Summary() const {
    QString text = Title() + u'\n';
    QStringList buttons;
    for (const quint8 button : m_buttons.value_or(std::vector<quint8>()))
        buttons += QString::number(button);
    text += QStringLiteral("    button table: %1\n")
                .arg(!m_buttons ? QStringLiteral("none")
                                : QStringLiteral("%1 services, keys %2").arg(buttons.size()).arg(buttons.join(u' ')));
    for (const auto& [index, row] : m_rows) {
        text += QStringLiteral("    service %1: series %2, name \"%3\", description \"%4\"\n")
                    .arg(index)
                    .arg(row.SeriesIndex)
                    .arg(ansi::Decode(row.Name), ansi::Decode(row.Description));
    }
    text += QStringLiteral("    form %1 bytes, logos %2 bytes, letters %3 bytes, clock %4\n")
                .arg(m_form.size())
                .arg(m_logos.size())
                .arg(m_letters.size())
                .arg(ClockSummary());
    const char* const names[] = {"service table", "button table", "form", "letters", "scheduler", "XON"};
    const QByteArray flags = Flags();
    text += QStringLiteral("    flags:");
    for (int i = 0; i < flags.size(); ++i)
        text += QStringLiteral(" %1 %2%3")
                    .arg(QLatin1String(names[i]), QString(QLatin1Char(flags[i])),
                         i + 1 < flags.size() ? QStringLiteral(",") : QStringLiteral("\n"));
    for (const Ticket& ticket : m_tickets) {
        text += ticket.Service < 0
                    ? QStringLiteral("    printed: a test ticket\n")
                    : QStringLiteral("    printed: ticket %1 of service %2\n").arg(ticket.Number).arg(ticket.Service);
    }
    return text;
}

void TicketPrinter::PowerUp() {
    SimulatedDevice::PowerUp();
    m_formTransfer = m_logoTransfer = m_letterTransfer = {};
}

void TicketPrinter::Forget() {
    PowerUp();
    m_buttons.reset();
    m_loadFlag = '0';
    m_rows.clear();
    m_form.clear();
    m_logos.clear();
    m_letters.clear();
}

void TicketPrinter::AddState(QJsonObject& state) const {
    if (m_buttons) {
        QJsonArray buttons;
        for (const quint8 button : *m_buttons)
            buttons += button;
        state[QStringLiteral("buttons")] = buttons;
        state[QStringLiteral("loadFlag")] = QString(QLatin1Char(m_loadFlag));
    }
    QJsonArray rows;
    for (const auto& [index, row] : m_rows) {
        rows += QJsonObject{{QStringLiteral("index"), index},
                            {QStringLiteral("series"), row.SeriesIndex},
                            {QStringLiteral("name"), ansi::Decode(row.Name)},
                            {QStringLiteral("description"), ansi::Decode(row.Description)}};
    }
    state[QStringLiteral("services")] = rows;
    state[QStringLiteral("form")] = QString::fromLatin1(m_form.toHex());
    state[QStringLiteral("logos")] = QString::fromLatin1(m_logos.toHex());
    state[QStringLiteral("letters")] = QString::fromLatin1(m_letters.toHex());
    state[QStringLiteral("flags")] = QString::fromLatin1(Flags());
    state[QStringLiteral("loads")] = m_loads;
    QJsonArray tickets;
    for (const Ticket& ticket : m_tickets) {
        tickets += QJsonObject{{QStringLiteral("button"), ticket.Button},
                               {QStringLiteral("service"), ticket.Service},
                               {QStringLiteral("number"), ticket.Number}};
    }
    state[QStringLiteral("tickets")] = tickets;
}
