#include "widgets/OutcomeBox.h"

QCoro::Task<Outcome> ShowOutcome(Dialogs& dialogs, QCoro::Task<Outcome> operation) {
    Outcome outcome = co_await std::move(operation);
    if (!outcome.text.isEmpty())
        co_await dialogs.ShowMessage(outcome.kind, outcome.text);
    co_return outcome;
}
