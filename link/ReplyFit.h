#pragma once

#include <QByteArrayView>

/// How a reply fits the command that waited for it, by what stands in its head. A reply is accepted whatever it is;
/// this is what it is worth.
enum class ReplyFit : quint8 {
    Own,           ///< address, sequence and letter are those of the command, and the letter inside of a relay too
    AsSent,        ///< byte for byte the command: the answer to a command without data, or an echo
    OtherAddress,  ///< another device answers
    OtherSequence, ///< an answer to another try, or to an older command
    OtherLetter,   ///< an answer to another command
    OtherDevice,   ///< the hub is the one that was asked, and what it relays answers another command
};

/// @param command, reply  frames from STX to ETX.
ReplyFit FitOf(QByteArrayView command, QByteArrayView reply);

/// The reply is no answer to the command.
inline bool IsForeign(ReplyFit fit) {
    return fit > ReplyFit::AsSent;
}

/// The device that was asked has answered, as far as the head of a reply can tell: a reply that repeats a command with
/// data is an echo, one that repeats a command without data is what a device answers to it.
bool IsOwn(ReplyFit fit, QByteArrayView command);
