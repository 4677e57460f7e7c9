#include "station/RunControl.h"

#include "station/Station.h"

namespace {

constexpr qint32 LampSeconds = 5;

} // namespace

RunControl::RunControl(Station& station)
    : m_station(station) {
    connect(&station.bus, &Bus::CharactersReceived, this, [this] { m_rxActivity = LampSeconds; });
}

void RunControl::SetRunning(bool running) {
    m_queueRunning = running;
    m_station.bus.FrameRepeats = 1;
    Q_EMIT RunningChanged(running);
}

void RunControl::CountSecond() {
    if (m_rxActivity > 0)
        --m_rxActivity;
    if (++m_wakeupCounter > m_station.options.WakeupTime) {
        m_wakeupCounter = 0;
        if (m_station.options.ActiveClients)
            ResetObjects();
    }
    CountDownObjects();
}

void RunControl::CountDownObjects() {
    for (model::QObject& object : m_station.installation->LoadedObjects()) {
        if (object.CommandDelay > 0)
            --object.CommandDelay;
        if (object.RetryDelay > 0)
            --object.RetryDelay;
    }
}

void RunControl::ResetObjects() {
    for (model::QObject& object : m_station.installation->LoadedObjects()) {
        if (object.State == 0)
            object.Changed = true;
    }
}
