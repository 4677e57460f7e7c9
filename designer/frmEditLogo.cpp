#include "designer/frmEditLogo.h"

#include "designer/frmImportLogo.h"
#include "designer/ui_frmEditLogo.h"
#include "platform/Dialogs.h"
#include "platform/WholeFile.h"
#include "station/Station.h"
#include "tickets/LogoImport.h"

#include <QCloseEvent>
#include <QImageReader>
#include <QPointer>
#include <QScrollBar>

namespace {

constexpr int TwipsPerPixel = 15;
constexpr int ScrollMinimum = 1;
constexpr int ScrollMaximum = 32767; ///< twips

QString Filter() {
    return QStringLiteral("Windows Bitmap files (*.bmp)|*.bmp");
}

} // namespace

frmEditLogo::frmEditLogo(Station& station, QWidget* parent)
    : QMainWindow(parent)
    , m_forms(station.Forms())
    , m_dialogs(station.dialogs)
    , m_ui(std::make_unique<Ui::frmEditLogo>()) {
    m_ui->setupUi(this);
    setWindowModality(Qt::ApplicationModal);
    setAttribute(Qt::WA_DeleteOnClose);
    SetUpCommands();
    resizeView();
    ShowSteps();
}

frmEditLogo::~frmEditLogo() = default;

void frmEditLogo::SetUpCommands() {
    connect(m_ui->mnNew, &QAction::triggered, this, [this] { AskToSave([this] { New(); }); });
    connect(m_ui->mnOpen, &QAction::triggered, this, [this] { AskToSave([this] { Open(); }); });
    connect(m_ui->mnImport, &QAction::triggered, this, [this] { AskToSave([this] { Import(); }); });
    connect(m_ui->mnSave, &QAction::triggered, this, [this] { SaveLogo([] {}); });
    connect(m_ui->mnExit, &QAction::triggered, this, &QWidget::close);
    connect(m_ui->mnUndo, &QAction::triggered, m_ui->picEdit, &LogoSurface::Undo);
    connect(m_ui->mnRedo, &QAction::triggered, m_ui->picEdit, &LogoSurface::Redo);
    connect(m_ui->mnZoomIn, &QAction::triggered, this, [this] { Zoom(1); });
    connect(m_ui->mnZoomOut, &QAction::triggered, this, [this] { Zoom(-1); });
    connect(m_ui->HScroll1, &QScrollBar::valueChanged, this, &frmEditLogo::ScrollTo);
    connect(m_ui->picEdit, &LogoSurface::Drawn, this, [this] { LogoChanged = true; });
    connect(m_ui->picEdit, &LogoSurface::PixelShown, this, &frmEditLogo::ShowPixelVal);
    connect(m_ui->picEdit, &LogoSurface::StepsChanged, this, &frmEditLogo::ShowSteps);
}

void frmEditLogo::AskToSave(const std::function<void()>& action) {
    if (!LogoChanged) {
        action();
        return;
    }
    const QString question = QStringLiteral("The file was changed, would you want to save?");
    m_dialogs.AskYesNoCancel(BoxKind::Plain, question).then([window = QPointer(this), action](Answer answer) {
        if (!window || answer == Answer::Cancel)
            return;
        if (answer == Answer::Yes)
            window->SaveLogo(action);
        else
            action();
    });
}

void frmEditLogo::New() {
    LogoIsNew = true;
    LogoFile.clear();
    m_ui->Label1->setText(QStringLiteral("New Logo"));
    m_ui->picEdit->SetCells(LogoCells(LargestLogoWidth, LargestLogoHeight));
    resizeView();
}

void frmEditLogo::Open() {
    m_dialogs.ChooseFile(Filter(), m_forms.DataFolder() + u'/').then([window = QPointer(this)](const QString& path) {
        if (window && !path.isEmpty())
            window->LoadLogoFile(path);
    });
}

void frmEditLogo::LoadLogoFile(const QString& path) {
    std::optional<Bitmap24> bitmap = LoadBitmap24(path);
    if (!bitmap) {
        m_dialogs.Warn(InvalidBitmapText());
        bitmap.emplace();
    }
    if (bitmap->width > LargestLogoWidth || bitmap->height > LargestLogoHeight) {
        m_dialogs.Warn(LogoTooLargeText());
        return;
    }
    m_ui->picEdit->SetCells(LogoCells(*bitmap));
    LogoFile = path;
    resizeView();
    m_ui->Label1->setText(path);
    LogoChanged = false;
    LogoIsNew = false;
}

void frmEditLogo::SaveLogo(const std::function<void()>& done) {
    // An empty logo has nothing to save, and must not empty a file that could not be read.
    if (m_ui->picEdit->Cells().IsEmpty()) {
        done();
        return;
    }
    if (!LogoIsNew) {
        if (WriteLogo(LogoFile))
            done();
        return;
    }
    m_dialogs.ChooseSaveFile(Filter(), m_forms.DataFolder()).then([window = QPointer(this), done](const QString& path) {
        if (!window || path.isEmpty())
            return;
        window->LogoFile = path;
        if (window->WriteLogo(path))
            done();
    });
}

bool frmEditLogo::WriteLogo(const QString& path) {
    const Result<> written = WriteWhole(path, BitmapFile(m_ui->picEdit->Cells().ToBitmap()));
    if (!written)
        m_dialogs.Warn(written.Error());
    return static_cast<bool>(written);
}

void frmEditLogo::Import() {
    const QString filter = tr("Pictures") + QStringLiteral("|*.png *.jpg *.jpeg *.bmp");
    m_dialogs.ChooseFile(filter, m_forms.DataFolder() + u'/').then([window = QPointer(this)](const QString& path) {
        if (window && !path.isEmpty())
            window->ImportPicture(path);
    });
}

void frmEditLogo::ImportPicture(const QString& path) {
    QImageReader reader(path);
    reader.setAutoTransform(true);
    reader.setDecideFormatFromContent(true);
    const QImage picture = reader.read();
    if (picture.isNull()) {
        m_dialogs.Warn(QStringLiteral("%1: %2").arg(path, reader.errorString()));
        return;
    }
    auto* window = new frmImportLogo(picture, this);
    connect(window, &QDialog::accepted, this, [this, window] { TakeImport(window->Logo()); });
    window->show();
}

void frmEditLogo::TakeImport(const LogoCells& logo) {
    LogoIsNew = true;
    LogoChanged = true;
    LogoFile.clear();
    m_ui->Label1->setText(QStringLiteral("New Logo"));
    m_ui->picEdit->ReplaceCells(logo);
    resizeView();
}

void frmEditLogo::ShowPixelVal(int x, int y) {
    m_ui->lblPixprop->setText(QStringLiteral("X=%1,Y=%2").arg(x).arg(y));
}

void frmEditLogo::resizeView() {
    QScrollBar& bar = *m_ui->HScroll1;
    const int excess = (m_ui->picEdit->width() - m_ui->picView->viewport()->width()) * TwipsPerPixel;
    bar.setEnabled(excess > 0);
    if (excess > 0) {
        bar.setRange(ScrollMinimum, ScrollMaximum);
        bar.setSingleStep(excess >= ScrollMaximum ? 1 : ScrollMaximum / excess);
        bar.setPageStep(ScrollMaximum / 4);
    } else {
        bar.setValue(bar.minimum());
    }
    ScrollTo(bar.value());
}

void frmEditLogo::ScrollTo(int value) {
    const int excess = m_ui->picEdit->width() - m_ui->picView->viewport()->width();
    int left = m_ui->HScroll1->isEnabled() ? value / TwipsPerPixel : 0;
    // A picture wider than the bar counts is scrolled in larger steps, so that its right edge is reached.
    if (excess * TwipsPerPixel > ScrollMaximum)
        left = static_cast<int>(static_cast<qint64>(value) * excess / ScrollMaximum);
    // The view stops at the right edge of the picture.
    m_ui->picView->horizontalScrollBar()->setValue(left);
}

void frmEditLogo::Zoom(int step) {
    m_ui->picEdit->SetZoom(m_ui->picEdit->Zoom() + step);
    resizeView();
}

void frmEditLogo::ShowSteps() {
    m_ui->mnUndo->setEnabled(m_ui->picEdit->CanUndo());
    m_ui->mnRedo->setEnabled(m_ui->picEdit->CanRedo());
}

void frmEditLogo::resizeEvent(QResizeEvent* event) {
    QMainWindow::resizeEvent(event);
    resizeView();
}

void frmEditLogo::closeEvent(QCloseEvent* event) {
    if (!LogoChanged || m_mayClose) {
        m_forms.SetLastLogo(m_ui->Label1->text());
        event->accept();
        return;
    }
    event->ignore();
    AskToSave([window = QPointer(this)] {
        if (!window)
            return;
        window->m_mayClose = true;
        // Behind this event: a window that is closing cannot be closed.
        QMetaObject::invokeMethod(window, &QWidget::close, Qt::QueuedConnection);
    });
}
