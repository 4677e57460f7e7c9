#pragma once

#include <qcoro/qcorotask.h>

class Clock;
class Dialogs;
class Sqlite;

/// Waits for a store that another program holds, without holding up the windows.
namespace StoreWait {

/// Waits until the file can be read, at most 25 seconds, under a box from which the user can end the wait. Ends at once
/// if nobody holds it. All must outlive the wait.
/// @return whether the file can be read now.
QCoro::Task<bool> UntilFree(const Sqlite& file, Dialogs& dialogs, Clock& clock);

} // namespace StoreWait
