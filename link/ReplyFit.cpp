#include "link/ReplyFit.h"

#include "link/Frames.h"

ReplyFit FitOf(QByteArrayView command, QByteArrayView reply) {
    if (reply == command)
        return ReplyFit::AsSent;
    const std::optional<frames::Parts> asked = frames::Split(command);
    const std::optional<frames::Parts> answered = frames::Split(reply);
    if (!asked || !answered || answered->address != asked->address)
        return ReplyFit::OtherAddress;
    if (answered->letter != asked->letter)
        return ReplyFit::OtherLetter;
    if (answered->sequence != asked->sequence)
        return ReplyFit::OtherSequence;
    // A relay brings the device's letter back in front of its content.
    constexpr char Relay = 'N';
    const bool isRelayed = asked->letter == Relay && asked->data.size() >= 2;
    if (isRelayed && (answered->data.isEmpty() || answered->data[0] != asked->data[1]))
        return ReplyFit::OtherDevice;
    return ReplyFit::Own;
}

bool IsOwn(ReplyFit fit, QByteArrayView command) {
    if (fit != ReplyFit::AsSent)
        return fit == ReplyFit::Own;
    const std::optional<frames::Parts> asked = frames::Split(command);
    return asked && asked->data.isEmpty();
}
