#pragma once

#include "setup/SetupPage.h"

#include <memory>

namespace Ui {
class HubPage;
}

/// The tab "HUB Assignment": which devices stand behind which hub.
class HubPage final : public SetupPage {
    Q_OBJECT

public:
    explicit HubPage(QWidget* parent = nullptr);
    ~HubPage() override;

    void ShowBusy(bool busy) override;

protected:
    void SetUp() override;

private:
    void LoadHubCounters();
    void AddSelected();
    void AddHubCounter();
    void RemoveCounter();
    void RemoveAll();
    void Refresh();

    std::unique_ptr<Ui::HubPage> m_ui;
};
