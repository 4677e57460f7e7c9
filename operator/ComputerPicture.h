#pragma once

#include <QWidget>

/// The picture of the computer at the end of the line, with the line lamp on its screen.
class ComputerPicture : public QWidget {
    Q_OBJECT

public:
    explicit ComputerPicture(QWidget* parent = nullptr);

    /// The lamp is green for as long as something has come in lately.
    void SetLamp(bool isLit);

Q_SIGNALS:
    void Pressed(Qt::MouseButton button, Qt::KeyboardModifiers modifiers);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    bool m_hasLamp = false;
    bool m_isLit = false;
};
