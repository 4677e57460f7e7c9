#include "simulator/CounterKeypad.h"

#include "platform/AnsiText.h"

namespace {
constexpr qsizetype TimeLength = 3;
constexpr qsizetype TextLength = 4;
} // namespace

SimulatedDevice::Answer CounterKeypad::Handle(char letter, const QByteArray& data) {
    switch (letter) {
    case 'S':
        return data.size() == TimeLength ? SetClock(data, TimeLength) : WrongLength(data);
    case 'H':
        if (data.size() != TextLength)
            return WrongLength(data);
        m_text = data;
        return Reply();
    case 'P':
        return data.isEmpty() ? Reply(m_text) : WrongLength(data);
    case 'Q':
        return data.size() == TextLength ? Reply(QByteArrayLiteral("0")) : WrongLength(data);
    default:
        return UnknownLetter();
    }
}

void CounterKeypad::Hear(char letter, const QByteArray& data) {
    if (letter == 'R' || letter == 'U')
        SetClock(data, TimeLength);
}

QString CounterKeypad::Summary() const {
    return QStringLiteral("%1: shows \"%2\", time %3\n").arg(Title(), ansi::Decode(m_text), ClockSummary());
}

void CounterKeypad::Forget() {
    PowerUp();
    m_text.clear();
}

void CounterKeypad::AddState(QJsonObject& state) const {
    state[QStringLiteral("text")] = ansi::Decode(m_text);
}
