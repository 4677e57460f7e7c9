#pragma once

#include "setup/SetupPage.h"

#include <memory>

namespace Ui {
class DirectionPage;
}

/// The tab "Main Display": the direction that each information display shows for each counter.
class DirectionPage final : public SetupPage {
    Q_OBJECT

public:
    explicit DirectionPage(QWidget* parent = nullptr);
    ~DirectionPage() override;

    /// Makes the matrix anew, as the tab does each time it comes to the front.
    void LoadDirectionGrid();

    /// Asks whether directions that were chosen but not stored are to be stored, and does as told; what is not stored
    /// is forgotten. Asks nothing if there are none. `done` is called then, with false if they could not be stored.
    void SettleUnstored(const std::function<void(bool)>& done);

    void ShowBusy(bool busy) override;

protected:
    void SetUp() override;

private:
    void Update();
    void Reload();
    Outcome UpdateDataDir();
    void ShowUnstored();

    std::unique_ptr<Ui::DirectionPage> m_ui;
};
