#pragma once

#include <QObject>
#include <QStringList>

#include <qcoro/qcorotask.h>

class Clock;
class DeviceStart;
class HubConfig;
class PrinterConfig;
class TicketForms;
class TicketRecords;
struct Options;

namespace model {
struct Installation;
}

/// The initialization run: brings every device of the installation into a known state, in object order.
///
/// Counters get the number of their last ticket, printers their clock and, with the option SendConfigOnStart, tables
/// and the form of Ticket.bin, displays an empty text, hubs their member list.
class InitRun : public QObject {
    Q_OBJECT

public:
    /// What the run works with; all must outlive it.
    struct Parts {
        model::Installation& installation;
        const Options& options;
        TicketRecords& tickets;
        DeviceStart& starts;
        HubConfig& hubs;
        PrinterConfig& printers;
        TicketForms& forms;
        Clock& clock;
    };

    explicit InitRun(const Parts& parts);

    /// Ends a run, and the reset of all devices, after the object that is at work, and every later one after its first
    /// object: nothing but the start of the program takes it back.
    void Cancel() { m_isCancelled = true; }
    bool IsCancelled() const { return m_isCancelled; }

    /// Runs over all objects. Takes at least 2.25 s, 0.1 s an object, and 1.5 s more a printer.
    /// @return names of the counters, printers and displays that did not answer, and which of them stand behind a hub.
    QCoro::Task<QStringList> InitQObjects();

Q_SIGNALS:
    /// The gauge is to be shown. @param max at least 1.
    void presetGauge(int min, int max);
    void UpdateGauge(int value);
    void closeGauge();

private:
    QCoro::Task<bool> InitObject(qint16 object);
    QCoro::Task<bool> InitCounter(qint16 object);
    QCoro::Task<bool> InitPrinter(qint16 object);

    Parts m_parts;
    bool m_isCancelled = false;
};
