#pragma once

#include <QString>

#include <span>

/// Vietnamese as the installation stores it: in VNI, one or two characters of Windows-1252 for each letter.
namespace vni {

/// One of the 134 letters, in the order of the printers' letter table: 67 small ones, then their capitals.
struct Letter {
    char16_t unicode;
    char16_t first;
    char16_t second; ///< 0 for a letter of one character
};

std::span<const Letter> Letters();

/// What is known of a text that is to become VNI.
enum class Origin {
    Unknown, ///< it may be VNI or Unicode, word by word
    Unicode, ///< all its Vietnamese letters are Unicode, those too that VNI would read otherwise
    Vni,     ///< it is VNI, but for letters that VNI has no character for
};

/// `text` with its Unicode Vietnamese letters, composed or with combining marks, turned into VNI.
///
/// What is VNI already stays, and so does every other character, Windows-1252 or not. Some letters read both ways ("où"
/// is VNI, "có" is either): where the origin is not known a word is taken for VNI if it holds a pair or a letter that
/// Unicode Vietnamese never has; a word that tells nothing follows the rest of the text, and is taken for Unicode if
/// that tells nothing either. Of VNI, combining marks stay.
QString FromUnicode(const QString& text, Origin origin = Origin::Unknown);

/// VNI text with true letters, for a log or another program. Text that is no VNI letter stays.
QString ToUnicode(QStringView text);

/// What to put into a text that holds VNI when the user types or pastes.
struct Insertion {
    qsizetype replaces = 0; ///< characters before the cursor that `text` replaces
    QString text;
};

/// `typed` as VNI behind `before`. A combining mark typed by itself joins the letter before it.
Insertion Typed(QStringView before, const QString& typed);

} // namespace vni
