#pragma once

#include <QByteArray>

#include <array>

/// What the printer puts in place of the fields `$VAR(n)` of a form: by n, in VNI. A field without a value prints
/// nothing.
using TicketValues = std::array<QByteArray, 8>;
