#pragma once

#include "link/Frames.h"
#include "tests/support/PseudoTerminal.h"

#include <QObject>
#include <QSocketNotifier>

#include <functional>

/// The other end of the line, which answers every frame at once, except where a test wants silence, and keeps what
/// came.
class AnsweringEnd {
public:
    AnsweringEnd() {
        QObject::connect(&m_notifier, &QSocketNotifier::activated, [this] { Take(Terminal.Read()); });
    }

    PseudoTerminal Terminal;

    /// Frames as address, letter and data, such as "P K02011".
    QByteArrayList Commands;
    /// Acknowledgements that came.
    int Acks = 0;
    /// Whether a command, in the form of `Commands`, gets no answer.
    std::function<bool(const QByteArray&)> IsSilent = [](const QByteArray&) { return false; };

private:
    void Take(const QByteArray& bytes) {
        for (const char byte : bytes) {
            if (byte == frames::Ack && m_frame.isEmpty()) {
                ++Acks;
                continue;
            }
            m_frame += byte;
            if (byte != frames::Etx)
                continue;
            const std::optional<frames::Parts> parts = frames::Split(m_frame);
            const QByteArray command = m_frame.sliced(1, 1) + ' ' + parts->letter + parts->data.toByteArray();
            Commands += command;
            if (!IsSilent(command))
                Terminal.Write(frames::BuildFrame(frames::Body(parts->address, parts->sequence, parts->letter, "1")));
            m_frame.clear();
        }
    }

    QByteArray m_frame;
    QSocketNotifier m_notifier{Terminal.Descriptor(), QSocketNotifier::Read};
};
