#pragma once

#include <QObject>

#include <memory>

class Bus;
class Clock;
class ClockTimer;
class CommLine;
struct Options;

namespace model {
struct Installation;
}

/// The run switch of the system and its one-second tick. The switch guards the setup commands and the exit; nothing on
/// the line starts or stops with it.
class RunControl : public QObject {
    Q_OBJECT

public:
    /// The references must outlive this. The tick goes from now on; then it goes while the line is shown as open.
    RunControl(model::Installation& installation, const Options& options, Bus& bus, const CommLine& line, Clock& clock);
    ~RunControl() override;

    /// The system is started.
    bool QueueRunning() const { return m_queueRunning; }
    /// Starts or stops the system. One transmission a try from then on. Emits `RunningChanged` in any case.
    void SetRunning(bool running);

    /// One tick: `RxActivity`, the wake-up counter and the objects' down-counters. Every `WakeupTime` + 1 ticks the
    /// objects are marked as changed if the option `ActiveClients` is set.
    void CountSecond();

    /// Marks every object of state 0 as changed.
    void ResetObjects();

    /// Ends the tick.
    void Stop();

    /// Seconds for which the line lamp stays lit; 5 at each arrival of characters.
    qint32 RxActivity() const { return m_rxActivity; }

Q_SIGNALS:
    void RunningChanged(bool running);
    /// One tick is over.
    void SecondPassed();

private:
    void Tick();
    void CountDownObjects();

    model::Installation& m_installation;
    const Options& m_options;
    Bus& m_bus;
    std::unique_ptr<ClockTimer> m_timer;
    bool m_queueRunning = false;
    qint32 m_rxActivity = 0;
    qint32 m_wakeupCounter = 0;
};
