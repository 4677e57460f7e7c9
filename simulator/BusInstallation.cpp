#include "simulator/BusInstallation.h"

#include "link/Encodings.h"
#include "link/Frames.h"

#include <QFile>
#include <QRegularExpression>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QUuid>

#include <map>

namespace {

constexpr DeviceClass Classes[] = {DeviceClass::Counter, DeviceClass::Printer, DeviceClass::Display, DeviceClass::Hub,
                                   DeviceClass::PowerUnit};
constexpr int HighestAddress = encoding::LargestSmallNumber;

/// An address that one character can carry, and not that of the broadcast.
bool IsDeviceAddress(int address) {
    return address >= 0 && address <= HighestAddress && address != frames::Broadcast;
}

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

std::optional<BusInstallation> BusInstallation::Read(const QString& path, QString& problem) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        problem = QStringLiteral("%1: %2").arg(path, file.errorString());
        return std::nullopt;
    }
    const QByteArray start = file.peek(16);
    if (start == QByteArray("SQLite format 3", 16))
        return ReadDatabase(path, problem);
    if (start.contains('\0')) {
        problem = QStringLiteral("%1: neither a station database nor a text file").arg(path);
        return std::nullopt;
    }
    return Parse(QString::fromUtf8(file.readAll()), path, problem);
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
        if (!match.captured(4).isEmpty()) {
            const int hub = match.captured(4).toInt();
            hubLines.emplace(hub, where);
            device.Hub = static_cast<quint8>(std::min(hub, 255));
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

std::optional<BusInstallation> BusInstallation::ReadDatabase(const QString& path, QString& problem) {
    const QString connection = QUuid::createUuid().toString();
    std::optional<BusInstallation> result = BusInstallation();
    {
        QSqlDatabase store = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), connection);
        store.setDatabaseName(path);
        store.setConnectOptions(QStringLiteral("QSQLITE_OPEN_READONLY"));
        QSqlQuery query(store);
        std::vector<std::pair<qint64, qint64>> hubIds; // of each device: its `d_Id` and that of its hub
        bool good = store.open();
        if (good) {
            query = QSqlQuery(store);
            good = query.exec(QStringLiteral("SELECT d_Id, d_Number, d_Address, d_Name, d_Type, d_HubId FROM Display "
                                             "WHERE d_On <> 0 ORDER BY d_Id"));
        }
        if (!good) {
            const QString text = query.lastError().isValid() ? query.lastError().text() : store.lastError().text();
            problem = QStringLiteral("%1: %2").arg(path, text);
        }
        while (good && query.next()) {
            const QString where = QStringLiteral("%1, table Display, row %2").arg(path, query.value(0).toString());
            bool reads = false;
            const int address = query.value(2).toInt(&reads);
            const int type = query.value(4).toInt();
            QString fault;
            if (!reads || query.value(2).isNull() || !IsDeviceAddress(address)) {
                fault = QStringLiteral("%1: no device can have address %2").arg(where, query.value(2).toString());
            } else if (type < 0 || type > static_cast<int>(DeviceClass::Hub)) {
                fault = QStringLiteral("%1: d_Type %2 is no class of device").arg(where).arg(type);
            } else {
                BusDevice device;
                device.Class = static_cast<DeviceClass>(type);
                device.Address = static_cast<quint8>(address);
                device.Number = query.value(1).toInt();
                device.Name = query.value(3).toString();
                if (result->Add(device, where, fault))
                    hubIds.emplace_back(query.value(0).toLongLong(), query.value(5).toLongLong());
            }
            if (!fault.isEmpty())
                result->m_notes += fault;
        }
        for (size_t i = 0; good && i < hubIds.size(); ++i) {
            BusDevice& device = result->m_devices[i];
            if (hubIds[i].second == 0 || device.Class == DeviceClass::Hub)
                continue;
            device.Detached = true;
            for (size_t j = 0; j < hubIds.size(); ++j) {
                if (hubIds[j].first == hubIds[i].second && result->m_devices[j].Class == DeviceClass::Hub) {
                    device.Hub = result->m_devices[j].Address;
                    device.Detached = false;
                }
            }
        }
        if (!good)
            result.reset();
    }
    QSqlDatabase::removeDatabase(connection);
    return result;
}
