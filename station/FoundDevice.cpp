#include "station/FoundDevice.h"

#include "database/Database.h"
#include "database/Schema.h"
#include "station/Inquiry.h"
#include "tickets/VniText.h"

#include <QCoreApplication>

namespace {

constexpr int LargestNumber = 255;

QString Said(const char* text) {
    return QCoreApplication::translate("FoundDevice", text);
}

QString TypeName(model::ObjectType type) {
    switch (type) {
    case model::Counter:
        return QStringLiteral("Counter");
    case model::Printer:
        return QStringLiteral("Printer");
    case model::Display:
        return QStringLiteral("Display");
    case model::Hub:
        break;
    }
    return QStringLiteral("Hub");
}

/// What stands against the device in the store; the numbers that are taken go to `numbers`.
Result<> Look(const Database& database, const FoundDevice& device, std::set<int>& numbers) {
    Result<QSqlQuery> rows =
        database.Select({QStringLiteral("SELECT d_Id, d_Number, d_Address, d_Name, d_On, d_Type FROM Display")});
    if (!rows)
        return Failure{rows.Error()};
    bool isHubThere = device.hubId == 0;
    while (rows->next()) {
        const bool isActive = rows->value(4).toInt() != 0;
        numbers.insert(rows->value(1).toInt());
        isHubThere |= rows->value(0).toInt() == device.hubId && rows->value(5).toInt() == model::Hub;
        if (isActive && !rows->value(2).isNull() && rows->value(2).toInt() == device.address) {
            return Failure{Said(QT_TRANSLATE_NOOP("FoundDevice", "Address %1 is already that of \"%2\"."))
                               .arg(device.address)
                               .arg(vni::ToUnicode(rows->value(3).toString()))};
        }
    }
    if (!isHubThere)
        return Failure{Said(QT_TRANSLATE_NOOP("FoundDevice", "The hub is no longer in the database."))};
    return {};
}

} // namespace

Result<QString> AddFoundDevice(Database& database, const FoundDevice& device) {
    if (!Inquiry::IsDeviceAddress(device.address))
        return Failure{Said(QT_TRANSLATE_NOOP("FoundDevice", "No device can have address %1.")).arg(device.address)};
    if (device.type == model::Hub && device.hubId != 0)
        return Failure{Said(QT_TRANSLATE_NOOP("FoundDevice", "A hub cannot stand behind a hub."))};
    const QString name = TypeName(device.type) + u' ' + QString::number(device.address);
    const Result<> added = database.Edit({}, [&]() -> Result<> {
        std::set<int> numbers;
        if (Result<> looked = Look(database, device, numbers); !looked)
            return looked;
        int number = 1;
        while (numbers.contains(number))
            ++number;
        if (number > LargestNumber)
            return Failure{Said(QT_TRANSLATE_NOOP("FoundDevice", "All numbers from 1 to 255 are taken."))};
        return database.Run({QStringLiteral("INSERT INTO Display (d_Number, d_Address, d_Name, d_On, d_Type, d_HubId) "
                                            "VALUES (?, ?, ?, 1, ?, ?)"),
                             {number, device.address, name, static_cast<int>(device.type), device.hubId}});
    });
    if (!added)
        return Failure{schema::ReadableError(added.Error())};
    return name;
}
