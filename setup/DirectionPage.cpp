#include "setup/DirectionPage.h"

#include "setup/SetupRecords.h"
#include "setup/ui_DirectionPage.h"
#include "station/Station.h"
#include "widgets/FrozenColumn.h"
#include "widgets/OutcomeBox.h"

#include <QPointer>

namespace {

QCoro::Task<Answer> AskToStore(Dialogs& dialogs) {
    const QString question = QStringLiteral("The directions were changed but not stored. Store them now?");
    const Answer answer = co_await dialogs.AskYesNoCancel(BoxKind::Exclamation, question);
    co_return answer;
}

} // namespace

DirectionPage::DirectionPage(QWidget* parent)
    : SetupPage(parent)
    , m_ui(std::make_unique<Ui::DirectionPage>()) {
    m_ui->setupUi(this);
}

DirectionPage::~DirectionPage() = default;

void DirectionPage::SetUp() {
    m_ui->TDBGrid1->SetRecords(&Records().directions);
    m_ui->TDBGrid1->OpenListsByClick();
    new FrozenColumn(*m_ui->TDBGrid1);
    connect(&Records().directions, &GridModel::RecordsChanged, this, &DirectionPage::ShowUnstored);
    connect(&Records().directions, &GridModel::modelReset, this, &DirectionPage::ShowUnstored);
    OnClick(m_ui->cmdUpdate, [this] { Update(); });
    OnClick(m_ui->cmdReloadDir, [this] { Reload(); });
    ShowUnstored();
}

void DirectionPage::ShowBusy(bool busy) {
    m_ui->cmdReloadDir->setEnabled(!busy);
}

void DirectionPage::LoadDirectionGrid() {
    Records().LoadDirectionGrid();
}

void DirectionPage::ShowUnstored() {
    m_ui->lblUnstored->setVisible(Records().directions.IsChanged());
}

Outcome DirectionPage::UpdateDataDir() {
    Outcome stored = TheStation().StoreDirections(Records().directions);
    if (stored.IsDone()) {
        ShowUnstored();
        Records().NoteChange();
    }
    return stored;
}

void DirectionPage::Update() {
    const Outcome stored = UpdateDataDir();
    TheStation().dialogs.ShowMessage(stored.kind, stored.text);
}

void DirectionPage::Reload() {
    SettleUnstored([page = QPointer(this)](bool settled) {
        if (!settled || !page)
            return;
        Dialogs& dialogs = page->TheStation().dialogs;
        ShowOutcome(dialogs, page->TheStation().ReloadDirections()).then([page](const Outcome&) {
            if (page)
                page->LoadDirectionGrid();
        });
    });
}

void DirectionPage::SettleUnstored(const std::function<void(bool)>& done) {
    if (!Records().directions.IsChanged()) {
        done(true);
        return;
    }
    AskToStore(TheStation().dialogs).then([page = QPointer(this), done](Answer answer) {
        if (!page)
            return;
        if (answer == Answer::Cancel) {
            done(false);
            return;
        }
        if (answer == Answer::No) {
            page->Records().directions.Clear();
            page->LoadDirectionGrid();
        }
        const Outcome stored = answer == Answer::Yes ? page->UpdateDataDir() : Outcome::Done();
        if (!stored.IsDone())
            page->TheStation().dialogs.Warn(stored.text);
        done(stored.IsDone());
    });
}
