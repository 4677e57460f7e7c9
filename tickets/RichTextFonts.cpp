#include "tickets/RichTextFonts.h"

#include "tickets/RichTextCodePages.h"

#include <algorithm>

namespace richtext {

FontTable::Font& FontTable::Described() {
    const auto number = static_cast<std::size_t>(m_described);
    m_fonts.resize(std::max(m_fonts.size(), number + 1));
    return m_fonts[number];
}

void FontTable::AddToName(char character) {
    constexpr qsizetype LongestName = 64;
    QByteArray& name = Described().name;
    if (character != ';' && name.size() < LongestName)
        name += character;
}

int FontTable::CodePageOf(int number, int filePage) const {
    if (OriginOf(number) == vni::Origin::Vni)
        return AnsiPage;
    const auto index = static_cast<std::size_t>(number);
    const int page = index < m_fonts.size() ? m_fonts[index].codePage : 0;
    return page == 0 ? filePage : page;
}

vni::Origin FontTable::OriginOf(int number) const {
    const auto index = static_cast<std::size_t>(number);
    if (index >= m_fonts.size() || m_fonts[index].name.isEmpty())
        return vni::Origin::Unknown;
    return qstrnicmp(m_fonts[index].name.constData(), "vni", 3) == 0 ? vni::Origin::Vni : vni::Origin::Unicode;
}

} // namespace richtext
