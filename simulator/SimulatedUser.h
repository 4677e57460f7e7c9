#pragma once

#include "platform/Completion.h"
#include "platform/Dialogs.h"
#include "simulator/Timeline.h"

#include <list>
#include <random>

/// A user who answers every box after a while, with whatever the dice say.
class SimulatedUser final : public Dialogs {
public:
    SimulatedUser(Timeline& timeline, quint32 seed)
        : m_timeline(timeline)
        , m_dice(seed) {}

    std::function<void(const QString& text)> OnBox = [](const QString&) {};

    /// Boxes that stand on the screen now, progress boxes too.
    int OpenBoxes() const { return static_cast<int>(m_open.size()) + m_progressBoxes; }

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
    class Progress;

    /// Waits until the box is closed. @return 0 to 3, by the dice.
    QCoro::Task<int> Box(QString text);

    Timeline& m_timeline;
    std::mt19937 m_dice;
    std::list<Completion<int>*> m_open;
    int m_progressBoxes = 0;
    bool m_isClosed = false;
};
