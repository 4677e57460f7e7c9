#pragma once

#include "simulator/DeviceBus.h"

#include <QObject>
#include <QTimer>

#include <deque>

class QSocketNotifier;

/// A serial bus in software: the devices of an installation behind a pseudo-terminal.
///
/// Lives on the event loop. Unpaced, a reply is written in the very turn in which its request was read. Paced, both
/// directions run at the baud rate, ten bits a character: a command is heard when its last character would be through,
/// and no reply character is seen before its time. Times are reckoned on the wire, so that late wake-ups do not add up.
class SimulatedBus final : public QObject, public DeviceBus {
    Q_OBJECT

public:
    explicit SimulatedBus(const BusInstallation& installation, QObject* parent = nullptr);
    ~SimulatedBus() override;

    /// A symbolic link to the slave side, made by `Open` and removed by `HangUp`. Call before `Open`.
    void SetLinkPath(const QString& path) { m_linkPath = path; }
    /// Bits per second of both directions; 0 for no pacing. Takes effect with the next character.
    void SetBaudRate(int baudRate);
    /// Opens the pseudo-terminal, again after a `HangUp`; the slave may then have another name.
    /// @return what failed, empty on success.
    QString Open();
    /// Closes the master side, as a pulled adapter does. The devices keep what they hold.
    void HangUp();
    bool IsOpen() const { return m_master >= 0; }
    /// The device name for the station, such as "/dev/pts/3"; empty while closed.
    QString SlavePath() const { return m_slavePath; }

Q_SIGNALS:
    /// The closing `N` of a load has reached a printer.
    void PrinterLoaded(int address);
    /// A printer has printed the last of its `PrintedTickets`.
    void TicketPrinted(int address);
    void HungUp();

protected:
    void Send(const Answer& answer) override;
    void Pull() override { HangUp(); }
    bool IsJoined() const override { return IsOpen(); }
    void NoteLoaded(int address) override { Q_EMIT PrinterLoaded(address); }
    void NotePrinted(int address) override { Q_EMIT TicketPrinted(address); }

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

    void ReadLine();
    void Queue(const QByteArray& bytes);
    void Pump();
    void ArmTimer();
    /// @return the moment of the next character to write, 0 if there is none.
    qint64 WriteDue(qint64 now);
    void WaitForSlave();
    void Forget();

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
