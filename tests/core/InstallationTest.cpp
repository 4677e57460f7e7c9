#include "core/Installation.h"

#include <gtest/gtest.h>

using model::Installation;
using model::TicketRing;

TEST(TicketRing, RefusesThe513thAndStaysUnchanged) {
    TicketRing ring;
    for (qint16 ticket = 1; ticket <= 512; ++ticket)
        ASSERT_TRUE(ring.RingAdd({.TicketNo = ticket}));
    EXPECT_TRUE(ring.RingIsFull());
    EXPECT_FALSE(ring.RingAdd({.TicketNo = 999}));
    EXPECT_EQ(ring.Count, 512);
    EXPECT_EQ(ring.Head, 1);
    EXPECT_EQ(ring.Entries[1].TicketNo, 1);
    EXPECT_EQ(ring.Tail, 0);
    EXPECT_EQ(ring.Entries[0].TicketNo, 512);
    ring.ResetRing();
    EXPECT_TRUE(ring.RingAdd({.TicketNo = 7}));
    EXPECT_EQ(ring.Entries[1].TicketNo, 7);
}

TEST(Installation, LookupsStopAtTheCountsAndTakeTheFirstMatch) {
    const auto installation = std::make_unique<Installation>();
    EXPECT_EQ(installation->FindServiceById(0), -1);
    EXPECT_EQ(installation->FindServiceByNumber(0), 0);
    EXPECT_EQ(installation->FindObjectById(0), -1);
    EXPECT_EQ(installation->FindObjectByNumber(0), -1);
    EXPECT_EQ(installation->FirstServiceOf(0), -1);

    for (std::size_t i = 0; i < 4; ++i) {
        installation->QServices[i].Id = static_cast<qint32>(10 + i);
        installation->QServices[i].Number = 5;
        installation->QObjects[i].Id = static_cast<qint32>(70'000 + i);
        installation->QObjects[i].Number = 9;
        installation->QObjects[i].FirstServiceId = 12;
    }
    installation->NumServices = 3;
    installation->NumObjects = 2;
    EXPECT_EQ(installation->FindServiceById(12), 2);
    EXPECT_EQ(installation->FindServiceById(13), -1);
    EXPECT_EQ(installation->FindServiceByNumber(5), 0);
    EXPECT_EQ(installation->FindServiceByNumber(6), 0);
    EXPECT_EQ(installation->FindObjectById(70'001), 1);
    EXPECT_EQ(installation->FindObjectById(70'002), -1);
    EXPECT_EQ(installation->FindObjectByNumber(9), 0);
    EXPECT_EQ(installation->FirstServiceOf(1), 2);
    EXPECT_EQ(installation->FirstServiceOf(64), -1);
}

TEST(Installation, DirectionOfAnUnknownPairIsNone) {
    const auto installation = std::make_unique<Installation>();
    installation->DirectionTable = {{8, 1, 3}, {8, 1, 4}, {8, 2, 2}};
    installation->NumDirections = 2;
    EXPECT_EQ(installation->DirectionOf(8, 1), 3);
    EXPECT_EQ(installation->DirectionOf(8, 2), 0);
}
