#include "simulator/FrameDecoder.h"

#include "link/Encodings.h"
#include "link/Frames.h"

namespace {
/// STX, address, sequence, length, letter, check sum, ETX.
constexpr qsizetype ShortestFrame = 9;
constexpr qsizetype LetterPlace = 5;
constexpr qsizetype TailLength = 3;
} // namespace

void FrameDecoder::Reset() {
    m_buffer.clear();
}

void FrameDecoder::Feed(QByteArrayView bytes) {
    for (const char byte : bytes) {
        if (byte == frames::Ack) {
            if (OnAck)
                OnAck();
        } else if (byte == frames::Stx) {
            m_buffer = QByteArray(1, byte);
        } else if (!m_buffer.isEmpty()) {
            m_buffer += byte;
            if (byte == frames::Etx) {
                const QByteArray raw = std::exchange(m_buffer, {});
                if (OnCommand)
                    OnCommand(Decode(raw));
            } else if (m_buffer.size() > LongestFrame) {
                m_buffer.clear();
            }
        }
    }
}

FrameDecoder::Command FrameDecoder::Decode(const QByteArray& raw) {
    Command command;
    command.Raw = raw;
    if (raw.size() < ShortestFrame) {
        command.Fault = QStringLiteral("too short");
        return command;
    }
    command.Address = static_cast<quint8>(encoding::FromSmallNumber(raw[1]));
    command.Sequence = raw[2];
    command.Letter = raw[LetterPlace];
    command.Data = raw.sliced(LetterPlace + 1, raw.size() - LetterPlace - 1 - TailLength);
    if (!frames::chkCS(QByteArrayView(raw).chopped(1)))
        command.Fault = QStringLiteral("bad check sum");
    else if (raw.sliced(3, 2) != encoding::Hexadecimal(quint32(command.Data.size() + 1), 2))
        command.Fault = QStringLiteral("wrong length");
    return command;
}
