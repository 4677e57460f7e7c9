#include "setup/SetupPage.h"

#include "setup/SetupRecords.h"
#include "station/Station.h"
#include "widgets/DataGrid.h"
#include "widgets/OutcomeBox.h"

#include <QPointer>
#include <QPushButton>

namespace {

QCoro::Task<bool> AskWith(Dialogs& dialogs, BoxKind kind, QString question) {
    const bool yes = co_await dialogs.AskYesNo(kind, question);
    co_return yes;
}

} // namespace

void SetupPage::Use(Station& station, SetupRecords& records) {
    m_station = &station;
    m_records = &records;
    SetUp();
}

void SetupPage::OnClick(QPushButton* button, const std::function<void()>& action) {
    connect(button, &QPushButton::clicked, this, [this, action] {
        if (DataGrid::CommitAll(*window()))
            action();
    });
}

void SetupPage::Do(const QString& act, const Change& change, const Show& show) {
    Database& store = m_station->Store();
    const Result<> done = store.IsOpen() ? store.Edit(act, change) : change();
    show();
    m_records->NoteChange();
    if (!done)
        m_station->dialogs.Warn(done.Error());
}

void SetupPage::RefreshModel(const Show& show) {
    ShowOutcome(m_station->dialogs, m_station->RefreshModel())
        .then([page = QPointer(this), show](const Outcome& outcome) {
            // Of a store that is open and yet was not read nothing can be shown, list by list, without waiting for it.
            const bool isUnread = outcome.end == Outcome::End::Failed || outcome.end == Outcome::End::Cancelled;
            if (page && !(isUnread && page->m_station->Store().IsOpen()))
                show();
        });
}

void SetupPage::AskAndDo(BoxKind kind, const QString& question, const QString& act, const Change& change,
                         const Show& show) {
    AskWith(m_station->dialogs, kind, question).then([page = QPointer(this), act, change, show](bool yes) {
        if (yes && page)
            page->Do(act, change, show);
    });
}
