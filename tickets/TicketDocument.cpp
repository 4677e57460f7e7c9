#include "tickets/TicketDocument.h"

void TicketDocument::Paragraph::Append(const QString& text, const CharacterFormat& format) {
    if (text.isEmpty())
        return;
    if (!runs.empty() && runs.back().format == format)
        runs.back().text += text;
    else
        runs.push_back({text, format});
}

QString TicketDocument::Text() const {
    QString text;
    for (std::size_t i = 0; i < paragraphs.size(); ++i) {
        if (i > 0)
            text += QStringLiteral("\r\n");
        for (const Run& run : paragraphs[i].runs)
            text += run.text;
    }
    return text;
}
