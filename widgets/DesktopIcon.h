#pragma once

#include "widgets/ShellIcon.h"

#include <QSystemTrayIcon>
#include <QTimer>

/// The notification area of this desktop.
class DesktopIcon final : public ShellIcon {
    Q_OBJECT

public:
    /// Whether this desktop has one now.
    static bool IsAvailable() { return QSystemTrayIcon::isSystemTrayAvailable(); }

    DesktopIcon();

    bool CanShowBalloons() const override { return QSystemTrayIcon::supportsMessages(); }
    void SetIcon(const QIcon& icon) override;
    void SetToolTip(const QString& text) override { m_icon.setToolTip(text); }
    void ShowBalloon(const QString& message, const QString& title, int icon, int milliseconds) override;
    void PopUp(QMenu& menu) override;

private:
    void OnActivated(QSystemTrayIcon::ActivationReason reason);

    QSystemTrayIcon m_icon;
    QTimer m_balloon;
};
