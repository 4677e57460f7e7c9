#pragma once

#include <QWidget>

#include <array>

class ObjectPicture;
class QLabel;
class QTimer;
class Station;

/// The map of the installation: a picture for each of the first 36 objects, in their given places, joined by the bus to
/// the computer.
class ObjectMap : public QWidget {
    Q_OBJECT

public:
    static constexpr int Pictures = 36;

    explicit ObjectMap(QWidget* parent = nullptr);

    /// Shows the installation of `station`, which must outlive the map, and follows it.
    void Use(Station& station);

    /// One pass of the lamps, that of the line too. With the system started, every object is marked as dirty.
    void DrawAllObjects();

    /// The picture of an object. @param index 0 to 35.
    ObjectPicture& Picture(int index) const { return *m_pictures[static_cast<std::size_t>(index)]; }

    /// Left top of a picture, pixels. @param index 0 to 35.
    static QPoint PlaceOf(int index);

    /// The colour around the pictures.
    static QColor BackgroundColour();

    QSize sizeHint() const override;

Q_SIGNALS:
    /// An object was clicked. @param index in the model.
    void ObjectClicked(int index);
    /// A picture got the keyboard and should be in sight.
    void PictureFocused(const QRect& place);

protected:
    void paintEvent(QPaintEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void ShowObjects();
    void ShowHall();
    void DrawObjectState(int index);
    int ShownObjects() const;

    Station* m_station = nullptr;
    QTimer* m_hallChanged = nullptr; ///< many changes are shown at once
    std::array<ObjectPicture*, Pictures> m_pictures{};
    std::array<QLabel*, Pictures> m_names{};
    std::array<std::pair<qint32, int>, Pictures> m_shown{}; ///< `Id` and `Type` that a picture shows, `Id` 0 for none
};
