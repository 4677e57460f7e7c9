#pragma once

#include <QByteArray>
#include <QString>

/// A text as PDF: pages of A4 with their numbers.
/// @param html as `QTextDocument` takes it. @param title of the file, for whoever looks at its properties.
QByteArray PdfOf(const QString& html, const QString& title);
