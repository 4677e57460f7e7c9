#pragma once

#include "database/LoadRecord.h"
#include "link/ReplyFit.h"

#include <QObject>

#include <functional>
#include <list>

class Bus;
class Clock;

namespace model {
struct Installation;
struct QObject;
} // namespace model

/// An object of the model as the record knows it.
DeviceIdentity IdentityOf(const model::Installation& installation, const model::QObject& object);

/// Sees every load that goes over the line, whoever sends it, and enters it in the record: that it begins before its
/// first frame goes out, and at its end what was sent and answered.
///
/// | kind    | device  | from | frames          | to                                                          |
/// |---------|---------|------|-----------------|-------------------------------------------------------------|
/// | Members | hub     | `W`  |                 |                                                             |
/// | Block   | hub     | `L`  |                 |                                                             |
/// | Tables  | printer | `K`  | `M`             | `N` after the load flag "1", the last row after "!"         |
/// | Form    | printer | `L`  | `O`             | `V`                                                         |
/// | Logos   | printer | `X`  | `Y`             | `Z`                                                         |
/// | Letters | printer | `G`  | `J`             | `T`                                                         |
/// | Clock   | both    | `U`  |                 | to a printer `S` too                                        |
///
/// A printer's reply to `P` is entered if it says something new. Devices that the model does not know, and the
/// broadcasts, which nobody answers, are not entered.
///
/// What stands for the content, and for its hash: the member list and the block without stuffing; of the tables the
/// Button Table without its flag and the rows, in the order of their indexes; of form, logos and letters their bytes;
/// of a clock the distance of local time from UTC, "+07:00".
class LoadWatch : public ::QObject {
    Q_OBJECT

public:
    /// Who loads, for the record.
    struct Origin {
        QString user;
        QString port;
        QString version;
    };

    /// The references must outlive the watch. Enters what is on the line from now on.
    LoadWatch(const Bus& bus, const model::Installation& installation, LoadRecord& record, const Clock& clock);

    /// Who loads now.
    std::function<Origin()> OnOrigin = [] { return Origin(); };
    /// What a content was made from: `LoadEntry::source`.
    std::function<QString(const LoadEntry&)> OnSource = [](const LoadEntry&) { return QString(); };

    /// The operation that sent is over: what has not come to its end by now is cut off.
    void EndAll();

    /// The content of a device's clock.
    static QByteArray ClockContent(const Clock& clock);

Q_SIGNALS:
    /// The record has a new entry.
    void Entered();

private:
    /// A load that is on its way.
    struct Open {
        LoadEntry entry;
        QByteArray head;                  ///< data of the command that began it
        std::map<int, QByteArray> pieces; ///< by row, or in the order in which they came
        std::map<int, bool> own;          ///< by piece, whether the device itself has answered it
        int announced = -1;               ///< rows, or bytes of a form; -1 where nothing is announced
        bool endsWithRows = false;
        bool isWhole = true; ///< of what is no piece everything was answered by the device itself
    };

    /// The command that is on the line.
    struct Command {
        DeviceIdentity device;
        qint32 key = 0;
        QString name;
        char letter = 0;
        QByteArray data;
        QByteArray frame;
        bool isRelayed = false;
        std::optional<LoadKind> kind;
        bool begins = false;
        bool isPiece = false;
        bool isEnd = false;
        int piece = -1; ///< its place among the pieces
    };

    void OnSent(quint8 address, const QByteArray& frame, int attempt);
    void OnTaken(const QByteArray& reply);
    std::optional<Command> CommandOf(quint8 address, const QByteArray& frame) const;
    const model::QObject* DeviceAt(quint8 address) const;
    Open& OpenFor(const Command& command);
    Open* FindOpen(const DeviceIdentity& device, LoadKind kind);
    /// The command has got its answer, or never will.
    void Settle(std::optional<ReplyFit> fit);
    void End(Open& open, bool isCutOff);
    QString WhyNotDone(const Open& open) const;
    void NoteFlags(const QByteArray& content);
    void Enter(LoadEntry entry);

    const model::Installation& m_installation;
    LoadRecord& m_record;
    const Clock& m_clock;
    std::list<Open> m_open;
    std::optional<Command> m_command;
};
