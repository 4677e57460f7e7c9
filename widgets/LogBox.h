#pragma once

#include <QPlainTextEdit>
#include <QTimer>

/// A box that shows characters as they come: once it holds more than its limit it is emptied before the next text. A
/// double click empties it.
///
/// Text is gathered and shown some twenty times a second, so that a busy line costs the window nothing. STX,
/// ETX and ACK show as two triangles and a tick, other control characters as dots.
class LogBox : public QPlainTextEdit {
    Q_OBJECT

public:
    explicit LogBox(QWidget* parent = nullptr);

    /// Characters above which the box is emptied before the next text; 6,000 at first.
    void SetLimit(qsizetype characters) { m_limit = characters; }

    /// Adds `text` at the end, without a line break.
    void Add(const QString& text);

    /// What the box holds, what is not shown yet included.
    const QString& Content() const { return m_content; }

protected:
    void mouseDoubleClickEvent(QMouseEvent* event) override;

private:
    void ShowGathered();

    QString m_content;
    qsizetype m_shown = 0; ///< characters of `m_content` that stand in the box already
    bool m_startsAnew = false;
    qsizetype m_limit = 6000;
    QTimer m_gathering;
};
