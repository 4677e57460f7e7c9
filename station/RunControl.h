#pragma once

#include <QObject>

class Station;

/// The run switch of the system and the counters of its one-second tick. The switch guards the setup commands and the
/// exit; nothing on the line starts or stops with it.
class RunControl : public QObject {
    Q_OBJECT

public:
    /// @param station owns this.
    explicit RunControl(Station& station);

    /// The system is started.
    bool QueueRunning() const { return m_queueRunning; }
    /// Starts or stops the system. One transmission a try from then on. Tells `RunningChanged` in any case.
    void SetRunning(bool running);

    /// One tick: `RxActivity`, the wake-up counter and the objects' down-counters. Every `WakeupTime` + 1 ticks the
    /// objects are marked as changed if the option `ActiveClients` is set.
    void CountSecond();

    /// Takes 1 from each object's `CommandDelay` and `RetryDelay` that is above 0.
    void CountDownObjects();

    /// Marks every object of state 0 as changed.
    void ResetObjects();

    /// Seconds for which the line lamp stays lit; 5 at each arrival of characters.
    qint32 RxActivity() const { return m_rxActivity; }

Q_SIGNALS:
    void RunningChanged(bool running);

private:
    Station& m_station;
    bool m_queueRunning = false;
    qint32 m_rxActivity = 0;
    qint32 m_wakeupCounter = 0;
};
