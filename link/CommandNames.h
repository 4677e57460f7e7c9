#pragma once

#include "core/Installation.h"

#include <QString>

#include <optional>

/// What the command letters mean, for people who watch the line.
namespace commands {

/// The meaning of a letter at a device of `type`; of an unknown type (a power unit, an address that no object has)
/// what the test console sends there. Empty for a letter that the class of device does not have.
QString Meaning(std::optional<model::ObjectType> type, char letter);

/// The meaning of a letter in a broadcast.
QString BroadcastMeaning(char letter);

/// What a relay (`N` to a hub, with a device's address, a letter and data) is for: the part behind the letter N.
struct Relayed {
    quint8 address; ///< of the device behind the hub
    char letter;
    QByteArray data;
};

/// @param data of a command `N` to a hub. Nothing if it is too short for a relay.
std::optional<Relayed> ReadRelay(const QByteArray& data);

} // namespace commands
