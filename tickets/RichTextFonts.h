#pragma once

#include "tickets/VniText.h"

#include <QByteArray>

#include <vector>

namespace richtext {

/// The fonts of a rich text file, as far as they tell what its bytes mean.
class FontTable {
public:
    static constexpr int MostFonts = 32768;

    /// The font that the next operations describe. @param number 0 to `MostFonts` - 1.
    void Describe(int number) { m_described = number; }
    /// 0 for that of the file.
    void SetCodePage(int page) { Described().codePage = page; }
    /// One more character of its name; ";" ends it.
    void AddToName(char character);

    /// The code page of its bytes, `filePage` where it names none. The bytes of a VNI font are those that it shows,
    /// whatever character set it is said to have.
    int CodePageOf(int number, int filePage) const;
    /// What its text is, by its name.
    vni::Origin OriginOf(int number) const;

private:
    struct Font {
        int codePage = 0;
        QByteArray name;
    };

    Font& Described();

    std::vector<Font> m_fonts; ///< by their numbers
    int m_described = 0;
};

} // namespace richtext
