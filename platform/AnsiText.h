#pragma once

#include <QByteArray>
#include <QString>

/// The one place where text of people becomes bytes of the line and back: Windows-1252, one byte a character.
///
/// The five codes that Windows-1252 leaves open (0x81, 0x8D, 0x8F, 0x90, 0x9D) stand for the control characters of the
/// same number, so that every byte has a character and `Encode(Decode(bytes)).bytes == bytes` for all bytes.
namespace ansi {

struct Encoded {
    QByteArray bytes; ///< one byte for each character; "?" where the code page has none
    QString lacking;  ///< the characters that became "?", in order, each as often as it stood there
};

/// Bytes of `text` in the ANSI code page. A character outside the BMP counts as one character.
Encoded Encode(QStringView text);

/// Text of `bytes`; never fails.
QString Decode(QByteArrayView bytes);

/// `text` with one visible sign for each control character: triangles for STX and ETX, a tick for ACK, a dot for all
/// others.
QString Visible(QStringView text);

} // namespace ansi
