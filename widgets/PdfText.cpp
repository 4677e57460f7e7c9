#include "widgets/PdfText.h"

#include <QBuffer>
#include <QPdfWriter>
#include <QTextDocument>

QByteArray PdfOf(const QString& html, const QString& title) {
    constexpr int Resolution = 300; ///< dots an inch
    constexpr qreal Margin = 15;    ///< millimetres
    constexpr int TextSize = 9;     ///< points
    QBuffer file;
    file.open(QIODevice::WriteOnly);
    {
        QPdfWriter writer(&file);
        writer.setResolution(Resolution);
        writer.setPageSize(QPageSize(QPageSize::A4));
        writer.setPageMargins(QMarginsF(Margin, Margin, Margin, Margin), QPageLayout::Millimeter);
        writer.setTitle(title);
        QTextDocument document;
        document.setDefaultFont(QFont(QStringLiteral("DejaVu Sans"), TextSize));
        document.setDefaultStyleSheet(QStringLiteral("h1 { font-size: 16pt } h2 { font-size: 12pt }"));
        document.setHtml(html);
        document.print(&writer);
    }
    return file.data();
}
