#include "database/StoreKind.h"

#include <QFile>
#include <QFileInfo>

StoreKind StoreKindOf(QByteArrayView head) {
    if (head.isEmpty())
        return StoreKind::Empty;
    if (head.startsWith(QByteArrayView("SQLite format 3\0", 16)))
        return StoreKind::Sqlite;
    if (head.size() < StoreKindBytes || !head.startsWith(QByteArrayView("\0\1\0\0", 4)))
        return StoreKind::Other;
    const QByteArrayView engine = head.sliced(4, 16);
    const int version = static_cast<quint8>(head[0x14]);
    if (engine == QByteArrayView("Standard ACE DB\0", 16))
        return StoreKind::Ace;
    if (engine != QByteArrayView("Standard Jet DB\0", 16))
        return StoreKind::Other;
    return version == 0 ? StoreKind::Jet3 : version == 1 ? StoreKind::Jet4 : StoreKind::Ace;
}

StoreKind StoreKindOfFile(const QString& path) {
    const QFileInfo info(path);
    // A link that leads nowhere does not "exist", and nothing may be made in its place unseen.
    if (!info.exists())
        return info.isSymLink() ? StoreKind::Unreadable : StoreKind::Missing;
    // Reading a pipe or a device would wait for ever.
    if (!info.isFile())
        return StoreKind::Unreadable;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return StoreKind::Unreadable;
    const QByteArray head = file.read(StoreKindBytes);
    if (file.error() != QFileDevice::NoError)
        return StoreKind::Unreadable;
    return StoreKindOf(head);
}

bool IsJet(StoreKind kind) {
    return kind == StoreKind::Jet3 || kind == StoreKind::Jet4 || kind == StoreKind::Ace;
}
