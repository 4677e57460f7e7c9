#include "link/FrameReader.h"

#include "link/Frames.h"

#include <utility>

namespace {

constexpr qsizetype UsualFrame = 64; ///< characters; hardly a reply is longer

} // namespace

void FrameReader::Feed(QByteArrayView characters) {
    for (const char character : characters)
        FeedOne(character);
}

void FrameReader::FeedOne(char character) {
    switch (character) {
    case frames::Ack:
        m_ackReceived = true;
        return;
    case frames::Eot:
        return;
    case frames::Stx:
        if (m_inFrame)
            ++m_counters.Abandoned;
        ClearReceiveState();
        m_inFrame = true;
        m_buffer.reserve(UsualFrame);
        m_buffer.append(character);
        return;
    case frames::Etx:
        if (!m_inFrame)
            ++m_counters.Stray;
        m_inFrame = false;
        EndFrame();
        return;
    default:
        break;
    }
    if (!m_inFrame) {
        ++m_counters.Stray;
        return;
    }
    if (m_buffer.size() >= LongestFrame) {
        ++m_counters.Overlong;
        ClearReceiveState();
        return;
    }
    m_buffer.append(character);
}

void FrameReader::EndFrame() {
    const bool isGood = frames::chkCS(m_buffer);
    const bool isFrame = !m_buffer.isEmpty();
    m_buffer.append(frames::Etx);
    if (isFrame && OnFrame)
        OnFrame(m_buffer, isGood);
    if (isGood) {
        ++m_counters.Frames;
        m_replyComplete = true;
    } else {
        m_counters.BadSums += isFrame ? 1 : 0;
        ClearReceiveState();
    }
}

QByteArray FrameReader::TakeReply() {
    m_replyComplete = false;
    return std::exchange(m_buffer, QByteArray());
}

void FrameReader::ClearReceiveState() {
    m_ackReceived = false;
    m_inFrame = false;
    m_replyComplete = false;
    m_buffer.resize(0);
}
