#include "database/StoreWait.h"

#include "database/Sqlite.h"
#include "platform/Clock.h"
#include "platform/Dialogs.h"

QCoro::Task<bool> StoreWait::UntilFree(const Sqlite& file, Dialogs& dialogs, Clock& clock) {
    constexpr int Longest = 25'000; // milliseconds
    constexpr qint16 Step = 250;    // milliseconds
    if (!file.IsInUse())
        co_return true;
    const QString text = QStringLiteral("The database is in use by another program");
    const std::unique_ptr<ProgressBox> box = dialogs.ShowProgress(text);
    for (int waited = 0; waited < Longest && !box->IsCancelled(); waited += Step) {
        box->Show(text, waited, Longest);
        co_await clock.DelayMilliseconds(Step);
        if (!file.IsInUse())
            co_return true;
    }
    co_return false;
}
