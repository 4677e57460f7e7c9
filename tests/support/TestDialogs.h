#pragma once

#include "platform/Dialogs.h"

#include <QStringList>

#include <deque>

/// Answers the boxes that a test expects, in order. A box that nobody expected fails the test, and so does one that has
/// not come when this goes out of scope.
class TestDialogs final : public Dialogs {
public:
    ~TestDialogs() override;

    void ExpectMessage(BoxKind kind, const QString& text);
    void ExpectQuestion(BoxKind kind, const QString& question, bool answer);
    /// A question that may be cancelled.
    void ExpectThreeWay(BoxKind kind, const QString& question, Answer answer);
    /// An empty `file` is a cancelled choice; for a name to save to as well. `suggested` is not looked at if it is
    /// null.
    void ExpectChoice(const QString& file, const QString& suggested = {});

    /// A line of text to be typed.
    void ExpectText(const QString& prompt, const QString& typed);

    /// Everything that a progress box showed, one text a call of `Show`.
    QStringList ProgressTexts;
    /// Of the last box.
    QString LastText;
    /// Answer of `ProgressBox::IsCancelled`.
    bool CancelProgress = false;

    QCoro::Task<> ShowMessage(BoxKind kind, QString text) override;
    QCoro::Task<> ShowTitledMessage(BoxKind kind, QString title, QString text) override;
    QCoro::Task<bool> AskYesNo(BoxKind kind, QString question) override;
    QCoro::Task<Answer> AskYesNoCancel(BoxKind kind, QString question) override;
    QCoro::Task<QString> ChooseFile(QString filter, QString suggested) override;
    QCoro::Task<QString> ChooseSaveFile(QString filter, QString folder) override;
    QCoro::Task<QString> AskText(QString prompt) override;
    std::unique_ptr<ProgressBox> ShowProgress(const QString& text) override;
    void Close() override { m_closed = true; }

private:
    struct Expected {
        QString kind; ///< "message Critical", "question Exclamation", "choice"
        QString text;
        bool yes = false;
        QString file;
        Answer answer = Answer::Cancel;
    };

    Expected Next(const QString& kind, const QString& text);

    std::deque<Expected> m_expected;
    bool m_closed = false;
};
