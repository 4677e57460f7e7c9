#pragma once

#include <QByteArrayView>
#include <QString>

/// What a file holds, judged by its content; its name means nothing.
enum class StoreKind {
    Missing,    ///< there is no such file
    Unreadable, ///< it cannot be opened or read, or is a folder
    Empty,      ///< no bytes
    Sqlite,     ///< the station's own kind of store
    Jet3,       ///< Access 97 and older
    Jet4,       ///< Access 2000 to 2003
    Ace,        ///< Access 2007 and later
    Other,      ///< none of these
};

/// So many first bytes of a file decide.
inline constexpr int StoreKindBytes = 24;

/// The kind of a file that begins with `head`: at least `StoreKindBytes` bytes, or all that the file has.
StoreKind StoreKindOf(QByteArrayView head);

/// The kind of the file `path`. Never fails: what goes wrong is `Missing` or `Unreadable`.
StoreKind StoreKindOfFile(const QString& path);

/// True for the kinds that `JetImport` reads.
bool IsJet(StoreKind kind);
