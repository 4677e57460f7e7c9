#pragma once

#include "widgets/InnerDrag.h"

#include <QListWidget>

/// A list whose entries stand for pieces of text that are dragged into an editor, or put into it with Enter or a double
/// click.
class TokenList : public QListWidget {
    Q_OBJECT

public:
    explicit TokenList(QWidget* parent = nullptr);

    /// Adds an entry. @param token what it puts into the editor.
    void AddToken(const QString& text, const QString& token);
    /// Where entries may be dropped.
    void SetTarget(const QWidget* target) { m_target = target; }

Q_SIGNALS:
    void TokenWanted(const QString& token);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    bool IsOverTarget(QPoint place) const;

    const QWidget* m_target = nullptr;
    QPoint m_pressed;
    InnerDrag m_drag;
};
