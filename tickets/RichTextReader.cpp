#include "tickets/RichText.h"
#include "tickets/RichTextCodePages.h"
#include "tickets/RichTextFonts.h"
#include "tickets/RichTextWords.h"
#include "tickets/VniText.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>
#include <vector>

namespace richtext {
namespace {

class Reader {
public:
    Reader(QByteArrayView file, qsizetype begin)
        : m_file(file)
        , m_at(begin) {}

    Result<Document> Read();

private:
    enum class Destination { Body, Skipped, FontTable, ColourTable, TwoForms };

    /// What a group inherits and gives back at its end.
    struct State {
        CharacterFormat format{false, DefaultHalfPoints / 2.0, 0};
        quint32 marks = 0; ///< what is lost of each character
        int font = -1;     ///< -1 for that of \deff
        int fallbackLength = 1;
        Alignment alignment = Alignment::Left;
        Destination destination = Destination::Body;
    };

    State& Now() { return m_groups.back(); }
    int CurrentFont() const { return m_groups.back().font < 0 ? m_defaultFont : m_groups.back().font; }
    void ReadEscape();
    void ReadWord();
    void ReadHexByte();
    void Apply(Control control, std::optional<int> number);
    void Enter(Control control);
    void PutByte(char byte);
    void PutUpperByte(quint8 byte);
    void PutCode(char32_t code);
    void PutUnit(char16_t unit);
    void EndHalfPair();
    void EndRun();
    void EndParagraph();
    void EndLine();
    void Skip(int bytes) { m_at += std::min<qsizetype>(bytes, m_file.size() - m_at); }
    bool InFallback();

    const QByteArrayView m_file;
    qsizetype m_at;

    std::vector<State> m_groups;
    bool m_isStarred = false;   ///< the next word, if it is not known, begins a group to skip
    int m_fallback = 0;         ///< characters still to pass over, since the last \u has told them
    bool m_isTrailByte = false; ///< the next byte completes a character of two bytes

    int m_ansiPage = AnsiPage;
    int m_defaultFont = 0;
    FontTable m_fonts;
    std::array<quint32, 3> m_mix{};
    std::vector<quint32> m_colours;

    TicketDocument m_document;
    QString m_run; ///< characters in `m_runFormat` that are not yet in the document
    CharacterFormat m_runFormat;
    vni::Origin m_runOrigin = vni::Origin::Unknown;
    char16_t m_highHalf = 0;
    int m_pieces = 1;
    quint32 m_losses = 0;
};

Result<Document> Reader::Read() {
    while (m_at < m_file.size()) {
        const char character = m_file[m_at++];
        switch (character) {
        case '{':
            if (m_groups.size() >= DeepestNesting) {
                return Failure{QStringLiteral("The rich text nests deeper than %1 groups.").arg(DeepestNesting)};
            }
            m_groups.push_back(m_groups.empty() ? State() : Now());
            m_isStarred = m_isTrailByte = false;
            m_fallback = 0;
            break;
        case '}':
            // What follows the outermost group is no text; its state is that of the last paragraph.
            if (m_groups.size() == 1)
                m_at = m_file.size();
            else
                m_groups.pop_back();
            m_isStarred = m_isTrailByte = false;
            m_fallback = 0;
            break;
        case '\\':
            ReadEscape();
            break;
        default:
            // Line ends and other control characters only lay out the file.
            if (static_cast<quint8>(character) >= 0x20 || character == '\t')
                PutByte(character);
            break;
        }
        if (m_pieces > MostPieces) {
            return Failure{
                QStringLiteral("The rich text holds more than %1 paragraphs and changes of format.").arg(MostPieces)};
        }
    }
    EndParagraph();

    return Document{std::move(m_document), NamesOf(m_losses)};
}

/// Reads what follows a backslash.
void Reader::ReadEscape() {
    if (m_at >= m_file.size())
        return;
    const char symbol = m_file[m_at];
    if (IsLetter(symbol)) {
        ReadWord();
        return;
    }
    ++m_at;
    switch (symbol) {
    case '\'':
        ReadHexByte();
        break;
    case '*':
        m_isStarred = true;
        break;
    case '\\':
    case '{':
    case '}':
    case '\t':
        PutByte(symbol);
        break;
    case '\r':
    case '\n':
        Apply({Action::LineEnd}, std::nullopt);
        break;
    case '~':
        Apply({Action::Character, 0x00A0}, std::nullopt);
        break;
    case '-':
        Apply({Action::Character, 0x00AD}, std::nullopt);
        break;
    case '_':
        Apply({Action::Character, 0x2011}, std::nullopt);
        break;
    default:
        break;
    }
}

void Reader::ReadHexByte() {
    int byte = 0;
    for (qsizetype i = 0; i < 2; ++i) {
        const int digit = m_at + i < m_file.size() ? HexDigit(m_file[m_at + i]) : -1;
        if (digit < 0)
            return;
        byte = byte * 16 + digit;
    }
    m_at += 2;
    PutByte(static_cast<char>(byte));
}

/// Reads a control word with its number and the blank that ends it.
void Reader::ReadWord() {
    const qsizetype begin = m_at;
    while (m_at < m_file.size() && IsLetter(m_file[m_at]))
        ++m_at;
    const std::string_view word(m_file.data() + begin, static_cast<std::size_t>(m_at - begin));

    std::optional<int> number;
    const bool isNegative = m_at + 1 < m_file.size() && m_file[m_at] == '-' && IsDigit(m_file[m_at + 1]);
    if (isNegative)
        ++m_at;
    for (; m_at < m_file.size() && IsDigit(m_file[m_at]); ++m_at)
        number = std::min(number.value_or(0) * 10 + (m_file[m_at] - '0'), 200000000);
    if (isNegative)
        number = -*number;
    if (m_at < m_file.size() && m_file[m_at] == ' ')
        ++m_at;

    const Control control = Find(word);
    const bool isStarred = std::exchange(m_isStarred, false);
    if (control.action == Action::Binary) {
        // Data may hold braces, so that it counts in skipped groups too.
        Skip(std::max(number.value_or(0), 0));
        InFallback();
    } else if (Now().destination == Destination::Skipped) {
        return;
    } else if (IsDestination(control.action)) {
        Enter(control);
    } else if (isStarred) {
        Now().destination = Destination::Skipped;
    } else {
        Apply(control, number);
    }
}

/// Begins a group of its own kind.
void Reader::Enter(Control control) {
    Destination& destination = Now().destination;
    const bool inBody = destination == Destination::Body;
    switch (control.action) {
    case Action::Body:
        break;
    case Action::FontTable:
        destination = Destination::FontTable;
        break;
    case Action::ColourTable:
        destination = Destination::ColourTable;
        break;
    case Action::TwoForms:
        destination = inBody ? Destination::TwoForms : Destination::Skipped;
        break;
    case Action::UnicodeForm:
        if (destination == Destination::TwoForms)
            destination = Destination::Body;
        break;
    default:
        if (inBody)
            m_losses |= control.value;
        destination = Destination::Skipped;
        break;
    }
}

void Reader::Apply(Control control, std::optional<int> number) {
    State& now = Now();
    const bool isOn = number != 0;
    if (control.action == Action::Character) {
        if (!InFallback())
            PutCode(control.value);
        return;
    }
    // No writer makes a format the replacement of a character: then the replacement is missing.
    m_fallback = 0;
    m_isTrailByte = false;
    switch (control.action) {
    case Action::Note:
        m_losses |= control.value;
        break;
    case Action::Mark:
        now.marks = isOn ? now.marks | control.value : now.marks & ~control.value;
        break;
    case Action::Unmark:
        now.marks &= ~control.value;
        break;
    case Action::LineEnd:
        EndLine();
        break;
    case Action::Bold:
        now.format.bold = isOn;
        break;
    case Action::Size:
        now.format.size = std::clamp(number.value_or(DefaultHalfPoints), 1, MostHalfPoints) / 2.0;
        break;
    case Action::Colour: {
        const auto index = static_cast<std::size_t>(std::max(number.value_or(0), 0));
        now.format.colour = index < m_colours.size() ? m_colours[index] : 0;
        break;
    }
    case Action::Font:
        now.font = std::clamp(number.value_or(0), 0, FontTable::MostFonts - 1);
        if (now.destination == Destination::FontTable)
            m_fonts.Describe(now.font);
        break;
    case Action::Plain:
        now.format = State().format;
        now.marks = 0;
        now.font = -1;
        break;
    case Action::ParagraphPlain:
        now.alignment = Alignment::Left;
        break;
    case Action::Align:
        now.alignment = static_cast<Alignment>(control.value);
        break;
    case Action::Unicode:
        if (number) {
            PutCode(static_cast<char32_t>(*number < 0 ? *number + 0x10000 : *number));
            m_fallback = now.fallbackLength;
        }
        break;
    case Action::FallbackLength:
        now.fallbackLength = std::max(number.value_or(1), 0);
        break;
    case Action::AnsiCodePage:
        m_ansiPage = number.value_or(static_cast<int>(control.value));
        break;
    case Action::DefaultFont:
        m_defaultFont = std::clamp(number.value_or(0), 0, FontTable::MostFonts - 1);
        break;
    case Action::FontCharset:
    case Action::FontCodePage:
        if (now.destination == Destination::FontTable) {
            m_fonts.SetCodePage(control.action == Action::FontCharset ? PageOfCharset(number.value_or(0))
                                                                      : number.value_or(0));
        }
        break;
    case Action::Red:
    case Action::Green:
    case Action::Blue:
        m_mix[static_cast<std::size_t>(control.action) - static_cast<std::size_t>(Action::Red)] =
            static_cast<quint32>(std::clamp(number.value_or(0), 0, 255));
        break;
    default:
        break;
    }
}

/// Whether the character that comes is the replacement of one that \u has told; counts it then.
bool Reader::InFallback() {
    if (m_fallback == 0)
        return false;
    --m_fallback;
    return true;
}

/// Puts a byte of text, in the code page that is in force.
void Reader::PutByte(char byte) {
    if (InFallback())
        return;
    if (Now().destination == Destination::FontTable) {
        m_fonts.AddToName(byte);
        return;
    }
    if (Now().destination == Destination::ColourTable) {
        if (byte == ';') {
            if (m_colours.size() < MostPieces)
                m_colours.push_back(m_mix[0] << 16 | m_mix[1] << 8 | m_mix[2]);
            m_mix = {};
        }
        return;
    }
    if (Now().destination != Destination::Body || std::exchange(m_isTrailByte, false))
        return;
    const auto code = static_cast<quint8>(byte);
    if (code < 0x80)
        PutCode(code);
    else
        PutUpperByte(code);
}

void Reader::PutUpperByte(quint8 byte) {
    const int page = m_fonts.CodePageOf(CurrentFont(), m_ansiPage);
    if (IsDoubleByte(page)) {
        m_isTrailByte = IsLeadByte(page, byte);
        m_losses |= ForeignCharacters;
        PutCode(U'?');
        return;
    }
    QStringView upper = UpperHalf(page);
    if (upper.isEmpty()) {
        m_losses |= ForeignCharacters;
        upper = UpperHalf(AnsiPage);
    }
    PutCode(upper[byte - 0x80].unicode());
}

/// Puts a character of text, or half of one.
void Reader::PutCode(char32_t code) {
    if (Now().destination != Destination::Body || code == 0 || code > QChar::LastValidCodePoint)
        return;
    if (code == U'\n' || code == U'\r') {
        EndLine();
        return;
    }
    if (Now().marks & HiddenText) {
        m_losses |= HiddenText;
        return;
    }
    m_losses |= Now().marks;
    if (QChar::isLowSurrogate(code) && m_highHalf != 0) {
        PutUnit(std::exchange(m_highHalf, 0));
        PutUnit(static_cast<char16_t>(code));
        return;
    }
    EndHalfPair();
    if (QChar::isHighSurrogate(code)) {
        m_highHalf = static_cast<char16_t>(code);
    } else if (QChar::requiresSurrogates(code)) {
        PutUnit(QChar::highSurrogate(code));
        PutUnit(QChar::lowSurrogate(code));
    } else {
        PutUnit(static_cast<char16_t>(QChar::isLowSurrogate(code) ? char32_t(QChar::ReplacementCharacter) : code));
    }
}

void Reader::PutUnit(char16_t unit) {
    const vni::Origin origin = m_fonts.OriginOf(CurrentFont());
    if (!(m_runFormat == Now().format) || m_runOrigin != origin)
        EndRun();
    m_runFormat = Now().format;
    m_runOrigin = origin;
    m_run += QChar(unit);
}

/// A half whose other half has not come is no character.
void Reader::EndHalfPair() {
    if (std::exchange(m_highHalf, 0) != 0)
        PutUnit(QChar::ReplacementCharacter);
}

void Reader::EndRun() {
    if (m_run.isEmpty())
        return;
    m_document.paragraphs.back().Append(vni::FromUnicode(m_run, m_runOrigin), m_runFormat);
    m_run.clear();
    ++m_pieces;
}

void Reader::EndParagraph() {
    EndHalfPair();
    EndRun();
    TicketDocument::Paragraph& paragraph = m_document.paragraphs.back();
    paragraph.alignment = Now().alignment;
    if (paragraph.runs.empty())
        paragraph.empty = Now().format;
}

void Reader::EndLine() {
    if (Now().destination != Destination::Body)
        return;
    EndParagraph();
    m_document.paragraphs.emplace_back();
    ++m_pieces;
}

} // namespace

Result<Document> Read(QByteArrayView file) {
    if (file.size() > LargestFile) {
        return Failure{QStringLiteral("The file is larger than %1 MB.").arg(LargestFile / 1024 / 1024)};
    }
    const qsizetype begin = BeginOf(file);
    if (begin < 0) {
        return Failure{QStringLiteral("This is no rich text file.")};
    }
    return Reader(file, begin).Read();
}

} // namespace richtext
