#pragma once

#include <QObject>
#include <QStringList>

#include <qcoro/qcorotask.h>

class Station;

/// The initialization run: brings every device of the installation into a known state, in object order.
///
/// Counters get the number of their last ticket, printers their clock and, with the option SendConfigOnStart, tables
/// and the form of Ticket.bin, displays an empty text, hubs their member list.
class InitRun : public QObject {
    Q_OBJECT

public:
    /// @param station owns the run.
    explicit InitRun(Station& station);

    /// Set to end a run, and the reset of all devices, after the object that is at work. Nothing but the start of the
    /// program clears it.
    bool CancelInit = false;

    /// Names of the counters, printers and displays that did not answer in the last run, and which of them stand behind
    /// a hub.
    QStringList Silent;

    /// Runs over all objects, and starts the system at the end unless it is cancelled. Takes at least 2.25 s, 0.1 s an
    /// object, and 1.5 s more a printer.
    /// @return true if every counter, printer and display answered.
    QCoro::Task<bool> InitQObjects();

Q_SIGNALS:
    /// The gauge is to be shown. @param max at least 1.
    void presetGauge(int min, int max);
    void UpdateGauge(int value);
    void closeGauge();

private:
    QCoro::Task<bool> InitCounter(qint16 object);
    QCoro::Task<bool> InitPrinter(qint16 object);

    Station& m_station;
};
