#include "widgets/WindowFonts.h"

#include <QFontDatabase>

// The macro declares a function and so cannot stand in a namespace.
static void InitFontResource() {
    Q_INIT_RESOURCE(fonts);
}

namespace fonts {

namespace {

QString StoredTextFamily() {
    return QStringLiteral("VNI-Avo");
}

} // namespace

QFont ForStoredText(QFont like) {
    Register();
    like.setFamily(StoredTextFamily());
    return like;
}

void Register() {
    const QString own = QStringLiteral("Orvex VNI");
    if (QFontDatabase::hasFamily(own))
        return;
    InitFontResource();
    QFontDatabase::addApplicationFont(QStringLiteral(":/fonts/OrvexVNI.ttf"));
    QFontDatabase::addApplicationFont(QStringLiteral(":/fonts/OrvexVNI-Bold.ttf"));
    for (const QString& given : {StoredTextFamily(), QStringLiteral("VNI-Aptima")}) {
        if (!QFontDatabase::hasFamily(given))
            QFont::insertSubstitution(given, own);
    }
}

} // namespace fonts
