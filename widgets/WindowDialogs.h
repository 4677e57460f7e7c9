#pragma once

#include "platform/Dialogs.h"

#include <QList>
#include <QObject>
#include <QPointer>

class QDialog;
class QFileDialog;
template <typename T>
class Completion;

/// Boxes on the screen. They are opened without blocking, under the title "Orvex", over the window that they belong to:
/// they come to the front with it and block it, and no other. Where that window goes away they come over the one
/// behind.
class WindowDialogs final : public ::QObject, public Dialogs {
public:
    WindowDialogs();
    ~WindowDialogs() override;

    /// The window that is active or, while another program is in front, was so last.
    QPointer<QObject> Place() const override;
    void PlaceNext(const QPointer<QObject>& place) override { m_next = place; }

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

    /// The window for a box that comes now.
    QWidget* Owner();
    bool eventFilter(::QObject* watched, QEvent* event) override;

    QList<QPointer<QWidget>> m_recent; ///< windows but boxes, the one that was active last behind all others
    QPointer<::QObject> m_next;        ///< where the next box belongs to
    QList<OpenDialog> m_open;
    bool m_closed = false;
};
