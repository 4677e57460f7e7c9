#pragma once

#include "platform/Line.h"

#include <QList>

class QSerialPort;

/// A serial port of the machine as the line.
class SerialControl : public Line {
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

    Result<> SetPort(const QString& portName, const QString& settings) override;
    bool Open() override;
    void Close() override;
    bool IsOpen() const override;
    qint32 BaudRate() const override { return m_baud; }
    QByteArray TakeAll() override;
    Result<> Write(QByteArrayView characters) override;
    bool IsOutputSent() const override;
    void DropOutput() override;

private:
    void OnError(int error, const QString& text);

    QSerialPort* m_port = nullptr;
    QString m_device;
    qint32 m_baud = 0;
};
