#include "ctl/LineDialogs.h"

#include "platform/AnsiText.h"
#include "platform/Ended.h"

#include <cstdio>

namespace {

/// Progress goes nowhere: the lines of an error output are read later, if at all.
class NoProgress final : public ProgressBox {
public:
    void Show(const QString&, qint64, qint64) override {}
    bool IsCancelled() const override { return false; }
};

} // namespace

void LineDialogs::Print(const QString& text) {
    for (const QString& line : text.split(u'\n', Qt::SkipEmptyParts))
        std::fprintf(stderr, "orvexctl: %s\n", qUtf8Printable(Line(line)));
}

QString LineDialogs::Line(const QString& text) {
    return ansi::Visible(text);
}

QCoro::Task<> LineDialogs::ShowMessage(BoxKind, QString text) {
    if (m_isClosed)
        throw Ended();
    Print(text);
    co_return;
}

QCoro::Task<> LineDialogs::ShowTitledMessage(BoxKind kind, QString title, QString text) {
    return ShowMessage(kind, title + QStringLiteral(": ") + text);
}

bool LineDialogs::PrintAnswer(const QString& question) {
    if (m_isClosed)
        throw Ended();
    Print(question + (m_saysYes ? QStringLiteral(" Yes.") : QStringLiteral(" No (--yes answers Yes).")));
    return m_saysYes;
}

QCoro::Task<bool> LineDialogs::AskYesNo(BoxKind, QString question) {
    co_return PrintAnswer(question);
}

QCoro::Task<Answer> LineDialogs::AskYesNoCancel(BoxKind, QString question) {
    co_return PrintAnswer(question) ? Answer::Yes : Answer::Cancel;
}

QCoro::Task<QString> LineDialogs::ChooseFile(QString, QString) {
    co_return QString();
}

QCoro::Task<QString> LineDialogs::ChooseSaveFile(QString, QString) {
    co_return QString();
}

QCoro::Task<QString> LineDialogs::AskText(QString) {
    co_return QString();
}

std::unique_ptr<ProgressBox> LineDialogs::ShowProgress(const QString&) {
    return std::make_unique<NoProgress>();
}
