#include "tests/support/TestDialogs.h"

#include "platform/Ended.h"

#include <gtest/gtest.h>

namespace {

QString KindName(BoxKind kind) {
    switch (kind) {
    case BoxKind::Plain:
        return QStringLiteral("Plain");
    case BoxKind::Information:
        return QStringLiteral("Information");
    case BoxKind::Exclamation:
        return QStringLiteral("Exclamation");
    case BoxKind::Critical:
        return QStringLiteral("Critical");
    }
    return {};
}

class RecordedProgress final : public ProgressBox {
public:
    explicit RecordedProgress(TestDialogs& owner)
        : m_owner(owner) {}

    void Show(const QString& text, qint64, qint64) override { m_owner.ProgressTexts += text; }
    bool IsCancelled() const override { return m_owner.CancelProgress; }

private:
    TestDialogs& m_owner;
};

} // namespace

TestDialogs::~TestDialogs() {
    for (const Expected& box : m_expected)
        ADD_FAILURE() << "no box came: " << qPrintable(box.kind) << " \"" << qPrintable(box.text) << "\"";
}

void TestDialogs::ExpectMessage(BoxKind kind, const QString& text) {
    m_expected.push_back({.kind = QStringLiteral("message ") + KindName(kind), .text = text, .yes = false, .file = {}});
}

void TestDialogs::ExpectQuestion(BoxKind kind, const QString& question, bool answer) {
    m_expected.push_back(
        {.kind = QStringLiteral("question ") + KindName(kind), .text = question, .yes = answer, .file = {}});
}

void TestDialogs::ExpectThreeWay(BoxKind kind, const QString& question, Answer answer) {
    m_expected.push_back({.kind = QStringLiteral("question ") + KindName(kind),
                          .text = question,
                          .yes = false,
                          .file = {},
                          .answer = answer});
}

void TestDialogs::ExpectChoice(const QString& file, const QString& suggested) {
    m_expected.push_back({.kind = QStringLiteral("choice"), .text = suggested, .yes = false, .file = file});
}

void TestDialogs::ExpectText(const QString& prompt, const QString& typed) {
    m_expected.push_back({.kind = QStringLiteral("input"), .text = prompt, .yes = false, .file = typed});
}

TestDialogs::Expected TestDialogs::Next(const QString& kind, const QString& text) {
    LastText = text;
    if (m_closed)
        throw Ended();
    if (m_expected.empty()) {
        ADD_FAILURE() << "unexpected box: " << qPrintable(kind) << " \"" << qPrintable(text) << "\"";
        return {};
    }
    const Expected box = m_expected.front();
    m_expected.pop_front();
    EXPECT_EQ(box.kind.toStdString(), kind.toStdString());
    if (!box.text.isNull()) {
        EXPECT_EQ(box.text.toStdString(), text.toStdString());
    }
    return box;
}

QCoro::Task<> TestDialogs::ShowMessage(BoxKind kind, QString text) {
    Next(QStringLiteral("message ") + KindName(kind), text);
    co_return;
}

QCoro::Task<> TestDialogs::ShowTitledMessage(BoxKind kind, QString title, QString text) {
    Next(QStringLiteral("message ") + KindName(kind), title + QStringLiteral(": ") + text);
    co_return;
}

QCoro::Task<bool> TestDialogs::AskYesNo(BoxKind kind, QString question) {
    const bool answer = Next(QStringLiteral("question ") + KindName(kind), question).yes;
    co_return answer;
}

QCoro::Task<Answer> TestDialogs::AskYesNoCancel(BoxKind kind, QString question) {
    const Answer answer = Next(QStringLiteral("question ") + KindName(kind), question).answer;
    co_return answer;
}

QCoro::Task<QString> TestDialogs::ChooseSaveFile(QString filter, QString folder) {
    Q_UNUSED(filter);
    QString file = Next(QStringLiteral("choice"), folder).file;
    co_return file;
}

QCoro::Task<QString> TestDialogs::ChooseFile(QString filter, QString suggested) {
    Q_UNUSED(filter);
    QString file = Next(QStringLiteral("choice"), suggested).file;
    co_return file;
}

QCoro::Task<QString> TestDialogs::AskText(QString prompt) {
    QString typed = Next(QStringLiteral("input"), prompt).file;
    co_return typed;
}

std::unique_ptr<ProgressBox> TestDialogs::ShowProgress(const QString& text) {
    ProgressTexts += text;
    return std::make_unique<RecordedProgress>(*this);
}
