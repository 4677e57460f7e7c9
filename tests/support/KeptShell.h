#pragma once

#include "widgets/ShellIcon.h"

#include <QMenu>
#include <QStringList>

/// A notification area that keeps what it is told.
class KeptShell final : public ShellIcon {
public:
    explicit KeptShell(QStringList& told, bool balloons)
        : m_told(told)
        , m_balloons(balloons) {}

    /// The menu that was opened last.
    QMenu* Menu = nullptr;

    bool CanShowBalloons() const override { return m_balloons; }
    void SetIcon(const QIcon&) override { m_told += QStringLiteral("icon"); }
    void SetToolTip(const QString& text) override { m_told += QStringLiteral("tip %1").arg(text.size()); }
    void ShowBalloon(const QString& message, const QString& title, int icon, int milliseconds) override {
        m_told +=
            QStringLiteral("balloon %1 %2 %3 %4").arg(message.size()).arg(title.size()).arg(icon).arg(milliseconds);
    }
    void PopUp(QMenu& menu) override {
        Menu = &menu;
        QStringList items;
        for (const QAction* item : menu.actions()) {
            const QString text = item->isSeparator() ? QStringLiteral("-") : item->text();
            items += menu.defaultAction() == item ? u'*' + text : text;
        }
        m_told += items.join(u'|');
    }

private:
    QStringList& m_told;
    bool m_balloons;
};
