#pragma once

#include "platform/SerialControl.h"

#include <QDialog>

#include <memory>

class Station;
namespace Ui {
class frmSetPort;
}

/// The small window in which the user picks the serial port and its speed. The choice is saved and the line opened at
/// once.
///
/// The button of the line test does the same and asks for that test once the line is open.
///
/// A line that opens hides the window, and it comes back with the last choice; one that does not leaves it open.
class frmSetPort : public QDialog {
    Q_OBJECT

public:
    /// The ports COM1 to COM8 are offered, `available` ones behind them, and the saved port if it is none of these; any
    /// other device can be typed.
    /// @param station must outlive the window.
    frmSetPort(Station& station, const QList<SerialControl::Port>& available, QWidget* parent = nullptr);
    ~frmSetPort() override;

Q_SIGNALS:
    /// The chosen line is open and is to be tested.
    void LineTestWanted();

protected:
    void showEvent(QShowEvent* event) override;

private:
    void Choose(bool thenTest);

    Station& m_station;
    std::unique_ptr<Ui::frmSetPort> m_ui;
};
