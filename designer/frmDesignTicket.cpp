#include "designer/frmDesignTicket.h"

#include "designer/ui_frmDesignTicket.h"
#include "platform/AnsiText.h"
#include "platform/Dialogs.h"
#include "platform/WholeFile.h"
#include "station/Station.h"
#include "tickets/RichText.h"
#include "tickets/VniText.h"
#include "widgets/FlowLayout.h"
#include "widgets/OutcomeBox.h"

#include <QApplication>
#include <QButtonGroup>
#include <QCloseEvent>
#include <QDir>
#include <QPointer>

#include <array>

namespace {

constexpr int PreviewDelay = 100; ///< milliseconds behind the last change

constexpr std::array Fields = {
    "Service Name (0)", "Service Desc (1)", "Current Calling (2)", "Ticket Number (3)",
    "Date Vietnam (4)", "Time (5)",         "Date English (6)",    "Time/Service Ticket Number (7)"};

/// Points by the number of the size button.
constexpr std::array Sizes = {10.0, 16.0, 22.0, 12.0};
/// By the number of the colour button.
constexpr std::array<quint32, 3> Colours = {0x000000, 0xFF0000, 0xC0C0C0};

QString Filter() {
    return QStringLiteral("Printer Form File | *.rtf");
}

/// An option button on its colour, whose mark shows on every colour.
QString ColourStyle(quint32 colour) {
    return QStringLiteral("QRadioButton { background-color: %1; padding: 4px 12px; }"
                          "QRadioButton::indicator { width: 11px; height: 11px; border: 1px solid #808080;"
                          " border-radius: 6px; background: white; }"
                          "QRadioButton::indicator:checked { background: qradialgradient(cx: 0.5, cy: 0.5, radius: 0.5,"
                          " fx: 0.5, fy: 0.5, stop: 0.5 #202020, stop: 0.6 white); }"
                          "QRadioButton::indicator:focus { border-color: #2060C0; }")
        .arg(QColor::fromRgb(colour).name());
}

/// The number of the size button for a size in points.
int SizeButton(double points) {
    switch (SizeClass(points)) {
    case 2:
        return 1;
    case 3:
        return 2;
    case 4:
        return 3;
    default:
        return 0;
    }
}

/// Takes the characters out that no printer has. @return them.
QString LeaveOutForeign(TicketDocument& document) {
    const QString text = document.Text();
    if (ansi::Encode(text).lacking.isEmpty())
        return {};
    QString refused;
    for (TicketDocument::Paragraph& paragraph : document.paragraphs) {
        for (TicketDocument::Run& run : std::exchange(paragraph.runs, {})) {
            QString kept;
            for (const char32_t character : run.text.toUcs4()) {
                const QString one = QString::fromUcs4(&character, 1);
                if (ansi::Encode(one).lacking.isEmpty())
                    kept += one;
                else if (!refused.contains(one))
                    refused += one;
            }
            paragraph.Append(kept, run.format);
        }
    }
    return refused;
}

/// Whether a form can name a file so that it is found again: in the characters of a form, up to the ")".
bool CanBeNamed(const QString& file) {
    return !file.contains(u')') && ansi::Encode(file).lacking.isEmpty() && vni::Typed({}, file).text == file;
}

QString RefusedText(const QString& characters) {
    return QObject::tr("These characters cannot be printed and were left out: %1").arg(characters);
}

} // namespace

frmDesignTicket::frmDesignTicket(Station& station, QWidget* parent)
    : QMainWindow(parent)
    , m_station(station)
    , m_forms(station.Forms())
    , m_dialogs(station.dialogs)
    , m_ui(std::make_unique<Ui::frmDesignTicket>()) {
    m_ui->setupUi(this);
    FlowLayout::InPlaceOf(*m_ui->formatsLayout);
    FlowLayout::InPlaceOf(*m_ui->bottomLayout);
    setWindowModality(Qt::ApplicationModal);
    setAttribute(Qt::WA_DeleteOnClose);
    m_ui->scrPreview->setWidgetResizable(true);
    m_ui->splDesign->setSizes({235, 530, 400});
    LoadTicketOptions();
    SetUpFormats();
    SetUpTokens();
    SetUpCommands();
    FillPrinters();
    m_preview.setSingleShot(true);
    m_preview.setInterval(PreviewDelay);
    connect(&m_preview, &QTimer::timeout, this, &frmDesignTicket::ShowPreview);
    connect(m_ui->rtfPrintForm->document(), &QTextDocument::contentsChanged, this, &frmDesignTicket::NoteChange);

    const QString last = m_forms.LastForm();
    if (!last.isEmpty() && QFileInfo(last).isFile())
        LoadForm(last);
    m_formChanged = false;
    ShowPreview();
    m_ui->rtfPrintForm->setFocus();
}

frmDesignTicket::~frmDesignTicket() {
    ShowSending(false);
    m_forms.SetLastForm(m_formPath);
}

void frmDesignTicket::SetUpFormats() {
    FormEdit& edit = *m_ui->rtfPrintForm;
    const auto choose = [&edit](QRadioButton* button, const std::function<void()>& set) {
        connect(button, &QRadioButton::clicked, &edit, [&edit, set] {
            set();
            edit.setFocus();
        });
    };
    choose(m_ui->optEffect_0, [&edit] { edit.SetBold(false); });
    choose(m_ui->optEffect_1, [&edit] { edit.SetBold(true); });
    const std::array sizes = {m_ui->optSize_0, m_ui->optSize_1, m_ui->optSize_2, m_ui->optSize_3};
    for (std::size_t i = 0; i < sizes.size(); ++i)
        choose(sizes[i], [&edit, i] { edit.SetSize(Sizes[i]); });
    const std::array alignments = {m_ui->optAlign_0, m_ui->optAlign_1, m_ui->optAlign_2};
    for (std::size_t i = 0; i < alignments.size(); ++i)
        choose(alignments[i], [&edit, i] { edit.SetAlignmentOf(static_cast<Alignment>(i)); });
    const std::array colours = {m_ui->optColor_0, m_ui->optColor_1, m_ui->optColor_2};
    for (std::size_t i = 0; i < colours.size(); ++i) {
        colours[i]->setStyleSheet(ColourStyle(Colours[i]));
        choose(colours[i], [&edit, i] { edit.SetColour(Colours[i]); });
    }
    const auto show = [this] {
        m_ui->Label3->setText(QString::number(m_ui->rtfPrintForm->textCursor().selectionStart()));
        GetCurrentFormats();
    };
    connect(&edit, &QTextEdit::selectionChanged, this, show);
    connect(&edit, &QTextEdit::cursorPositionChanged, this, show);
    connect(&edit, &QTextEdit::currentCharFormatChanged, this, show);
    connect(&edit, &FormEdit::Refused, this,
            [this](const QString& characters) { m_dialogs.Warn(RefusedText(characters)); });
    show();
}

void frmDesignTicket::SetUpTokens() {
    for (std::size_t i = 0; i < Fields.size(); ++i)
        m_ui->lstFields->AddToken(QString::fromLatin1(Fields[i]), QStringLiteral("$VAR(%1)").arg(i));
    ListLogos();
    for (TokenList* list : {m_ui->lstFields, m_ui->fileLogos}) {
        list->SetTarget(m_ui->rtfPrintForm);
        connect(list, &TokenList::TokenWanted, m_ui->rtfPrintForm, &FormEdit::InsertToken);
    }
}

void frmDesignTicket::ListLogos() {
    m_preview.start();
    m_ui->fileLogos->clear();
    const QStringList logos = QDir(m_forms.DataFolder()).entryList({QStringLiteral("*.bmp")}, QDir::Files, QDir::Name);
    for (const QString& logo : logos)
        if (CanBeNamed(logo))
            m_ui->fileLogos->AddToken(logo, QStringLiteral("$BMP(%1)").arg(logo));
}

void frmDesignTicket::SetUpCommands() {
    connect(m_ui->mnNew, &QAction::triggered, this, &frmDesignTicket::New);
    connect(m_ui->mnOpen, &QAction::triggered, this, &frmDesignTicket::Open);
    connect(m_ui->mnSave, &QAction::triggered, this, &frmDesignTicket::Save);
    connect(m_ui->mnLogoEdit, &QAction::triggered, this, &frmDesignTicket::LogoEditorWanted);
    connect(m_ui->mnClose, &QAction::triggered, this, &QWidget::close);
    connect(m_ui->cmdClose, &QPushButton::clicked, this, &QWidget::close);
    connect(m_ui->mnUndo, &QAction::triggered, m_ui->rtfPrintForm, &QTextEdit::undo);
    connect(m_ui->mnRedo, &QAction::triggered, m_ui->rtfPrintForm, &QTextEdit::redo);
    connect(m_ui->cmdSend, &QPushButton::clicked, this, &frmDesignTicket::Send);
    connect(m_ui->mnSend, &QAction::triggered, this, [this] { SendToAll(Logos::Without); });
    connect(m_ui->mnSendFormnLogo, &QAction::triggered, this, [this] { SendToAll(Logos::With); });
    connect(m_ui->cmdCancelSend, &QPushButton::clicked, this, [this] { m_station.CancelForm(); });
    connect(m_ui->txtNumcopy, &QSpinBox::valueChanged, this, [this](int copies) {
        m_forms.SetTicketCopies(static_cast<qint16>(copies));
        m_preview.start();
    });
    connect(m_ui->txtTicketdigits, &QSpinBox::valueChanged, this, [this](int digits) {
        m_forms.SetTicketDigits(static_cast<qint16>(digits));
        m_preview.start();
    });
    connect(&m_station, &Station::BusyChanged, this, &frmDesignTicket::ShowBusy);
    connect(&m_station, &Station::ProgressChanged, m_ui->statusBar,
            [this](const QString& text) { m_ui->statusBar->showMessage(text); });
    m_ui->cmdCancelSend->setEnabled(false);
    ShowBusy(m_station.IsBusy());
}

void frmDesignTicket::LoadTicketOptions() {
    m_ui->txtNumcopy->setValue(m_forms.TicketCopies());
    m_ui->txtTicketdigits->setValue(m_forms.TicketDigits());
}

void frmDesignTicket::FillPrinters() {
    m_ui->cboPrinters->addItem(QStringLiteral("All"), -1);
    for (const qint16 printer : m_station.Model().ObjectsOf(model::Printer))
        m_ui->cboPrinters->addItem(vni::ToUnicode(m_station.Model().Object(printer).Name), printer);
    m_ui->cboPrinters->setCurrentIndex(0);
}

void frmDesignTicket::GetCurrentFormats() {
    const FormEdit::Formats formats = m_ui->rtfPrintForm->SelectionFormats();
    if (formats.bold)
        (*formats.bold ? m_ui->optEffect_1 : m_ui->optEffect_0)->setChecked(true);
    if (formats.size) {
        const std::array sizes = {m_ui->optSize_0, m_ui->optSize_1, m_ui->optSize_2, m_ui->optSize_3};
        sizes[static_cast<std::size_t>(SizeButton(*formats.size))]->setChecked(true);
    }
    if (formats.alignment) {
        const std::array alignments = {m_ui->optAlign_0, m_ui->optAlign_1, m_ui->optAlign_2};
        alignments[static_cast<std::size_t>(*formats.alignment)]->setChecked(true);
    }
    if (formats.colour) {
        const std::array colours = {m_ui->optColor_0, m_ui->optColor_1, m_ui->optColor_2};
        colours[static_cast<std::size_t>(GetColorIndex(*formats.colour))]->setChecked(true);
    }
}

int frmDesignTicket::GetColorIndex(quint32 colour) const {
    const auto found = std::find(Colours.begin(), Colours.end(), colour);
    return found == Colours.end() ? 0 : static_cast<int>(found - Colours.begin());
}

void frmDesignTicket::NoteChange() {
    m_formChanged = true;
    m_preview.start();
}

void frmDesignTicket::ShowPreview() {
    const CompilerResult result = m_forms.Compile(m_ui->rtfPrintForm->Document(), m_formPath);
    QStringList findings;
    for (const CompilerMessage& message : result.messages)
        findings += message.text;
    for (const QString& logo : result.missingLogos)
        findings += tr("Logo %1 is not in the folder of the form, or is no bitmap of 24 bits.").arg(logo);
    for (const QString& token : result.mixedTokens)
        findings += tr("Token %1 has mixed formats").arg(token);
    m_ui->lblFindings->setText(findings.join(u'\n'));
    m_ui->lblFindings->setVisible(!findings.isEmpty());
    if (!result.form)
        return;
    const QImage paper =
        m_paper.Print(result.form->PrnForm, result.form->LogoData, m_forms.SampleValues(), &m_forms.letters);
    const int width = std::min<int>(TicketPaper::Width, std::max(m_ui->scrPreview->viewport()->width() - 8, 240));
    m_ui->lblPreview->setPixmap(QPixmap::fromImage(paper.scaledToWidth(width, Qt::SmoothTransformation)));
}

void frmDesignTicket::New() {
    m_ui->rtfPrintForm->Clear();
    m_formChanged = true;
}

void frmDesignTicket::Open() {
    m_dialogs.ChooseFile(Filter(), m_forms.DataFolder() + u'/').then([window = QPointer(this)](const QString& path) {
        if (window && !path.isEmpty())
            window->LoadForm(path);
    });
}

void frmDesignTicket::Save() {
    m_dialogs.ChooseSaveFile(Filter(), m_forms.DataFolder()).then([window = QPointer(this)](const QString& path) {
        if (window && !path.isEmpty())
            window->SaveForm(path);
    });
}

void frmDesignTicket::LoadForm(const QString& path) {
    const Result<QByteArray> content = ReadWhole(path, richtext::LargestFile);
    if (!content) {
        m_dialogs.Warn(content.Error());
        return;
    }
    Result<richtext::Document> read = richtext::Read(*content);
    if (!read) {
        m_dialogs.Warn(QStringLiteral("%1: %2").arg(path, read.Error()));
        return;
    }
    const QString refused = LeaveOutForeign(read->document);
    m_ui->rtfPrintForm->SetDocument(read->document);
    m_formPath = path;
    m_ui->lblFile->setText(QFileInfo(path).fileName());
    ShowPreview();
    if (!read->losses.isEmpty())
        m_dialogs.Warn(tr("%1 has what a ticket form cannot keep. It will be lost on saving: %2.")
                           .arg(QFileInfo(path).fileName(), read->losses.join(QStringLiteral(", "))));
    if (!refused.isEmpty())
        m_dialogs.Warn(RefusedText(refused));
}

void frmDesignTicket::SaveForm(const QString& path) {
    const Result<> written = WriteWhole(path, richtext::Write(m_ui->rtfPrintForm->Document()));
    if (!written) {
        m_dialogs.Warn(written.Error());
        return;
    }
    m_formPath = path;
    m_ui->lblFile->setText(QFileInfo(path).fileName());
    m_formChanged = false;
    m_station.NoteFormsChanged();
    ShowPreview();
}

void frmDesignTicket::Send() {
    if (m_ui->cboPrinters->currentIndex() < 0)
        return;
    const auto object = m_ui->cboPrinters->currentData().value<qint16>();
    const Logos logos = m_ui->chkSendLogo->isChecked() ? Logos::With : Logos::Without;
    if (object < 0)
        SendToAll(logos);
    else
        Follow(m_station.SendForm(object, m_ui->rtfPrintForm->Document(), m_formPath, logos));
}

void frmDesignTicket::SendToAll(Logos logos) {
    Follow(m_station.SendFormToAll(m_ui->rtfPrintForm->Document(), m_formPath, logos));
}

void frmDesignTicket::Follow(QCoro::Task<Outcome> transfer) {
    ShowSending(true);
    ShowOutcome(m_dialogs, std::move(transfer)).then([window = QPointer(this)](const Outcome&) {
        if (window)
            window->ShowSending(false);
    });
}

void frmDesignTicket::ShowSending(bool isSending) {
    m_ui->cmdCancelSend->setEnabled(isSending);
    if (!isSending)
        m_ui->statusBar->clearMessage();
    if (std::exchange(m_isSending, isSending) == isSending)
        return;
    if (isSending)
        QApplication::setOverrideCursor(Qt::BusyCursor);
    else
        QApplication::restoreOverrideCursor();
}

void frmDesignTicket::ShowBusy(bool busy) {
    m_ui->cmdSend->setEnabled(!busy);
    m_ui->mnSend->setEnabled(!busy);
    m_ui->mnSendFormnLogo->setEnabled(!busy);
}

void frmDesignTicket::closeEvent(QCloseEvent* event) {
    if (m_isSending) {
        m_ui->statusBar->showMessage(tr("The form is being sent. Cancel the transfer first."));
        event->ignore();
        return;
    }
    if (!m_formChanged || m_mayClose) {
        event->accept();
        return;
    }
    event->ignore();
    m_dialogs.AskYesNo(BoxKind::Exclamation, QStringLiteral("File not saved, exit anyway?"))
        .then([window = QPointer(this)](bool yes) {
            if (!yes || !window)
                return;
            window->m_mayClose = true;
            // Behind this event: a window that is closing cannot be closed.
            QMetaObject::invokeMethod(window, &QWidget::close, Qt::QueuedConnection);
        });
}
