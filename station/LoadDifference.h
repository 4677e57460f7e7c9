#pragma once

#include "database/LoadRecord.h"

/// What is different between what a device was given and what it would be given now, in words for a user: "2 services
/// renamed, 1 key changed". Both contents as `LoadWatch` describes them; for what is neither the words are general.
QString DifferenceOf(LoadKind kind, const QByteArray& before, const QByteArray& now);
