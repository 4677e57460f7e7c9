#include "widgets/WindowFonts.h"

#include <QFont>
#include <QFontDatabase>

// The macro declares a function and so cannot stand in a namespace.
static void InitFontResource() {
    Q_INIT_RESOURCE(fonts);
}

namespace fonts {

void Register() {
    const QString own = QStringLiteral("Orvex VNI");
    if (QFontDatabase::hasFamily(own))
        return;
    InitFontResource();
    QFontDatabase::addApplicationFont(QStringLiteral(":/fonts/OrvexVNI.ttf"));
    QFontDatabase::addApplicationFont(QStringLiteral(":/fonts/OrvexVNI-Bold.ttf"));
    for (const QString& given : {QStringLiteral("VNI-Avo"), QStringLiteral("VNI-Aptima")}) {
        if (!QFontDatabase::hasFamily(given))
            QFont::insertSubstitution(given, own);
    }
}

} // namespace fonts
