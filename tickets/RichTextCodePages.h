#pragma once

#include <QString>

/// The code pages in which rich text holds characters beyond the first 128.
namespace richtext {

inline constexpr int AnsiPage = 1252;

/// The code page of a font's character set: 0 for that of the file, `AnsiPage` for a set that is not known.
int PageOfCharset(int charset);

/// Whether two bytes make a character there.
bool IsDoubleByte(int page);
/// Whether that byte begins a character of two bytes. @param page one for which `IsDoubleByte` holds.
bool IsLeadByte(int page, quint8 byte);

/// The characters of the bytes 0x80 to 0xFF, 128 of them; what a code page leaves open stands for the character of that
/// number. Empty for a page that is not known.
QStringView UpperHalf(int page);

} // namespace richtext
