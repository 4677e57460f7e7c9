#include "operator/ObjectMap.h"

#include "commissioning/StateMark.h"
#include "operator/ComputerPicture.h"
#include "operator/ObjectPicture.h"
#include "station/Station.h"
#include "tickets/VniText.h"
#include "widgets/Artwork.h"

#include <QEvent>
#include <QLabel>
#include <QPainter>
#include <QTimer>

namespace {

constexpr int HallTime = 200; ///< milliseconds from a change to the marks that it makes
constexpr int TwipsPerPixel = 15;
constexpr QSize MapSize(742, 736);

/// A row of the map: where its pictures stand, in the order of their indexes.
struct MapRow {
    int top;
    std::array<int, 8> lefts;
    int count;
};

/// Twips.
constexpr MapRow Rows[] = {
    {375, {1665, 2835, 4020, 5190, 6360, 7530, 8715, 9885}, 8},
    {2490, {1665, 2835, 4020, 5190, 6360, 7530, 8715, 9885}, 8},
    {4635, {1665, 2835, 4065, 5265, 6495, 7740, 8910, 10035}, 8},
    {6750, {10050, 8850, 7650, 6465, 5265, 4065, 2880, 1680}, 8},
    {8955, {10125, 8895, 7695, 6495, 0, 0, 0, 0}, 4},
};
constexpr int PicturesOfARow = 8;

constexpr int TrunkLeft = 104; ///< pixels, of the line that joins the rows
constexpr int TrunkAbove = 9;  ///< pixels above the pictures of a row
constexpr int TrunkWidth = 3;
constexpr int NameHeight = 26; ///< pixels below a picture
constexpr int NameWidth = 78;
constexpr QColor Background(0xEE, 0xF1, 0xF4);
constexpr QColor Trunk(0x7B, 0x87, 0x94);
constexpr QColor GreyLamp(192, 192, 192);

} // namespace

ObjectMap::ObjectMap(QWidget* parent)
    : QWidget(parent) {
    setFixedSize(MapSize);
    for (int i = 0; i < Pictures; ++i) {
        auto* picture = new ObjectPicture(this);
        picture->setObjectName(QStringLiteral("picQObj_%1").arg(i));
        picture->move(PlaceOf(i));
        picture->hide();
        picture->installEventFilter(this);
        connect(picture, &ObjectPicture::Clicked, this, [this, i] { Q_EMIT ObjectClicked(i); });
        connect(picture, &ObjectPicture::DoubleClicked, this,
                [this, i] { m_station->ActivateObject(static_cast<qint16>(i)); });
        auto* counter = new QLabel(picture);
        counter->setObjectName(QStringLiteral("lblCounter_%1").arg(i));
        counter->setGeometry(18, 90, 28, 12);
        counter->setAttribute(Qt::WA_TransparentForMouseEvents);
        auto* name = new QLabel(this);
        name->setObjectName(QStringLiteral("lblName_%1").arg(i));
        name->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
        name->setGeometry(picture->geometry().center().x() - NameWidth / 2, picture->geometry().bottom() + 1, NameWidth,
                          NameHeight);
        name->hide();
        m_pictures[static_cast<std::size_t>(i)] = picture;
        m_names[static_cast<std::size_t>(i)] = name;
    }
}

QPoint ObjectMap::PlaceOf(int index) {
    const MapRow& row = Rows[index / PicturesOfARow];
    return QPoint(row.lefts[static_cast<std::size_t>(index % PicturesOfARow)], row.top) / TwipsPerPixel;
}

QColor ObjectMap::BackgroundColour() {
    return Background;
}

QSize ObjectMap::sizeHint() const {
    return MapSize;
}

void ObjectMap::Use(Station& station) {
    m_station = &station;
    connect(&station, &Station::ModelChanged, this, &ObjectMap::ShowObjects);
    connect(&station.Starts(), &DeviceStart::UpdateObjectDisplay, this,
            [this](qint16 object, int kind, qint32 number, const QByteArray& text) {
                if (object >= 0 && object < ShownObjects())
                    Picture(object).SetValue(kind, number, text);
            });
    m_hallChanged = new QTimer(this);
    m_hallChanged->setSingleShot(true);
    m_hallChanged->setInterval(HallTime);
    connect(m_hallChanged, &QTimer::timeout, this, &ObjectMap::ShowHall);
    connect(&station, &Station::HallChanged, m_hallChanged, qOverload<>(&QTimer::start));
    ShowObjects();
    ShowHall();
}

void ObjectMap::ShowHall() {
    const Result<std::vector<DeviceState>> hall = m_station->Hall();
    for (int i = 0; i < ShownObjects(); ++i) {
        const qint32 key = m_station->Model().Object(static_cast<qint16>(i)).Id;
        std::optional<StepMark> mark;
        QString why;
        if (hall) {
            const auto found = std::find_if(hall->begin(), hall->end(),
                                            [key](const DeviceState& device) { return device.key == key; });
            if (found != hall->end()) {
                mark = MarkOf(found->state);
                why =
                    found->what.isEmpty() ? NameOf(found->state) : tr("%1: %2").arg(NameOf(found->state), found->what);
            }
        }
        Picture(i).SetMark(mark, why);
    }
}

int ObjectMap::ShownObjects() const {
    return m_station ? std::min<int>(m_station->Model().NumObjects, Pictures) : 0;
}

void ObjectMap::ShowObjects() {
    const int shown = ShownObjects();
    QFont nameFont = font();
    nameFont.setPixelSize(11);
    const QFontMetrics metrics(nameFont);
    for (int i = 0; i < Pictures; ++i) {
        const auto slot = static_cast<std::size_t>(i);
        ObjectPicture& picture = *m_pictures[slot];
        QLabel& name = *m_names[slot];
        picture.setVisible(i < shown);
        name.setVisible(i < shown);
        if (i >= shown) {
            m_shown[slot] = {};
            continue;
        }
        const model::QObject& object = m_station->Model().Object(static_cast<qint16>(i));
        if (const std::pair<qint32, int> now(object.Id, object.Type); m_shown[slot] != now) {
            // What was sent to another object says nothing about this one.
            picture.SetType(object.Type);
            m_shown[slot] = now;
        }
        const QString shownName = vni::ToUnicode(object.Name);
        name.setFont(nameFont);
        name.setText(metrics.elidedText(shownName, Qt::ElideRight, NameWidth) + tr("\nadr %1").arg(object.Address));
        const QString told = tr("%1, number %2, address %3").arg(shownName).arg(object.Number).arg(object.Address);
        name.setToolTip(told);
        picture.setAccessibleName(told);
    }
    update();
}

void ObjectMap::DrawAllObjects() {
    for (int i = 0; i < ShownObjects(); ++i)
        DrawObjectState(i);
    if (m_station->Run().QueueRunning())
        m_station->MarkDrawn();
    findChild<ComputerPicture*>(QStringLiteral("picPC"))->SetLamp(m_station->Run().RxActivity() > 0);
}

void ObjectMap::DrawObjectState(int index) {
    // No object has another state than 0, for which the lamp is grey.
    Picture(index).SetLamp(GreyLamp);
}

void ObjectMap::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), Background);
    painter.setPen(QPen(Trunk, TrunkWidth));
    const int shown = ShownObjects();
    int bottom = 0;
    for (int first = 0; first < shown; first += PicturesOfARow) {
        const int last = std::min(shown, first + PicturesOfARow) - 1;
        const int y = PlaceOf(first).y() - TrunkAbove;
        int right = 0;
        for (int i = first; i <= last; ++i) {
            const int middle = PlaceOf(i).x() + artwork::ObjectSize.width() / 2;
            painter.drawLine(middle, y, middle, PlaceOf(i).y());
            right = std::max(right, middle);
        }
        painter.drawLine(TrunkLeft, y, right, y);
        bottom = y;
    }
    if (const auto* computer = findChild<ComputerPicture*>(QStringLiteral("picPC")); computer && bottom > 0) {
        const int y = computer->geometry().center().y();
        painter.drawLine(computer->geometry().right() - 20, y, TrunkLeft, y);
        painter.drawLine(TrunkLeft, PlaceOf(0).y() - TrunkAbove, TrunkLeft, std::max(bottom, y));
    }
}

bool ObjectMap::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::FocusIn)
        Q_EMIT PictureFocused(static_cast<QWidget*>(watched)->geometry());
    return QWidget::eventFilter(watched, event);
}
