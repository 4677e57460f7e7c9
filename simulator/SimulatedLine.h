#pragma once

#include "platform/Line.h"
#include "simulator/DeviceBus.h"
#include "simulator/Timeline.h"

/// A serial line in simulated time, with all devices of an installation at its other end. Both directions run at the
/// speed of the port.
class SimulatedLine final : public Line, public DeviceBus {
public:
    SimulatedLine(const BusInstallation& installation, Timeline& timeline)
        : DeviceBus(installation)
        , m_timeline(timeline) {}

    /// What goes over the line, as it happens; frames and ACKs of the station one by one.
    std::function<void(const QByteArray& bytes)> OnWritten = [](const QByteArray&) {};
    std::function<void(const QByteArray& bytes)> OnDelivered = [](const QByteArray&) {};

    Result<> SetPort(const QString& portName, const QString& settings) override;
    bool Open() override;
    void Close() override;
    bool IsOpen() const override { return m_isOpen; }
    qint32 BaudRate() const override { return m_baud; }
    QByteArray TakeAll() override { return std::exchange(m_received, {}); }
    Result<> Write(QByteArrayView characters) override;
    bool IsOutputSent() const override { return !m_isBlocked && m_timeline.Now() >= m_outFree; }
    void DropOutput() override { m_blocked.clear(); }

    /// When all that was written has left the machine.
    Timeline::Moment OutputEnd() const { return m_outFree; }

    /// Pulls the adapter out of the machine, and puts it back.
    void Pull() override;
    void Plug() { m_isPlugged = true; }
    /// The line takes characters and lets none out, as under a flow control that nobody asked for.
    void SetBlocked(bool isBlocked);
    bool IsBlocked() const { return m_isBlocked; }
    /// How often it was blocked.
    int Blocks() const { return m_blocks; }

protected:
    void Send(const Answer& answer) override;
    bool IsJoined() const override { return m_isOpen; }

private:
    Timeline::Moment WireTime(qsizetype characters) const;
    void Deliver(Timeline::Moment after, const QByteArray& bytes);
    void Transmit(const QByteArray& bytes);

    Timeline& m_timeline;
    bool m_isPlugged = true;
    bool m_isOpen = false;
    bool m_isBlocked = false;
    int m_blocks = 0;
    qint32 m_baud = 9600;
    quint64 m_session = 0; ///< of openings: what was on its way in an older one is lost
    Timeline::Moment m_outFree{0};
    Timeline::Moment m_inFree{0};
    QByteArray m_received;
    QByteArrayList m_blocked;
};
