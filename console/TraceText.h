#pragma once

#include "link/BusTrace.h"

#include <QString>

#include <optional>

namespace model {
struct Installation;
}

/// The frames of the line in words: what the bus monitor shows, filters and saves.
class TraceText {
public:
    /// The columns of a row.
    enum Column { Time, Direction, Address, Object, Sequence, Command, Meaning, Data, Result, RoundTrip, Columns };

    /// The references must outlive this.
    TraceText(const BusTrace& trace, const model::Installation& installation);

    static QString Title(int column);
    /// What stands in a column of a row. @param serial of a row that is there.
    QString Text(quint64 serial, int column) const;

    /// Something went wrong at the row: a repeated try, no answer, a bad check sum, a frame that nobody asked for, an
    /// answer to something else.
    bool IsMarked(quint64 serial) const;

    /// Bus address of the device that the row is about: of the device behind the hub for a relay.
    quint8 DeviceAddress(quint64 serial) const;
    /// The letter of the command that the row is about, of the relayed one for a relay.
    char Letter(quint64 serial) const;

private:
    /// What a row tells once its frame is read.
    struct Reading {
        quint8 address = 0;    ///< on the bus
        quint8 device = 0;     ///< behind the hub for a relay, otherwise `address`
        char letter = 0;       ///< of the command
        char deviceLetter = 0; ///< that the device gets
        bool isRelay = false;
        QByteArray data; ///< of the command, or the content of a reply
    };

    Reading Read(quint64 serial) const;
    /// What stands in a frame itself; a frame that is too short is all data.
    static Reading ReadFrame(const QByteArray& frame);
    Reading ReadRequest(const QByteArray& frame) const;
    QString ObjectName(const Reading& reading) const;
    QString MeaningOf(const Reading& reading) const;
    static QString ResultOf(const TraceRow& row);

    const BusTrace& m_trace;
    const model::Installation& m_installation;
};

/// Bytes for reading: printable characters as they stand, all others in hexadecimal between angle brackets.
QString Readable(QByteArrayView bytes);
