#include "link/Frames.h"

#include "link/Encodings.h"

namespace frames {
namespace {

constexpr char EscapeOffset = 0x20;
constexpr qsizetype LetterPlace = 5;
constexpr qsizetype BehindData = 3; ///< check sum and ETX
constexpr qsizetype ShortestFrame = LetterPlace + 1 + BehindData;

bool NeedsEscape(char byte) {
    return byte == Stx || byte == Etx || byte == Ack || byte == Escape;
}

int HexadecimalDigit(char character) {
    if (character >= '0' && character <= '9')
        return character - '0';
    if (character >= 'A' && character <= 'F')
        return character - 'A' + 10;
    if (character >= 'a' && character <= 'f')
        return character - 'a' + 10;
    return -1;
}

/// The low byte in two upper-case digits. In place: this stands in the path of every command.
void AddHexadecimal(QByteArray& text, qsizetype number) {
    constexpr const char* Digits = "0123456789ABCDEF";
    text += Digits[(number >> 4) & 0xF];
    text += Digits[number & 0xF];
}

void AddBody(QByteArray& text, quint8 address, char sequence, char letter, const QByteArray& data) {
    text += encoding::SmallNumber(address);
    text += sequence;
    AddHexadecimal(text, data.size() + 1);
    text += letter;
    text += data;
}

void AddEnd(QByteArray& frame) {
    AddHexadecimal(frame, CheckSum(frame));
    frame += Etx;
}

constexpr qsizetype BeforeData = 5; ///< of a body
constexpr qsizetype AroundBody = 4; ///< of a frame

} // namespace

QByteArray Body(quint8 address, char sequence, char letter, const QByteArray& data) {
    QByteArray body;
    body.reserve(data.size() + BeforeData);
    AddBody(body, address, sequence, letter, data);
    return body;
}

QByteArray BuildFrame(const QByteArray& body) {
    QByteArray frame;
    frame.reserve(body.size() + AroundBody);
    frame += Stx;
    frame += body;
    AddEnd(frame);
    return frame;
}

QByteArray BuildCommand(quint8 address, char sequence, char letter, const QByteArray& data) {
    QByteArray frame;
    frame.reserve(data.size() + BeforeData + AroundBody);
    frame += Stx;
    AddBody(frame, address, sequence, letter, data);
    AddEnd(frame);
    return frame;
}

quint8 CheckSum(QByteArrayView bytes) {
    quint8 sum = 0;
    for (const char byte : bytes)
        sum = static_cast<quint8>(sum + static_cast<quint8>(byte));
    return sum;
}

bool chkCS(QByteArrayView received) {
    constexpr qsizetype Shortest = 5;
    if (received.size() < Shortest)
        return false;
    int told = 0;
    for (const char character : received.last(2)) {
        const int digit = HexadecimalDigit(character);
        if (digit < 0)
            break;
        told = told * 16 + digit;
    }
    return CheckSum(received.chopped(2)) == told;
}

std::optional<Parts> Split(QByteArrayView frame) {
    if (frame.size() < ShortestFrame)
        return std::nullopt;
    return Parts{.address = static_cast<quint8>(encoding::FromSmallNumber(frame[1])),
                 .sequence = frame[2],
                 .length = frame.sliced(3, 2),
                 .letter = frame[LetterPlace],
                 .data = frame.sliced(LetterPlace + 1).chopped(BehindData)};
}

void RemoveRelayLetter(QByteArray& reply) {
    reply.remove(LetterPlace, 1);
}

QByteArray EscapeData(QByteArrayView data) {
    QByteArray escaped;
    escaped.reserve(data.size() + data.size() / 8);
    for (const char byte : data) {
        if (NeedsEscape(byte)) {
            escaped += Escape;
            escaped += static_cast<char>(byte + EscapeOffset);
        } else {
            escaped += byte;
        }
    }
    return escaped;
}

QByteArray UnescapeData(QByteArrayView data) {
    QByteArray plain;
    plain.reserve(data.size());
    for (qsizetype i = 0; i < data.size(); ++i) {
        const bool opensEscape = data[i] == Escape && i + 1 < data.size();
        plain += opensEscape ? static_cast<char>(data[++i] - EscapeOffset) : data[i];
    }
    return plain;
}

} // namespace frames
