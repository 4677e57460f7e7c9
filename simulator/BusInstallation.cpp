#include "simulator/BusInstallation.h"

#include "link/Encodings.h"
#include "link/Frames.h"

#include <QRegularExpression>

#include <map>

namespace {

constexpr DeviceClass Classes[] = {DeviceClass::Counter, DeviceClass::Printer, DeviceClass::Display, DeviceClass::Hub,
                                   DeviceClass::PowerUnit};
constexpr int HighestAddress = encoding::LargestSmallNumber;

const BusDevice* FindHub(const std::vector<BusDevice>& devices, int address) {
    for (const BusDevice& device : devices) {
        if (device.Class == DeviceClass::Hub && device.Address == address)
            return &device;
    }
    return nullptr;
}

} // namespace

QString DeviceClassName(DeviceClass deviceClass) {
    switch (deviceClass) {
    case DeviceClass::Counter:
        return QStringLiteral("counter");
    case DeviceClass::Printer:
        return QStringLiteral("printer");
    case DeviceClass::Display:
        return QStringLiteral("display");
    case DeviceClass::Hub:
        return QStringLiteral("hub");
    case DeviceClass::PowerUnit:
        break;
    }
    return QStringLiteral("power");
}

bool BusInstallation::IsDeviceAddress(int address) {
    return address >= 0 && address <= HighestAddress && address != frames::Broadcast;
}

bool BusInstallation::Add(const BusDevice& device, const QString& where, QString& problem) {
    for (const BusDevice& other : m_devices) {
        if (other.Address == device.Address) {
            problem = QStringLiteral("%1: address %2 is already that of \"%3\"")
                          .arg(where)
                          .arg(device.Address)
                          .arg(other.Name);
            return false;
        }
    }
    m_devices.push_back(device);
    return true;
}

std::optional<BusInstallation> BusInstallation::Parse(const QString& text, const QString& source, QString& problem) {
    static const QRegularExpression shape(
        QStringLiteral("^(\\w+)\\s+(\\d+)\\s+(\\d+)(?:\\s+hub=(\\d+))?(?:\\s+(.*))?$"));
    BusInstallation installation;
    std::map<int, QString> hubLines;
    int number = 0;
    for (const QString& raw : text.split(u'\n')) {
        ++number;
        const QString line = raw.trimmed();
        if (line.isEmpty() || line.startsWith(u'#'))
            continue;
        const QString where = QStringLiteral("%1:%2").arg(source).arg(number);
        const QRegularExpressionMatch match = shape.match(line);
        if (!match.hasMatch()) {
            problem = where + QStringLiteral(": expected CLASS ADDRESS NUMBER [hub=ADDRESS] NAME");
            return std::nullopt;
        }
        BusDevice device;
        bool known = false;
        for (const DeviceClass candidate : Classes) {
            if (DeviceClassName(candidate) == match.captured(1)) {
                device.Class = candidate;
                known = true;
            }
        }
        if (!known) {
            problem = QStringLiteral("%1: unknown class \"%2\"").arg(where, match.captured(1));
            return std::nullopt;
        }
        bool addressReads = false;
        bool numberReads = false;
        const int address = match.captured(2).toInt(&addressReads);
        device.Number = match.captured(3).toInt(&numberReads);
        if (!addressReads || !IsDeviceAddress(address) || !numberReads) {
            problem = QStringLiteral("%1: address must be 0 to %2 but not %3, number a whole number")
                          .arg(where)
                          .arg(HighestAddress)
                          .arg(frames::Broadcast);
            return std::nullopt;
        }
        device.Address = static_cast<quint8>(address);
        device.Name = match.captured(5);
        if (const QString digits = match.captured(4); !digits.isEmpty()) {
            bool hubReads = false;
            const int hub = digits.toInt(&hubReads);
            if (!hubReads || !IsDeviceAddress(hub)) {
                problem = QStringLiteral("%1: there is no hub at address %2").arg(where, digits);
                return std::nullopt;
            }
            hubLines.emplace(hub, where);
            device.Hub = static_cast<quint8>(hub);
        }
        if (!installation.Add(device, where, problem))
            return std::nullopt;
    }
    for (const auto& [hub, where] : hubLines) {
        if (FindHub(installation.m_devices, hub) == nullptr) {
            problem = QStringLiteral("%1: there is no hub at address %2").arg(where).arg(hub);
            return std::nullopt;
        }
    }
    return installation;
}
