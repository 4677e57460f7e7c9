#pragma once

#include "widgets/StepMark.h"

#include <QColor>
#include <QWidget>

#include <optional>
#include <vector>

/// The picture of one object on the map: its device, the values sent to it last, and a lamp.
///
/// Works with the mouse and, like a button, with Enter and the space bar.
class ObjectPicture : public QWidget {
    Q_OBJECT

public:
    explicit ObjectPicture(QWidget* parent = nullptr);

    /// Shows a device of `type`, without values and lamp.
    void SetType(int type);

    /// Writes a value; what stands elsewhere in the picture stays, but for kind 0, which clears picture and lamp first.
    /// @param kind 0 counter, 1 printer, 2 information display. @param number for kinds 0 and 1: its
    /// last four decimal digits, "msg" if it is negative. @param text for kind 2: up to three lines of 7 characters, of
    /// which the first is the last; of a line 4 characters stand on the left, 2 on the right.
    void SetValue(int kind, int number, const QByteArray& text);

    /// Lights the lamp. The picture is drawn again only if its colour changes.
    void SetLamp(QColor colour);

    /// Shows in a corner how the device is in step; nothing for one that holds nothing. @param why its tool tip.
    void SetMark(std::optional<StepMark> mark, const QString& why);
    std::optional<StepMark> Mark() const { return m_mark; }

    /// What is written now, in the order in which it was.
    QStringList Written() const;

    /// The lamp of a device in the picture, pixels at scale 1.
    static QRect LampPlace(int type);

Q_SIGNALS:
    void Clicked();
    void DoubleClicked();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    struct Writing {
        QPoint place; ///< left top
        QString text;
        int height; ///< pixels of the letters
    };

    void Write(QPoint place, const QString& text, int height);

    int m_type = 0;
    std::vector<Writing> m_writings;
    std::optional<QColor> m_lamp;
    std::optional<StepMark> m_mark;
};
