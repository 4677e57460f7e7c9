#pragma once

#include "tickets/TicketValues.h"

#include <QHash>
#include <QImage>

#include <vector>

class VniTable;

/// What a ticket printer prints: runs a compiled form and shows the paper.
///
/// 203 dots an inch, 576 dots wide; characters are 12 x 24 dots. Knows the commands that forms are made of: ESC @, ESC
/// t (code page 2: CP 850; 30 and 31: small and capital Vietnamese letters), ESC 3, ESC E, ESC a, ESC m (a dashed
/// line), GS !, FS p, FS q and ESC * in 8-dot single density; any other byte below 0x20 prints nothing. A form that
/// does not begin with ESC @ is one for a printer with a VNI font.
///
/// Needs a QGuiApplication.
class TicketPaper {
public:
    static constexpr int Width = 576; ///< dots

    TicketPaper();

    /// The printed ticket, black on white.
    /// @param form    with check sum and option bytes, as `CompiledForm` has it.
    /// @param logos   its logo block; a call of a logo that is not there prints nothing.
    /// @param letters the letter images that the printer was loaded with, for the values; without them the letters come
    ///                from its own font.
    QImage Print(const QByteArray& form, const QByteArray& logos, const TicketValues& values, const VniTable* letters);

private:
    class Run;
    const QImage& Glyph(char32_t character);

    QHash<char32_t, QImage> m_glyphs; ///< 12 x 24 dots
};
