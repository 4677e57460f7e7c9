#pragma once

#include "link/ReplyFit.h"
#include "platform/Clock.h"

#include <QByteArray>
#include <QObject>

#include <array>

class Bus;

/// Round trips, counted in steps of a quarter of an octave from 0.25 ms to 4 s; what lies outside counts with the ends.
class RoundTrips {
public:
    using Time = std::chrono::microseconds;

    void Add(Time time);

    quint64 Count() const { return m_count; }
    /// The upper end of the step in which that part of all round trips has come, 0 if there are none: a median for 0.5.
    /// From 0.25 ms to 4 s at most a fifth too large; never larger than `Largest`.
    Time Quantile(double part) const;
    Time Largest() const { return m_largest; }

private:
    static constexpr int StepsOfAnOctave = 4;
    static constexpr int Steps = 14 * StepsOfAnOctave;

    std::array<quint32, Steps> m_steps{};
    quint64 m_count = 0;
    Time m_largest{0};
};

/// What the devices made of the commands since the start of the program, for each address and in all. Only listens.
class LineStatistics : public QObject {
    Q_OBJECT

public:
    struct Counters {
        quint64 commands = 0;     ///< not counting that they were tried again
        quint64 answeredOnce = 0; ///< answered at the first try, by whomever
        quint64 retries = 0;
        quint64 missed = 0;    ///< tries that nobody answered
        quint64 foreign = 0;   ///< frames that came as the answer and answer something else, taken or passed over
        quint64 asSent = 0;    ///< answers that repeat the command
        quint64 badSums = 0;   ///< frames with a bad check sum while this address was awaited
        quint64 unasked = 0;   ///< frames that nobody awaited, of the address in their head; damaged ones only in all
        RoundTrips roundTrips; ///< from writing the frame to the end of the answer
    };

    /// Counts from now on. The references must outlive the statistics.
    LineStatistics(const Bus& bus, const Clock& clock, QObject* parent = nullptr);

    static constexpr int Addresses = 256;

    /// Of the devices that were addressed so; of a device behind a hub the hub's address.
    const Counters& Of(quint8 address) const { return m_byAddress[address]; }
    const Counters& All() const { return m_all; }

private:
    void OnSent(quint8 address, const QByteArray& frame, int attempt);
    void OnReceived(const QByteArray& frame, bool isGood, bool isAwaited);
    void OnTaken(quint8 address, const QByteArray& frame);

    const Clock& m_clock;
    Counters m_all;
    std::array<Counters, Addresses> m_byAddress;
    QByteArray m_command;
    quint8 m_address = 0;
    bool m_isFirstTry = false;
    Clock::Instant m_sent;
};
