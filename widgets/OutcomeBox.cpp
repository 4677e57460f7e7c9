#include "widgets/OutcomeBox.h"

#include "platform/Ended.h"

QCoro::Task<Outcome> ShowOutcome(Dialogs& dialogs, QCoro::Task<Outcome> operation) {
    Outcome outcome = Outcome::Cancelled();
    const QPointer<QObject> place = dialogs.Place();
    try {
        outcome = co_await operation;
        if (!outcome.text.isEmpty()) {
            dialogs.PlaceNext(place);
            co_await dialogs.ShowMessage(outcome.kind, outcome.text);
        }
    } catch (const Ended&) {
        outcome = Outcome::Cancelled();
    }
    co_return outcome;
}
