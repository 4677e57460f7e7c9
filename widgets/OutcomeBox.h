#pragma once

#include "platform/Outcome.h"

/// Waits for an operation that a window has started, and shows in a box over that window what came of it; no box for an
/// empty text.
/// @param dialogs must outlive the operation.
/// @return the same outcome, once the box is closed.
QCoro::Task<Outcome> ShowOutcome(Dialogs& dialogs, QCoro::Task<Outcome> operation);
