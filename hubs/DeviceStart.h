#pragma once

#include "link/Bus.h"

#include <functional>

class Clock;
class HubRouter;
struct Options;

namespace model {
struct Installation;
}

/// Gives single devices their first state: clock, number or text.
///
/// Each operation takes an object's index, sends one command (0.8 s, one try), and tells the object map what was sent,
/// whether or not the device answered. The result is true if it did.
class DeviceStart : public QObject {
    Q_OBJECT

public:
    /// The references must outlive this object.
    DeviceStart(Bus& bus, HubRouter& router, const model::Installation& installation, const Options& options,
                const Clock& clock, QObject* parent = nullptr);

    /// `S` with the time text, to a counter.
    QCoro::Task<bool> CounterTime(qint16 object);
    /// `S` with the clock text, to a printer.
    QCoro::Task<bool> PrinterTime(qint16 object);
    /// `S` without data, to an information display.
    QCoro::Task<bool> DisplayQuery(qint16 object);

    /// `H` with the display text of a number, to a counter. @param number 0 for none.
    QCoro::Task<bool> SetCounterNumber(qint16 object, qint16 number);

    /// `H` with "1", the counter's place in its hub's list and the text, to the hub of a counter. Nothing is sent, and
    /// the result is false, if the hub does not list it. @param text "----" goes out in place of an empty one.
    QCoro::Task<bool> SetHubCounterNumber(qint16 object, QByteArray text);

    /// `H` with "0000" and the text, to an information display. @param text fillers for every line go out in place of
    /// an empty one.
    QCoro::Task<bool> SetInfoText(qint16 object, QByteArray text);

    /// Resets all devices with `R` and the clock text, then sets the clocks of counters and printers and asks the
    /// displays, in object order. The answer to `R` does not count.
    /// @param isCancelled asked after each object whether to stop there.
    QCoro::Task<bool> BroadcastResetAndTime(std::function<bool()> isCancelled);

    /// Sends `R` with the clock text to all devices.
    QCoro::Task<> BroadcastReset();

Q_SIGNALS:
    /// What an object shows now. @param type of the object; `number` of a counter or printer, `text` of a display.
    void UpdateObjectDisplay(qint16 object, int type, qint32 number, const QByteArray& text);

private:
    QCoro::Task<bool> Send(qint16 object, char letter, QByteArray data);
    QByteArray EmptyInfoText() const;

    Bus& m_bus;
    HubRouter& m_router;
    const model::Installation& m_installation;
    const Options& m_options;
    const Clock& m_clock;
};
