#pragma once

#include "tickets/LogoCells.h"

#include <QWidget>

#include <vector>

/// The picture in the logo editor on which the cells of a logo are drawn with the mouse: the left button alone makes
/// them dark, any other white.
class LogoSurface : public QWidget {
    Q_OBJECT

public:
    static constexpr int StartZoom = 4; ///< screen pixels a cell
    static constexpr int SmallestZoom = 2;
    static constexpr int LargestZoom = 16;

    explicit LogoSurface(QWidget* parent = nullptr);

    const LogoCells& Cells() const { return m_cells; }
    /// Shows another logo; what was drawn before cannot be undone.
    void SetCells(const LogoCells& cells);
    /// Changes the logo as a drawing does, so that it can be undone.
    void ReplaceCells(const LogoCells& cells);

    int Zoom() const { return m_zoom; }
    /// Sets the size of a cell, within the limits, and with it that of the widget: one cell more than the logo has.
    void SetZoom(int zoom);

    void Undo();
    void Redo();
    bool CanUndo() const { return !m_undo.empty(); }
    bool CanRedo() const { return !m_redo.empty(); }

    /// The cell under a place of the widget, inside the logo or not.
    QPoint ChangePosition(QPoint place) const;

Q_SIGNALS:
    /// A button was held over the picture, inside the logo or not.
    void Drawn();
    /// The mouse is over a cell.
    void PixelShown(int x, int y);
    /// What can be undone or redone has changed.
    void StepsChanged();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void doPenAction(Qt::MouseButtons buttons, QPoint place);
    void Remember();
    void Step(std::vector<LogoCells>& from, std::vector<LogoCells>& to);
    void Resize();

    LogoCells m_cells;
    std::vector<LogoCells> m_undo;
    std::vector<LogoCells> m_redo;
    int m_zoom = StartZoom;
    bool m_penDown = false;
};
