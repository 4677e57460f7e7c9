#pragma once

#include "platform/RegistryStore.h"

/// The operating system's information tool, as the registry names it.
namespace systeminfo {

/// Reads one value as text: a string without its closing zero, a number as the decimal text of its bytes. Other types
/// leave `value` as it was.
/// @return false, with `value` empty, if there is none.
bool GetKeyValue(const RegistryStore& registry, qint32 root, const QString& section, const QString& name,
                 QString& value);

/// Starts the tool. @return false if the registry names none, or it does not start.
bool Start(const RegistryStore& registry);

} // namespace systeminfo
