#include "setup/HubPage.h"

#include "setup/SetupRecords.h"
#include "setup/ui_HubPage.h"
#include "station/Station.h"

#include <algorithm>

namespace {

constexpr int HubName = 0;    ///< column of TDBGridHUB
constexpr int HubId = 3;      ///< column of TDBGridHUB
constexpr int FreeId = 4;     ///< column of TDBGridCounters
constexpr int MemberName = 0; ///< column of TDBGridHubCounters
constexpr int MemberId = 2;   ///< column of TDBGridHubCounters

} // namespace

HubPage::HubPage(QWidget* parent)
    : SetupPage(parent)
    , m_ui(std::make_unique<Ui::HubPage>()) {
    m_ui->setupUi(this);
}

HubPage::~HubPage() = default;

void HubPage::SetUp() {
    m_ui->TDBGridHUB->SetRecords(&Records().rsHubs);
    m_ui->TDBGridHUB->setColumnHidden(HubId, true);
    m_ui->TDBGridCounters->SetRecords(&Records().rsFreeCounters);
    m_ui->TDBGridCounters->LetRowsBeDragged();
    m_ui->TDBGridHubCounters->SetRecords(&Records().rsHubCounters);
    m_ui->TDBGridHubCounters->setColumnHidden(MemberId, true);
    m_ui->TDBGridHubCounters->TakeRowsOf(m_ui->TDBGridCounters);
    for (DataGrid* grid : {m_ui->TDBGridHUB, m_ui->TDBGridCounters, m_ui->TDBGridHubCounters})
        grid->setSelectionBehavior(QAbstractItemView::SelectRows);

    connect(m_ui->TDBGridHUB, &DataGrid::CurrentRowChanged, this, &HubPage::LoadHubCounters);
    connect(m_ui->TDBGridHubCounters, &DataGrid::RowDropped, this, &HubPage::AddHubCounter);
    OnClick(m_ui->cmdAddCounterToHub, [this] { AddSelected(); });
    OnClick(m_ui->cmdRemCounterFromHub, [this] { RemoveCounter(); });
    OnClick(m_ui->cmdRemAll, [this] { RemoveAll(); });
    OnClick(m_ui->cmdRefreshHub, [this] { Refresh(); });
}

void HubPage::ShowBusy(bool busy) {
    m_ui->cmdRefreshHub->setEnabled(!busy);
}

void HubPage::LoadHubCounters() {
    m_ui->lblHub->setText(m_ui->TDBGridHUB->CurrentReadable(HubName));
    Records().LoadHubCounters(m_ui->TDBGridHUB->CurrentNumber(HubId));
}

void HubPage::AddSelected() {
    if (m_ui->TDBGridCounters->CurrentNumber(FreeId) < 1 || m_ui->TDBGridHUB->CurrentNumber(HubId) < 1)
        TheStation().dialogs.Warn(QStringLiteral("Must Select Service and Counter in Lists!"));
    else
        AddHubCounter();
}

void HubPage::AddHubCounter() {
    const std::vector<qint32> ids = m_ui->TDBGridCounters->BlockNumbers(FreeId);
    const qint32 hubId = m_ui->TDBGridHUB->CurrentNumber(HubId);
    if (hubId < 1 || std::any_of(ids.begin(), ids.end(), [](qint32 id) { return id < 1; }))
        return;
    const auto add = [=, this]() -> Result<> {
        for (const qint32 id : ids) {
            if (Result<> set = Records().assignments.SetHub(id, hubId); !set)
                return set;
        }
        return {};
    };
    const QString act =
        ids.size() > 1 ? tr("%1 devices behind %2").arg(ids.size()).arg(m_ui->lblHub->text()) : QString();
    Do(act, add, [this] {
        Records().Requery(Records().rsFreeCounters);
        LoadHubCounters();
    });
}

void HubPage::RemoveCounter() {
    const qint32 id = m_ui->TDBGridHubCounters->CurrentNumber(MemberId);
    if (id == 0)
        return;
    const QString name = m_ui->TDBGridHubCounters->CurrentReadable(MemberName);
    AskAndDo(
        BoxKind::Plain, QStringLiteral("Are you sure to remove counter '%1' from List ?").arg(name), {},
        [=, this] { return Records().assignments.SetHub(id, 0); },
        [this] {
            Records().Requery(Records().rsHubCounters);
            Records().Requery(Records().rsFreeCounters);
        });
}

void HubPage::RemoveAll() {
    const qint32 hubId = m_ui->TDBGridHUB->CurrentNumber(HubId);
    if (hubId == 0)
        return;
    AskAndDo(
        BoxKind::Plain, QStringLiteral("Are you sure to remove all counter from List ?"),
        tr("remove all counters of %1").arg(m_ui->lblHub->text()),
        [=, this] { return Records().assignments.ClearHub(hubId); },
        [this] {
            Records().Requery(Records().rsHubCounters);
            Records().Requery(Records().rsFreeCounters);
        });
}

void HubPage::Refresh() {
    RefreshModel([this] { Records().RequeryHubs(); });
}
