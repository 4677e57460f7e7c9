#pragma once

#include "platform/Dialogs.h"

/// Boxes as lines of the error output. Nobody sits there to answer: a question counts as No, or as Yes if the command
/// line says so; a choice is cancelled.
class LineDialogs final : public Dialogs {
public:
    /// @param saysYes the answer to every question of Yes and No.
    explicit LineDialogs(bool saysYes)
        : m_saysYes(saysYes) {}

    /// Writes a line of the error output, with true Vietnamese letters in place of stored ones.
    static void Print(const QString& text);
    /// The text in one line: control characters show as signs.
    static QString Line(const QString& text);

    QCoro::Task<> ShowMessage(BoxKind kind, QString text) override;
    QCoro::Task<> ShowTitledMessage(BoxKind kind, QString title, QString text) override;
    QCoro::Task<bool> AskYesNo(BoxKind kind, QString question) override;
    QCoro::Task<Answer> AskYesNoCancel(BoxKind kind, QString question) override;
    QCoro::Task<QString> ChooseFile(QString filter, QString suggested) override;
    QCoro::Task<QString> ChooseSaveFile(QString filter, QString folder) override;
    QCoro::Task<QString> AskText(QString prompt) override;
    std::unique_ptr<ProgressBox> ShowProgress(const QString& text) override;
    void Close() override { m_isClosed = true; }

private:
    bool PrintAnswer(const QString& question);

    const bool m_saysYes;
    bool m_isClosed = false;
};
