#pragma once

class EventLog;

namespace model {
struct Installation;
}

/// Fills `HubTable`, `HubIndex` and `HubSlot` from the `HubId` links of the loaded objects. A row takes the first 16
/// members in object order; each further one is logged by name as a warning and is not reachable. Rows of objects that
/// are no hubs are emptied; `HubIndex` of an object whose hub is not loaded stays as it was.
void BuildHubTable(model::Installation& installation, EventLog& log);
