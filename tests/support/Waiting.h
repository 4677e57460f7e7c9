#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>

#include <qcoro/qcorotask.h>

#include <optional>

/// Runs the event loop until `condition` holds. @return false if it does not within `milliseconds`.
template <typename Condition>
bool WaitUntil(Condition condition, int milliseconds = 10'000) {
    const QDeadlineTimer deadline(milliseconds);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 20);
    }
    return true;
}

/// Runs the event loop until the operation is done, and gives its result.
template <typename T>
T Await(QCoro::Task<T>&& task) {
    return QCoro::waitFor(std::move(task));
}
