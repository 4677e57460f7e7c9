#include "simulator/PowerUnit.h"

SimulatedDevice::Answer PowerUnit::Handle(char letter, const QByteArray& data) {
    if (letter != 'G' && letter != 'T')
        return UnknownLetter();
    if (data.size() != 2)
        return WrongLength(data);
    if (data != (letter == 'G' ? "77" : "68"))
        return Refused(QStringLiteral("wrong key word"));
    m_on = letter == 'G';
    return Reply();
}

QString PowerUnit::Summary() const {
    return QStringLiteral("%1: %2\n").arg(Title(), m_on ? QStringLiteral("on") : QStringLiteral("off"));
}

void PowerUnit::AddState(QJsonObject& state) const {
    state[QStringLiteral("on")] = m_on;
}
