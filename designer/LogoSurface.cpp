#include "designer/LogoSurface.h"

#include <QMouseEvent>
#include <QPainter>

#include <algorithm>

namespace {

constexpr std::size_t MostSteps = 200;

} // namespace

LogoSurface::LogoSurface(QWidget* parent)
    : QWidget(parent) {
    setMouseTracking(true);
    setCursor(Qt::CrossCursor);
    Resize();
}

void LogoSurface::SetCells(const LogoCells& cells) {
    m_cells = cells;
    m_undo.clear();
    m_redo.clear();
    Resize();
    Q_EMIT StepsChanged();
}

void LogoSurface::ReplaceCells(const LogoCells& cells) {
    Remember();
    m_cells = cells;
    Resize();
}

void LogoSurface::SetZoom(int zoom) {
    m_zoom = std::clamp(zoom, SmallestZoom, LargestZoom);
    Resize();
}

void LogoSurface::Resize() {
    setFixedSize((m_cells.Width() + 1) * m_zoom, (m_cells.Height() + 1) * m_zoom);
    update();
}

void LogoSurface::Remember() {
    m_undo.push_back(m_cells);
    if (m_undo.size() > MostSteps)
        m_undo.erase(m_undo.begin());
    m_redo.clear();
    Q_EMIT StepsChanged();
}

void LogoSurface::Step(std::vector<LogoCells>& from, std::vector<LogoCells>& to) {
    if (from.empty())
        return;
    to.push_back(std::exchange(m_cells, from.back()));
    from.pop_back();
    Resize();
    Q_EMIT StepsChanged();
    Q_EMIT Drawn();
}

void LogoSurface::Undo() {
    Step(m_undo, m_redo);
}

void LogoSurface::Redo() {
    Step(m_redo, m_undo);
}

QPoint LogoSurface::ChangePosition(QPoint place) const {
    return {place.x() / m_zoom, place.y() / m_zoom};
}

void LogoSurface::doPenAction(Qt::MouseButtons buttons, QPoint place) {
    const QPoint cell = ChangePosition(place);
    m_cells.PutCell(cell.x(), cell.y(), buttons == Qt::LeftButton ? LogoCells::Dark : LogoCells::White);
    update(QRect(cell * m_zoom, QSize(m_zoom, m_zoom)));
    Q_EMIT Drawn();
}

void LogoSurface::mousePressEvent(QMouseEvent* event) {
    if (m_cells.IsEmpty())
        return;
    if (!m_penDown)
        Remember();
    m_penDown = true;
    doPenAction(event->buttons(), event->pos());
}

void LogoSurface::mouseMoveEvent(QMouseEvent* event) {
    if (m_penDown) {
        doPenAction(event->buttons(), event->pos());
        return;
    }
    const QPoint cell = ChangePosition(event->pos());
    Q_EMIT PixelShown(cell.x(), cell.y());
}

void LogoSurface::mouseReleaseEvent(QMouseEvent*) {
    m_penDown = false;
}

void LogoSurface::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.fillRect(event->rect(), palette().mid());
    painter.fillRect(QRect(0, 0, m_cells.Width() * m_zoom, m_cells.Height() * m_zoom), Qt::white);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(LogoCells::Dark, LogoCells::Dark, LogoCells::Dark));
    painter.setRenderHint(QPainter::Antialiasing);
    const QPoint first = ChangePosition(event->rect().topLeft());
    const QPoint last = ChangePosition(event->rect().bottomRight());
    for (int y = first.y(); y <= std::min(last.y(), m_cells.Height() - 1); ++y) {
        for (int x = first.x(); x <= std::min(last.x(), m_cells.Width() - 1); ++x) {
            if (m_cells.GetCell(x, y) == LogoCells::Dark)
                painter.drawEllipse(QRect(x * m_zoom, y * m_zoom, m_zoom, m_zoom));
        }
    }
}
