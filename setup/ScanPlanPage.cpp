#include "setup/ScanPlanPage.h"

#include "setup/SetupRecords.h"
#include "setup/ui_ScanPlanPage.h"
#include "station/Station.h"

namespace {

constexpr int ListNumber = 1; ///< column of TDBGridDisplayList
constexpr int ListId = 3;     ///< column of TDBGridDisplayList
constexpr int EntryId = 0;    ///< column of TDBGridPlan

} // namespace

ScanPlanPage::ScanPlanPage(QWidget* parent)
    : SetupPage(parent)
    , m_ui(std::make_unique<Ui::ScanPlanPage>()) {
    m_ui->setupUi(this);
}

ScanPlanPage::~ScanPlanPage() = default;

void ScanPlanPage::SetUp() {
    m_ui->TDBGridDisplayList->SetRecords(&Records().rsDisplayList);
    m_ui->TDBGridDisplayList->setColumnHidden(ListId, true);
    m_ui->TDBGridDisplayList->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_ui->TDBGridPlan->SetRecords(&Records().rsPlanView);

    OnClick(m_ui->cmdPlan_0, [this] { Add(); });
    OnClick(m_ui->cmdPlan_1, [this] { Remove(); });
    OnClick(m_ui->cmdPlan_2, [this] { Clear(); });
    OnClick(m_ui->cmdPlan_3, [this] { Records().RequeryPlan(); });
    OnClick(m_ui->cmdAuto, [this] { BuildAuto(); });
}

void ScanPlanPage::Add() {
    const qint32 id = m_ui->TDBGridDisplayList->CurrentNumber(ListId);
    if (id == 0)
        return;
    const QString number = m_ui->TDBGridDisplayList->CurrentText(ListNumber);
    const QVariant order = number.isEmpty() ? QVariant() : QVariant(number);
    Do(
        {}, [=, this] { return Records().assignments.AddToPlan(id, order); }, [this] { Records().RequeryPlan(); });
}

void ScanPlanPage::Remove() {
    const qint32 id = m_ui->TDBGridPlan->CurrentNumber(EntryId);
    if (id == 0)
        return;
    Do(
        {}, [=, this] { return Records().assignments.RemoveFromPlan(id); }, [this] { Records().RequeryPlan(); });
}

void ScanPlanPage::Clear() {
    const auto clear = [this] {
        return TheStation().Store().IsOpen() ? Records().assignments.ClearPlan() : Result<>();
    };
    AskAndDo(BoxKind::Exclamation, QStringLiteral("Are you sure you want to delete all scan list?"),
             tr("clear the scan plan"), clear, [this] { Records().RequeryPlan(); });
}

void ScanPlanPage::BuildAuto() {
    const auto build = [this]() -> Result<> {
        if (!TheStation().Store().IsOpen())
            return {};
        std::vector<qint32> ids;
        for (int row = 0; row < Records().rsDisplayList.RecordCount(); ++row)
            ids.push_back(Records().rsDisplayList.Key(row).toInt());
        return Records().assignments.BuildPlan(ids);
    };
    AskAndDo(BoxKind::Exclamation, QStringLiteral("This will delete all scan list. Do you want to continue?"),
             tr("build the scan plan"), build, [this] { Records().RequeryPlan(); });
}
