#include "widgets/CopiedText.h"

QString copied::StoredType() {
    return QStringLiteral("application/x-orvex-stored-text");
}

std::unique_ptr<QMimeData> copied::MimeOf(const QString& stored, const QString& readable) {
    auto data = std::make_unique<QMimeData>();
    data->setText(readable);
    data->setData(StoredType(), stored.toUtf8());
    return data;
}

std::optional<QString> copied::StoredText(const QMimeData* data) {
    if (!data || !data->hasFormat(StoredType()))
        return std::nullopt;
    return QString::fromUtf8(data->data(StoredType()));
}
