#pragma once

#include "setup/SetupPage.h"

#include <memory>

namespace Ui {
class ScanPlanPage;
}

/// The tab "Build Scan Plan": which objects are scanned, and in which order.
class ScanPlanPage final : public SetupPage {
    Q_OBJECT

public:
    explicit ScanPlanPage(QWidget* parent = nullptr);
    ~ScanPlanPage() override;

    void ShowBusy(bool) override {}

protected:
    void SetUp() override;

private:
    void Add();
    void Remove();
    void Clear();
    void BuildAuto();

    std::unique_ptr<Ui::ScanPlanPage> m_ui;
};
