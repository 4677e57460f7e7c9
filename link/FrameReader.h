#pragma once

#include <QByteArray>

#include <functional>

/// The receive path: characters in, in any slicing, and a checked reply out. Knows no port and no command.
///
/// Three stages: idle, collecting (an STX came and no ETX yet), complete (a frame with a good check sum stands in the
/// buffer). An STX restarts collecting from any stage, so of two frames handed in at once only the later counts.
class FrameReader {
public:
    /// What is collected without an ETX is dropped beyond this many characters; the longest possible frame has 263.
    static constexpr qsizetype LongestFrame = 1024;

    struct Counters {
        quint64 Frames = 0;    ///< with a good check sum
        quint64 BadSums = 0;   ///< with a bad one, or shorter than five characters
        quint64 Overlong = 0;  ///< dropped at `LongestFrame`
        quint64 Abandoned = 0; ///< begun, and ended by another STX
        quint64 Stray = 0;     ///< characters outside frames, ACK and EOT not counted
    };

    /// Called with each frame as its ETX comes, from STX to ETX, and whether its check sum is good. It must not feed
    /// the reader.
    std::function<void(const QByteArray& frame, bool isGood)> OnFrame;

    /// Handles characters in the order in which they came.
    void Feed(QByteArrayView characters);

    /// A whole frame with a good check sum stands in `ReceiveBuffer`, its ETX included.
    bool ReplyComplete() const { return m_replyComplete; }
    /// An STX came and no ETX yet.
    bool InFrame() const { return m_inFrame; }
    /// An ACK came since the last `ClearReceiveState`.
    bool AckReceived() const { return m_ackReceived; }
    /// What has been collected since the last STX.
    const QByteArray& ReceiveBuffer() const { return m_buffer; }

    /// Takes the complete reply out: the buffer is empty and nothing is complete afterwards.
    QByteArray TakeReply();
    /// Forgets that a reply is complete, but leaves the buffer as it is.
    void ForgetReply() { m_replyComplete = false; }
    /// Back to idle with an empty buffer.
    void ClearReceiveState();

    const Counters& Counts() const { return m_counters; }

private:
    void FeedOne(char character);
    void EndFrame();

    QByteArray m_buffer;
    bool m_inFrame = false;
    bool m_replyComplete = false;
    bool m_ackReceived = false;
    Counters m_counters;
};
