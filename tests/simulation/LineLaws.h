#pragma once

#include "link/Bus.h"
#include "simulator/SimulatedLine.h"

#include <map>

/// What must hold on the line, whatever the devices do: one command at a time, each time-out in full and no longer,
/// each answer used once and at once, an ACK behind each answer and nowhere else.
class LineLaws : public QObject {
public:
    /// A command to one device: address, letter, and the device and letter inside of a relay.
    using Command = QByteArray;

    LineLaws(SimulatedLine& line, Timeline& timeline)
        : m_line(line)
        , m_timeline(timeline) {
        connect(&line, &Line::Closed, this, [this] { m_echoDue = 0; });
    }

    std::function<void(const QString& law)> OnBroken;
    std::function<void(const Command& command, bool answered)> OnTried;
    /// Addresses are searched, for which a sign of life is not waited for in full.
    std::function<bool()> IsSearching;

    /// Follows a new station.
    void Follow(Bus& bus);
    /// The station ends: no further command may begin.
    void ExpectNoCommand() { m_isEnding = true; }
    /// The station has ended: nothing may be sent any more.
    void ExpectSilence() { m_isEnded = true; }

    void Written(const QByteArray& bytes);
    void Delivered(const QByteArray& bytes);

    /// How the station takes answers.
    bool IsStrict = false;
    bool HasLocalEcho = false;

    quint64 Tries = 0;
    /// Answers taken by the present station whose head is not that of the command.
    quint64 Foreign = 0;

    static Command CommandOf(quint8 address, const QByteArray& frame);

private:
    struct Running {
        Command command;
        QByteArray frame;
        Timeline::Moment written;
        std::chrono::milliseconds timeout;
        Timeline::Moment passed;
        bool wasBlocked;
        int blocks; ///< of the line until then
    };
    struct Frame {
        QByteArray bytes;
        Timeline::Moment begun;
        Timeline::Moment ended;
        bool isTaken = true;
    };

    static bool IsForeign(const Running& running, const QByteArray& frame);
    void Missed(bool isLineOpen);
    void Taken(const QByteArray& frame);

    SimulatedLine& m_line;
    Timeline& m_timeline;
    std::optional<Running> m_running;
    Command m_lastMissed;
    QByteArray m_coming;
    Timeline::Moment m_begun{0};
    Frame m_last;
    quint64 m_answers = 0;
    quint64 m_acks = 0;
    qsizetype m_echoDue = 0;
    bool m_isEnding = false;
    bool m_isEnded = false;
};
