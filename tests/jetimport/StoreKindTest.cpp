#include "database/StoreKind.h"
#include "tests/jetimport/JetFixture.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

TEST(StoreKind, IsTheContentNotTheName) {
    const QByteArray jet4 = jetfixture::Bytes().first(StoreKindBytes);
    const auto with = [&](int place, const char* bytes, int count) {
        return QByteArray(jet4).replace(place, count, QByteArray(bytes, count));
    };
    const struct {
        QByteArray head;
        StoreKind kind;
    } cases[] = {
        {"", StoreKind::Empty},
        {jet4, StoreKind::Jet4},
        {with(0x14, "\0", 1), StoreKind::Jet3},
        {with(0x14, "\2", 1), StoreKind::Ace},
        {with(4, "Standard ACE DB", 15), StoreKind::Ace},
        {with(4, "Standard JET DB", 15), StoreKind::Other},
        {with(0, "\1", 1), StoreKind::Other},
        {jet4.first(StoreKindBytes - 1), StoreKind::Other},
        {QByteArray("SQLite format 3\0", 16), StoreKind::Sqlite},
        {QByteArray("SQLite format 3 ", 16), StoreKind::Other},
        {QByteArray(100, '\0'), StoreKind::Other},
        {"Harbinet", StoreKind::Other},
    };
    for (const auto& c : cases)
        EXPECT_EQ(StoreKindOf(c.head), c.kind) << c.head.toHex().constData();
}

TEST(StoreKind, OfWhatIsNoFileEndsAtOnce) {
    const QTemporaryDir folder;
    EXPECT_EQ(StoreKindOfFile(folder.filePath(QStringLiteral("none.mdb"))), StoreKind::Missing);
    EXPECT_EQ(StoreKindOfFile(folder.path()), StoreKind::Unreadable);
    EXPECT_EQ(StoreKindOfFile(QStringLiteral("/dev/zero")), StoreKind::Unreadable);
    EXPECT_EQ(StoreKindOfFile(QStringLiteral(TEST_DATA_FOLDER "/Harbinet-jet4.mdb")), StoreKind::Jet4);
}
