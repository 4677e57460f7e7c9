#pragma once

#include <QElapsedTimer>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <limits>

/// Seconds that `work` takes: the best of `rounds`.
inline double BestSeconds(int rounds, const std::function<void()>& work) {
    double best = std::numeric_limits<double>::max();
    for (int round = 0; round < rounds; ++round) {
        QElapsedTimer timer;
        timer.start();
        work();
        best = std::min(best, static_cast<double>(timer.nsecsElapsed()) / 1e9);
    }
    return best;
}

/// One line of the report: what was measured, its value, the yardstick's value, and the ratio of both.
inline void Report(const char* what, double value, const char* unit, const char* yardstick, double yardstickValue) {
    std::printf("%-58s %12.2f %-4s  %s: %.2f %s, ratio %.3f\n", what, value, unit, yardstick, yardstickValue, unit,
                value / yardstickValue);
    std::fflush(stdout);
}
