#pragma once

#include "platform/Outcome.h"
#include "tests/support/Waiting.h"

#include <string>

/// An outcome in words: "done Information: Set done.", "refused Exclamation: ...", "failed Plain: ", "cancelled".
inline std::string Told(const Outcome& outcome) {
    constexpr const char* Ends[] = {"done", "refused", "failed", "cancelled"};
    constexpr const char* Kinds[] = {"Plain", "Information", "Exclamation", "Critical"};
    const std::string end = Ends[static_cast<int>(outcome.end)];
    if (outcome.end == Outcome::End::Cancelled && outcome.text.isEmpty())
        return end;
    return end + ' ' + Kinds[static_cast<int>(outcome.kind)] + ": " + outcome.text.toStdString();
}

/// Runs the event loop until the operation is done, and puts its outcome in words.
inline std::string Told(QCoro::Task<Outcome>&& operation) {
    return Told(Await(std::move(operation)));
}
