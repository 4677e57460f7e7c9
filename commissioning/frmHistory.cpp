#include "commissioning/frmHistory.h"

#include "commissioning/SaveTable.h"
#include "commissioning/ui_frmHistory.h"
#include "platform/Dialogs.h"
#include "station/Station.h"
#include "widgets/OutcomeBox.h"

#include <QLocale>
#include <QPointer>
#include <QStandardItemModel>
#include <QTimer>

#include <set>

namespace {

constexpr int MostEvents = 20'000;
constexpr int RefreshTime = 300;        ///< milliseconds
constexpr int MostDetails = 500;        ///< lines
constexpr int EventRole = Qt::UserRole; ///< index in the events
constexpr int DayLength = 10;           ///< characters of "yyyy-MM-dd"
enum Column { When, What, Where, Who, Columns };

QString NameOf(SiteEvent::Kind kind) {
    switch (kind) {
    case SiteEvent::Kind::Edit:
        return frmHistory::tr("Edits");
    case SiteEvent::Kind::Load:
        return frmHistory::tr("Loads");
    case SiteEvent::Kind::Copy:
        break;
    }
    return frmHistory::tr("Copies of the database");
}

QCoro::Task<Outcome> AskAndGoBack(Station& station, SiteEvent event, QString question) {
    const bool yes = co_await station.dialogs.AskYesNo(BoxKind::Exclamation, question);
    if (!yes)
        co_return Outcome::Cancelled();
    co_return co_await station.GoBackTo(event);
}

} // namespace

frmHistory::frmHistory(Station& station)
    : m_station(station)
    , m_ui(std::make_unique<Ui::frmHistory>())
    , m_model(new QStandardItemModel(this)) {
    m_ui->setupUi(this);
    setAttribute(Qt::WA_DeleteOnClose);
    m_ui->treEvents->setModel(m_model);
    m_ui->splHistory->setSizes({3000, 1000});
    m_ui->cboKind->addItem(tr("Everything"), -1);
    for (const SiteEvent::Kind kind : {SiteEvent::Kind::Edit, SiteEvent::Kind::Load, SiteEvent::Kind::Copy})
        m_ui->cboKind->addItem(NameOf(kind), static_cast<int>(kind));
    connect(m_ui->cboKind, &QComboBox::currentIndexChanged, this, &frmHistory::ShowEvents);
    connect(m_ui->cboPlace, &QComboBox::currentIndexChanged, this, &frmHistory::ShowEvents);
    connect(m_ui->treEvents->selectionModel(), &QItemSelectionModel::currentChanged, this, &frmHistory::ShowDetails);
    connect(m_ui->cmdGoBack, &QPushButton::clicked, this, &frmHistory::GoBack);
    connect(m_ui->cmdRecord, &QPushButton::clicked, this, &frmHistory::RecordWanted);
    connect(m_ui->cmdSaveCsv, &QPushButton::clicked, this, [this] { SaveAsCsv(m_station, *m_model); });
    auto* refresh = new QTimer(this);
    refresh->setSingleShot(true);
    refresh->setInterval(RefreshTime);
    connect(refresh, &QTimer::timeout, this, &frmHistory::Refresh);
    const auto later = [refresh] {
        if (!refresh->isActive())
            refresh->start();
    };
    connect(&m_station, &Station::EditsChanged, this, later);
    connect(&m_station, &Station::HallChanged, this, later);
    Refresh();
}

frmHistory::~frmHistory() = default;

void frmHistory::Refresh() {
    const std::optional<SiteEvent> chosen = Chosen();
    Result<std::vector<SiteEvent>> events = m_station.History().Read(MostEvents);
    QStringList texts;
    if (events) {
        m_events = std::move(*events);
        texts += m_events.size() < MostEvents ? tr("%Ln event(s).", nullptr, static_cast<int>(m_events.size()))
                                              : tr("The newest %L1 events.").arg(MostEvents);
    } else {
        texts += events.Error();
    }
    if (const QString& fault = m_station.Store().History().Fault(); !fault.isEmpty())
        texts += tr("Edits are not written down: %1").arg(fault);
    if (const QString& fault = m_station.Record().Fault(); !fault.isEmpty())
        texts += tr("Loads are not recorded: %1").arg(fault);
    m_ui->lblCount->setText(texts.join(u' '));
    ListPlaces();
    ShowEventsAt(chosen);
}

void frmHistory::ListPlaces() {
    std::set<QString> places;
    for (const SiteEvent& event : m_events)
        places.insert(event.where.begin(), event.where.end());
    const QString chosen = m_ui->cboPlace->currentText();
    const QSignalBlocker quiet(m_ui->cboPlace);
    m_ui->cboPlace->clear();
    m_ui->cboPlace->addItem(tr("All tables and devices"), QString());
    for (const QString& place : places)
        m_ui->cboPlace->addItem(place, place);
    m_ui->cboPlace->setCurrentIndex(std::max(0, m_ui->cboPlace->findText(chosen)));
}

void frmHistory::ShowEvents() {
    ShowEventsAt(Chosen());
}

void frmHistory::ShowEventsAt(const std::optional<SiteEvent>& chosen) {
    const int kind = m_ui->cboKind->currentData().toInt();
    const QString place = m_ui->cboPlace->currentData().toString();
    m_model->clear();
    m_model->setHorizontalHeaderLabels({tr("When"), tr("What"), tr("Where"), tr("Who")});
    QStandardItem* day = nullptr;
    QModelIndex current;
    for (std::size_t i = 0; i < m_events.size(); ++i) {
        const SiteEvent& event = m_events[i];
        if ((kind >= 0 && kind != static_cast<int>(event.kind)) || (!place.isEmpty() && !event.where.contains(place)))
            continue;
        const QString date = event.moment.left(DayLength);
        if (!day || day->data(EventRole).toString() != date) {
            const QDate shown = QDate::fromString(date, Qt::ISODate);
            day = new QStandardItem(QLocale().toString(shown, QStringLiteral("dddd ")) + date);
            day->setData(date, EventRole);
            QFont bold = font();
            bold.setBold(true);
            day->setFont(bold);
            m_model->appendRow(day);
        }
        QList<QStandardItem*> row{new QStandardItem(event.moment.mid(DayLength + 1)), new QStandardItem(event.what),
                                  new QStandardItem(event.where.join(QStringLiteral(", "))),
                                  new QStandardItem(event.user)};
        row[When]->setData(static_cast<int>(i), EventRole);
        for (QStandardItem* cell : std::as_const(row)) {
            cell->setToolTip(cell->text());
            QFont shown = font();
            shown.setBold(event.isBad);
            cell->setFont(shown);
        }
        day->appendRow(row);
        if (chosen && chosen->kind == event.kind && chosen->act == event.act && chosen->path == event.path &&
            chosen->moment == event.moment)
            current = row[When]->index();
    }
    QTreeView& tree = *m_ui->treEvents;
    for (int i = 0; i < m_model->rowCount(); ++i)
        tree.setFirstColumnSpanned(i, {}, true);
    tree.expandAll();
    const int letter = fontMetrics().averageCharWidth();
    const int widths[Columns] = {20, 80, 28, 14};
    for (int column = 0; column < Columns; ++column)
        tree.setColumnWidth(column, widths[column] * letter);
    if (current.isValid())
        tree.setCurrentIndex(current);
    ShowDetails();
}

std::optional<SiteEvent> frmHistory::Chosen() const {
    const QModelIndex current = m_ui->treEvents->currentIndex();
    if (!current.parent().isValid())
        return std::nullopt;
    const auto index = static_cast<std::size_t>(current.siblingAtColumn(When).data(EventRole).toInt());
    return index < m_events.size() ? std::optional(m_events[index]) : std::nullopt;
}

void frmHistory::ShowDetails() {
    const std::optional<SiteEvent> event = Chosen();
    m_ui->cmdGoBack->setEnabled(event && event->kind != SiteEvent::Kind::Load);
    m_ui->cmdGoBack->setText(event && event->kind == SiteEvent::Kind::Copy ? tr("&Go Back to This Copy...")
                                                                           : tr("&Go Back to Before This..."));
    if (!event) {
        m_ui->txtDetails->setPlainText(tr("Choose a line to see what was changed."));
        return;
    }
    const Result<QStringList> details = m_station.History().Details(*event);
    QStringList lines;
    if (event->kind == SiteEvent::Kind::Copy)
        lines += details && details->isEmpty() ? tr("The description is the same as in this copy.")
                                               : tr("Going back to this copy would do this:");
    if (details)
        lines += *details;
    else
        lines += details.Error();
    if (lines.size() > MostDetails) {
        const auto more = lines.size() - MostDetails;
        lines.resize(MostDetails);
        lines += tr("and %L1 more").arg(more);
    }
    m_ui->txtDetails->setPlainText(lines.join(u'\n'));
}

void frmHistory::GoBack() {
    const std::optional<SiteEvent> event = Chosen();
    if (!event)
        return;
    const QString question =
        event->kind == SiteEvent::Kind::Copy
            ? tr("Make services, objects, assignments, scan plan and directions what they were in the copy of %1?")
                  .arg(event->moment)
            : tr("Take this and everything that was edited after it back?\n\n%1, %2").arg(event->moment, event->what);
    const QString note = tr("It can be undone. Tickets and devices stay as they are.");
    m_ui->cmdGoBack->setEnabled(false);
    ShowOutcome(m_station.dialogs, AskAndGoBack(m_station, *event, question + QStringLiteral("\n\n") + note))
        .then([window = QPointer(this)](const Outcome&) {
            if (window)
                window->Refresh();
        });
}
