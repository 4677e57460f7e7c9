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
    for (std::size_t i = 0; i < count; ++i) {
        model::QObject& object = objects[i];
        if (object.HubId <= 0)
            continue;
        const model::HubRow& row = installation.HubTable[static_cast<std::size_t>(object.HubIndex)];
        for (qint16 slot = 0; slot < row.Count; ++slot) {
            if (row.Slots[static_cast<std::size_t>(slot)] == static_cast<qint16>(i))
                object.HubSlot = slot;
        }
    }
}
