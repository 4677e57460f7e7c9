#include "printers/FormSource.h"

#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>

QString FormSource::Text(const QString& folder) const {
    const QString relative = QDir(folder).relativeFilePath(file);
    QJsonObject text{{QStringLiteral("file"), relative.startsWith(QStringLiteral("..")) ? file : relative}};
    if (!IsCompiled()) {
        text[QStringLiteral("zoneRich")] = family.PrinterZoneRich;
        text[QStringLiteral("t81")] = family.PrinterT81;
        text[QStringLiteral("db25")] = family.PrinterDB25;
        text[QStringLiteral("copies")] = copies;
        text[QStringLiteral("digits")] = digits;
    }
    return QString::fromUtf8(QJsonDocument(text).toJson(QJsonDocument::Compact));
}

std::optional<FormSource> FormSource::Parse(const QString& text, const QString& folder) {
    const QJsonObject object = QJsonDocument::fromJson(text.toUtf8()).object();
    const QString file = object[QStringLiteral("file")].toString();
    if (file.isEmpty())
        return std::nullopt;
    FormSource source;
    source.file = QDir::cleanPath(QDir(folder).absoluteFilePath(file));
    source.family.PrinterZoneRich = object[QStringLiteral("zoneRich")].toBool();
    source.family.PrinterT81 = object[QStringLiteral("t81")].toBool();
    source.family.PrinterDB25 = object[QStringLiteral("db25")].toBool();
    source.copies = static_cast<qint16>(object[QStringLiteral("copies")].toInt(source.copies));
    source.digits = static_cast<qint16>(object[QStringLiteral("digits")].toInt(source.digits));
    return source;
}
