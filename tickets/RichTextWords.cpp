#include "tickets/RichTextWords.h"

#include "tickets/RichTextCodePages.h"
#include "tickets/TicketDocument.h"

#include <unordered_map>

namespace richtext {
namespace {

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

} // namespace

QStringList NamesOf(quint32 losses) {
    QStringList told;
    for (std::size_t i = 0; i < std::size(LossNames); ++i) {
        if (losses & (1u << i))
            told += QString::fromLatin1(LossNames[i]);
    }
    return told;
}

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

qsizetype BeginOf(QByteArrayView file) {
    const QByteArrayView mark("\xEF\xBB\xBF");
    qsizetype begin = file.startsWith(mark) ? mark.size() : 0;
    while (begin < file.size() && QByteArrayView(" \t\r\n").contains(file[begin]))
        ++begin;
    return file.sliced(begin).startsWith("{\\rtf") ? begin : -1;
}

} // namespace richtext
