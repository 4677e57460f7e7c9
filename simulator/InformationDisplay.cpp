#include "simulator/InformationDisplay.h"

#include "platform/AnsiText.h"

namespace {
constexpr qsizetype NumberLength = 4;
}

SimulatedDevice::Answer InformationDisplay::Handle(char letter, const QByteArray& data) {
    switch (letter) {
    case 'S':
        return data.isEmpty() ? Reply() : WrongLength(data);
    case 'H':
        if (data.size() < NumberLength)
            return WrongLength(data);
        m_number = data.first(NumberLength);
        m_text = data.sliced(NumberLength);
        return Reply();
    default:
        return UnknownLetter();
    }
}

QString InformationDisplay::Summary() const {
    return QStringLiteral("%1: number \"%2\", text \"%3\"\n")
        .arg(Title(), ansi::Decode(m_number), ansi::Decode(m_text));
}

void InformationDisplay::Forget() {
    PowerUp();
    m_number.clear();
    m_text.clear();
}

void InformationDisplay::AddState(QJsonObject& state) const {
    state[QStringLiteral("number")] = ansi::Decode(m_number);
    state[QStringLiteral("text")] = ansi::Decode(m_text);
}
