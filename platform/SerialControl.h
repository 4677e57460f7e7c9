#pragma once

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QString>

#include <optional>

class QSerialPort;

/// The serial line as the logic needs it: port and settings, open and close, characters in and out.
///
/// The line is opened for this process alone: while it is open no second program can open it through this class.
class SerialControl : public QObject {
    Q_OBJECT

public:
    explicit SerialControl(QObject* parent = nullptr);
    ~SerialControl() override;

    /// Device file of a port name: "COM5" is "/dev/ttyS4", a name that starts with "/" is itself, one that starts with
    /// "tty" lies in /dev. Empty for any other name.
    static QString DeviceOf(const QString& portName);

    struct Port {
        QString name;        ///< as a port name that `DeviceOf` knows, such as "ttyUSB0"
        QString description; ///< of the adapter, may be empty
    };

    /// The serial ports that the machine has now, in the order of their names.
    static QList<Port> AvailablePorts();

    /// Why a line could not be set up or opened, in words for a message box.
    using Error = std::optional<QString>;

    /// Takes port name and settings ("9600,n,8,1": bit/s, no parity, 8 data bits, 1 stop bit) for the next `Open`.
    /// Fails on a name without a device and on settings of another form, and then keeps the former ones.
    Error SetPort(const QString& portName, const QString& settings);

    /// Opens the line. False if the device is missing, refuses or is used by another program; `IsOpen` tells the same.
    bool Open();
    void Close();
    bool IsOpen() const;

    /// Speed in bit/s as of the last `SetPort`.
    qint32 BaudRate() const { return m_baud; }

    /// Takes all characters that have arrived.
    QByteArray TakeAll();

    /// Hands characters to the system, in order behind those that still wait. On failure the description of the error;
    /// what the system does not take at once follows by itself.
    Error Write(QByteArrayView characters);

    /// True when the system holds no character any more that was written (an adapter's own buffer is not seen).
    bool IsOutputSent() const;
    /// Forgets what was written and has not left yet.
    void DropOutput();

Q_SIGNALS:
    /// Characters wait to be taken.
    void CharactersArrived();

    /// The open line went away (adapter pulled, other end gone). It is closed already and can be opened again.
    void LineLost(const QString& reason);
    /// The open line was closed, by `Close` or because it went away.
    void Closed();
    /// Characters that were put on their way could not be written.
    void WriteFailed(const QString& error);

private:
    void OnError(int error, const QString& text);

    QSerialPort* m_port = nullptr;
    QString m_device;
    qint32 m_baud = 0;
};
