#include "tickets/TicketPaper.h"

#include "platform/AnsiText.h"
#include "tickets/VniTable.h"
#include "tickets/VniText.h"

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>
#include <optional>

namespace {

constexpr int CellWidth = 12;
constexpr int CellHeight = 24;
constexpr int Baseline = 20;    ///< dots from the top of a cell
constexpr int LineSpacing = 34; ///< dots, one sixth of an inch
constexpr int DotsPerInch = 203;
constexpr int SpacingUnits = 360; ///< of ESC 3, an inch
constexpr int ImageDotWidth = 2;  ///< of ESC * in 8-dot single density
constexpr int ImageDotHeight = 3;
constexpr int Margin = 16;           ///< above the first and below the last line
constexpr int LongestPaper = 20'000; ///< dots
constexpr int SmallPage = 30;
constexpr int CapitalPage = 31;
constexpr int CapitalOffset = VniTable::Records / 2;

/// Characters 0x80 to 0xFF of code page 850.
constexpr char16_t Page850[] =
    u"\u00C7\u00FC\u00E9\u00E2\u00E4\u00E0\u00E5\u00E7\u00EA\u00EB\u00E8\u00EF\u00EE\u00EC\u00C4\u00C5"
    u"\u00C9\u00E6\u00C6\u00F4\u00F6\u00F2\u00FB\u00F9\u00FF\u00D6\u00DC\u00F8\u00A3\u00D8\u00D7\u0192"
    u"\u00E1\u00ED\u00F3\u00FA\u00F1\u00D1\u00AA\u00BA\u00BF\u00AE\u00AC\u00BD\u00BC\u00A1\u00AB\u00BB"
    u"\u2591\u2592\u2593\u2502\u2524\u00C1\u00C2\u00C0\u00A9\u2563\u2551\u2557\u255D\u00A2\u00A5\u2510"
    u"\u2514\u2534\u252C\u251C\u2500\u253C\u00E3\u00C3\u255A\u2554\u2569\u2566\u2560\u2550\u256C\u00A4"
    u"\u00F0\u00D0\u00CA\u00CB\u00C8\u0131\u00CD\u00CE\u00CF\u2518\u250C\u2588\u2584\u00A6\u00CC\u2580"
    u"\u00D3\u00DF\u00D4\u00D2\u00F5\u00D5\u00B5\u00FE\u00DE\u00DA\u00DB\u00D9\u00FD\u00DD\u00AF\u00B4"
    u"\u00AD\u00B1\u2017\u00BE\u00B6\u00A7\u00F7\u00B8\u00B0\u00A8\u00B7\u00B9\u00B3\u00B2\u25A0\u00A0";

/// The letter of a byte on page 30 or 31, 0 if it has none there.
char16_t PageLetter(int page, quint8 code) {
    const int first = page == CapitalPage ? CapitalOffset : 0;
    for (int i = first; i < first + CapitalOffset; ++i) {
        if (VniTable::Code(i) == code)
            return vni::Letters()[static_cast<std::size_t>(i)].unicode;
    }
    return 0;
}

QImage Blank(int width, int height) {
    QImage image(width, height, QImage::Format_Grayscale8);
    image.fill(Qt::white);
    return image;
}

/// Dots of columns from left to right, each of `rows` bytes from top to bottom, highest bit topmost.
QImage ColumnImage(QByteArrayView columns, int rows) {
    const int width = rows > 0 ? static_cast<int>(columns.size() / rows) : 0;
    QImage image = Blank(width, rows * 8);
    for (int x = 0; x < width; ++x) {
        for (int y = 0; y < rows * 8; ++y) {
            if (static_cast<quint8>(columns[static_cast<qsizetype>(x) * rows + y / 8]) & 0x80U >> (y % 8))
                image.scanLine(y)[x] = 0;
        }
    }
    return image;
}

/// The logos of an FS q block; what is cut off is left out.
std::vector<QImage> Logos(QByteArrayView block) {
    std::vector<QImage> logos;
    if (!block.startsWith(QByteArrayView("\x1C\x71")) || block.size() < 3)
        return logos;
    const int count = static_cast<quint8>(block[2]);
    qsizetype at = 3;
    const auto number = [&](qsizetype place) {
        return static_cast<quint8>(block[place]) + 256 * static_cast<quint8>(block[place + 1]);
    };
    while (static_cast<int>(logos.size()) < count && at + 4 <= block.size()) {
        const int rows = number(at + 2);
        const qsizetype size = static_cast<qsizetype>(number(at)) * 8 * rows;
        at += 4;
        if (at + size > block.size())
            break;
        logos.push_back(ColumnImage(block.sliced(at, size), rows));
        at += size;
    }
    return logos;
}

} // namespace

/// One run of a form over the paper.
class TicketPaper::Run {
public:
    Run(TicketPaper& paper, const QByteArray& logos, const TicketValues& values, const VniTable* letters)
        : m_paper(paper)
        , m_logos(Logos(logos))
        , m_values(values)
        , m_letters(letters) {}

    QImage Print(QByteArrayView stream) {
        m_hasVniFont = !stream.startsWith(QByteArrayView("\x1B@"));
        for (qsizetype i = 0; i < stream.size() && m_height < LongestPaper;)
            i += Step(stream.sliced(i));
        EndText();
        if (!m_line.empty())
            EndLine();
        return Paper();
    }

private:
    struct Item {
        QImage image;
        int top = 0; ///< on the paper, of a placed item
        int left = 0;
    };

    /// Takes the command or character at the beginning. @return its bytes.
    qsizetype Step(QByteArrayView rest) {
        const auto at = [&](qsizetype place) {
            return place < rest.size() ? static_cast<quint8>(rest[place]) : quint8(0);
        };
        if (rest.startsWith(QByteArrayView("$VAR("))) {
            if (const qsizetype length = PutValue(rest))
                return length;
        }
        if (at(0) >= 0x20) {
            m_text += rest[0];
            return 1;
        }
        EndText();
        switch (at(0)) {
        case '\n':
            EndLine();
            return 1;
        case '\t':
            PutTab();
            return 1;
        case 0x1B:
            return Escape(rest, at(1), at(2));
        case 0x1C:
            if (at(1) == 'p')
                PrintLogo(at(2));
            return at(1) == 'p' ? 4 : 1;
        case 0x1D:
            if (at(1) == '!') {
                m_widthFactor = (at(2) >> 4) % 8 + 1;
                m_heightFactor = at(2) % 8 + 1;
            }
            return at(1) == '!' ? 3 : 1;
        default:
            return 1;
        }
    }

    qsizetype Escape(QByteArrayView rest, quint8 command, quint8 value) {
        switch (command) {
        case '@':
            m_bold = false;
            m_widthFactor = m_heightFactor = 1;
            m_alignment = Qt::AlignLeft;
            m_page = 0;
            m_spacing = LineSpacing;
            return 2;
        case 't':
            m_page = value;
            return 3;
        case '3':
            m_spacing = value * DotsPerInch / SpacingUnits;
            return 3;
        case 'E':
            m_bold = value % 2 == 1;
            return 3;
        case 'a':
            m_alignment = value == '1' ? Qt::AlignHCenter : value == '2' ? Qt::AlignRight : Qt::AlignLeft;
            return 3;
        case 'm':
            Cut();
            return 2;
        case '*': {
            const qsizetype columns = rest.size() > 4 ? static_cast<quint8>(rest[3]) : 0;
            const qsizetype taken = std::min<qsizetype>(columns, rest.size() - 5);
            if (taken > 0)
                PutImage(rest.sliced(5, taken));
            return 5 + columns;
        }
        default:
            return 1;
        }
    }

    /// The value of a field. @return the length of its token, 0 if it is none.
    qsizetype PutValue(QByteArrayView rest) {
        const qsizetype close = rest.indexOf(')');
        bool isNumber = false;
        const int field = rest.first(std::max<qsizetype>(close, 5)).sliced(5).toByteArray().toInt(&isNumber);
        if (close < 0 || !isNumber || field < 0 || field >= static_cast<int>(m_values.size()))
            return 0;
        EndText();
        const QByteArray& value = m_values[static_cast<std::size_t>(field)];
        for (qsizetype i = 0; i < value.size();) {
            const int pair = m_letters ? m_letters->FindVNI(QByteArrayView(value).sliced(i).first(
                                             std::min<qsizetype>(2, value.size() - i)))
                                       : -1;
            const int single = m_letters ? m_letters->FindVNI(QByteArrayView(value).sliced(i, 1)) : -1;
            const int letter = pair >= 0 ? pair : single;
            if (letter >= 0 && !m_hasVniFont) {
                EndText();
                PutImage(m_letters->Image(letter).sliced(5));
            } else {
                m_text += value.sliced(i, pair >= 0 ? 2 : 1);
            }
            i += pair >= 0 ? 2 : 1;
        }
        m_textIsVni = true;
        EndText();
        m_textIsVni = false;
        return close + 1;
    }

    void EndText() {
        if (m_text.isEmpty())
            return;
        const QByteArray text = std::exchange(m_text, {});
        if (m_hasVniFont || m_textIsVni) {
            for (const char32_t character : vni::ToUnicode(ansi::Decode(text)).toUcs4())
                PutCharacter(character);
            return;
        }
        for (const char byte : text)
            PutCharacter(Decode(static_cast<quint8>(byte)));
    }

    char32_t Decode(quint8 code) const {
        if (code < 0x80)
            return code;
        if (m_page == SmallPage || m_page == CapitalPage) {
            if (const char16_t letter = PageLetter(m_page, code))
                return letter;
        }
        return Page850[code - 0x80];
    }

    void PutCharacter(char32_t character) {
        QImage glyph = m_paper.Glyph(character);
        if (m_bold) {
            for (int y = 0; y < glyph.height(); ++y) {
                uchar* row = glyph.scanLine(y);
                for (int x = glyph.width() - 1; x > 0; --x)
                    row[x] = std::min(row[x], row[x - 1]);
            }
        }
        if (m_widthFactor > 1 || m_heightFactor > 1)
            glyph = glyph.scaled(CellWidth * m_widthFactor, CellHeight * m_heightFactor);
        Put(glyph);
    }

    /// Columns of eight dots; their size does not follow GS !.
    void PutImage(QByteArrayView columns) {
        const QImage dots = ColumnImage(columns, 1);
        Put(dots.scaled(dots.width() * ImageDotWidth, dots.height() * ImageDotHeight));
    }

    void Put(const QImage& image) {
        if (m_lineWidth + image.width() > Width && !m_line.empty())
            EndLine();
        if (m_line.empty())
            m_lineAlignment = m_alignment;
        m_lineWidth += image.width();
        m_line.push_back(image);
    }

    /// A printer that was told of no others has a stop behind every eight characters.
    void PutTab() {
        const int stop = 8 * CellWidth * m_widthFactor;
        Put(Blank(stop - m_lineWidth % stop, CellHeight * m_heightFactor));
    }

    int LeftOf(int width, Qt::AlignmentFlag alignment) const {
        if (alignment == Qt::AlignLeft)
            return 0;
        return std::max(alignment == Qt::AlignRight ? Width - width : (Width - width) / 2, 0);
    }

    void EndLine() {
        int tallest = 0;
        for (const QImage& image : m_line)
            tallest = std::max(tallest, image.height());
        int left = LeftOf(m_lineWidth, m_lineAlignment);
        for (const QImage& image : m_line) {
            m_items.push_back({image, m_height + tallest - image.height(), left});
            left += image.width();
        }
        m_height += std::max(tallest, m_spacing);
        m_line.clear();
        m_lineWidth = 0;
    }

    void PrintLogo(int number) {
        if (number < 1 || number > static_cast<int>(m_logos.size()))
            return;
        if (!m_line.empty())
            EndLine();
        const QImage& logo = m_logos[static_cast<std::size_t>(number - 1)];
        m_items.push_back({logo, m_height, LeftOf(logo.width(), m_alignment)});
        m_height += logo.height();
    }

    void Cut() {
        if (!m_line.empty())
            EndLine();
        QImage line = Blank(Width, 9);
        for (int x = 0; x < Width; ++x) {
            if (x % 12 < 6)
                line.scanLine(4)[x] = 0x80;
        }
        m_items.push_back({line, m_height, 0});
        m_height += line.height();
    }

    QImage Paper() const {
        QImage paper = Blank(Width, m_height + 2 * Margin);
        for (const Item& item : m_items) {
            for (int y = 0; y < item.image.height(); ++y) {
                const uchar* from = item.image.constScanLine(y);
                uchar* to = paper.scanLine(item.top + Margin + y) + item.left;
                const int width = std::min(item.image.width(), Width - item.left);
                for (int x = 0; x < width; ++x)
                    to[x] = std::min(to[x], from[x]);
            }
        }
        return paper;
    }

    TicketPaper& m_paper;
    const std::vector<QImage> m_logos;
    const TicketValues& m_values;
    const VniTable* m_letters;

    bool m_hasVniFont = false;
    bool m_bold = false;
    int m_widthFactor = 1;
    int m_heightFactor = 1;
    int m_page = 0;
    int m_spacing = LineSpacing;
    Qt::AlignmentFlag m_alignment = Qt::AlignLeft;

    QByteArray m_text; ///< characters that wait to be printed
    bool m_textIsVni = false;
    std::vector<QImage> m_line;
    int m_lineWidth = 0;
    Qt::AlignmentFlag m_lineAlignment = Qt::AlignLeft;
    std::vector<Item> m_items;
    int m_height = 0;
};

TicketPaper::TicketPaper() = default;

QImage TicketPaper::Print(const QByteArray& form, const QByteArray& logos, const TicketValues& values,
                          const VniTable* letters) {
    constexpr qsizetype Frame = 4; // check sum and options
    const QByteArrayView stream = form.size() < Frame ? QByteArrayView() : QByteArrayView(form).sliced(2).chopped(2);
    return Run(*this, logos, values, letters).Print(stream);
}

const QImage& TicketPaper::Glyph(char32_t character) {
    const auto known = m_glyphs.constFind(character);
    if (known != m_glyphs.constEnd())
        return *known;
    QImage glyph = Blank(CellWidth, CellHeight);
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setStyleStrategy(QFont::NoAntialias);
    font.setPixelSize(19);
    const QString text = QString::fromUcs4(&character, 1);
    const qreal advance = QFontMetricsF(font).horizontalAdvance(text);
    QPainter painter(&glyph);
    painter.setFont(font);
    const qreal squeeze = advance > CellWidth ? CellWidth / advance : 1;
    painter.scale(squeeze, 1);
    painter.drawText(QPointF((CellWidth / squeeze - advance) / 2, Baseline), text);
    painter.end();
    return *m_glyphs.insert(character, glyph);
}
