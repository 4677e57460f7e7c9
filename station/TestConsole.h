#pragma once

#include "platform/Outcome.h"

#include <QObject>

#include <optional>

class Bus;
class Clock;
struct Options;
struct Reply;

namespace model {
struct Installation;
}

/// The bench on which single devices are exercised: each operation sends one command, and its outcome's text says what
/// came back. All may run beside any other operation.
///
/// Addresses come as typed: the number that the text begins with, 0 if there is none. One that no byte holds is refused
/// with "Invalid address.". Hubs come as object indexes; -1 is refused with "No hub selected.".
class TestConsole : public ::QObject {
    Q_OBJECT

public:
    /// The references must outlive the console.
    TestConsole(Bus& bus, model::Installation& installation, const Options& options, Clock& clock, Dialogs& dialogs);

    /// `P`; shows "Addr #", the address, and the reply or that it fails.
    QCoro::Task<Outcome> TestConnection(QString address);

    /// `Q` with the number 456, to a counter.
    QCoro::Task<Outcome> GetKey(QString address);
    /// `H` with the number 123, to a counter.
    QCoro::Task<Outcome> Display(QString address);

    /// `P`, to a printer; shows the six flags of its status.
    QCoro::Task<Outcome> PrinterStatus(QString address);
    /// `W`, to a printer.
    QCoro::Task<Outcome> PrintTest(QString address);
    /// `S` with the clock text, to a printer.
    QCoro::Task<Outcome> ResetPrinter(QString address);

    /// `Q` with the next numbers of all services that have a series of their own, to a printer. A ticket that it has
    /// printed is counted in the model.
    QCoro::Task<Outcome> QueryTicket(QString address);

    /// Offers a ticket to a printer with `Q`, every 2 seconds, until `CancelPoll`. The number offered goes up with
    /// each ticket taken, from 32767 back to 1.
    QCoro::Task<Outcome> PoolTicket(QString address);
    void CancelPoll() { m_pollCancel = true; }
    /// A new console window begins at ticket 1.
    void RestartPollTickets() { m_pollTicket = 1; }

    /// `H` with "0001" and the fill character for every place of an information display.
    QCoro::Task<Outcome> SetInfo(QString address, QString fill);

    /// `G` with "77" or `T` with "68", to a power unit.
    QCoro::Task<Outcome> SwitchPower(QString address, bool on);

    /// `P`, to a hub; shown like `TestConnection`.
    QCoro::Task<Outcome> TestHub(qint16 hub);
    /// `Z`, to a hub.
    QCoro::Task<Outcome> DumpHub(qint16 hub);
    /// `Q`, to a hub, 1.2 s.
    QCoro::Task<Outcome> QueryHub(qint16 hub);
    /// `Y` with the number of a member, to a hub.
    QCoro::Task<Outcome> TestSub(qint16 hub, QString sub);
    /// `H` with the text of a member and four digits of a number, to a typed address.
    QCoro::Task<Outcome> ShowAtSub(QString address, QString sub, QString value);
    /// `X` with the text of a member, to address 0.
    QCoro::Task<Outcome> QuerySub(QString sub);
    /// `W` with two members, to address 64.
    QCoro::Task<Outcome> SetTwoMembers();

    /// `U` and `R` with the clock text, to all devices.
    QCoro::Task<Outcome> BroadcastClock();
    QCoro::Task<Outcome> BroadcastReset();

    /// Asks for a password, which has no effect.
    QCoro::Task<Outcome> AskPassword();

    /// The six lines of a printer's status, each ended by CR and LF.
    static QString StatusText(const Reply& reply);

Q_SIGNALS:
    /// A result for the list of tickets: the number, with "*" behind it if it was taken.
    void TicketListed(const QString& text);

private:
    QCoro::Task<Outcome> ShowConnection(quint8 address);
    QCoro::Task<Outcome> ShowShort(QString address, char letter, QByteArray data);
    QCoro::Task<Outcome> ShowSub(quint8 address, char letter, QByteArray data, QString sub);
    /// Sends a command whose answer nobody looks at.
    QCoro::Task<Outcome> SendOnly(std::optional<quint8> address, char letter, QByteArray data);
    std::optional<quint8> HubAddress(qint16 hub) const;
    QByteArray NextNumbers() const;
    void CountTicket(qint16 serviceIndex);

    Bus& m_bus;
    model::Installation& m_installation;
    const Options& m_options;
    Clock& m_clock;
    Dialogs& m_dialogs;
    bool m_pollCancel = false;
    int m_pollRun = 0; ///< the poll that was begun last; an older one ends
    qint16 m_pollTicket = 1;
};
