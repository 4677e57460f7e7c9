#pragma once

#include "platform/Outcome.h"

#include <QWidget>

#include <functional>
#include <memory>

class QPushButton;
class Station;
class TestConsole;
namespace Ui {
class frmTest;
}

/// The bench for single devices: a button sends one command to the address beside it and shows what came back.
///
/// Hidden by "Close" it stays as it is; its close box ends it, and a running poll with it.
class frmTest : public QWidget {
    Q_OBJECT

public:
    /// @param station must outlive the window.
    explicit frmTest(Station& station);
    ~frmTest() override;

protected:
    void showEvent(QShowEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    /// Starts an operation with a click and shows what came of it; the button is disabled until then.
    void Bind(QPushButton* button, std::function<QCoro::Task<Outcome>()> start);
    void BindCounters();
    void BindPrinters();
    void BindHubs();
    void BindOthers();
    void ListHubs();
    /// Object index of the hub that is chosen, -1 if none is.
    qint16 Hub() const;

    Station& m_station;
    TestConsole& m_console;
    std::unique_ptr<Ui::frmTest> m_ui;
};
