// The File menu of the setup window.

#include "platform/Dialogs.h"
#include "platform/WholeFile.h"
#include "setup/frmNewFrom.h"
#include "setup/frmQueue.h"
#include "setup/ui_frmQueue.h"
#include "station/SiteDescription.h"
#include "station/Station.h"
#include "widgets/DataGrid.h"
#include "widgets/OutcomeBox.h"
#include "widgets/PdfText.h"

#include <QDir>
#include <QFileInfo>
#include <QPointer>
#include <QSettings>

namespace {

constexpr qsizetype MostRecent = 8;
const QString StoreFilter = QStringLiteral("Harbinet Access Database *.mdb|*.mdb");
const QString RecentKey = QStringLiteral("Recent/Stores");

} // namespace

void frmQueue::SetUpFileMenu() {
    connect(m_ui->mnNew, &QAction::triggered, this, &frmQueue::NewStore);
    connect(m_ui->mnNewFrom, &QAction::triggered, this, &frmQueue::NewStoreFrom);
    connect(m_ui->mnOpen, &QAction::triggered, this, [this] {
        m_station.dialogs.ChooseFile(StoreFilter, m_station.Store().Path())
            .then([window = QPointer(this)](const QString& path) {
                if (window && !path.isEmpty())
                    window->OpenStore(path);
            });
    });
    connect(m_ui->mnDescription, &QAction::triggered, this, &frmQueue::SaveDescription);
    connect(m_ui->mnRecent, &QMenu::aboutToShow, this, &frmQueue::ListRecent);
    const QString path = m_station.Store().Path();
    if (path.isEmpty())
        return;
    const QFileInfo file(path);
    setWindowTitle(file.isWritable() ? tr("%1 - %2").arg(windowTitle(), file.fileName())
                                     : tr("%1 - %2 (read only)").arg(windowTitle(), file.fileName()));
    QSettings places(PlacesFile(), QSettings::IniFormat);
    QStringList recent = places.value(RecentKey).toStringList();
    recent.removeAll(file.absoluteFilePath());
    recent.prepend(file.absoluteFilePath());
    places.setValue(RecentKey, recent.first(std::min(recent.size(), MostRecent)));
}

void frmQueue::ListRecent() {
    QMenu& menu = *m_ui->mnRecent;
    menu.clear();
    const QStringList recent = QSettings(PlacesFile(), QSettings::IniFormat).value(RecentKey).toStringList();
    for (const QString& path : recent) {
        if (path == QFileInfo(m_station.Store().Path()).absoluteFilePath())
            continue;
        QString text = QDir::toNativeSeparators(path);
        QAction* const action = menu.addAction(text.replace(u'&', QStringLiteral("&&")));
        action->setEnabled(QFileInfo::exists(path) && !m_isBusy);
        connect(action, &QAction::triggered, this, [this, path] { OpenStore(path); });
    }
    if (menu.isEmpty())
        menu.addAction(tr("none yet"))->setEnabled(false);
}

void frmQueue::OpenStore(const QString& path) {
    // What cannot be opened must not end the program on this one.
    ShowOutcome(m_station.dialogs, m_station.PrepareStore(path))
        .then([window = QPointer(this), path](const Outcome& prepared) {
            if (!window || !prepared.IsDone())
                return;
            window->m_nextStore = path;
            Q_EMIT window->LeaveWanted();
        });
}

void frmQueue::OfferStore(const QString& path, const QString& text) {
    m_station.dialogs.AskYesNo(BoxKind::Information, text + u'\n' + tr("Open it now?"))
        .then([window = QPointer(this), path](bool yes) {
            if (window && yes)
                window->OpenStore(path);
        });
}

void frmQueue::NewStore() {
    m_station.dialogs.ChooseSaveFile(StoreFilter, m_station.ProgramFolder)
        .then([window = QPointer(this)](const QString& path) {
            if (!window || path.isEmpty())
                return;
            const Result<> made = Database::CreateEmpty(path);
            if (made)
                window->OfferStore(path, tr("%1 is made.").arg(path));
            else
                window->m_station.dialogs.Warn(made.Error());
        });
}

void frmQueue::NewStoreFrom() {
    if (!DataGrid::CommitAll(*this))
        return;
    m_station.dialogs.ChooseFile(StoreFilter, m_station.Store().Path())
        .then([window = QPointer(this)](const QString& path) {
            if (!window || path.isEmpty())
                return;
            auto* form = new frmNewFrom(window->m_station, path, window);
            connect(form, &frmNewFrom::Made, window, &frmQueue::OfferStore);
            form->show();
        });
}

void frmQueue::SaveDescription() {
    if (!DataGrid::CommitAll(*this))
        return;
    m_station.dialogs.ChooseSaveFile(QStringLiteral("PDF *.pdf|*.pdf"), m_station.ProgramFolder)
        .then([window = QPointer(this)](const QString& path) {
            if (!window || path.isEmpty())
                return;
            Station& station = window->m_station;
            const QString now = station.clock.Now().toString(QStringLiteral("yyyy-MM-dd hh:mm"));
            const Result<QString> html = SiteDescription(station.Store(), now);
            const QString title = QFileInfo(station.Store().Path()).completeBaseName();
            const Result<> written = html ? WriteWhole(path, PdfOf(*html, title)) : Failure{html.Error()};
            station.dialogs.ShowMessage(written ? BoxKind::Information : BoxKind::Exclamation,
                                        written ? tr("Saved to %1.").arg(path) : written.Error());
        });
}
