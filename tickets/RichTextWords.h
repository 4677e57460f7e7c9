#pragma once

#include <QByteArrayView>
#include <QStringList>

#include <string_view>

/// The control words of rich text, as far as a ticket form can use them or loses by them.
namespace richtext {

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

/// The losses of a set of bits, for the user: "pictures", "italics".
QStringList NamesOf(quint32 losses);

/// What a control word does.
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

/// Size of characters where the file names none.
inline constexpr int DefaultHalfPoints = 24;
/// Largest size of characters.
inline constexpr int MostHalfPoints = 3276;

/// What a word means, without its backslash and number; `None` if it is not known.
Control Find(std::string_view word);

/// Whether the word begins a group of its own kind.
bool IsDestination(Action action);

/// The characters that words and their numbers are made of, of the first 128 alone.
bool IsLetter(char character);
bool IsDigit(char character);
/// The value of a hexadecimal digit of either case, -1 for any other character.
int HexDigit(char character);

/// Index of the first byte behind what editors put before a text, -1 if no rich text begins there.
qsizetype BeginOf(QByteArrayView file);

} // namespace richtext
