#pragma once

#include "database/Database.h"
#include "platform/Outcome.h"

#include <QWidget>

#include <functional>

class QPushButton;
class SetupRecords;
class Station;

/// One tab of the setup window.
class SetupPage : public QWidget {
    Q_OBJECT

public:
    using QWidget::QWidget;

    /// Fills the page. To be called once; both must outlive the page.
    void Use(Station& station, SetupRecords& records);

    /// Greys out what must not be started while devices are configured.
    virtual void ShowBusy(bool busy) = 0;

protected:
    using Change = std::function<Result<>()>;
    using Show = std::function<void()>;

    /// Connects the controls with the records; called once, before the records are read.
    virtual void SetUp() = 0;

    Station& TheStation() const { return *m_station; }
    SetupRecords& Records() const { return *m_records; }

    /// Runs `action` at each click, once what stands in open editors is written; not if the store refuses that.
    void OnClick(QPushButton* button, const std::function<void()>& action);

    /// Changes the store, shows what came of it, and tells in a box what the store refused.
    /// @param act what it is called where it can be undone; empty where the changed row says it.
    void Do(const QString& act, const Change& change, const Show& show);
    /// The same once the user has answered a question with Yes.
    void AskAndDo(BoxKind kind, const QString& question, const QString& act, const Change& change, const Show& show);
    /// Refreshes the model, tells in a box what stood in the way, and shows what the store holds now.
    void RefreshModel(const Show& show);

private:
    Station* m_station = nullptr;
    SetupRecords* m_records = nullptr;
};
