#pragma once

#include "platform/Dialogs.h"
#include "platform/Result.h"
#include "tickets/TicketDocument.h"

#include <QByteArray>
#include <QStringList>

#include <optional>
#include <vector>

class VniTable;

/// Which kind of printer forms are compiled for. None of them: SAMSUNG, BIRCH and EPSON printers on their DB9 port.
struct PrinterFamily {
    bool PrinterZoneRich = false; ///< ZONE RICH; its letters are those of the font that it was loaded with
    bool PrinterT81 = false;      ///< EPSON TM-T81; its letters are those of its code pages 30 and 31
    bool PrinterDB25 = false;     ///< wired on the DB25 port
};

/// A compiled ticket form with its logos.
///
/// Form:
///
///     0          2       2 + n             3 + n
///     check sum  stream  TicketCopies + 48 m_TicketDigits + 48
///
/// the check sum being the sum of all bytes from 2 on, high byte first. Logo block, as FS q takes it:
///
///     0      2      3
///     1C 71  count  logos: X, Y (two bytes each, low byte first, in units of 8 dots), X * 8 columns of Y bytes
///
/// columns from left to right, the topmost dot in the highest bit of a column's first byte.
struct CompiledForm {
    static constexpr int LongestForm = 4097;      ///< bytes
    static constexpr int LongestLogoData = 32767; ///< bytes that a transfer takes

    QByteArray PrnForm;
    QByteArray LogoData; ///< empty without logos
    int LogoCount = 0;   ///< 0 to 255
};

/// A message that the compilation has for its user.
struct CompilerMessage {
    BoxKind kind;
    QString text;
};

struct CompilerResult {
    std::optional<CompiledForm> form; ///< nothing if the compilation was given up
    std::vector<CompilerMessage> messages;
    /// Tokens whose characters differ in format, so that the printer does not find them.
    QStringList mixedTokens;
    /// Names of the logos that are not in the form's folder or are no bitmap that a printer takes.
    QStringList missingLogos;
    /// Characters that the code page lacks and that went out as "?".
    QString lacking;
};

/// Turns a ticket form into what a printer runs for each ticket: ESC/POS commands and text.
///
/// Stream, in this order:
///
///     1B 40, 1B 74 02   not for ZONE RICH
///     1B 33 3C          on the DB25 port, but not for the TM-T81
///     start state       the four mode commands for not bold, size class 1, colour 0, left
///     body              text, mode commands where the format changes, letters, calls of the second logo and on
///     1C 70 01 00       call of the first logo, if there is one; 0D 0A behind it for ZONE RICH
///     1B 6D 0D 0A 0D 0A
///
/// Mode commands: 1B 45 30 or 31 (bold), 1D 21 n (size), 00 00 00 (colour, no command), 1B 61 n (30 left, 31 centre,
/// 32 right). Sizes: to 10 points n = 00, to 12 points 10, to 20 points 11, above 22.
///
/// `$VAR(n)` stays as text. `$BMP(name)` is taken out; the file `name` in `folder` becomes a logo. The second and later
/// ones are called where they stand (1C 70 number 00, and 1B 33 3C but for the TM-T81).
///
/// @param folder  of the logos, with or without "/" at its end.
/// @param letters loaded, unless the family is ZONE RICH or the TM-T81 needs its keys only.
CompilerResult CompileForm(const TicketDocument& document, const QString& folder, const PrinterFamily& family,
                           const VniTable& letters, int ticketCopies, int ticketDigits);

/// 1 to 4 by font size in points: 1 normal, 4 double width, 2 double, 3 triple.
int SizeClass(double points);

/// True if the first two bytes are the sum of all behind them.
bool VerifyFormChecksum(const QByteArray& prnForm);

/// Writes a form file: length (two bytes, low byte first) and form, whole or not at all.
Result<> WriteFormFile(const QString& path, const QByteArray& prnForm);

/// The form of such a file; nothing if there is none or it is shorter or longer than it says.
std::optional<QByteArray> ReadFormFile(const QString& path);
