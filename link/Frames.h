#pragma once

#include <QByteArray>

#include <optional>

/// The frames of the bus, as pure functions.
///
/// Master to device:
///
///     STX | address | sequence | length 2 | letter | data n | check sum 2 | ETX
///
/// - address: one character, code 0x30 plus the bus address; the broadcast address 127 gives 0xAF.
/// - sequence: "0" to "9", "*" in a broadcast.
/// - length: characters of letter and data, two upper-case hexadecimal digits; above 255 the two low digits.
/// - check sum: low 8 bits of the sum of all bytes from STX to the last data byte, two upper-case hexadecimal digits.
///
/// Device to master: STX, at least two characters, check sum, ETX. Between STX and ETX no bare STX, ETX, ACK or 0xC0
/// may stand: binary data goes through `EscapeData`.
namespace frames {

constexpr char Stx = 0x02;
constexpr char Etx = 0x03;
constexpr char Eot = 0x04;
constexpr char Ack = 0x06;
constexpr char Escape = static_cast<char>(0xC0);

constexpr quint8 Broadcast = 127;

/// Characters of letter and data that the length field can tell.
constexpr qsizetype LongestContent = 255;

/// Address, sequence, length, letter and data of a command: what stands between STX and the check sum.
/// @param sequence "0" to "9", or "*" in a broadcast.
QByteArray Body(quint8 address, char sequence, char letter, const QByteArray& data);

/// Puts STX before `body`, and the check sum and ETX behind it.
QByteArray BuildFrame(const QByteArray& body);

/// The frame of a command's body, in one.
QByteArray BuildCommand(quint8 address, char sequence, char letter, const QByteArray& data);

/// The sum of all bytes, low 8 bits.
quint8 CheckSum(QByteArrayView bytes);

/// Verifies a received frame without its ETX: the last two characters, read as hexadecimal digits of either case, are
/// the check sum of all before them. A character that is no digit ends the number; no digit at all is 0. False for
/// fewer than five characters.
bool chkCS(QByteArrayView received);

/// A frame taken apart. Commands and replies have the same shape:
///
///     0    1        2         3 4     5       6 to n - 4  n - 3 n - 2  n - 1
///     STX  address  sequence  length  letter  data        check sum    ETX
///
/// What a reply has for data is its content; its length field says nothing.
struct Parts {
    quint8 address = 0;
    char sequence = 0;
    QByteArrayView length; ///< two characters
    char letter = 0;
    QByteArrayView data; ///< as it went over the line; empty where there is none
};

/// Takes a frame from STX to ETX apart. The check sum is not looked at. The parts point into `frame`.
/// @return nothing for a frame of fewer than nine characters.
std::optional<Parts> Split(QByteArrayView frame);

/// Takes the letter of the hub out of a relayed reply, so that the letter and the content of the device stand where a
/// direct reply has them.
void RemoveRelayLetter(QByteArray& reply);

/// Replaces 0x02, 0x03, 0x06 and 0xC0 by 0xC0 and the byte plus 0x20.
QByteArray EscapeData(QByteArrayView data);

/// Undoes `EscapeData`: 0xC0 and the byte behind it become that byte less 0x20. A 0xC0 at the very end stays.
QByteArray UnescapeData(QByteArrayView data);

} // namespace frames
