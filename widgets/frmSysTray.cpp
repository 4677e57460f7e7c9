#include "widgets/frmSysTray.h"

namespace {

void SetCaption(QAction& item, const QString& caption) {
    item.setText(caption);
    item.setSeparator(caption == QStringLiteral("-"));
}

} // namespace

frmSysTray::frmSysTray(std::unique_ptr<ShellIcon> shell, const QString& toolTip)
    : m_shell(std::move(shell)) {
    m_menu.setObjectName(QStringLiteral("mnuPopup"));
    NewItem()->setVisible(false);
    connect(m_shell.get(), &ShellIcon::Notified, this, &frmSysTray::OnNotified);
    SetToolTip(toolTip);
}

frmSysTray::~frmSysTray() = default;

QAction* frmSysTray::NewItem() {
    auto* item = new QAction(&m_menu);
    const auto index = static_cast<int>(m_items.size());
    item->setObjectName(QStringLiteral("mnuSysTray_%1").arg(index));
    connect(item, &QAction::triggered, this, [this, item, index] { Q_EMIT MenuClick(index, item->data().toString()); });
    m_items.push_back(item);
    m_menu.addAction(item);
    return item;
}

void frmSysTray::ShowBalloonTip(const QString& message, const QString& title, int icon, int milliseconds) {
    if (m_shell->CanShowBalloons())
        m_shell->ShowBalloon(message.left(MessageLength), title.left(TitleLength), icon, milliseconds);
}

void frmSysTray::SetToolTip(const QString& text) {
    const QString cut = text.left(TipLength);
    if (cut == m_toolTip)
        return;
    m_toolTip = cut;
    m_shell->SetToolTip(cut);
}

void frmSysTray::SetIconHandle(const QIcon& icon) {
    if (icon.cacheKey() == m_icon.cacheKey())
        return;
    m_icon = icon;
    m_shell->SetIcon(icon);
}

int frmSysTray::AddMenuItem(const QString& caption, const QString& key, bool isDefault) {
    QAction* item = m_menuItemsExist ? NewItem() : m_items.front();
    m_menuItemsExist = true;
    item->setVisible(true);
    item->setData(key);
    SetCaption(*item, caption);
    const auto index = static_cast<int>(std::find(m_items.begin(), m_items.end(), item) - m_items.begin());
    if (isDefault)
        SetDefaultMenuIndex(index);
    return index;
}

void frmSysTray::EnableMenuItem(int index, bool state) {
    if (IsValid(index))
        m_items[static_cast<std::size_t>(index)]->setEnabled(state);
}

void frmSysTray::RemoveMenuItem(int index) {
    if (!IsValid(index))
        return;
    if (index == 0) {
        SetCaption(*m_items.front(), QString());
        return;
    }
    for (auto i = static_cast<std::size_t>(index); i + 1 < m_items.size(); ++i) {
        SetCaption(*m_items[i], m_items[i + 1]->text());
        m_items[i]->setData(m_items[i + 1]->data());
    }
    m_items.back()->deleteLater();
    m_menu.removeAction(m_items.back());
    m_items.pop_back();
    if (m_defaultMenuIndex >= static_cast<int>(m_items.size())) {
        m_defaultMenuIndex = -1;
        m_menu.setDefaultAction(nullptr);
    }
}

void frmSysTray::SetDefaultMenuIndex(int index) {
    if (!IsValid(index))
        return;
    m_defaultMenuIndex = index;
    m_menu.setDefaultAction(m_items[static_cast<std::size_t>(index)]);
}

void frmSysTray::ShowMenu() {
    m_shell->PopUp(m_menu);
}

void frmSysTray::OnNotified(int code) {
    constexpr int Left = 1;
    constexpr int Right = 2;
    switch (code) {
    case ShellIcon::MouseMove:
        Q_EMIT SysTrayMouseMove();
        break;
    case ShellIcon::LeftUp:
        Q_EMIT SysTrayMouseDown(Left);
        break;
    case ShellIcon::LeftDoubleClick:
        Q_EMIT SysTrayDoubleClick(Left);
        break;
    case ShellIcon::RightDown:
        Q_EMIT SysTrayMouseDown(Right);
        break;
    case ShellIcon::RightUp:
        Q_EMIT SysTrayMouseUp(Right);
        break;
    case ShellIcon::RightDoubleClick:
        Q_EMIT SysTrayDoubleClick(Right);
        break;
    case ShellIcon::BalloonShown:
        Q_EMIT BalloonShow();
        break;
    case ShellIcon::BalloonHidden:
        Q_EMIT BalloonHide();
        break;
    case ShellIcon::BalloonTimedOut:
        Q_EMIT BalloonTimeOut();
        break;
    case ShellIcon::BalloonUserClick:
        Q_EMIT BalloonClicked();
        break;
    default:
        break;
    }
}
