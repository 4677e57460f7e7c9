#include "station/RunControl.h"

#include "core/Installation.h"
#include "core/Options.h"
#include "link/Bus.h"
#include "link/CommLine.h"
#include "platform/Clock.h"

namespace {

constexpr qint32 LampSeconds = 5;
constexpr std::chrono::seconds Second{1};

} // namespace

RunControl::RunControl(model::Installation& installation, const Options& options, Bus& bus, const CommLine& line,
                       Clock& clock)
    : m_installation(installation)
    , m_options(options)
    , m_bus(bus)
    , m_timer(clock.MakeTimer([this] { Tick(); })) {
    connect(&bus, &Bus::CharactersReceived, this, [this] { m_rxActivity = LampSeconds; });
    connect(&line, &CommLine::StatusChanged, this, [this](const QString&, const QString&, bool opened) {
        if (opened)
            m_timer->Start(Second);
        else
            m_timer->Stop();
    });
    m_timer->Start(Second);
}

RunControl::~RunControl() = default;

void RunControl::Stop() {
    m_timer->Stop();
}

void RunControl::Tick() {
    m_timer->Start(Second);
    CountSecond();
}

void RunControl::SetRunning(bool running) {
    m_queueRunning = running;
    m_bus.FrameRepeats = 1;
    Q_EMIT RunningChanged(running);
}

void RunControl::CountSecond() {
    if (m_rxActivity > 0)
        --m_rxActivity;
    if (++m_wakeupCounter > m_options.WakeupTime) {
        m_wakeupCounter = 0;
        if (m_options.ActiveClients)
            ResetObjects();
    }
    CountDownObjects();
    Q_EMIT SecondPassed();
}

void RunControl::CountDownObjects() {
    for (model::QObject& object : m_installation.LoadedObjects()) {
        if (object.CommandDelay > 0)
            --object.CommandDelay;
        if (object.RetryDelay > 0)
            --object.RetryDelay;
    }
}

void RunControl::ResetObjects() {
    for (model::QObject& object : m_installation.LoadedObjects()) {
        if (object.State == 0)
            object.Changed = true;
    }
}
