#pragma once

#include <QMimeData>
#include <QString>

#include <memory>
#include <optional>

/// Stored text on its way over the clipboard or by drag and drop: other programs get Unicode, fields of this program
/// the stored letters themselves, which do not survive a way there and back.
namespace copied {

/// The type under which the stored letters travel.
QString StoredType();

/// @param stored the letters as a field holds them. @param readable the same in Unicode.
std::unique_ptr<QMimeData> MimeOf(const QString& stored, const QString& readable);

/// The stored letters, if a field of this program gave them.
std::optional<QString> StoredText(const QMimeData* data);

} // namespace copied
