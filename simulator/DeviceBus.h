#pragma once

#include "simulator/DeviceHub.h"
#include "simulator/Faults.h"
#include "simulator/FrameDecoder.h"
#include "simulator/SimulatedDevice.h"
#include "simulator/TicketPrinter.h"
#include "simulator/Transcript.h"

#include <array>
#include <memory>
#include <vector>

/// All devices of an installation on one line: bytes in, and what comes back. Knows no time and no terminal; whoever
/// derives from it carries the bytes.
///
/// A command equal to the last one at its address but for the sequence, with no ACK between, is a retry: answered as
/// before, not carried out again.
class DeviceBus {
public:
    struct Counters {
        quint64 Commands = 0; ///< frames that came, good or bad
        quint64 Bad = 0;      ///< of these: bad check sum, wrong length, too short
        quint64 Retries = 0;
        quint64 Replies = 0; ///< replies that were sent, damaged ones too
        quint64 Acks = 0;
    };

    explicit DeviceBus(const BusInstallation& installation);
    virtual ~DeviceBus() = default;
    DeviceBus(const DeviceBus&) = delete;
    DeviceBus& operator=(const DeviceBus&) = delete;

    /// Restarts the dice. Makes exactly the addresses of `Silent` silent.
    void SetFaults(const FaultSettings& settings);
    /// @return false if no device has this address.
    bool SetSilent(int address, bool silent);
    /// The device was off and on: it has lost its clock and what was just being sent to it.
    /// @return false if no device has this address.
    bool PowerCycle(int address);

    Transcript& Log() { return m_transcript; }
    const Counters& Counts() const { return m_counters; }

    const std::vector<std::unique_ptr<SimulatedDevice>>& Devices() const { return m_devices; }
    /// Null if no device has this address.
    SimulatedDevice* Find(int address) const;
    /// The device of that address if it is of class `T`, else null.
    template <typename T>
    T* FindAs(int address) const {
        return dynamic_cast<T*>(Find(address));
    }

    /// What each device holds now, in lines to read.
    QString Summary() const;
    /// The same for programs: `{"devices": [...]}`, each with "class", "address", "number", "name", and what its class
    /// holds. Bytes are hexadecimal, texts Unicode as far as Latin-1 goes.
    QJsonObject State() const;

protected:
    /// What goes back to the master.
    struct Answer {
        QByteArray bytes;
        int lateMilliseconds = 0;
        bool isSliced = false; ///< byte by byte
        bool isEcho = false;   ///< was on the wire while it was sent, so it takes no time of its own
    };

    /// Bytes of the master, in any slicing.
    void Hear(QByteArrayView bytes);
    /// Forgets a command that has come in part.
    void ForgetUnfinished() { m_decoder.Reset(); }

    virtual void Send(const Answer& answer) = 0;
    /// The adapter is pulled, as the faults' `HangUpAfter` tells.
    virtual void Pull() = 0;
    /// False once it was pulled: what had come before has not come any more.
    virtual bool IsJoined() const = 0;
    /// The closing `N` of a load has reached a printer.
    virtual void NoteLoaded(int address) { Q_UNUSED(address) }
    /// A printer has printed the last of its `PrintedTickets`.
    virtual void NotePrinted(int address) { Q_UNUSED(address) }

private:
    struct LastCommand {
        QByteArray content; ///< all but sequence and check sum
        QByteArray reply;
        quint64 ackCount = 0;
    };

    void HandleCommand(const FrameDecoder::Command& command);
    void Broadcast(const FrameDecoder::Command& command);
    /// The content of the reply, or silence; tells by `retry` whether the command was carried out before.
    SimulatedDevice::Answer Ask(const FrameDecoder::Command& command, bool& retry);
    void SendReply(const FrameDecoder::Command& command, const QByteArray& content, const Faults::Plan& plan,
                   const QString& who, const QString& what);
    /// The address in the head of a reply: another device's if the plan says so.
    quint8 HeadOf(const FrameDecoder::Command& command, const Faults::Plan& plan) const;

    std::vector<std::unique_ptr<SimulatedDevice>> m_devices;
    std::array<SimulatedDevice*, 256> m_byAddress{};
    std::array<LastCommand, 256> m_last;
    FrameDecoder m_decoder;
    Faults m_faults;
    Transcript m_transcript;
    Counters m_counters;
};
