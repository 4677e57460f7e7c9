#include "simulator/DeviceHub.h"

#include "link/Encodings.h"
#include "link/Frames.h"
#include "platform/AnsiText.h"

#include <QJsonArray>

#include <algorithm>

namespace {

constexpr qsizetype ClockLength = 7;

QByteArray Signature() {
    return QByteArray("Na_Relt", 8);
}

} // namespace

void DeviceHub::Attach(SimulatedDevice& device) {
    m_attached.push_back(&device);
}

SimulatedDevice* DeviceHub::FindAttached(int address) const {
    const auto found = std::find_if(m_attached.begin(), m_attached.end(), [address](const SimulatedDevice* device) {
        return device->Identity().Address == address;
    });
    return found == m_attached.end() ? nullptr : *found;
}

SimulatedDevice::Answer DeviceHub::Handle(char letter, const QByteArray& data) {
    switch (letter) {
    case 'W':
        return TakeMembers(data);
    case 'L':
        return TakeConfiguration(data);
    case 'U':
        return data.size() == ClockLength ? SetClock(data, ClockLength) : WrongLength(data);
    case 'K':
        if (data.size() != 1)
            return WrongLength(data);
        m_option = encoding::FromSmallNumber(data[0]);
        return Reply();
    case 'J':
        if (data.size() != 1)
            return WrongLength(data);
        if (data != "0" && data != "1")
            return Refused(QStringLiteral("a bracket is \"0\" or \"1\""));
        m_inTransfer = data == "0";
        return Reply();
    case 'N':
        return Relay(data);
    case 'H':
        if (data.size() < 3)
            return WrongLength(data);
        m_slotTexts[encoding::FromSmallNumber(data[1])] = data.sliced(2);
        return Reply();
    case 'P':
        if (!data.isEmpty())
            return WrongLength(data);
        return Reply(QByteArray(1, encoding::SmallNumber(m_members ? static_cast<int>(m_members->size())
                                                                   : static_cast<int>(m_attached.size()))));
    case 'Q':
    case 'Z':
        return data.isEmpty() ? Reply() : WrongLength(data);
    case 'Y': {
        if (data.size() != 1)
            return WrongLength(data);
        const size_t count = m_members ? m_members->size() : m_attached.size();
        const int sub = encoding::FromSmallNumber(data[0]);
        return sub >= 0 && static_cast<size_t>(sub) < count ? Reply()
                                                            : Refused(QStringLiteral("no member in slot %1").arg(sub));
    }
    default:
        return UnknownLetter();
    }
}

SimulatedDevice::Answer DeviceHub::Relay(const QByteArray& data) {
    if (data.size() < 2)
        return WrongLength(data);
    const int address = encoding::FromSmallNumber(data[0]);
    SimulatedDevice* const device = FindAttached(address);
    if (device == nullptr)
        return Refused(QStringLiteral("no device %1 is attached to the hub").arg(address));
    const Member member{static_cast<int>(device->Identity().Class), address};
    if (m_members && std::find(m_members->begin(), m_members->end(), member) == m_members->end())
        return Refused(QStringLiteral("the member list does not name %1").arg(device->Title()));
    Answer answer = device->Carry(data[1], data.sliced(2));
    if (answer.Content)
        answer.Content->prepend(data[1]);
    else
        answer.Silence = QStringLiteral("%1: %2").arg(device->Title(), answer.Silence);
    return answer;
}

SimulatedDevice::Answer DeviceHub::TakeMembers(const QByteArray& data) {
    if (data.isEmpty())
        return WrongLength(data);
    const int count = encoding::FromSmallNumber(data[0]);
    if (count < 0 || data.size() != 1 + 2 * static_cast<qsizetype>(count))
        return WrongLength(data);
    if (count > MostMembers)
        return Refused(QStringLiteral("more than %1 members").arg(MostMembers));
    std::vector<Member> members;
    members.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        members.push_back({encoding::FromSmallNumber(data[1 + 2 * i]), encoding::FromSmallNumber(data[2 + 2 * i])});
    m_members = std::move(members);
    return Reply();
}

SimulatedDevice::Answer DeviceHub::TakeConfiguration(const QByteArray& data) {
    const QByteArray block = frames::UnescapeData(data);
    if (block.size() < 2 || block.first(2) != encoding::Hexadecimal(static_cast<quint32>(block.size()), 2))
        return WrongLength(data);
    if (!block.sliced(2).startsWith(Signature()))
        return Refused(QStringLiteral("the block lacks its signature"));
    m_configuration = block;
    return Reply();
}

void DeviceHub::Hear(char letter, const QByteArray& data) {
    if (letter == 'R' || letter == 'U')
        SetClock(data, ClockLength);
}

QString DeviceHub::RelayedMeaning(const QByteArray& data) const {
    if (data.size() < 2)
        return {};
    const int address = encoding::FromSmallNumber(data[0]);
    const SimulatedDevice* const device = FindAttached(address);
    if (device == nullptr)
        return QStringLiteral("to %1").arg(address);
    return QStringLiteral("to %1, %2 %3").arg(device->Title(), QString(QLatin1Char(data[1])), device->Meaning(data[1]));
}

QString DeviceHub::Summary() const {
    QString members = QStringLiteral("no list");
    if (m_members) {
        QStringList texts;
        for (const Member& member : *m_members)
            texts += QStringLiteral("type %1 at %2").arg(member.Type).arg(member.Address);
        members = QStringLiteral("%1 (%2)").arg(m_members->size()).arg(texts.join(QStringLiteral(", ")));
    }
    QString text =
        Title() + QStringLiteral(": %1 attached, members %2, configuration %3 bytes, option %4, clock %5%6\n")
                      .arg(m_attached.size())
                      .arg(members)
                      .arg(m_configuration.size())
                      .arg(m_option ? QString::number(*m_option) : QStringLiteral("not set"))
                      .arg(ClockSummary())
                      .arg(m_inTransfer ? QStringLiteral(", in a transfer") : QString());
    for (const auto& [slot, shown] : m_slotTexts)
        text += QStringLiteral("    slot %1 shows \"%2\"\n").arg(slot).arg(ansi::Decode(shown));
    return text;
}

void DeviceHub::PowerUp() {
    SimulatedDevice::PowerUp();
    m_inTransfer = false;
}

void DeviceHub::Forget() {
    PowerUp();
    m_members.reset();
    m_configuration.clear();
    m_option.reset();
    m_slotTexts.clear();
}

void DeviceHub::AddState(QJsonObject& state) const {
    if (m_members) {
        QJsonArray members;
        for (const Member& member : *m_members)
            members += QJsonObject{{QStringLiteral("type"), member.Type}, {QStringLiteral("address"), member.Address}};
        state[QStringLiteral("members")] = members;
    }
    state[QStringLiteral("configuration")] = QString::fromLatin1(m_configuration.toHex());
    if (m_option)
        state[QStringLiteral("option")] = *m_option;
    state[QStringLiteral("inTransfer")] = m_inTransfer;
    QJsonObject slotTexts;
    for (const auto& [slot, shown] : m_slotTexts)
        slotTexts[QString::number(slot)] = ansi::Decode(shown);
    state[QStringLiteral("slots")] = slotTexts;
}
