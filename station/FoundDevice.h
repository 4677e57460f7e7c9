#pragma once

#include "core/Installation.h"
#include "platform/Result.h"

class Database;

/// A device that was found on the bus and is to be in the store.
struct FoundDevice {
    quint8 address = 0;
    model::ObjectType type = model::Counter;
    qint32 hubId = 0; ///< `d_Id` of the hub it stands behind, 0 for none
};

/// Adds a row for the device to table Display, active, named after type and address ("Printer 33"), with the lowest
/// number of 1 to 255 that no row has.
/// @return the name; a failure for a user to read if no device can have the address, an active row has it, the hub is
/// none, all numbers are taken, or the store refuses.
Result<QString> AddFoundDevice(Database& database, const FoundDevice& device);
