#pragma once

#include "platform/Result.h"

#include <QString>

class Database;

/// The whole description of an installation on paper, as HTML: services with their counters, objects, scan plan,
/// directions, hubs with their members, each with the number of its rows.
/// @param printed moment that stands under the title.
/// @return what the store said if it cannot be read.
Result<QString> SiteDescription(const Database& database, const QString& printed);
