#include "simulator/BusInstallation.h"

#include <QFile>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QUuid>

#include <utility>

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
