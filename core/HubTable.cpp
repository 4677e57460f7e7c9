#include "core/HubTable.h"

#include "core/EventLog.h"
#include "core/Installation.h"

void BuildHubTable(model::Installation& installation, EventLog& log) {
    const auto count = static_cast<std::size_t>(installation.NumObjects);
    auto& objects = installation.QObjects;
    // Rows behind the loaded objects too: a stale one must not make anything reachable.
    for (model::HubRow& row : installation.HubTable)
        row.Count = 0;
    for (std::size_t i = 0; i < count; ++i) {
        model::QObject& object = objects[i];
        model::HubRow& row = installation.HubTable[i];
        for (std::size_t j = 0; j < count; ++j) {
            if (object.Type == model::Hub && objects[j].HubId == object.Id) {
                if (row.Count < model::HubMembers) {
                    row.Slots[static_cast<std::size_t>(row.Count++)] = static_cast<qint16>(j);
                } else {
                    log.WriteLog(QStringLiteral("Hub '%1' has more than %2 members, '%3' is not reachable.")
                                     .arg(object.Name)
                                     .arg(model::HubMembers)
                                     .arg(objects[j].Name),
                                 EventLog::Warning);
                }
            } else if (object.Type != model::Hub && object.HubId != 0 && objects[j].Id == object.HubId) {
                object.HubIndex = static_cast<qint16>(j);
            }
        }
    }
    for (qint16 i = 0; i < installation.NumObjects; ++i) {
        if (installation.Object(i).HubId <= 0)
            continue;
        if (const std::optional<model::HubPlace> place = installation.PlaceBehindHub(i))
            installation.Object(i).HubSlot = place->slot;
    }
}
