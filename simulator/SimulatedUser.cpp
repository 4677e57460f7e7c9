#include "simulator/SimulatedUser.h"

#include "platform/Ended.h"

namespace {
constexpr quint32 LongestMilliseconds = 5000; ///< until a box is answered
constexpr int Closed = -1;
} // namespace

class SimulatedUser::Progress final : public ProgressBox {
public:
    explicit Progress(SimulatedUser& user)
        : m_user(user)
        , m_patience(static_cast<int>(user.m_dice() % 200)) {
        ++m_user.m_progressBoxes;
    }
    ~Progress() override { --m_user.m_progressBoxes; }

    void Show(const QString&, qint64, qint64) override { ++m_shown; }
    bool IsCancelled() const override { return m_shown > m_patience; }

private:
    SimulatedUser& m_user;
    int m_patience;
    int m_shown = 0;
};

QCoro::Task<int> SimulatedUser::Box(QString text) {
    if (m_isClosed)
        throw Ended();
    OnBox(text);
    const int answer = static_cast<int>(m_dice() % 4);
    const std::chrono::milliseconds patience(100 + m_dice() % LongestMilliseconds);
    Completion<int> closed;
    const auto place = m_open.insert(m_open.end(), &closed);
    const Timeline::Place due = m_timeline.Plan(patience, [&closed, answer] { closed.Finish(answer); });
    const int got = co_await closed.Wait();
    if (got == Closed) {
        m_timeline.Drop(due);
        throw Ended();
    }
    m_open.erase(place);
    co_return got;
}

void SimulatedUser::Close() {
    m_isClosed = true;
    for (Completion<int>* box : std::exchange(m_open, {}))
        box->Finish(Closed);
}

QCoro::Task<> SimulatedUser::ShowMessage(BoxKind, QString text) {
    co_await Box(text);
}

QCoro::Task<> SimulatedUser::ShowTitledMessage(BoxKind, QString title, QString text) {
    const QString whole = title + QStringLiteral(": ") + text;
    co_await Box(whole);
}

QCoro::Task<bool> SimulatedUser::AskYesNo(BoxKind, QString question) {
    const int answer = co_await Box(question);
    co_return answer != 0;
}

QCoro::Task<Answer> SimulatedUser::AskYesNoCancel(BoxKind, QString question) {
    const int answer = co_await Box(question);
    co_return answer == 0 ? Answer::Cancel : answer == 1 ? Answer::No : Answer::Yes;
}

QCoro::Task<QString> SimulatedUser::ChooseFile(QString, QString suggested) {
    const int answer = co_await Box(QStringLiteral("file"));
    co_return answer == 0 ? QString() : suggested;
}

QCoro::Task<QString> SimulatedUser::ChooseSaveFile(QString, QString) {
    co_await Box(QStringLiteral("file to save"));
    co_return QString();
}

QCoro::Task<QString> SimulatedUser::AskText(QString prompt) {
    co_await Box(prompt);
    co_return QString();
}

std::unique_ptr<ProgressBox> SimulatedUser::ShowProgress(const QString& text) {
    OnBox(text);
    return std::make_unique<Progress>(*this);
}
