#include "widgets/WindowDialogs.h"

#include "platform/AnsiText.h"
#include "platform/Completion.h"
#include "platform/Ended.h"

#include <QApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QInputDialog>
#include <QMessageBox>
#include <QProgressDialog>

#include <algorithm>

namespace {

QString Title() {
    return QStringLiteral("Orvex");
}

QMessageBox::Icon IconOf(BoxKind kind) {
    switch (kind) {
    case BoxKind::Plain:
        return QMessageBox::NoIcon;
    case BoxKind::Information:
        return QMessageBox::Information;
    case BoxKind::Exclamation:
        return QMessageBox::Warning;
    case BoxKind::Critical:
        return QMessageBox::Critical;
    }
    return QMessageBox::NoIcon;
}

/// Replies of devices in the text hold control characters; line ends stay.
QString Legible(const QString& text) {
    QStringList lines = text.split(u'\n');
    for (QString& line : lines) {
        if (line.endsWith(u'\r'))
            line.chop(1);
        line = ansi::Visible(line);
    }
    return lines.join(u'\n');
}

QMessageBox* MakeBox(BoxKind kind, const QString& text, QMessageBox::StandardButtons buttons, QWidget* owner) {
    auto* box = new QMessageBox(IconOf(kind), Title(), Legible(text), buttons, owner);
    box->setObjectName(QStringLiteral("messageBox"));
    box->setTextFormat(Qt::PlainText);
    return box;
}

/// @param filter "Text of all *.mdb|*.mdb"
QFileDialog* MakeFileDialog(const QString& title, const QString& folder, const QString& filter, QWidget* owner) {
    auto* dialog = new QFileDialog(owner, title, folder);
    dialog->setObjectName(QStringLiteral("fileDialog"));
    dialog->setNameFilter(
        QStringLiteral("%1 (%2)").arg(filter.section(u'|', 0, 0).trimmed(), filter.section(u'|', 1).trimmed()));
    // The text of the filter tells the pattern itself.
    dialog->setOption(QFileDialog::HideNameFilterDetails);
    return dialog;
}

class WindowProgress final : public ProgressBox {
public:
    explicit WindowProgress(const QString& text)
        : m_dialog(text, QObject::tr("Cancel"), 0, 0) {
        m_dialog.setObjectName(QStringLiteral("progressBox"));
        m_dialog.setWindowTitle(Title());
        m_dialog.setWindowModality(Qt::ApplicationModal);
        m_dialog.setAutoClose(false);
        m_dialog.setAutoReset(false);
        m_dialog.setMinimumWidth(420);
        m_dialog.show();
    }

    void Show(const QString& text, qint64 done, qint64 total) override {
        constexpr qint64 Steps = 1000; // the bar counts in int
        m_dialog.setLabelText(text);
        m_dialog.setMaximum(total > 0 ? static_cast<int>(Steps) : 0);
        m_dialog.setValue(total > 0 ? static_cast<int>(done * Steps / total) : 0);
    }

    bool IsCancelled() const override { return m_dialog.wasCanceled(); }

private:
    QProgressDialog m_dialog;
};

} // namespace

WindowDialogs::WindowDialogs() {
    qApp->installEventFilter(this);
}

WindowDialogs::~WindowDialogs() {
    Close();
}

bool WindowDialogs::eventFilter(::QObject* watched, QEvent* event) {
    if (event->type() != QEvent::WindowActivate || !watched->isWidgetType())
        return false;
    auto* window = static_cast<QWidget*>(watched);
    const bool isBox =
        std::any_of(m_open.begin(), m_open.end(), [window](const OpenDialog& open) { return open.dialog == window; });
    if (window->isWindow() && !isBox) {
        m_recent.removeIf([window](const QPointer<QWidget>& other) { return !other || other == window; });
        m_recent.append(window);
    }
    return false;
}

QPointer<::QObject> WindowDialogs::Place() const {
    if (QWidget* active = QApplication::activeWindow())
        return {active};
    const auto last = std::find_if(m_recent.rbegin(), m_recent.rend(),
                                   [](const QPointer<QWidget>& window) { return window && window->isVisible(); });
    return {last == m_recent.rend() ? nullptr : last->data()};
}

QWidget* WindowDialogs::Owner() {
    const QPointer<::QObject> place = m_next ? std::exchange(m_next, {}) : Place();
    auto* owner = qobject_cast<QWidget*>(place);
    // A box over a window that is closing would go with it.
    while (owner && !owner->isVisible())
        owner = owner->parentWidget() ? owner->parentWidget()->window() : nullptr;
    if (owner)
        QApplication::alert(owner);
    return owner;
}

QCoro::Task<int> WindowDialogs::Run(QDialog* dialog) {
    if (m_closed) {
        delete dialog;
        throw Ended();
    }
    Completion<int> done;
    // Through the event loop: what follows must not run inside the dialog's own signal.
    QObject waiting;
    QObject::connect(
        dialog, &QDialog::finished, &waiting, [&done](int result) { done.Finish(result); }, Qt::QueuedConnection);
    QObject::connect(
        dialog, &QObject::destroyed, &waiting, [&done] { done.Finish(0); }, Qt::QueuedConnection);
    const QPointer<QDialog> guarded(dialog);
    m_open.append({guarded, &done});
    dialog->open();
    const int result = co_await done.Wait();
    m_open.removeIf([&done](const OpenDialog& open) { return open.closed == &done; });
    if (guarded)
        guarded->deleteLater();
    if (m_closed)
        throw Ended();
    co_return result;
}

QCoro::Task<> WindowDialogs::ShowMessage(BoxKind kind, QString text) {
    co_await Run(MakeBox(kind, text, QMessageBox::Ok, Owner()));
}

QCoro::Task<> WindowDialogs::ShowTitledMessage(BoxKind kind, QString title, QString text) {
    QMessageBox* box = MakeBox(kind, text, QMessageBox::Ok, Owner());
    box->setWindowTitle(title);
    co_await Run(box);
}

QCoro::Task<bool> WindowDialogs::AskYesNo(BoxKind kind, QString question) {
    QMessageBox* box = MakeBox(kind, question, QMessageBox::Yes | QMessageBox::No, Owner());
    box->setDefaultButton(QMessageBox::No);
    box->setEscapeButton(QMessageBox::No);
    const int result = co_await Run(box);
    co_return result == QMessageBox::Yes;
}

QCoro::Task<Answer> WindowDialogs::AskYesNoCancel(BoxKind kind, QString question) {
    QMessageBox* box = MakeBox(kind, question, QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel, Owner());
    box->setDefaultButton(QMessageBox::Yes);
    const int result = co_await Run(box);
    co_return result == QMessageBox::Yes ? Answer::Yes : result == QMessageBox::No ? Answer::No : Answer::Cancel;
}

QCoro::Task<QString> WindowDialogs::RunFileDialog(QFileDialog* dialog) {
    const QPointer<QFileDialog> guarded(dialog);
    const int result = co_await Run(dialog);
    QString chosen;
    if (result == QDialog::Accepted && guarded && !guarded->selectedFiles().isEmpty())
        chosen = guarded->selectedFiles().constFirst();
    co_return chosen;
}

QCoro::Task<QString> WindowDialogs::ChooseFile(QString filter, QString suggested) {
    const QFileInfo file(suggested);
    QFileDialog* dialog = MakeFileDialog(QObject::tr("Open"), file.absolutePath(), filter, Owner());
    dialog->setFileMode(QFileDialog::ExistingFile);
    dialog->selectFile(file.fileName());
    const QString chosen = co_await RunFileDialog(dialog);
    co_return chosen;
}

QCoro::Task<QString> WindowDialogs::ChooseSaveFile(QString filter, QString folder) {
    QFileDialog* dialog = MakeFileDialog(QObject::tr("Save"), folder, filter, Owner());
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setDefaultSuffix(filter.section(u'.', -1));
    const QString chosen = co_await RunFileDialog(dialog);
    co_return chosen;
}

QCoro::Task<QString> WindowDialogs::AskText(QString prompt) {
    auto* box = new QInputDialog(Owner());
    box->setObjectName(QStringLiteral("inputBox"));
    box->setWindowTitle(Title());
    box->setLabelText(prompt);
    const QPointer<QInputDialog> guarded(box);
    const int result = co_await Run(box);
    QString typed;
    if (result == QDialog::Accepted && guarded)
        typed = guarded->textValue();
    co_return typed;
}

std::unique_ptr<ProgressBox> WindowDialogs::ShowProgress(const QString& text) {
    return std::make_unique<WindowProgress>(text);
}

void WindowDialogs::Close() {
    m_closed = true;
    for (const OpenDialog& open : std::exchange(m_open, {})) {
        if (open.dialog)
            open.dialog->hide();
        open.closed->Finish(0);
    }
}
