#pragma once

#include "simulator/DeviceHub.h"
#include "simulator/Faults.h"
#include "simulator/FrameDecoder.h"
#include "simulator/SimulatedDevice.h"
#include "simulator/TicketPrinter.h"
#include "simulator/Transcript.h"

#include <QObject>
#include <QTimer>

#include <array>
#include <deque>
#include <memory>
#include <vector>

class QSocketNotifier;

/// A serial bus in software: a pseudo-terminal with all devices of an installation behind it.
///
/// Lives on the event loop. Unpaced, a reply is written in the very turn in which its request was read. Paced, both
/// directions run at the baud rate, ten bits a character: a command is heard when its last character would be through,
/// and no reply character is seen before its time. Times are reckoned on the wire, so that late wake-ups do not add up.
///
/// A command equal to the last one at its address but for the sequence, with no ACK between, is a retry: answered as
/// before, not carried out again.
class SimulatedBus final : public QObject {
    Q_OBJECT

public:
    struct Counters {
        quint64 Commands = 0; ///< frames that came, good or bad
        quint64 Bad = 0;      ///< of these: bad check sum, wrong length, too short
        quint64 Retries = 0;
        quint64 Replies = 0; ///< replies that were sent, damaged ones too
        quint64 Acks = 0;
    };

    explicit SimulatedBus(const BusInstallation& installation, QObject* parent = nullptr);
    ~SimulatedBus() override;

    /// A symbolic link to the slave side, made by `Open` and removed by `HangUp`. Call before `Open`.
    void SetLinkPath(const QString& path) { m_linkPath = path; }
    /// Bits per second of both directions; 0 for no pacing. Takes effect with the next character.
    void SetBaudRate(int baudRate);
    /// Restarts the dice. Makes exactly the addresses of `Silent` silent.
    void SetFaults(const FaultSettings& settings);
    /// @return false if no device has this address.
    bool SetSilent(int address, bool silent);

    /// Opens the pseudo-terminal, again after a `HangUp`; the slave may then have another name.
    /// @return what failed, empty on success.
    QString Open();
    /// Closes the master side, as a pulled adapter does. The devices keep what they hold.
    void HangUp();
    bool IsOpen() const { return m_master >= 0; }
    /// The device name for the station, such as "/dev/pts/3"; empty while closed.
    QString SlavePath() const { return m_slavePath; }

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

    /// What each device holds now.
    QString Summary() const;

Q_SIGNALS:
    /// The closing `N` of a load has reached a printer.
    void PrinterLoaded(int address);
    /// A printer has printed the last of its `PrintedTickets`.
    void TicketPrinted(int address);
    void HungUp();

private:
    struct Incoming {
        qint64 due;
        QByteArray bytes;
    };
    struct Outgoing {
        qint64 start; ///< monotonic nanoseconds
        qint64 gap;   ///< nanoseconds a character, 0 for all at once
        qint64 burst; ///< characters may be handed over together within this time
        QByteArray bytes;
        qsizetype sent = 0;
    };
    struct LastCommand {
        QByteArray content; ///< all but sequence and check sum
        QByteArray reply;
        quint64 ackCount = 0;
    };

    void ReadLine();
    void Queue(const QByteArray& bytes);
    void Pump();
    void ArmTimer();
    /// @return the moment of the next character to write, 0 if there is none.
    qint64 WriteDue(qint64 now);
    void HandleCommand(const FrameDecoder::Command& command);
    void Broadcast(const FrameDecoder::Command& command);
    /// The content of the reply, or silence; tells by `retry` whether the command was carried out before.
    SimulatedDevice::Answer Ask(const FrameDecoder::Command& command, bool& retry);
    void SendReply(const FrameDecoder::Command& command, const QByteArray& content, const Faults::Plan& plan,
                   const QString& who, const QString& what);
    void WaitForSlave();
    void Forget();

    std::vector<std::unique_ptr<SimulatedDevice>> m_devices;
    std::array<SimulatedDevice*, 256> m_byAddress{};
    std::array<LastCommand, 256> m_last;
    FrameDecoder m_decoder;
    Faults m_faults;
    Transcript m_transcript;
    Counters m_counters;

    QString m_linkPath;
    QString m_slavePath;
    int m_master = -1;
    QSocketNotifier* m_readable = nullptr;
    QTimer m_slaveWatch;

    qint64 m_characterTime = 0; ///< nanoseconds, 0 for no pacing
    qint64 m_wireTime = 0;      ///< moment on the wire of what is handled now
    qint64 m_inFree = 0;        ///< when the line towards the devices is free again
    qint64 m_outFree = 0;
    std::deque<Incoming> m_incoming;
    std::deque<Outgoing> m_outgoing;
    int m_timer = -1;
    QSocketNotifier* m_timerNotifier = nullptr;
};
