#pragma once

#include "widgets/ShellIcon.h"

#include <QMenu>

#include <memory>
#include <vector>

/// The program's icon in the notification area: tip, balloon, menu and mouse.
///
/// The icon is there for as long as this lives. Menu items are known by their index from 0 on; item 0 is always there,
/// if only as a place, and an index without item is ignored everywhere.
class frmSysTray : public QObject {
    Q_OBJECT

public:
    static constexpr int TipLength = 127;     ///< characters of a tip; a longer one is cut
    static constexpr int MessageLength = 255; ///< characters of a balloon's message
    static constexpr int TitleLength = 63;    ///< characters of a balloon's title

    /// @param toolTip the first tip.
    explicit frmSysTray(std::unique_ptr<ShellIcon> shell, const QString& toolTip);
    ~frmSysTray() override;

    /// Shows a balloon, where the desktop can. @param icon 0 none, 1 information, 2 warning, 3 error.
    void ShowBalloonTip(const QString& message, const QString& title, int icon, int milliseconds);

    QString ToolTip() const { return m_toolTip; }
    /// A text that is shown already is not sent again.
    void SetToolTip(const QString& text);

    /// An icon that is shown already is not sent again.
    void SetIconHandle(const QIcon& icon);

    /// Adds an item at the end; the caption "-" gives a separator line. @return its index.
    int AddMenuItem(const QString& caption, const QString& key, bool isDefault = false);
    void EnableMenuItem(int index, bool state);
    /// Captions and keys of the items behind move one down. Of item 0 only the caption goes.
    void RemoveMenuItem(int index);

    /// The item in bold, -1 for none.
    int DefaultMenuIndex() const { return m_defaultMenuIndex; }
    void SetDefaultMenuIndex(int index);

    /// Opens the menu where the mouse is.
    void ShowMenu();

Q_SIGNALS:
    /// @param button 1 left (when it is released), 2 right (when it is pressed).
    void SysTrayMouseDown(int button);
    void SysTrayMouseUp(int button);
    void SysTrayMouseMove();
    void SysTrayDoubleClick(int button);
    void MenuClick(int index, const QString& key);
    void BalloonShow();
    void BalloonHide();
    void BalloonTimeOut();
    void BalloonClicked();

private:
    void OnNotified(int code);
    bool IsValid(int index) const { return index >= 0 && index < static_cast<int>(m_items.size()); }
    QAction* NewItem();

    QMenu m_menu;
    std::vector<QAction*> m_items;
    std::unique_ptr<ShellIcon> m_shell;
    QString m_toolTip;
    QIcon m_icon;
    bool m_menuItemsExist = false;
    int m_defaultMenuIndex = -1;
};
