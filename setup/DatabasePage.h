#pragma once

#include "setup/SetupPage.h"

#include <memory>

namespace Ui {
class DatabasePage;
}

/// The tab "Setup Database": services, objects, and which counter serves which service.
class DatabasePage final : public SetupPage {
    Q_OBJECT

public:
    explicit DatabasePage(QWidget* parent = nullptr);
    ~DatabasePage() override;

    /// Adds characters of the bus to the log box.
    void AddLog1(const QString& text);
    /// Shows whether the list of findings is open.
    void ShowCheckOpen(bool open);
    void ShowBusy(bool busy) override;

Q_SIGNALS:
    /// The user wants to see the list of findings, or to see it no more.
    void CheckWanted(bool open);

protected:
    void SetUp() override;

private:
    void Refresh();
    void Empty();
    void TestConnect();
    void LoadQueueDisplay();
    void AddSelected();
    void AddServiceCounter();
    /// Adds all counters of the selected block as one act.
    void AddServiceCounters();
    void RemoveServiceCounter();
    void RemoveServiceCounters();

    std::unique_ptr<Ui::DatabasePage> m_ui;
};
