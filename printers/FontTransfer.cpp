#include "printers/FontTransfer.h"

#include "core/Installation.h"
#include "link/Frames.h"
#include "platform/Dialogs.h"
#include "platform/WholeFile.h"
#include "tickets/VniTable.h"

#include <QFileInfo>

namespace {

constexpr int OneTry = 1;
constexpr int RecordsPerFrame = 8;
constexpr qsizetype FontChunk = 128;       ///< bytes before stuffing
constexpr qsizetype LongestDirect = 254;   ///< characters that a frame takes beside its letter
constexpr qsizetype LongestRelayed = 252;  ///< the same behind a hub, whose relay takes two
constexpr qint64 LargestFontFile = 32'767; ///< bytes
constexpr qint16 FontPause = 10;           ///< milliseconds behind each chunk of the font file

} // namespace

QString LetterSource(LetterSet letters) {
    return letters == LetterSet::FontFile ? QStringLiteral("VNI-ZR.bin") : QStringLiteral("VNIl.dat");
}

FontTransfer::FontTransfer(const Parts& parts, QString programFolder, const VniTable& letters)
    : PrinterTransfer(parts)
    , m_programFolder(std::move(programFolder))
    , m_letters(letters) {}

QCoro::Task<bool> FontTransfer::SendLetters(qint16 object, std::vector<QByteArray> chunks, qint16 pause) {
    const bool begun = co_await SendFrame(object, 'G', {}, OneTry);
    if (!begun)
        co_return false;
    const bool sent = co_await SendChunks(object, 'J', std::move(chunks), tr("letters"), OneTry, pause);
    if (!sent)
        co_return false;
    co_return co_await SendFrame(object, 'T', {}, OneTry);
}

QCoro::Task<QStringList> FontTransfer::LoadVNIToAllPrinters(LetterSet letters) {
    return SendToAll([this, letters](qint16 object) { return SendVNIToPrinter(object, letters); }, HubBracket::Without,
                     QStringLiteral("Set VNI table to printer #%1 error! Do you want to continue?"));
}

QCoro::Task<bool> FontTransfer::SendVNIToPrinter(qint16 object, LetterSet letters) {
    m_sending = letters;
    if (letters == LetterSet::FontFile)
        co_return co_await SendFontFile(object);
    std::vector<QByteArray> chunks;
    for (int record = 0; record < VniTable::Records; record += RecordsPerFrame)
        chunks.push_back(frames::EscapeData(m_letters.RecordBytes(record, RecordsPerFrame)));
    co_return co_await SendLetters(object, chunks, 0);
}

Result<QByteArray> FontTransfer::Content(LetterSet letters) const {
    if (letters == LetterSet::Table)
        return m_letters.RecordBytes(0, VniTable::Records);
    const QString path = m_programFolder + QStringLiteral("/VNI-ZR.bin");
    Result<QByteArray> font = ReadWhole(path, LargestFontFile);
    if (!font && QFileInfo(path).size() > LargestFontFile)
        return Failure{QStringLiteral("Font file too large (VNI-ZR.bin)")};
    if (!font)
        return Failure{QStringLiteral("Font file not found (VNI-ZR.bin)")};
    return font;
}

QCoro::Task<bool> FontTransfer::SendFontFile(qint16 object) {
    const Result<QByteArray> font = Content(LetterSet::FontFile);
    if (!font) {
        co_await m_dialogs.ShowMessage(BoxKind::Exclamation, font.Error());
        co_return false;
    }
    const qsizetype longest = Printer(object).HubId != 0 ? LongestRelayed : LongestDirect;
    co_return co_await SendLetters(object, StuffedChunks(*font, FontChunk, longest), FontPause);
}

std::vector<QByteArray> FontTransfer::StuffedChunks(QByteArrayView content, qsizetype chunkLength, qsizetype longest) {
    std::vector<QByteArray> chunks;
    for (qsizetype start = 0; start < content.size(); start += chunkLength) {
        QByteArray chunk;
        for (const char byte : content.sliced(start, std::min(chunkLength, content.size() - start))) {
            const QByteArray stuffed = frames::EscapeData(QByteArrayView(&byte, 1));
            if (chunk.size() + stuffed.size() > longest)
                chunks.push_back(std::exchange(chunk, {}));
            chunk += stuffed;
        }
        chunks.push_back(chunk);
    }
    return chunks;
}
