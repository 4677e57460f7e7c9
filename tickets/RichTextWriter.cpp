#include "platform/AnsiText.h"
#include "tickets/RichText.h"
#include "tickets/RichTextWords.h"

#include <QHash>

#include <algorithm>

namespace richtext {
namespace {

class Writer {
public:
    QByteArray Write(const TicketDocument& document);

private:
    QByteArray ColourTable(const TicketDocument& document);
    void PutFormat(const CharacterFormat& format);
    void PutText(const QString& text);

    QByteArray m_file;
    QHash<quint32, int> m_colours{{0, 0}}; ///< index in the colour table; black is the automatic one
};

QByteArray Writer::Write(const TicketDocument& document) {
    m_file = "{\\rtf1\\ansi\\ansicpg1252\\deff0\\uc1{\\fonttbl{\\f0\\fnil\\fcharset0 VNI-Aptima;}}\n" +
             ColourTable(document) + '\n';
    for (std::size_t i = 0; i < document.paragraphs.size(); ++i) {
        const TicketDocument::Paragraph& paragraph = document.paragraphs[i];
        if (i > 0)
            m_file += "\\par\n";
        m_file += "\\pard\\plain\\f0";
        m_file += paragraph.alignment == Alignment::Right    ? "\\qr"
                  : paragraph.alignment == Alignment::Centre ? "\\qc"
                                                             : "\\ql";
        if (paragraph.runs.empty())
            PutFormat(paragraph.empty);
        for (const TicketDocument::Run& run : paragraph.runs) {
            PutFormat(run.format);
            PutText(run.text);
        }
    }
    m_file += "}\n";
    return std::move(m_file);
}

QByteArray Writer::ColourTable(const TicketDocument& document) {
    QByteArray table = "{\\colortbl;";
    const auto add = [&](quint32 colour) {
        if (m_colours.contains(colour))
            return;
        m_colours.insert(colour, static_cast<int>(m_colours.size()));
        table += "\\red" + QByteArray::number(colour >> 16 & 0xFF) + "\\green" +
                 QByteArray::number(colour >> 8 & 0xFF) + "\\blue" + QByteArray::number(colour & 0xFF) + ';';
    };
    for (const TicketDocument::Paragraph& paragraph : document.paragraphs) {
        if (paragraph.runs.empty())
            add(paragraph.empty.colour);
        for (const TicketDocument::Run& run : paragraph.runs)
            add(run.format.colour);
    }
    return table + '}';
}

void Writer::PutFormat(const CharacterFormat& format) {
    const int halfPoints = std::clamp(qRound(format.size * 2), 1, MostHalfPoints);
    m_file += (format.bold ? "\\b\\fs" : "\\b0\\fs") + QByteArray::number(halfPoints) + "\\cf" +
              QByteArray::number(m_colours.value(format.colour)) + ' ';
}

void Writer::PutText(const QString& text) {
    const QByteArray bytes = ansi::Encode(text).bytes;
    qsizetype unit = 0;
    for (const char byte : bytes) {
        const char16_t code = text[unit++].unicode();
        if (code == u'\t') {
            m_file += "\\tab ";
        } else if (code == u'\\' || code == u'{' || code == u'}') {
            m_file += '\\';
            m_file += byte;
        } else if (code >= 0x20 && code < 0x7F) {
            m_file += byte;
        } else if (code >= 0x20 && byte != '?') {
            m_file += "\\'" + QByteArray::number(static_cast<quint8>(byte), 16);
        } else {
            const auto put = [this](char16_t half) {
                m_file += "\\u" + QByteArray::number(static_cast<qint16>(half)) + '?';
            };
            put(code);
            // One byte stands for both halves of a pair.
            if (QChar::isHighSurrogate(code) && unit < text.size() && text[unit].isLowSurrogate())
                put(text[unit++].unicode());
        }
    }
}

} // namespace

QByteArray Write(const TicketDocument& document) {
    return Writer().Write(document);
}

} // namespace richtext
