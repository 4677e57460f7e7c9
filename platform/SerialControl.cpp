#include "platform/SerialControl.h"

#include <QRegularExpression>
#include <QSerialPort>
#include <QSerialPortInfo>

#include <algorithm>

#include <cerrno>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

SerialControl::SerialControl(QObject* parent)
    : Line(parent)
    , m_port(new QSerialPort(this)) {
    connect(m_port, &QSerialPort::readyRead, this, &SerialControl::CharactersArrived);
    // The port must not be closed from within its own notification, and a later error must not hide this one.
    connect(m_port, &QSerialPort::errorOccurred, this, [this](QSerialPort::SerialPortError error) {
        const QString text = m_port->errorString();
        QMetaObject::invokeMethod(
            this, [this, error, text] { OnError(error, text); }, Qt::QueuedConnection);
    });
}

SerialControl::~SerialControl() {
    m_port->disconnect(this);
    m_port->close();
}

QString SerialControl::DeviceOf(const QString& portName) {
    const QString name = portName.trimmed();
    if (name.startsWith(u'/'))
        return name;
    if (name.startsWith(u"tty"))
        return QStringLiteral("/dev/") + name;
    if (name.startsWith(u"COM", Qt::CaseInsensitive)) {
        bool isNumber = false;
        const int number = QStringView(name).mid(3).toInt(&isNumber);
        if (isNumber && number >= 1)
            return QStringLiteral("/dev/ttyS%1").arg(number - 1);
    }
    return {};
}

QList<SerialControl::Port> SerialControl::AvailablePorts() {
    QList<Port> ports;
    for (const QSerialPortInfo& info : QSerialPortInfo::availablePorts()) {
        const QStringList words{info.description(), info.manufacturer(), info.serialNumber()};
        ports.append(
            {info.portName(), words.filter(QRegularExpression(QStringLiteral("."))).join(QStringLiteral(", "))});
    }
    std::sort(ports.begin(), ports.end(), [](const Port& a, const Port& b) { return a.name < b.name; });
    return ports;
}

Result<> SerialControl::SetPort(const QString& portName, const QString& settings) {
    const QString device = DeviceOf(portName);
    if (device.isEmpty())
        return Failure{QStringLiteral("\"%1\" is no port name (COM1, ttyUSB0, /dev/...).").arg(portName)};
    const QStringList fields = settings.split(u',');
    bool isNumber = false;
    const qint32 baud = fields.first().toInt(&isNumber);
    if (!isNumber || baud <= 0)
        return Failure{QStringLiteral("\"%1\" is no speed in bit/s.").arg(fields.first())};
    if (fields.mid(1) != QStringList{QStringLiteral("n"), QStringLiteral("8"), QStringLiteral("1")})
        return Failure{QStringLiteral("Line settings \"%1\" are not supported.").arg(settings)};
    m_device = device;
    m_baud = baud;
    return {};
}

bool SerialControl::Open() {
    if (m_port->isOpen())
        return true;
    m_port->setPortName(m_device);
    m_port->setBaudRate(m_baud);
    m_port->setDataBits(QSerialPort::Data8);
    m_port->setParity(QSerialPort::NoParity);
    m_port->setStopBits(QSerialPort::OneStop);
    m_port->setFlowControl(QSerialPort::NoFlowControl);
    if (!m_port->open(QIODevice::ReadWrite))
        return false;
    // The driver's exclusive mode does not hold against the super-user; a lock on the device file does.
    if (::flock(m_port->handle(), LOCK_EX | LOCK_NB) != 0) {
        m_port->close();
        return false;
    }
    return true;
}

void SerialControl::Close() {
    if (!m_port->isOpen())
        return;
    m_port->close();
    Q_EMIT Closed();
}

bool SerialControl::IsOpen() const {
    return m_port->isOpen();
}

QByteArray SerialControl::TakeAll() {
    // At once in the size that there is: every answer comes this way.
    return m_port->read(m_port->bytesAvailable());
}

Result<> SerialControl::Write(QByteArrayView characters) {
    if (!m_port->isOpen())
        return Failure{QStringLiteral("The line is closed.")};
    // Straight to the system: the port's own buffer costs several turns of the event loop.
    if (m_port->bytesToWrite() == 0 && !characters.isEmpty()) {
        const ssize_t written = ::write(m_port->handle(), characters.data(), static_cast<size_t>(characters.size()));
        if (written < 0 && errno != EAGAIN && errno != EINTR)
            return Failure{qt_error_string(errno)};
        characters = characters.sliced(std::max<qsizetype>(written, 0));
    }
    if (characters.isEmpty() || m_port->write(characters.data(), characters.size()) == characters.size())
        return {};
    return Failure{m_port->errorString()};
}

bool SerialControl::IsOutputSent() const {
    if (!m_port->isOpen())
        return true;
    if (m_port->bytesToWrite() > 0)
        return false;
    int waiting = 0;
    return ::ioctl(m_port->handle(), TIOCOUTQ, &waiting) != 0 || waiting == 0;
}

void SerialControl::DropOutput() {
    if (m_port->isOpen())
        m_port->clear(QSerialPort::Output);
}

void SerialControl::OnError(int error, const QString& text) {
    // A failed open reports here too, when there is no line to lose.
    if (!m_port->isOpen())
        return;
    switch (error) {
    case QSerialPort::ResourceError:
    case QSerialPort::ReadError:
    case QSerialPort::DeviceNotFoundError:
    case QSerialPort::PermissionError:
        Close();
        Q_EMIT LineLost(text);
        return;
    case QSerialPort::WriteError:
        DropOutput();
        Q_EMIT WriteFailed(text);
        return;
    default:
        return;
    }
}
