#pragma once

#include <QPointer>
#include <QWidget>

class QLabel;

/// A drag from one control of a window to another, followed by the control that it began in.
///
/// Stands in for the toolkit's own drag, which runs an event loop of its own until the mouse is released.
class InnerDrag {
public:
    /// @param source the widget that gets the mouse's events; its cursor shows whether the place under the mouse takes
    ///               what is dragged.
    explicit InnerDrag(QWidget* source)
        : m_source(source) {}
    ~InnerDrag() { End(); }
    InnerDrag(const InnerDrag&) = delete;
    InnerDrag& operator=(const InnerDrag&) = delete;

    /// Shows `text` beside the mouse from now on.
    void Begin(const QString& text, const QFont& font);
    bool IsRunning() const { return m_label; }
    /// The mouse has come to `place`, in screen coordinates.
    void Follow(QPoint place, bool isTaken);
    void End();

    /// The widget of the source's window at `place`, in screen coordinates, or one of its parents, that is a `Control`.
    template <typename Control>
    Control* Under(QPoint place) const {
        const QWidget* window = m_source->window();
        QWidget* widget = window->childAt(window->mapFromGlobal(place));
        while (widget && !qobject_cast<Control*>(widget))
            widget = widget->parentWidget();
        return qobject_cast<Control*>(widget);
    }

private:
    QWidget* m_source;
    QPointer<QLabel> m_label;
};
