#pragma once

#include "platform/Dialogs.h"

#include <QList>
#include <QPointer>

class QDialog;
class QFileDialog;
template <typename T>
class Completion;

/// Boxes on the screen. They are opened without blocking, over the active window, under the title "Orvex".
class WindowDialogs final : public Dialogs {
public:
    ~WindowDialogs() override;

    QCoro::Task<> ShowMessage(BoxKind kind, QString text) override;
    QCoro::Task<> ShowTitledMessage(BoxKind kind, QString title, QString text) override;
    QCoro::Task<bool> AskYesNo(BoxKind kind, QString question) override;
    QCoro::Task<Answer> AskYesNoCancel(BoxKind kind, QString question) override;
    QCoro::Task<QString> ChooseFile(QString filter, QString suggested) override;
    QCoro::Task<QString> ChooseSaveFile(QString filter, QString folder) override;
    QCoro::Task<QString> AskText(QString prompt) override;
    std::unique_ptr<ProgressBox> ShowProgress(const QString& text) override;
    void Close() override;

private:
    struct OpenDialog {
        QPointer<QDialog> dialog;
        Completion<int>* closed;
    };

    /// Opens the dialog and waits until it is closed, then disposes of it. @return its result, 0 if it was rejected.
    QCoro::Task<int> Run(QDialog* dialog);

    /// The file that the user chose, empty if he cancelled.
    QCoro::Task<QString> RunFileDialog(QFileDialog* dialog);

    QList<OpenDialog> m_open;
    bool m_closed = false;
};
