#pragma once

#include <QString>

class QLabel;
class QStatusBar;

/// The panels at the right of a status bar that show the line: device, speed, a lamp.
class LinePanels {
public:
    /// Adds the panels to `bar`, which owns them.
    explicit LinePanels(QStatusBar& bar);

    /// Shows device, speed and state; empty texts leave what is shown.
    void SetCommStatus(const QString& device, const QString& baud, bool opened);

private:
    QLabel* m_device;
    QLabel* m_baud;
    QLabel* m_lineState;
};
