#pragma once

#include "core/EventLog.h"
#include "core/Installation.h"
#include "hubs/HubRouter.h"
#include "platform/Clock.h"
#include "platform/SerialControl.h"

#include <QProcess>
#include <QTemporaryDir>

#include <functional>

/// A simulated printer at address 32, object 0 of an installation, on a line that keeps to its speed.
class PacedPrinter {
public:
    explicit PacedPrinter(int baud);
    ~PacedPrinter();

    /// Reports the time that `transfer` takes beside the wire time of the characters that it moves: request, reply and
    /// acknowledgement follow one another.
    void Measure(const char* what, const std::function<bool()>& transfer);

    /// Waits pass at once: what is measured is the line.
    class NoWaits final : public SystemClock {
    public:
        QCoro::Task<> DelayMilliseconds(qint16) override { co_return; }
        QCoro::Task<> DelaySeconds(qint16) override { co_return; }
    };

    const QTemporaryDir Folder;
    NoWaits Waits;
    EventLog Log{Folder.path(), Waits};
    const std::unique_ptr<model::Installation> Installation = std::make_unique<model::Installation>();
    SerialControl Control;
    Bus Master{Control, Waits, Log};
    HubRouter Router{Master, *Installation};

private:
    const int m_baud;
    QProcess m_bus;
};
