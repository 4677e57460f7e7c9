#pragma once

#include <QByteArray>
#include <QString>

#include <functional>

/// The device's ear: bytes in, in any slicing, commands out.
class FrameDecoder {
public:
    struct Command {
        QByteArray Raw; ///< from STX to ETX
        quint8 Address = 0;
        char Sequence = 0;
        char Letter = 0;
        QByteArray Data;
        QString Fault; ///< why no device can take it: bad check sum, wrong length, too short; empty if it is good
    };

    /// What is collected without an ETX is dropped beyond this many bytes.
    static constexpr qsizetype LongestFrame = 8192;

    std::function<void(const Command&)> OnCommand;
    std::function<void()> OnAck;

    void Feed(QByteArrayView bytes);
    /// Forgets an unfinished frame.
    void Reset();

    /// Takes a frame from STX to ETX apart.
    static Command Decode(const QByteArray& raw);

private:
    QByteArray m_buffer;
};
