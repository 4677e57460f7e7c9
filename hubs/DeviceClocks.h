#pragma once

#include <QByteArray>
#include <QStringList>

#include <qcoro/qcorotask.h>

#include <functional>

class Bus;
class Clock;

namespace model {
enum ObjectType : quint8;
struct Installation;
} // namespace model

/// Small settings that go to every device of one type on the user's order: the clocks of hubs and printers (`U` with
/// the clock text), and the hubs' counter option (`K` with the number of tickets called as a small number).
///
/// All go straight to the device's address; a printer behind a hub is not reached this way. A device that does not
/// answer does not stop the run. Each result names those that did not.
class DeviceClocks {
public:
    /// The references must outlive this object.
    DeviceClocks(Bus& bus, const model::Installation& installation, const Clock& clock);

    /// Called with the name of each device before something is sent to it; false ends the run.
    std::function<bool(const QString&)> OnDevice = [](const QString&) { return true; };

    /// The last run was ended so.
    bool IsStopped() const { return m_isStopped; }

    QCoro::Task<QStringList> SetHubTime();
    QCoro::Task<QStringList> SetAllPrinterTimes();

    /// Sets the clock of one hub or printer. @param object its index in `QObjects`.
    QCoro::Task<bool> SetTime(qint16 object);

    /// @param ticketsCalled 1 to 10.
    QCoro::Task<QStringList> SetHubOption(qint16 ticketsCalled);

private:
    QCoro::Task<QStringList> SendToAll(model::ObjectType type, char letter, QByteArray data);

    Bus& m_bus;
    const model::Installation& m_installation;
    const Clock& m_clock;
    bool m_isStopped = false;
};
