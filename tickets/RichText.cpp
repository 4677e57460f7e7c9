#include "tickets/RichText.h"

#include "platform/AnsiText.h"

#include <QHash>

#include <algorithm>
#include <array>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace richtext {
namespace {

constexpr int DefaultHalfPoints = 24;
constexpr int MostHalfPoints = 3276;
constexpr int MostFonts = 32768;
constexpr int AnsiPage = 1252;

/// What cannot be kept: bits, the lowest told first.
enum Loss : quint32 {
    Pictures = 1u << 0,
    Drawings = 1u << 1,
    Objects = 1u << 2,
    Tables = 1u << 3,
    HeadersAndFooters = 1u << 4,
    Footnotes = 1u << 5,
    Comments = 1u << 6,
    Fields = 1u << 7,
    HiddenText = 1u << 8,
    Italics = 1u << 9,
    Underlining = 1u << 10,
    StrikeThrough = 1u << 11,
    RaisedOrLowered = 1u << 12,
    Capitals = 1u << 13,
    Highlighting = 1u << 14,
    ForeignCharacters = 1u << 15,
};

constexpr const char* LossNames[] = {
    "pictures",
    "drawings",
    "embedded objects",
    "tables",
    "headers and footers",
    "footnotes",
    "comments",
    "fields and hyperlinks",
    "hidden text",
    "italics",
    "underlining",
    "strike-through",
    "superscript and subscript",
    "capitals",
    "highlighting",
    "characters of a foreign code page",
};

enum class Action {
    Skip,        ///< its group is no text; the value is the loss, or 0
    Body,        ///< its group is text, although it may be marked as one to skip if unknown
    FontTable,   ///< its group is the font table
    ColourTable, ///< its group is the colour table
    TwoForms,    ///< its group holds a text twice, with and without Unicode
    UnicodeForm, ///< its group is the one with Unicode
    Note,        ///< the value is a loss
    Mark,        ///< the value is the loss of text so marked, until switched off
    Unmark,      ///< ends a mark
    Character,   ///< stands for a character, the value
    LineEnd,
    Bold,
    Size,
    Colour,
    Font,
    Plain,
    ParagraphPlain,
    Align, ///< the value is the alignment
    Unicode,
    FallbackLength,
    Binary,
    AnsiCodePage, ///< of the file; the value is used if there is no number
    DefaultFont,
    FontCharset,
    FontCodePage,
    Red,
    Green,
    Blue,
    None,
};

struct Control {
    Action action = Action::None;
    quint32 value = 0;
};

constexpr quint32 ValueOf(Alignment alignment) {
    return static_cast<quint32>(alignment);
}

/// Words that mean the same.
struct Words {
    std::string_view names; ///< with a blank behind each
    Control control;
};

constexpr Words KnownWords[] = {
    {"pict shppict nonshppict ", {Action::Skip, Pictures}},
    {"shp shpgrp do ", {Action::Skip, Drawings}},
    {"object ", {Action::Skip, Objects}},
    {"header headerl headerr headerf footer footerl footerr footerf ", {Action::Skip, HeadersAndFooters}},
    {"footnote ", {Action::Skip, Footnotes}},
    {"annotation ", {Action::Skip, Comments}},
    {"info stylesheet generator filetbl listtable listoverridetable revtbl rsidtbl template private ", {Action::Skip}},
    {"fldinst datafield bkmkstart bkmkend atnid atnauthor xe rxe tc tcn txe falt panose fontemb ", {Action::Skip}},
    {"ftnsep ftnsepc ftncn aftnsep aftnsepc aftncn nonesttables pnseclvl ", {Action::Skip}},
    {"fldrslt ", {Action::Body}},
    {"fonttbl ", {Action::FontTable}},
    {"colortbl ", {Action::ColourTable}},
    {"upr ", {Action::TwoForms}},
    {"ud ", {Action::UnicodeForm}},
    {"field ", {Action::Note, Fields}},
    {"trowd intbl ", {Action::Note, Tables}},
    {"v deleted ", {Action::Mark, HiddenText}},
    {"i ", {Action::Mark, Italics}},
    {"ul uld uldash uldashd uldashdd uldb ulhair ulhwave ulldash ulth ulthd ulthdash ulthdashd ulthdashdd ulthldash "
     "ululdbwave ulw ulwave ",
     {Action::Mark, Underlining}},
    {"ulnone ", {Action::Unmark, Underlining}},
    {"strike striked ", {Action::Mark, StrikeThrough}},
    {"super sub up dn ", {Action::Mark, RaisedOrLowered}},
    {"nosupersub ", {Action::Unmark, RaisedOrLowered}},
    {"caps scaps ", {Action::Mark, Capitals}},
    {"highlight chcbpat cb ", {Action::Mark, Highlighting}},
    {"tab cell nestcell ", {Action::Character, u'\t'}},
    {"lquote ", {Action::Character, 0x2018}},
    {"rquote ", {Action::Character, 0x2019}},
    {"ldblquote ", {Action::Character, 0x201C}},
    {"rdblquote ", {Action::Character, 0x201D}},
    {"bullet ", {Action::Character, 0x2022}},
    {"endash ", {Action::Character, 0x2013}},
    {"emdash ", {Action::Character, 0x2014}},
    {"enspace ", {Action::Character, 0x2002}},
    {"emspace ", {Action::Character, 0x2003}},
    {"qmspace ", {Action::Character, 0x2005}},
    {"zwbo ", {Action::Character, 0x200B}},
    {"zwnj ", {Action::Character, 0x200C}},
    {"zwj ", {Action::Character, 0x200D}},
    {"ltrmark ", {Action::Character, 0x200E}},
    {"rtlmark ", {Action::Character, 0x200F}},
    {"zwnbo ", {Action::Character, 0x2060}},
    {"par line row nestrow sect page column ", {Action::LineEnd}},
    {"b ", {Action::Bold}},
    {"fs ", {Action::Size}},
    {"cf ", {Action::Colour}},
    {"f ", {Action::Font}},
    {"plain ", {Action::Plain}},
    {"pard ", {Action::ParagraphPlain}},
    {"ql qj qd ", {Action::Align, ValueOf(Alignment::Left)}},
    {"qr ", {Action::Align, ValueOf(Alignment::Right)}},
    {"qc ", {Action::Align, ValueOf(Alignment::Centre)}},
    {"u ", {Action::Unicode}},
    {"uc ", {Action::FallbackLength}},
    {"bin ", {Action::Binary}},
    {"ansicpg ", {Action::AnsiCodePage, AnsiPage}},
    {"mac ", {Action::AnsiCodePage, 10000}},
    {"pc ", {Action::AnsiCodePage, 437}},
    {"pca ", {Action::AnsiCodePage, 850}},
    {"deff ", {Action::DefaultFont}},
    {"fcharset ", {Action::FontCharset}},
    {"cpg ", {Action::FontCodePage}},
    {"red ", {Action::Red}},
    {"green ", {Action::Green}},
    {"blue ", {Action::Blue}},
};

Control Find(std::string_view word) {
    static const std::unordered_map<std::string_view, Control> controls = [] {
        std::unordered_map<std::string_view, Control> made;
        for (Words words : KnownWords)
            while (!words.names.empty()) {
                const std::size_t length = words.names.find(' ');
                made.emplace(words.names.substr(0, length), words.control);
                words.names.remove_prefix(length + 1);
            }
        return made;
    }();
    const auto known = controls.find(word);
    return known == controls.end() ? Control() : known->second;
}

bool IsDestination(Action action) {
    return action <= Action::UnicodeForm;
}

/// Character sets of fonts and their code pages, 0 being that of the file; all others are of Windows-1252.
constexpr std::pair<int, int> CharsetPages[] = {
    {1, 0},      {77, 10000}, {128, 932},  {129, 949},  {130, 1361}, {134, 936}, {136, 950},  {161, 1253}, {162, 1254},
    {163, 1258}, {177, 1255}, {178, 1256}, {186, 1257}, {204, 1251}, {222, 874}, {238, 1250}, {254, 437},  {255, 850},
};

int PageOfCharset(int charset) {
    for (const auto& [each, page] : CharsetPages)
        if (each == charset)
            return page;
    return AnsiPage;
}

/// The characters of the bytes 0x80 to 0xFF; what a code page leaves open stands for the character of that number.
struct CodePage {
    int number;
    QStringView upper;
};

constexpr CodePage CodePages[] = {
    {1250,
     u"€\u0081‚\u0083„…†‡\u0088‰Š‹ŚŤŽŹ\u0090‘’“”•–—\u0098™š›śťžź"
     u"\u00A0ˇ˘Ł¤Ą¦§¨©Ş«¬\u00AD®Ż°±˛ł´µ¶·¸ąş»Ľ˝ľżŔÁÂĂÄĹĆÇČÉĘËĚÍÎĎĐŃŇÓÔŐÖ×ŘŮÚŰÜÝŢßŕáâăäĺćçčéęëěíîďđńňóôőö÷řůúűüýţ˙"},
    {1251,
     u"ЂЃ‚ѓ„…†‡€‰Љ‹ЊЌЋЏђ‘’“”•–—\u0098™љ›њќћџ"
     u"\u00A0ЎўЈ¤Ґ¦§Ё©Є«¬\u00AD®Ї°±Ііґµ¶·ё№є»јЅѕїАБВГДЕЖЗИЙКЛМНОПРСТУФХЦЧШЩЪЫЬЭЮЯабвгдежзийклмнопрстуфхцчшщъыьэюя"},
    {1253,
     u"€\u0081‚ƒ„…†‡\u0088‰\u008A‹\u008C\u008D\u008E\u008F\u0090‘’“”•–—\u0098™\u009A›\u009C\u009D\u009E\u009F"
     u"\u00A0΅Ά£¤¥¦§¨©ª«¬\u00AD®―°±²³΄µ¶·ΈΉΊ»Ό½ΎΏΐΑΒΓΔΕΖΗΘΙΚΛΜΝΞΟΠΡÒΣΤΥΦΧΨΩΪΫάέήίΰαβγδεζηθικλμνξοπρςστυφχψωϊϋόύώÿ"},
    {1254,
     u"€\u0081‚ƒ„…†‡ˆ‰Š‹Œ\u008D\u008E\u008F\u0090‘’“”•–—˜™š›œ\u009D\u009EŸ"
     u"\u00A0¡¢£¤¥¦§¨©ª«¬\u00AD®¯°±²³´µ¶·¸¹º»¼½¾¿ÀÁÂÃÄÅÆÇÈÉÊËÌÍÎÏĞÑÒÓÔÕÖ×ØÙÚÛÜİŞßàáâãäåæçèéêëìíîïğñòóôõö÷øùúûüışÿ"},
    {1257,
     u"€\u0081‚\u0083„…†‡\u0088‰\u008A‹\u008C¨ˇ¸\u0090‘’“”•–—\u0098™\u009A›\u009C¯˛\u009F"
     u"\u00A0¡¢£¤¥¦§Ø©Ŗ«¬\u00AD®Æ°±²³´µ¶·ø¹ŗ»¼½¾æĄĮĀĆÄÅĘĒČÉŹĖĢĶĪĻŠŃŅÓŌÕÖ×ŲŁŚŪÜŻŽßąįāćäåęēčéźėģķīļšńņóōõö÷ųłśūüżž˙"},
    {1258,
     u"€\u0081‚ƒ„…†‡ˆ‰\u008A‹Œ\u008D\u008E\u008F\u0090‘’“”•–—˜™\u009A›œ\u009D\u009EŸ"
     u"\u00A0¡¢£¤¥¦§¨©ª«¬\u00AD®¯°±²³´µ¶·¸¹º»¼½¾¿ÀÁÂĂÄÅÆÇÈÉÊË\u0300ÍÎÏĐÑ\u0309ÓÔƠÖ×ØÙÚÛÜƯ\u0303ßàáâăäåæçèéêë\u0301íîïđñ"
     u"\u0323óôơö÷øùúûüư₫ÿ"},
};

static_assert(std::all_of(std::begin(CodePages), std::end(CodePages),
                          [](const CodePage& page) { return page.upper.size() == 128; }));

bool IsDoubleByte(int page) {
    return page == 932 || page == 936 || page == 949 || page == 950 || page == 1361;
}

bool IsLeadByte(int page, quint8 byte) {
    if (page == 932) // half-width letters of one byte stand between
        return (byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC);
    return byte >= 0x81 && byte <= 0xFE;
}

bool IsLetter(char character) {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
}

bool IsDigit(char character) {
    return character >= '0' && character <= '9';
}

int HexDigit(char character) {
    if (IsDigit(character))
        return character - '0';
    if (character >= 'a' && character <= 'f')
        return character - 'a' + 10;
    return character >= 'A' && character <= 'F' ? character - 'A' + 10 : -1;
}

class Reader {
public:
    Reader(QByteArrayView file, qsizetype begin)
        : m_file(file)
        , m_at(begin)
        , m_ansi(ansi::Decode(UpperBytes())) {}

    std::optional<Document> Read(QString& problem);

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

    static QByteArray UpperBytes() {
        QByteArray bytes;
        for (int byte = 0x80; byte <= 0xFF; ++byte)
            bytes.append(static_cast<char>(byte));
        return bytes;
    }

    State& Now() { return m_groups.back(); }
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
    int CurrentPage();

    const QByteArrayView m_file;
    qsizetype m_at;
    const QString m_ansi; ///< characters of the upper bytes in Windows-1252

    std::vector<State> m_groups;
    bool m_isStarred = false;   ///< the next word, if it is not known, begins a group to skip
    int m_fallback = 0;         ///< characters still to pass over, since the last \u has told them
    bool m_isTrailByte = false; ///< the next byte completes a character of two bytes

    int m_ansiPage = AnsiPage;
    int m_defaultFont = 0;
    int m_tableFont = 0;
    std::vector<int> m_fontPages; ///< by number of the font, 0 for the code page of the file
    std::array<quint32, 3> m_mix{};
    std::vector<quint32> m_colours;

    TicketDocument m_document;
    QString m_run; ///< characters in `m_runFormat` that are not yet in the document
    CharacterFormat m_runFormat;
    char16_t m_highHalf = 0;
    int m_pieces = 1;
    quint32 m_losses = 0;
};

std::optional<Document> Reader::Read(QString& problem) {
    while (m_at < m_file.size()) {
        const char character = m_file[m_at++];
        switch (character) {
        case '{':
            if (m_groups.size() >= DeepestNesting) {
                problem = QStringLiteral("The rich text nests deeper than %1 groups.").arg(DeepestNesting);
                return std::nullopt;
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
            problem =
                QStringLiteral("The rich text holds more than %1 paragraphs and changes of format.").arg(MostPieces);
            return std::nullopt;
        }
    }
    EndParagraph();

    Document result;
    result.document = std::move(m_document);
    for (std::size_t i = 0; i < std::size(LossNames); ++i)
        if (m_losses & (1u << i))
            result.losses += QString::fromLatin1(LossNames[i]);
    return result;
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
        now.font = m_tableFont = std::clamp(number.value_or(0), 0, MostFonts - 1);
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
        m_defaultFont = std::clamp(number.value_or(0), 0, MostFonts - 1);
        break;
    case Action::FontCharset:
    case Action::FontCodePage:
        if (now.destination == Destination::FontTable) {
            const auto font = static_cast<std::size_t>(m_tableFont);
            m_fontPages.resize(std::max(m_fontPages.size(), font + 1));
            m_fontPages[font] =
                control.action == Action::FontCharset ? PageOfCharset(number.value_or(0)) : number.value_or(0);
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

int Reader::CurrentPage() {
    const auto font = static_cast<std::size_t>(Now().font < 0 ? m_defaultFont : Now().font);
    const int page = font < m_fontPages.size() ? m_fontPages[font] : 0;
    return page == 0 ? m_ansiPage : page;
}

/// Puts a byte of text, in the code page that is in force.
void Reader::PutByte(char byte) {
    if (InFallback())
        return;
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
    const int page = CurrentPage();
    if (IsDoubleByte(page)) {
        m_isTrailByte = IsLeadByte(page, byte);
        m_losses |= ForeignCharacters;
        PutCode(U'?');
        return;
    }
    const auto known = std::find_if(std::begin(CodePages), std::end(CodePages),
                                    [page](const CodePage& each) { return each.number == page; });
    const bool isKnown = known != std::end(CodePages);
    if (!isKnown && page != AnsiPage)
        m_losses |= ForeignCharacters;
    PutCode((isKnown ? known->upper : QStringView(m_ansi))[byte - 0x80].unicode());
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
    if (!(m_runFormat == Now().format))
        EndRun();
    m_runFormat = Now().format;
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
    m_document.paragraphs.back().Append(m_run, m_runFormat);
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
            const auto put = [this](char16_t half) { m_file += "\\u" + QByteArray::number(qint16(half)) + '?'; };
            put(code);
            // One byte stands for both halves of a pair.
            if (QChar::isHighSurrogate(code) && unit < text.size() && text[unit].isLowSurrogate())
                put(text[unit++].unicode());
        }
    }
}

/// Index of the first byte behind what editors put before a text, -1 if no rich text begins there.
qsizetype BeginOf(QByteArrayView file) {
    const QByteArrayView mark("\xEF\xBB\xBF");
    qsizetype begin = file.startsWith(mark) ? mark.size() : 0;
    while (begin < file.size() && QByteArrayView(" \t\r\n").contains(file[begin]))
        ++begin;
    return file.sliced(begin).startsWith("{\\rtf") ? begin : -1;
}

} // namespace

std::optional<Document> Read(QByteArrayView file, QString& problem) {
    if (file.size() > LargestFile) {
        problem = QStringLiteral("The file is larger than %1 MB.").arg(LargestFile / 1024 / 1024);
        return std::nullopt;
    }
    const qsizetype begin = BeginOf(file);
    if (begin < 0) {
        problem = QStringLiteral("This is no rich text file.");
        return std::nullopt;
    }
    return Reader(file, begin).Read(problem);
}

QByteArray Write(const TicketDocument& document) {
    return Writer().Write(document);
}

} // namespace richtext
