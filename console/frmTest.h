#pragma once

#include <QWidget>

#include <qcoro/qcorotask.h>

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
    /// @param station, console  must outlive the window.
    frmTest(Station& station, TestConsole& console);
    ~frmTest() override;

protected:
    void showEvent(QShowEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    /// Starts an operation with a click; the button is disabled until it has ended.
    void Bind(QPushButton* button, std::function<QCoro::Task<>()> start);
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
