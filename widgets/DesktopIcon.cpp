#include "widgets/DesktopIcon.h"

#include <QCursor>
#include <QMenu>

DesktopIcon::DesktopIcon() {
    m_balloon.setSingleShot(true);
    connect(&m_balloon, &QTimer::timeout, this, [this] { Q_EMIT Notified(BalloonTimedOut); });
    connect(&m_icon, &QSystemTrayIcon::activated, this, &DesktopIcon::OnActivated);
    connect(&m_icon, &QSystemTrayIcon::messageClicked, this, [this] {
        m_balloon.stop();
        Q_EMIT Notified(BalloonUserClick);
    });
}

void DesktopIcon::SetIcon(const QIcon& icon) {
    m_icon.setIcon(icon);
    m_icon.show();
}

void DesktopIcon::ShowBalloon(const QString& message, const QString& title, int icon, int milliseconds) {
    m_icon.showMessage(title, message, static_cast<QSystemTrayIcon::MessageIcon>(icon), milliseconds);
    m_balloon.start(milliseconds);
    Q_EMIT Notified(BalloonShown);
}

void DesktopIcon::PopUp(QMenu& menu) {
    menu.popup(QCursor::pos());
    menu.activateWindow();
}

void DesktopIcon::OnActivated(QSystemTrayIcon::ActivationReason reason) {
    switch (reason) {
    case QSystemTrayIcon::Trigger:
        Q_EMIT Notified(LeftUp);
        break;
    case QSystemTrayIcon::DoubleClick:
        Q_EMIT Notified(LeftDoubleClick);
        break;
    case QSystemTrayIcon::Context:
        Q_EMIT Notified(RightDown);
        Q_EMIT Notified(RightUp);
        break;
    default:
        break;
    }
}
