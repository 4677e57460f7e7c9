#pragma once

#include "core/Installation.h"

#include <QObject>
#include <QStringList>

#include <qcoro/qcorotask.h>

#include <optional>

class Station;
struct Reply;
enum class BoxKind;

/// The bench on which single devices are exercised: each operation sends one command and shows in a box what came back.
///
/// Addresses come as typed: the number that the text begins with, 0 if there is none. One that no byte holds gives
/// "Invalid address." and nothing is sent. Hubs come as object indexes; -1 gives "No hub selected.".
class TestConsole : public ::QObject {
    Q_OBJECT

public:
    /// @param station must outlive the console.
    explicit TestConsole(Station& station);

    /// `P`; shows "Addr #", the address, and the reply or that it fails.
    QCoro::Task<> TestConnection(QString address);

    /// `Q` with the number 456, to a counter.
    QCoro::Task<> GetKey(QString address);
    /// `H` with the number 123, to a counter.
    QCoro::Task<> Display(QString address);

    /// `P`, to a printer; shows the six flags of its status.
    QCoro::Task<> PrinterStatus(QString address);
    /// `W`, to a printer.
    QCoro::Task<> PrintTest(QString address);
    /// `S` with the clock text, to a printer.
    QCoro::Task<> ResetPrinter(QString address);

    /// `Q` with the next numbers of all services that have a series of their own, to a printer. A ticket that it has
    /// printed is counted in the model.
    QCoro::Task<> QueryTicket(QString address);

    /// Offers a ticket to a printer with `Q`, every 2 seconds, until `CancelPoll`. The number offered goes up with
    /// each ticket taken, from 32767 back to 1.
    QCoro::Task<> PoolTicket(QString address);
    void CancelPoll() { m_pollCancel = true; }
    /// A new console window begins at ticket 1.
    void RestartPollTickets() { m_pollTicket = 1; }

    /// `H` with "0001" and the fill character for every place of an information display.
    QCoro::Task<> SetInfo(QString address, QString fill);

    /// `G` with "77" or `T` with "68", to a power unit.
    QCoro::Task<> SwitchPower(QString address, bool on);

    /// `P`, to a hub; shown like `TestConnection`.
    QCoro::Task<> TestHub(qint16 hub);
    /// `Z`, to a hub.
    QCoro::Task<> DumpHub(qint16 hub);
    /// `Q`, to a hub, 1.2 s.
    QCoro::Task<> QueryHub(qint16 hub);
    /// `Y` with the number of a member, to a hub.
    QCoro::Task<> TestSub(qint16 hub, QString sub);
    /// `H` with the text of a member and four digits of a number, to a typed address.
    QCoro::Task<> ShowAtSub(QString address, QString sub, QString value);
    /// `X` with the text of a member, to address 0.
    QCoro::Task<> QuerySub(QString sub);
    /// `W` with two members, to address 64.
    QCoro::Task<> SetTwoMembers();

    /// `U` and `R` with the clock text, to all devices.
    QCoro::Task<> BroadcastClock();
    QCoro::Task<> BroadcastReset();

    /// Asks for a password, which has no effect.
    QCoro::Task<> AskPassword();

    /// The six lines of a printer's status, each ended by CR and LF.
    static QString StatusText(const Reply& reply);

Q_SIGNALS:
    /// A result for the list of tickets: the number, with "*" behind it if it was taken.
    void TicketListed(const QString& text);

private:
    QCoro::Task<std::optional<quint8>> AddressOf(QString text);
    QCoro::Task<std::optional<quint8>> HubAddress(qint16 hub);
    QCoro::Task<> ShowConnection(quint8 address);
    QCoro::Task<> ShowShort(QString address, char letter, QByteArray data);
    QCoro::Task<> ShowSub(quint8 address, char letter, QByteArray data, QString sub);
    QCoro::Task<> Tell(BoxKind kind, QString text);
    QByteArray NextNumbers() const;
    void CountTicket(int serviceIndex);

    Station& m_station;
    bool m_pollCancel = false;
    int m_pollRun = 0; ///< the poll that was begun last; an older one ends
    qint16 m_pollTicket = 1;
};
