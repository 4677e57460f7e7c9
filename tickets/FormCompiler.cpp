#include "tickets/FormCompiler.h"

#include "platform/AnsiText.h"
#include "platform/WholeFile.h"
#include "tickets/Bitmap24.h"
#include "tickets/VniTable.h"

#include <QDir>
#include <QFile>
#include <QtEndian>

#include <array>
#include <numeric>

namespace {

constexpr qsizetype StreamStart = 2;       ///< behind the check sum
constexpr qsizetype LongestRawForm = 4095; ///< bytes, with the place of the check sum
constexpr int MostLogos = 255;
constexpr qsizetype TokenTail = 6; ///< a logo token that begins in the last bytes stays text
const QByteArray LogoToken = QByteArrayLiteral("$BMP(");
const QByteArray LineSpacing = QByteArrayLiteral("\x1B\x33\x3C");

/// The modes of the printer, in the order in which their commands go out.
struct Modes {
    bool bold = false;
    int size = 1;
    quint32 colour = 0;
    Alignment alignment = Alignment::Left;
    bool operator==(const Modes&) const = default;
};

char SizeByte(int sizeClass) {
    switch (sizeClass) {
    case 2:
        return '\x11';
    case 3:
        return '\x22';
    case 4:
        return '\x10';
    default:
        return '\0';
    }
}

char AlignmentByte(Alignment alignment) {
    switch (alignment) {
    case Alignment::Centre:
        return '1';
    case Alignment::Right:
        return '2';
    case Alignment::Left:
        break;
    }
    return '0';
}

QByteArray Command(char first, char second, char value) {
    return QByteArray{} + first + second + value;
}

QByteArray BoldCommand(bool bold) {
    return Command('\x1B', 'E', bold ? '1' : '0');
}

QByteArray SizeCommand(int sizeClass) {
    return Command('\x1D', '!', SizeByte(sizeClass));
}

/// Nothing for the printer, but the place is taken.
QByteArray ColourCommand() {
    return Command('\0', '\0', '\0');
}

QByteArray AlignmentCommand(Alignment alignment) {
    return Command('\x1B', 'a', AlignmentByte(alignment));
}

/// A character of the document as the first pass takes it.
struct Character {
    char code;
    Modes modes;
};

/// The characters of a document in order, and what could not be encoded.
class Characters {
public:
    explicit Characters(const TicketDocument& document) {
        for (std::size_t i = 0; i < document.paragraphs.size(); ++i) {
            const TicketDocument::Paragraph& paragraph = document.paragraphs[i];
            for (const TicketDocument::Run& run : paragraph.runs)
                Add(run.text, run.format, paragraph.alignment);
            if (i + 1 < document.paragraphs.size())
                Add(QStringLiteral("\r\n"), paragraph.EndFormat(), paragraph.alignment);
        }
    }

    std::vector<Character> all;
    QString lacking;

private:
    void Add(const QString& text, const CharacterFormat& format, Alignment alignment) {
        const ansi::Encoded encoded = ansi::Encode(text);
        lacking += encoded.lacking;
        for (const char code : encoded.bytes)
            all.push_back({code, {format.bold, SizeClass(format.size), format.colour, alignment}});
    }
};

/// First pass: commands and text, with the place of the check sum in front. Nothing if it is too long.
std::optional<QByteArray> RawForm(const std::vector<Character>& characters, const PrinterFamily& family,
                                  const VniTable& letters) {
    QByteArray form(StreamStart, '\0');
    if (!family.PrinterZoneRich)
        form += QByteArrayLiteral("\x1B\x40\x1B\x74\x02");
    if (!family.PrinterT81 && family.PrinterDB25)
        form += LineSpacing;
    Modes current;
    form +=
        BoldCommand(current.bold) + SizeCommand(current.size) + ColourCommand() + AlignmentCommand(current.alignment);

    for (std::size_t p = 0; p < characters.size();) {
        const auto& [code, modes] = characters[p];
        if (modes.bold != current.bold)
            form += BoldCommand(modes.bold);
        if (modes.size != current.size)
            form += SizeCommand(modes.size);
        if (modes.colour != current.colour)
            form += ColourCommand();
        if (modes.alignment != current.alignment)
            form += AlignmentCommand(modes.alignment);
        current = modes;

        std::size_t taken = 1;
        int letter = -1;
        if (!family.PrinterZoneRich) {
            const std::array pair{code, p + 1 < characters.size() ? characters[p + 1].code : '\0'};
            letter = letters.FindVNI(pair);
            if (letter >= 0)
                taken = 2;
            else
                letter = letters.FindVNI(QByteArrayView(pair).first(1));
        }
        if (letter < 0)
            form += code;
        else
            form += family.PrinterT81 ? VniTable::PageCharacter(letter) : letters.Image(letter);
        p += taken;
        if (form.size() > LongestRawForm)
            return std::nullopt;
    }
    return form;
}

void AppendNumber(QByteArray& bytes, int number) {
    bytes += static_cast<char>(number % 256);
    bytes += static_cast<char>(number / 256);
}

/// A bitmap as a logo of the block: each pixel that is not pure white in its red byte is a dot.
QByteArray Logo(const Bitmap24& bitmap) {
    const int columns = (bitmap.width + 7) / 8 * 8;
    const int rows = (bitmap.height + 7) / 8;
    QByteArray logo;
    AppendNumber(logo, columns / 8);
    AppendNumber(logo, rows);
    const qsizetype head = logo.size();
    logo += QByteArray(static_cast<qsizetype>(columns) * rows, '\0');
    for (int y = 0; y < bitmap.height; ++y) {
        for (int x = 0; x < bitmap.width; ++x) {
            if (bitmap.Red(x, y) == 255)
                continue;
            char& byte = logo[head + static_cast<qsizetype>(x) * rows + y / 8];
            byte = static_cast<char>(static_cast<quint8>(byte) | 0x80U >> (y % 8));
        }
    }
    return logo;
}

/// The file that a token names: exactly that one or, if it is not there, one that differs in case only.
QString LogoPath(const QString& folder, QString name) {
    name.replace(u'\\', u'/');
    const QDir base(folder);
    const QString path = base.filePath(name);
    if (QFile::exists(path))
        return path;
    const QFileInfo wanted(path);
    for (const QFileInfo& file : wanted.dir().entryInfoList(QDir::Files)) {
        if (file.fileName().compare(wanted.fileName(), Qt::CaseInsensitive) == 0)
            return file.filePath();
    }
    return path;
}

/// Sum of all bytes behind the check sum's place, its low 16 bits.
quint16 Checksum(const QByteArray& form) {
    return static_cast<quint16>(
        std::accumulate(form.begin() + StreamStart, form.end(), 0U,
                        [](unsigned sum, char byte) { return sum + static_cast<quint8>(byte); }));
}

constexpr qsizetype LongestShownToken = 40; ///< characters of a token for the user

/// Second pass: takes the logo tokens out, appends the end and the check sum.
class SecondPass {
public:
    SecondPass(const QString& folder, const PrinterFamily& family, CompilerResult& result)
        : m_folder(folder)
        , m_family(family)
        , m_result(result) {}

    std::optional<CompiledForm> Run(const QByteArray& rawForm, int ticketCopies, int ticketDigits) {
        QByteArray& form = m_compiled.PrnForm;
        for (qsizetype i = 0; i < rawForm.size();) {
            if (i < rawForm.size() - TokenTail && QByteArrayView(rawForm).sliced(i).startsWith(LogoToken)) {
                const qsizetype name = i + LogoToken.size();
                const qsizetype close = rawForm.indexOf(')', name);
                const qsizetype end = close < 0 ? rawForm.size() : close;
                if (!PutLogo(ansi::Decode(rawForm.sliced(name, end - name))))
                    return std::nullopt;
                i = end + 1;
            } else {
                form += rawForm[i++];
            }
        }
        if (m_compiled.LogoCount > 0) {
            m_compiled.LogoData.prepend(QByteArrayLiteral("\x1C\x71") + static_cast<char>(m_compiled.LogoCount));
            form += QByteArray("\x1C\x70\x01\x00", 4);
            if (m_family.PrinterZoneRich)
                form += QByteArrayLiteral("\r\n");
        }
        form += QByteArrayLiteral("\x1B\x6D\r\n\r\n");
        form += static_cast<char>(ticketCopies + 48);
        form += static_cast<char>(ticketDigits + 48);
        if (form.size() > CompiledForm::LongestForm) {
            m_result.messages.push_back({BoxKind::Critical, QStringLiteral("Printer form too large!")});
            return std::nullopt;
        }
        const quint16 sum = qToBigEndian(Checksum(form));
        form.replace(0, StreamStart, QByteArray(reinterpret_cast<const char*>(&sum), sizeof sum));
        return std::move(m_compiled);
    }

private:
    /// @return false if the form has too many logos.
    bool PutLogo(const QString& name) {
        std::optional<Bitmap24> bitmap = LoadBitmap24(LogoPath(m_folder, name));
        // A file that is not there, or none of this kind, is a logo without dots.
        if (!bitmap || bitmap->width == 0 || bitmap->height == 0)
            m_result.missingLogos += name.left(LongestShownToken);
        if (!bitmap) {
            m_result.messages.push_back({BoxKind::Exclamation, InvalidBitmapText()});
            bitmap.emplace();
        }
        if (bitmap->width > LargestLogoWidth || bitmap->height > LargestLogoHeight) {
            m_result.messages.push_back({BoxKind::Exclamation, LogoTooLargeText()});
            return true;
        }
        if (m_compiled.LogoCount == MostLogos) {
            m_result.messages.push_back({BoxKind::Exclamation, QStringLiteral("Too many logos in form!")});
            return false;
        }
        m_compiled.LogoData += Logo(*bitmap);
        // The first one is called at the very end.
        if (m_compiled.LogoCount > 0) {
            m_compiled.PrnForm += QByteArrayLiteral("\x1C\x70") + static_cast<char>(m_compiled.LogoCount + 1) + '\0';
            if (!m_family.PrinterT81)
                m_compiled.PrnForm += LineSpacing;
        }
        ++m_compiled.LogoCount;
        return true;
    }

    const QString& m_folder;
    const PrinterFamily& m_family;
    CompilerResult& m_result;
    CompiledForm m_compiled;
};

/// The tokens of a text that hold a change of format. Behind the last ")" only the first one counts.
QStringList MixedTokens(const std::vector<Character>& characters) {
    QByteArray text;
    for (const Character& character : characters)
        text += character.code;
    // Up to where each character has the format of the one before it.
    std::vector<std::size_t> alike(characters.size() + 1, characters.size());
    for (std::size_t i = characters.size(); i-- > 1;)
        alike[i - 1] = characters[i].modes == characters[i - 1].modes ? alike[i] : i;
    QStringList mixed;
    for (const QByteArray& opening : {LogoToken, QByteArrayLiteral("$VAR(")}) {
        qsizetype close = 0;
        for (qsizetype at = text.indexOf(opening); at >= 0 && close >= 0; at = text.indexOf(opening, at + 1)) {
            if (close <= at)
                close = text.indexOf(')', at);
            const qsizetype end = close < 0 ? text.size() : close + 1;
            if (alike[static_cast<std::size_t>(at)] < static_cast<std::size_t>(end))
                mixed += ansi::Decode(text.sliced(at, std::min(end - at, LongestShownToken)));
        }
    }
    return mixed;
}

} // namespace

int SizeClass(double points) {
    if (points > 20)
        return 3;
    if (points > 12)
        return 2;
    return points > 10 ? 4 : 1;
}

CompilerResult CompileForm(const TicketDocument& document, const QString& folder, const PrinterFamily& family,
                           const VniTable& letters, int ticketCopies, int ticketDigits) {
    CompilerResult result;
    const Characters characters(document);
    result.lacking = characters.lacking;
    result.mixedTokens = MixedTokens(characters.all);
    const std::optional<QByteArray> rawForm = RawForm(characters.all, family, letters);
    if (rawForm)
        result.form = SecondPass(folder, family, result).Run(*rawForm, ticketCopies, ticketDigits);
    else
        result.messages.push_back({BoxKind::Critical, QStringLiteral("Printer form too large!")});
    return result;
}

bool VerifyFormChecksum(const QByteArray& prnForm) {
    if (prnForm.size() < StreamStart)
        return false;
    return qFromBigEndian<quint16>(prnForm.constData()) == Checksum(prnForm);
}

Result<> WriteFormFile(const QString& path, const QByteArray& prnForm) {
    QByteArray length(2, '\0');
    qToLittleEndian(static_cast<quint16>(prnForm.size()), length.data());
    return WriteWhole(path, length + prnForm);
}

std::optional<QByteArray> ReadFormFile(const QString& path) {
    constexpr qint64 LengthBytes = 2;
    const QByteArray content = ReadWhole(path, LengthBytes + CompiledForm::LongestForm).ValueOr({});
    if (content.size() < LengthBytes || qFromLittleEndian<quint16>(content.constData()) != content.size() - LengthBytes)
        return std::nullopt;
    return content.sliced(LengthBytes);
}
