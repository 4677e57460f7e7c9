#pragma once

#include <QIcon>
#include <QObject>

class QMenu;

/// The notification area of a desktop: shows one icon, and tells what happens to it.
class ShellIcon : public QObject {
    Q_OBJECT

public:
    /// Codes of `Notified`.
    enum Code {
        MouseMove = 0x200,
        LeftUp = 0x202,
        LeftDoubleClick = 0x203,
        RightDown = 0x204,
        RightUp = 0x205,
        RightDoubleClick = 0x206,
        BalloonShown = 1026,
        BalloonHidden = 1027,
        BalloonTimedOut = 1028,
        BalloonUserClick = 1029,
    };

    virtual bool CanShowBalloons() const = 0;
    virtual void SetIcon(const QIcon& icon) = 0;
    virtual void SetToolTip(const QString& text) = 0;
    /// @param icon 0 none, 1 information, 2 warning, 3 error.
    virtual void ShowBalloon(const QString& message, const QString& title, int icon, int milliseconds) = 0;
    /// Opens `menu` where the mouse is; it closes when the user clicks elsewhere.
    virtual void PopUp(QMenu& menu) = 0;

Q_SIGNALS:
    void Notified(int code);
};
