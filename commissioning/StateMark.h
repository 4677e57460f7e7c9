#pragma once

#include "station/HallState.h"
#include "widgets/StepMark.h"

/// The picture of a state; none where there is nothing to hold.
inline std::optional<StepMark> MarkOf(StepState state) {
    switch (state) {
    case StepState::Nothing:
        return std::nullopt;
    case StepState::InStep:
        return StepMark::Good;
    case StepState::NotAsked:
        return StepMark::Doubtful;
    case StepState::Changed:
        return StepMark::Behind;
    case StepState::NeverLoaded:
        return StepMark::Missing;
    case StepState::Failed:
        break;
    }
    return StepMark::Bad;
}

inline QIcon StateMark(StepState state) {
    const std::optional<StepMark> mark = MarkOf(state);
    return mark ? MarkIcon(*mark) : QIcon();
}
