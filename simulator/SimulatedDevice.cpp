#include "simulator/SimulatedDevice.h"

#include "link/CommandNames.h"

#include "link/Encodings.h"

SimulatedDevice::SimulatedDevice(BusDevice identity)
    : m_identity(std::move(identity)) {}

QString SimulatedDevice::Title() const {
    return QStringLiteral("%1 %2 \"%3\"")
        .arg(DeviceClassName(m_identity.Class))
        .arg(m_identity.Address)
        .arg(m_identity.Name);
}

QString SimulatedDevice::Meaning(char letter) const {
    const bool isObject = m_identity.Class != DeviceClass::PowerUnit;
    return commands::Meaning(isObject ? std::optional(static_cast<model::ObjectType>(m_identity.Class)) : std::nullopt,
                             letter);
}

SimulatedDevice::Answer SimulatedDevice::Carry(char letter, const QByteArray& data) {
    if (m_silent)
        return Refused(QStringLiteral("it is set silent"));
    for (const Deafness& deaf : m_deaf) {
        if (deaf.Covers(letter, data))
            return Refused(QStringLiteral("it is deaf to this command"));
    }
    Answer answer = Handle(letter, data);
    if (m_forgetful)
        Forget();
    return answer;
}

QJsonObject SimulatedDevice::State() const {
    QJsonObject state{{QStringLiteral("class"), DeviceClassName(m_identity.Class)},
                      {QStringLiteral("address"), m_identity.Address},
                      {QStringLiteral("number"), m_identity.Number},
                      {QStringLiteral("name"), m_identity.Name}};
    if (m_identity.Hub)
        state[QStringLiteral("hub")] = *m_identity.Hub;
    if (!m_clock.isEmpty())
        state[QStringLiteral("clock")] = ClockSummary();
    AddState(state);
    return state;
}

void SimulatedDevice::Hear(char, const QByteArray&) {}

SimulatedDevice::Answer SimulatedDevice::Reply(const QByteArray& content) {
    // A null content would read as silence to a caller that tests isNull.
    return {content.isNull() ? QByteArrayLiteral("") : content, {}};
}

SimulatedDevice::Answer SimulatedDevice::UnknownLetter() {
    return {std::nullopt, QStringLiteral("unknown letter")};
}

SimulatedDevice::Answer SimulatedDevice::WrongLength(const QByteArray& data) {
    return {std::nullopt, QStringLiteral("wrong length, %1 characters of data").arg(data.size())};
}

SimulatedDevice::Answer SimulatedDevice::Refused(const QString& reason) {
    return {std::nullopt, reason};
}

SimulatedDevice::Answer SimulatedDevice::SetClock(const QByteArray& data, qsizetype length) {
    if (data.size() < length)
        return WrongLength(data);
    m_clock = data.first(length);
    return Reply();
}

QString SimulatedDevice::ClockSummary() const {
    if (m_clock.isEmpty())
        return QStringLiteral("not set");
    const auto part = [this](int place, int add = 0) {
        return QStringLiteral("%1").arg(encoding::FromSmallNumber(m_clock[place]) + add, 2, 10, QLatin1Char('0'));
    };
    const QString time = part(0) + u':' + part(1) + u':' + part(2);
    return m_clock.size() < 7 ? time : part(3, 2000) + u'-' + part(4) + u'-' + part(5) + u' ' + time;
}
