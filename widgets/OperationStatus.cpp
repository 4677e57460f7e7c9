#include "widgets/OperationStatus.h"

#include <QHelpEvent>
#include <QPainter>
#include <QProgressBar>
#include <QPushButton>
#include <QStatusBar>
#include <QStyle>
#include <QToolTip>

namespace {

constexpr int BarWidth = 140; ///< pixels

} // namespace

QSize ElidedLabel::sizeHint() const {
    return {0, QLabel::sizeHint().height()};
}

QSize ElidedLabel::minimumSizeHint() const {
    return {0, QLabel::minimumSizeHint().height()};
}

bool ElidedLabel::event(QEvent* event) {
    if (event->type() != QEvent::ToolTip || fontMetrics().horizontalAdvance(text()) <= contentsRect().width())
        return QLabel::event(event);
    QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), text(), this);
    return true;
}

void ElidedLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    style()->drawItemText(&painter, contentsRect(), static_cast<int>(alignment()), palette(), isEnabled(),
                          fontMetrics().elidedText(text(), Qt::ElideRight, contentsRect().width()), foregroundRole());
}

OperationStatus::OperationStatus(QStatusBar& bar)
    : ::QObject(&bar)
    , m_label(new ElidedLabel(&bar))
    , m_bar(new QProgressBar(&bar))
    , m_cancel(new QPushButton(QLabel::tr("Cancel"), &bar)) {
    m_label->setObjectName(QStringLiteral("lblProgress"));
    m_bar->setObjectName(QStringLiteral("prgOperation"));
    m_cancel->setObjectName(QStringLiteral("cmdCancelOperation"));
    m_bar->setFixedWidth(BarWidth);
    m_bar->setTextVisible(false);
    m_bar->setMaximumHeight(m_label->fontMetrics().height());
    m_cancel->setToolTip(QLabel::tr("Ends what runs behind the command that is on the line"));
    bar.addWidget(m_label, 1);
    bar.addWidget(m_bar);
    bar.addWidget(m_cancel);
    m_label->setContentsMargins(6, 0, 0, 0);
    m_label->installEventFilter(this);
    connect(m_cancel, &QPushButton::clicked, this, &OperationStatus::CancelWanted);
    SetBusy(false, false);
}

void OperationStatus::SetBusy(bool busy, bool canCancel) {
    m_bar->setVisible(busy);
    m_bar->setRange(0, 0);
    m_cancel->setVisible(busy && canCancel);
    if (busy)
        ShowResult({});
}

void OperationStatus::ShowProgress(const QString& text, int done, int total) {
    m_label->setText(text);
    m_bar->setRange(0, total);
    m_bar->setValue(done);
}

void OperationStatus::ShowResult(const QString& text, const QStringList& devices) {
    m_devices = devices;
    m_devices.removeDuplicates();
    m_label->setText(text);
    m_label->setCursor(m_devices.isEmpty() ? Qt::ArrowCursor : Qt::PointingHandCursor);
}

void OperationStatus::ShowSilent(const QStringList& devices) {
    if (!devices.isEmpty())
        ShowResult(QLabel::tr("No answer from %1.").arg(devices.join(QStringLiteral(", "))), devices);
}

bool OperationStatus::eventFilter(::QObject* watched, QEvent* event) {
    if (watched == m_label && event->type() == QEvent::MouseButtonRelease && !m_devices.isEmpty())
        Q_EMIT DetailsWanted(QLabel::tr("No answer from:\n%1").arg(m_devices.join(u'\n')));
    return ::QObject::eventFilter(watched, event);
}
