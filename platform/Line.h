#pragma once

#include "platform/Result.h"

#include <QByteArray>
#include <QObject>

/// The line to the devices as the logic needs it: port and settings, open and close, characters in and out. The serial
/// port of the machine is one.
class Line : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    /// Takes port name and settings ("9600,n,8,1": bit/s, no parity, 8 data bits, 1 stop bit) for the next `Open`.
    /// Fails on a name without a device and on settings of another form, and then keeps the former ones.
    virtual Result<> SetPort(const QString& portName, const QString& settings) = 0;

    /// Opens the line for this process alone. False if the device is missing, refuses or is used by another program;
    /// `IsOpen` says the same.
    virtual bool Open() = 0;
    virtual void Close() = 0;
    virtual bool IsOpen() const = 0;

    /// Speed in bit/s as of the last `SetPort`.
    virtual qint32 BaudRate() const = 0;

    /// Takes all characters that have arrived.
    virtual QByteArray TakeAll() = 0;

    /// Hands characters over, in order behind those that still wait; what is not taken at once follows by itself.
    virtual Result<> Write(QByteArrayView characters) = 0;

    /// True when no character that was written waits any more (an adapter's own buffer is not seen).
    virtual bool IsOutputSent() const = 0;
    /// Forgets what was written and has not left yet.
    virtual void DropOutput() = 0;

Q_SIGNALS:
    /// Characters wait to be taken.
    void CharactersArrived();

    /// The open line went away (adapter pulled, other end gone). It is closed already and can be opened again.
    void LineLost(const QString& reason);
    /// The open line was closed, by `Close` or because it went away.
    void Closed();
    /// Characters that were put on their way could not be written.
    void WriteFailed(const QString& error);
};
