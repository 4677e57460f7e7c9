#include "setup/FindBar.h"

#include "widgets/DataGrid.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QToolButton>

FindBar::FindBar(QWidget* parent)
    : QWidget(parent)
    , m_text(new QLineEdit(this))
    , m_found(new QLabel(this)) {
    setObjectName(QStringLiteral("findBar"));
    m_text->setObjectName(QStringLiteral("txtFind"));
    m_text->setPlaceholderText(tr("Letters with or without their marks"));
    m_text->setClearButtonEnabled(true);
    m_found->setObjectName(QStringLiteral("lblFound"));
    auto* caption = new QLabel(tr("&Find"), this);
    caption->setBuddy(m_text);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(caption);
    row->addWidget(m_text, 1);
    const std::tuple<Qt::ArrowType, int, QString> steps[] = {{Qt::UpArrow, -1, tr("The one before (Shift+F3)")},
                                                             {Qt::DownArrow, 1, tr("The next one (F3)")}};
    for (const auto& [arrow, step, tip] : steps) {
        auto* button = new QToolButton(this);
        button->setArrowType(arrow);
        button->setToolTip(tip);
        button->setAccessibleName(tip);
        connect(button, &QToolButton::clicked, this, [this, step = step] { Show(step); });
        row->addWidget(button);
    }
    row->addWidget(m_found, 1);
    auto* close = new QToolButton(this);
    close->setText(QStringLiteral("\u00D7"));
    close->setToolTip(tr("Close (Esc)"));
    close->setAccessibleName(tr("Close"));
    connect(close, &QToolButton::clicked, this, &FindBar::Leave);
    row->addWidget(close);
    connect(m_text, &QLineEdit::textChanged, this, [this] { Show(0); });
    hide();
}

void FindBar::Open(DataGrid& grid) {
    m_grid = &grid;
    show();
    m_text->setFocus();
    m_text->selectAll();
    m_found->clear();
}

void FindBar::Step(int step) {
    if (isVisible())
        Show(step);
}

void FindBar::Show(int step) {
    if (!m_grid || m_text->text().isEmpty()) {
        m_found->clear();
        return;
    }
    const DataGrid::Found found = m_grid->Find(m_text->text(), step);
    m_found->setText(found.count == 0 ? tr("not found") : tr("%1 of %2").arg(found.place).arg(found.count));
}

void FindBar::Leave() {
    hide();
    if (m_grid)
        m_grid->setFocus();
}

void FindBar::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape)
        Leave();
    else if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        Show(event->modifiers().testFlag(Qt::ShiftModifier) ? -1 : 1);
    else
        QWidget::keyPressEvent(event);
}
