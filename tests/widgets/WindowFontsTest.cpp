#include "widgets/WindowFonts.h"
#include "tickets/VniText.h"

#include <gtest/gtest.h>

#include <QFontDatabase>
#include <QFontInfo>
#include <QImage>
#include <QPainter>

namespace {

QImage Rendered(const QString& text, const QFont& font) {
    QImage image(80, 60, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setFont(font);
    painter.drawText(20, 40, text);
    return image;
}

TEST(WindowFonts, VniTextLooksLikeTheTrueLetters) {
    fonts::Register();
    const QString reference = QStringLiteral("DejaVu Sans");
    ASSERT_TRUE(QFontDatabase::hasFamily(reference)) << "install fonts-dejavu-core";
    for (const auto weight : {QFont::Normal, QFont::Bold}) {
        QFont own(QStringLiteral("Orvex VNI"), 24, weight);
        QFont plain(reference, 24, weight);
        // The hinter treats a glyph that only a ligature reaches in another way than one with a code point.
        own.setHintingPreference(QFont::PreferNoHinting);
        plain.setHintingPreference(QFont::PreferNoHinting);
        for (const vni::Letter& letter : vni::Letters()) {
            const QString text = QChar(letter.unicode);
            EXPECT_EQ(Rendered(vni::FromUnicode(text), own), Rendered(text, plain)) << qPrintable(text);
        }
        EXPECT_NE(Rendered(QStringLiteral("A"), own), Rendered(QStringLiteral("Á"), plain));
    }
}

TEST(WindowFonts, StandsInForTheGivenFonts) {
    fonts::Register();
    for (const QString& given : {QStringLiteral("VNI-Avo"), QStringLiteral("VNI-Aptima")}) {
        const QString shown = QFontInfo(QFont(given)).family();
        EXPECT_TRUE(shown == given || shown == u"Orvex VNI") << qPrintable(shown);
    }
}

} // namespace
