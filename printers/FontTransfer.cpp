#include "printers/FontTransfer.h"

#include "core/Installation.h"
#include "hubs/HubRouter.h"
#include "link/Frames.h"
#include "platform/Clock.h"
#include "platform/Dialogs.h"
#include "tickets/VniTable.h"

#include <QFile>

namespace {

constexpr int OneTry = 1;
constexpr int RecordsPerFrame = 8;
constexpr qsizetype FontChunk = 128;       ///< bytes before stuffing
constexpr qsizetype LongestDirect = 254;   ///< characters that a frame takes beside its letter
constexpr qsizetype LongestRelayed = 252;  ///< the same behind a hub, whose relay takes two
constexpr qint64 LargestFontFile = 32'767; ///< bytes
constexpr qint16 FontPause = 10;           ///< milliseconds behind each chunk of the font file

} // namespace

FontTransfer::FontTransfer(QString programFolder, const model::Installation& installation, HubRouter& router,
                           Clock& clock, Dialogs& dialogs, const VniTable& letters, ::QObject* parent)
    : ::QObject(parent)
    , m_programFolder(std::move(programFolder))
    , m_installation(installation)
    , m_router(router)
    , m_clock(clock)
    , m_dialogs(dialogs)
    , m_letters(letters) {}

QCoro::Task<bool> FontTransfer::Send(qint16 object, char letter, QByteArray data) {
    const Reply reply = co_await m_router.SendToObject(object, letter, data, Bus::DirectTimeout, OneTry);
    co_return reply.ok;
}

QCoro::Task<bool> FontTransfer::SendChunks(qint16 object, std::vector<QByteArray> chunks, qint16 pause) {
    const QString name = m_installation.QObjects[static_cast<std::size_t>(object)].Name;
    const auto total = static_cast<int>(chunks.size());
    const QByteArray none;
    const bool begun = co_await Send(object, 'G', none);
    if (!begun)
        co_return false;
    for (int i = 0; i < total; ++i) {
        Q_EMIT Progress(name, i, total);
        const QByteArray chunk = chunks[static_cast<std::size_t>(i)];
        const bool sent = co_await Send(object, 'J', chunk);
        if (!sent)
            co_return false;
        if (pause > 0)
            co_await m_clock.DelayMilliseconds(pause);
    }
    Q_EMIT Progress(name, total, total);
    const bool ended = co_await Send(object, 'T', none);
    co_return ended;
}

QCoro::Task<bool> FontTransfer::LoadVNIToAllPrinters(bool zoneRich) {
    bool all = true;
    for (qint16 i = 0; i < m_installation.NumObjects; ++i) {
        const model::QObject& object = m_installation.QObjects[static_cast<std::size_t>(i)];
        if (object.Type != model::Printer)
            continue;
        const QString question =
            QStringLiteral("Set VNI table to printer #%1 error! Do you want to continue?").arg(object.Name);
        const bool loaded = co_await SendVNIToPrinter(i, zoneRich);
        if (loaded)
            continue;
        all = false;
        const bool goOn = co_await m_dialogs.AskYesNo(BoxKind::Exclamation, question);
        if (!goOn)
            break;
    }
    co_return all;
}

QCoro::Task<bool> FontTransfer::SendVNIToPrinter(qint16 object, bool zoneRich) {
    if (zoneRich) {
        const bool sent = co_await SendFontFile(object);
        co_return sent;
    }
    std::vector<QByteArray> chunks;
    for (int record = 0; record < VniTable::Records; record += RecordsPerFrame)
        chunks.push_back(frames::EscapeData(m_letters.RecordBytes(record, RecordsPerFrame)));
    const bool sent = co_await SendChunks(object, chunks, 0);
    co_return sent;
}

QCoro::Task<bool> FontTransfer::SendFontFile(qint16 object) {
    QFile file(m_programFolder + QStringLiteral("/VNI-ZR.bin"));
    QString problem;
    if (!file.open(QIODevice::ReadOnly))
        problem = QStringLiteral("Font file not found (VNI-ZR.bin)");
    else if (file.size() > LargestFontFile)
        problem = QStringLiteral("Font file too large (VNI-ZR.bin)");
    if (!problem.isEmpty()) {
        co_await m_dialogs.ShowMessage(BoxKind::Exclamation, problem);
        co_return false;
    }
    const QByteArray content = file.readAll();
    const bool isRelayed = m_installation.QObjects[static_cast<std::size_t>(object)].HubId != 0;
    const std::vector<QByteArray> chunks =
        StuffedChunks(content, FontChunk, isRelayed ? LongestRelayed : LongestDirect);
    const bool sent = co_await SendChunks(object, chunks, FontPause);
    co_return sent;
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
