#include "operator/ObjectMap.h"

#include "operator/ComputerPicture.h"
#include "operator/ObjectPicture.h"
#include "tests/support/StationWorld.h"
#include "widgets/Artwork.h"

#include <QLabel>
#include <QTest>

namespace {

/// 40 counters, a printer and a display among the first of them.
class ObjectMapTest : public StationWorld {
protected:
    ObjectMapTest()
        : StationWorld({QStringLiteral("WITH RECURSIVE n(i) AS (SELECT 0 UNION SELECT i + 1 FROM n WHERE i < 39) "
                                       "INSERT INTO Display (d_Id, d_Number, d_Address, d_Name, d_On, d_Type, d_HubId) "
                                       "SELECT i + 1, i + 1, i + 1, 'object ' || i, 1, CASE i WHEN 1 THEN 1 WHEN 2 "
                                       "THEN 2 ELSE 0 END, 0 FROM n"),
                        QStringLiteral("INSERT INTO ScanPlan (d_Id, [Order]) VALUES (1, 1)")}) {
        (void)m_station.reload.ReloadAll();
        m_computer.setObjectName(QStringLiteral("picPC"));
        m_map.Use(m_station);
        m_map.show();
    }

    std::string Written(int index) const { return m_map.Picture(index).Written().join(u'|').toStdString(); }

    ObjectMap m_map;
    ComputerPicture m_computer{&m_map};
};

} // namespace

TEST_F(ObjectMapTest, EachPictureStandsInItsPlaceAndObjectsBeyondTheMapHaveNone) {
    const struct {
        int index;
        QPoint place; // twips
    } places[] = {{0, {1665, 375}},    {7, {9885, 375}},   {8, {1665, 2490}},   {18, {4065, 4635}}, {23, {10035, 4635}},
                  {24, {10050, 6750}}, {31, {1680, 6750}}, {32, {10125, 8955}}, {35, {6495, 8955}}};
    for (const auto& [index, place] : places) {
        EXPECT_EQ(m_map.Picture(index).pos(), place / 15) << index;
        EXPECT_TRUE(m_map.Picture(index).isVisible());
    }
    for (int a = 0; a < ObjectMap::Pictures; ++a) {
        EXPECT_TRUE(m_map.rect().contains(m_map.Picture(a).geometry()));
        for (int b = 0; b < a; ++b)
            EXPECT_FALSE(m_map.Picture(a).geometry().intersects(m_map.Picture(b).geometry())) << a << ' ' << b;
    }
    // Whatever is told about the others is let go.
    for (const qint16 beyond : {qint16(36), qint16(39), qint16(63), qint16(-1)})
        Q_EMIT m_station.starts.UpdateObjectDisplay(beyond, 0, 7, {});
    m_station.run.SetRunning(true);
    m_map.DrawAllObjects();
    EXPECT_TRUE(m_station.installation->QObjects[39].Dirty);
}

TEST_F(ObjectMapTest, WhatIsSentToAnObjectIsWrittenOnItsPicture) {
    const struct {
        int kind;
        int number;
        QByteArray text;
        const char* written;
    } cases[] = {
        {0, 7, "", "0007"},
        {0, 12345, "", "2345"},
        {0, -1, "", "msg"},
        {1, 0, "", "0000"},
        {2, 5, "", ""},
        {2, 0, "1234L56", "1234|56"},
        {2, 0, "12", "12|"},
        {2, 0, "aaaaAA.1234>56", "1234|56|aaaa|AA"},
        {2, 0, "cccc12xbbbb34yaaaa5Z6", "aaaa|Z6|bbbb|34|cccc|12"},
        {2, 0, "more than three lines, cccc12xbbbb34yaaaa5Z6", "aaaa|Z6|bbbb|34|cccc|12"},
        {2, 0, QByteArray(6, '\x16') + '\x1B', "    |  "},
    };
    for (const auto& [kind, number, text, written] : cases) {
        m_map.Picture(2).SetType(2);
        Q_EMIT m_station.starts.UpdateObjectDisplay(2, kind, number, text);
        EXPECT_EQ(Written(2), written) << text.toStdString();
    }
    EXPECT_EQ(Written(1), "");
    // What stands elsewhere stays, until a counter's value clears the picture and its lamp.
    for (const auto& [kind, text] : {std::pair(1, QByteArray()), {2, "1234L56"}, {2, ""}})
        Q_EMIT m_station.starts.UpdateObjectDisplay(2, kind, 9, text);
    EXPECT_EQ(Written(2).substr(0, 4), "0009");
    EXPECT_TRUE(Written(2).ends_with("|1234|56"));
    Q_EMIT m_station.starts.UpdateObjectDisplay(2, 0, 3, {});
    EXPECT_EQ(Written(2), "0003");
    const QImage withoutLamp = m_map.Picture(2).grab().toImage();
    m_map.Picture(2).SetLamp(Qt::red);
    EXPECT_NE(m_map.Picture(2).grab().toImage(), withoutLamp);
    Q_EMIT m_station.starts.UpdateObjectDisplay(2, 0, 3, {});
    EXPECT_EQ(m_map.Picture(2).grab().toImage(), withoutLamp);
    // Another object in the same place begins with an empty picture; the same one keeps its value.
    Q_EMIT m_station.starts.UpdateObjectDisplay(0, 0, 1, {});
    ASSERT_TRUE(m_station.database.Run({QStringLiteral("UPDATE Display SET d_Name='renamed' WHERE d_Id=1")}));
    ASSERT_TRUE(m_station.database.Run({QStringLiteral("UPDATE Display SET d_On=0 WHERE d_Id=3")}));
    EXPECT_TRUE(Await(m_station.RefreshModel()).IsDone());
    EXPECT_EQ(Written(0), "0001");
    EXPECT_EQ(Written(2), "");
    EXPECT_TRUE(m_map.findChild<QLabel*>(QStringLiteral("lblName_0"))->text().startsWith(QStringLiteral("renamed")));
}

TEST_F(ObjectMapTest, LampsAreDrawnWhereTheDeviceHasThem) {
    const auto colour = [this](int index) {
        const QRect lamp = ObjectPicture::LampPlace(index == 1 ? 1 : index == 2 ? 2 : 0);
        return m_map.Picture(index).grab().toImage().pixelColor(lamp.center());
    };
    const QColor grey(192, 192, 192);
    for (const int index : {0, 1, 2})
        EXPECT_NE(colour(index), grey);
    m_station.installation->QObjects[0].Dirty = false;
    m_map.DrawAllObjects();
    for (const int index : {0, 1, 2})
        EXPECT_EQ(colour(index), grey);
    EXPECT_FALSE(m_station.installation->QObjects[0].Dirty) << "the system is stopped";
    const auto lineLamp = [this] { return m_computer.grab().toImage().pixelColor(50, 40); };
    EXPECT_EQ(lineLamp(), QColor(127, 127, 127));
    OpenLine();
    Await(m_station.bus.SendCommand(1, 'P', {}));
    m_map.DrawAllObjects();
    EXPECT_EQ(lineLamp(), QColor(0, 255, 0));
}

TEST(ArtworkTest, PicturesAreSharpAtEveryScale) {
    for (const int type : {0, 1, 2, 3}) {
        const QPixmap twice = artwork::Object(type, 2);
        EXPECT_EQ(twice.size(), artwork::ObjectSize * 2);
        EXPECT_EQ(twice.devicePixelRatio(), 2);
        // More than the small one drawn large.
        const QImage small = artwork::Object(type, 1).toImage();
        EXPECT_NE(twice.toImage().scaled(artwork::ObjectSize).scaled(twice.size()), twice.toImage());
        EXPECT_EQ(small.pixelColor(6, 100).alpha(), 255);
    }
}
