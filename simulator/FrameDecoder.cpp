#include "simulator/FrameDecoder.h"

#include "link/Encodings.h"
#include "link/Frames.h"

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
    const std::optional<frames::Parts> parts = frames::Split(raw);
    if (!parts) {
        command.Fault = QStringLiteral("too short");
        return command;
    }
    command.Address = parts->address;
    command.Sequence = parts->sequence;
    command.Letter = parts->letter;
    command.Data = parts->data.toByteArray();
    if (!frames::chkCS(QByteArrayView(raw).chopped(1)))
        command.Fault = QStringLiteral("bad check sum");
    else if (parts->length != encoding::Hexadecimal(static_cast<quint32>(command.Data.size() + 1), 2))
        command.Fault = QStringLiteral("wrong length");
    return command;
}
