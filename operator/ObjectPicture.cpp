#include "operator/ObjectPicture.h"

#include "platform/AnsiText.h"
#include "widgets/Artwork.h"

#include <QFontDatabase>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

namespace {

enum Kind { CounterKind = 0, PrinterKind = 1, DisplayKind = 2 };

constexpr QPoint CounterPlace(20, 14);
constexpr QPoint PrinterPlace(20, 9);
constexpr QRect MarkPlace(50, 1, 16, 16);
constexpr int NumberHeight = 15;
constexpr int TextHeight = 10;
constexpr QColor Digits(0xFF, 0xB0, 0x30);

constexpr int LineLength = 7; ///< characters of a line of a display
constexpr int LeftColumn = 13;
constexpr int RightColumn = 50;

/// Where a line of a display stands, and which of its characters stand on the right.
constexpr struct {
    int top;
    int rightPart;
} DisplayLines[] = {{54, 5}, {71, 4}, {87, 4}};

QString ShownNumber(int number) {
    if (number < 0)
        return QStringLiteral("msg");
    return QString::number(number).rightJustified(4, u'0').right(4);
}

/// Text as a display shows it: what is no character is dark.
QString ShownText(const QByteArray& text) {
    QString shown = ansi::Decode(text);
    for (QChar& character : shown) {
        if (!character.isPrint())
            character = u' ';
    }
    return shown;
}

} // namespace

ObjectPicture::ObjectPicture(QWidget* parent)
    : QWidget(parent) {
    setFixedSize(artwork::ObjectSize);
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::PointingHandCursor);
    setAttribute(Qt::WA_OpaquePaintEvent);
}

QRect ObjectPicture::LampPlace(int type) {
    switch (type) {
    case CounterKind:
        return {37, 59, 4, 2};
    case PrinterKind:
        return {42, 83, 2, 2};
    default:
        return {11, 43, 3, 4};
    }
}

void ObjectPicture::SetType(int type) {
    m_type = type;
    m_writings.clear();
    m_lamp.reset();
    update();
}

void ObjectPicture::Write(QPoint place, const QString& text, int height) {
    std::erase_if(m_writings, [place](const Writing& writing) { return writing.place == place; });
    m_writings.push_back({place, text, height});
}

void ObjectPicture::SetValue(int kind, int number, const QByteArray& text) {
    if (kind == CounterKind) {
        m_writings.clear();
        m_lamp.reset();
        Write(CounterPlace, ShownNumber(number), NumberHeight);
    } else if (kind == PrinterKind) {
        Write(PrinterPlace, ShownNumber(number), NumberHeight);
    } else if (kind == DisplayKind) {
        qsizetype end = text.size();
        for (const auto& [top, rightPart] : DisplayLines) {
            const qsizetype start = std::max<qsizetype>(0, end - LineLength);
            if (start == end)
                break;
            const QByteArray line = text.sliced(start, end - start);
            Write({LeftColumn, top}, ShownText(line.left(4)), TextHeight);
            Write({RightColumn, top}, ShownText(line.mid(rightPart, 2)), TextHeight);
            end = start;
        }
    }
    update();
}

void ObjectPicture::SetLamp(QColor colour) {
    if (m_lamp == colour)
        return;
    m_lamp = colour;
    update(LampPlace(m_type));
}

void ObjectPicture::SetMark(std::optional<StepMark> mark, const QString& why) {
    setToolTip(why);
    setAccessibleDescription(why);
    if (m_mark == mark)
        return;
    m_mark = mark;
    update();
}

QStringList ObjectPicture::Written() const {
    QStringList texts;
    for (const Writing& writing : m_writings)
        texts += writing.text;
    return texts;
}

void ObjectPicture::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.drawPixmap(0, 0, artwork::Object(m_type, devicePixelRatioF()));
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setBold(true);
    painter.setPen(Digits);
    for (const Writing& writing : m_writings) {
        font.setPixelSize(writing.height);
        painter.setFont(font);
        painter.drawText(writing.place.x(), writing.place.y() + painter.fontMetrics().ascent(), writing.text);
    }
    if (m_lamp)
        painter.fillRect(LampPlace(m_type), *m_lamp);
    if (m_mark)
        DrawMark(painter, MarkPlace, *m_mark);
    if (hasFocus()) {
        painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
        painter.drawRect(rect().adjusted(1, 1, -1, -1));
    }
}

void ObjectPicture::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton)
        Q_EMIT Clicked();
}

void ObjectPicture::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton)
        Q_EMIT DoubleClicked();
}

void ObjectPicture::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter || event->key() == Qt::Key_Space)
        Q_EMIT Clicked();
    else
        QWidget::keyPressEvent(event);
}
