#pragma once

#include "platform/Dialogs.h"

/// The boxes of one operation: all of them over the window in which it was begun.
class PlacedDialogs final : public Dialogs {
public:
    /// @param boxes must outlive this.
    explicit PlacedDialogs(Dialogs& boxes)
        : m_boxes(boxes) {}

    /// An operation begins, in the window that the user works in now.
    void Begin() { m_place = m_boxes.Place(); }

    QPointer<QObject> Place() const override { return m_place; }
    void PlaceNext(const QPointer<QObject>& place) override { m_place = place; }
    QCoro::Task<> ShowMessage(BoxKind kind, QString text) override { return There().ShowMessage(kind, text); }
    QCoro::Task<> ShowTitledMessage(BoxKind kind, QString title, QString text) override {
        return There().ShowTitledMessage(kind, title, text);
    }
    QCoro::Task<bool> AskYesNo(BoxKind kind, QString question) override { return There().AskYesNo(kind, question); }
    QCoro::Task<Answer> AskYesNoCancel(BoxKind kind, QString question) override {
        return There().AskYesNoCancel(kind, question);
    }
    QCoro::Task<QString> ChooseFile(QString filter, QString suggested) override {
        return There().ChooseFile(filter, suggested);
    }
    QCoro::Task<QString> ChooseSaveFile(QString filter, QString folder) override {
        return There().ChooseSaveFile(filter, folder);
    }
    QCoro::Task<QString> AskText(QString prompt) override { return There().AskText(prompt); }
    std::unique_ptr<ProgressBox> ShowProgress(const QString& text) override { return There().ShowProgress(text); }
    void Close() override { m_boxes.Close(); }

private:
    Dialogs& There() const {
        m_boxes.PlaceNext(m_place);
        return m_boxes;
    }

    Dialogs& m_boxes;
    QPointer<QObject> m_place;
};
