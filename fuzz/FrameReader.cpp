#include "link/FrameReader.h"

#include "link/Frames.h"

#include <algorithm>
#include <cstdlib>

/// The first byte chooses how the rest is sliced; whole and sliced must end alike, and a reply must be a whole frame.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0)
        return 0;
    const QByteArrayView line(reinterpret_cast<const char*>(data) + 1, static_cast<qsizetype>(size) - 1);
    const qsizetype slice = 1 + data[0] % 16;

    FrameReader whole;
    whole.Feed(line);
    FrameReader sliced;
    for (qsizetype at = 0; at < line.size(); at += slice)
        sliced.Feed(line.sliced(at, std::min(slice, line.size() - at)));

    if (whole.ReceiveBuffer() != sliced.ReceiveBuffer() || whole.ReplyComplete() != sliced.ReplyComplete())
        std::abort();
    if (whole.ReceiveBuffer().size() > FrameReader::LongestFrame + 1)
        std::abort();
    if (whole.ReplyComplete()) {
        const QByteArray reply = whole.TakeReply();
        if (!reply.startsWith(frames::Stx) || !reply.endsWith(frames::Etx) || !frames::chkCS(reply.chopped(1)))
            std::abort();
    }
    if (frames::UnescapeData(frames::EscapeData(line)) != line.toByteArray())
        std::abort();
    // Taken apart and put together a frame is the same.
    if (const std::optional<frames::Parts> parts = frames::Split(line)) {
        const QByteArray again =
            frames::BuildFrame(frames::Body(parts->address, parts->sequence, parts->letter, parts->data.toByteArray()));
        const std::optional<frames::Parts> rebuilt = frames::Split(again);
        if (!rebuilt || rebuilt->data != parts->data || rebuilt->letter != parts->letter)
            std::abort();
    }
    QByteArray relayed = line.toByteArray();
    frames::RemoveRelayLetter(relayed);
    if (relayed.size() > line.size())
        std::abort();
    return 0;
}
