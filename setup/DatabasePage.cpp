#include "setup/DatabasePage.h"

#include "setup/SetupRecords.h"
#include "setup/ui_DatabasePage.h"
#include "station/Station.h"
#include "widgets/OutcomeBox.h"

#include <QPointer>

#include <algorithm>

namespace {

constexpr int LogFrame = 12; ///< pixels around the lines of the bus

// Places of columns.
constexpr int ServiceName = 1;   ///< in TDBGridQueue
constexpr int ServiceSeries = 4; ///< in TDBGridQueue
constexpr int ServiceId = 9;     ///< in TDBGridQueue
constexpr int ObjectNumber = 1;  ///< in TDBGridDisplay
constexpr int ObjectAddress = 2; ///< in TDBGridDisplay
constexpr int ObjectType = 3;    ///< in TDBGridDisplay
constexpr int ObjectId = 6;      ///< in TDBGridDisplay
constexpr int PairId = 0;        ///< in TDBGridQD
constexpr int PairService = 1;   ///< in TDBGridQD
constexpr int PairCounter = 2;   ///< in TDBGridQD
constexpr int PairServiceId = 4; ///< in TDBGridQD

/// A cell as a number, none for a null.
std::optional<qint32> NumberIn(const DataGrid& grid, int column) {
    bool isNumber = false;
    const qint32 number = grid.CurrentText(column).toInt(&isNumber);
    return isNumber ? std::optional(number) : std::nullopt;
}

QCoro::Task<Outcome> AskAndEmpty(Station& station) {
    const QString question = QStringLiteral("Are you sure You want to delete all database?");
    const bool yes = co_await station.dialogs.AskYesNo(BoxKind::Critical, question);
    if (!yes)
        co_return Outcome::Cancelled();
    co_return co_await station.EmptyStore();
}

} // namespace

DatabasePage::DatabasePage(QWidget* parent)
    : SetupPage(parent)
    , m_ui(std::make_unique<Ui::DatabasePage>()) {
    m_ui->setupUi(this);
    // The objects have more columns than the counters of a service.
    m_ui->splObjects->setSizes({6000, 4000});
    // The bus has two lines; of the rest the objects, of which a hall has most, have the larger part.
    const int lines = 2 * QFontMetrics(m_ui->txtLog1->font()).lineSpacing() + LogFrame;
    m_ui->txtLog1->setMinimumHeight(lines);
    m_ui->splServices->setSizes({2600, 7400, 0});
    m_ui->splServices->setStretchFactor(0, 26);
    m_ui->splServices->setStretchFactor(1, 74);
    m_ui->splServices->setStretchFactor(2, 0);
}

DatabasePage::~DatabasePage() = default;

void DatabasePage::SetUp() {
    m_ui->TDBGridQueue->SetRecords(&Records().rsQueue);
    m_ui->TDBGridQueue->setColumnHidden(ServiceSeries, !TheStation().Settings().MultiTicketSeries);
    m_ui->TDBGridDisplay->SetRecords(&Records().rsDisplay);
    m_ui->TDBGridDisplay->LetRowsBeDragged();
    m_ui->TDBGridQD->SetRecords(&Records().rsQueueDisplay);
    m_ui->TDBGridQD->TakeRowsOf(m_ui->TDBGridDisplay);
    m_ui->TDBGridQD->setSelectionBehavior(QAbstractItemView::SelectRows);

    connect(m_ui->TDBGridQueue, &DataGrid::CurrentRowChanged, this, &DatabasePage::LoadQueueDisplay);
    connect(m_ui->TDBGridQD, &DataGrid::RowDropped, this, &DatabasePage::AddServiceCounter);
    OnClick(m_ui->cmdNew, [this] { AddSelected(); });
    OnClick(m_ui->cmdDelete, [this] { RemoveServiceCounter(); });
    OnClick(m_ui->cmdDelAll, [this] { RemoveServiceCounters(); });
    OnClick(m_ui->cmdTestConnect, [this] { TestConnect(); });
    OnClick(m_ui->cmdRefresh, [this] { Refresh(); });
    OnClick(m_ui->cmdEmpty, [this] { Empty(); });
    connect(m_ui->cmdCheck, &QPushButton::toggled, this, &DatabasePage::CheckWanted);
}

void DatabasePage::AddLog1(const QString& text) {
    m_ui->txtLog1->Add(text);
}

void DatabasePage::ShowCheckOpen(bool open) {
    m_ui->cmdCheck->setChecked(open);
}

void DatabasePage::ShowBusy(bool busy) {
    m_ui->cmdRefresh->setEnabled(!busy);
}

void DatabasePage::Refresh() {
    RefreshModel([this] {
        Records().UpdateAll();
        Records().Requery(Records().rsQueue);
    });
}

void DatabasePage::Empty() {
    ShowOutcome(TheStation().dialogs, AskAndEmpty(TheStation())).then([page = QPointer(this)](const Outcome& outcome) {
        if (!page)
            return;
        if (outcome.IsDone())
            page->Records().directions.Clear();
        page->Records().UpdateAll();
        page->Records().Requery(page->Records().rsQueue);
    });
}

void DatabasePage::TestConnect() {
    // The focus must not wander to a list in which Delete deletes.
    setFocus();
    m_ui->cmdTestConnect->setEnabled(false);
    ShowOutcome(TheStation().dialogs, TheStation().TestConnect(NumberIn(*m_ui->TDBGridDisplay, ObjectNumber),
                                                               NumberIn(*m_ui->TDBGridDisplay, ObjectAddress)))
        .then([page = QPointer(this)](const Outcome&) {
            if (!page)
                return;
            page->m_ui->cmdTestConnect->setEnabled(true);
            if (page->hasFocus())
                page->m_ui->cmdTestConnect->setFocus();
        });
}

void DatabasePage::LoadQueueDisplay() {
    m_ui->lblService->setText(m_ui->TDBGridQueue->CurrentReadable(ServiceName));
    Records().LoadQueueDisplay(m_ui->TDBGridQueue->CurrentNumber(ServiceId));
}

void DatabasePage::AddSelected() {
    if (m_ui->TDBGridDisplay->CurrentNumber(ObjectId) < 1 || m_ui->TDBGridQueue->CurrentNumber(ServiceId) < 1)
        TheStation().dialogs.Warn(QStringLiteral("Must Select Service and Counter in Lists!"));
    else if (m_ui->TDBGridDisplay->BlockRows().size() > 1)
        AddServiceCounters();
    else
        AddServiceCounter();
}

void DatabasePage::AddServiceCounters() {
    const std::vector<qint32> types = m_ui->TDBGridDisplay->BlockNumbers(ObjectType);
    if (std::any_of(types.begin(), types.end(), [](qint32 type) { return type != model::Counter; })) {
        TheStation().dialogs.Warn(QStringLiteral("Could not add this type to service."));
        return;
    }
    const qint32 serviceId = m_ui->TDBGridQueue->CurrentNumber(ServiceId);
    const std::vector<qint32> counters = m_ui->TDBGridDisplay->BlockNumbers(ObjectId);
    const auto add = [this, serviceId, counters]() -> Result<> {
        for (const qint32 counter : counters) {
            // Those that serve it already stay as they are.
            const Result<bool> served = Records().assignments.IsCounterServed(counter, serviceId);
            if (!served)
                return Failure{served.Error()};
            if (*served)
                continue;
            if (Result<> added = Records().assignments.AddServiceCounter(serviceId, counter); !added)
                return added;
        }
        TheStation().NoteStoreChanged();
        return {};
    };
    const QString act =
        tr("%1 counters for %2").arg(counters.size()).arg(m_ui->TDBGridQueue->CurrentReadable(ServiceName));
    Do(act, add, [this] { LoadQueueDisplay(); });
}

void DatabasePage::AddServiceCounter() {
    const qint32 counterId = m_ui->TDBGridDisplay->CurrentNumber(ObjectId);
    // A type that is not set counts as a counter, as it does for the loader.
    if (m_ui->TDBGridDisplay->CurrentNumber(ObjectType) != model::Counter) {
        TheStation().dialogs.Warn(QStringLiteral("Could not add this type to service."));
        return;
    }
    const qint32 serviceId = m_ui->TDBGridQueue->CurrentNumber(ServiceId);
    const Result<bool> served = Records().assignments.IsCounterServed(counterId, serviceId);
    if (!served) {
        TheStation().dialogs.Warn(served.Error());
        return;
    }
    if (*served) {
        TheStation().dialogs.Warn(QStringLiteral("Counter was assigned. "));
        return;
    }
    const auto add = [=, this]() -> Result<> {
        if (counterId < 1 || serviceId < 1)
            return {};
        Result<> added = Records().assignments.AddServiceCounter(serviceId, counterId);
        if (added)
            TheStation().NoteStoreChanged();
        return added;
    };
    Do({}, add, [this] { LoadQueueDisplay(); });
}

void DatabasePage::RemoveServiceCounter() {
    const QString id = m_ui->TDBGridQD->CurrentText(PairId);
    if (id.isEmpty())
        return;
    AskAndDo(
        BoxKind::Plain,
        QStringLiteral("Are you sure to remove counter '%1' from List ?")
            .arg(m_ui->TDBGridQD->CurrentReadable(PairCounter)),
        {}, [this, id] { return Records().assignments.RemoveServiceCounter(id.toInt()); },
        [this] { Records().Requery(Records().rsQueueDisplay); });
}

void DatabasePage::RemoveServiceCounters() {
    const qint32 serviceId = m_ui->TDBGridQD->CurrentNumber(PairServiceId);
    if (serviceId == 0)
        return;
    AskAndDo(
        BoxKind::Plain, QStringLiteral("Are you sure to remove all counter from List ?"),
        tr("remove all counters of %1").arg(m_ui->TDBGridQD->CurrentReadable(PairService)),
        [this, serviceId] { return Records().assignments.RemoveServiceCounters(serviceId); },
        [this] { Records().Requery(Records().rsQueueDisplay); });
}
