#pragma once

#include <QByteArrayView>
#include <QString>
#include <QVariant>

/// Turns the bytes of Jet fields into values. Pure functions; none fails on any bytes.
namespace jet {

/// The first page's bytes as they are without the fixed mask that Jet lays over a part of them.
/// @param head at least 0x98 bytes from the start of the file.
QByteArray UnmaskedHeader(QByteArrayView head);

/// Why the file that begins with `head` cannot be read for lack of a password or key; empty if it can.
QString Protection(QByteArrayView head);

/// A text of a Jet 4 or later file: UTF-16, or the compressed form that begins with FF FE.
QString Text4(QByteArrayView bytes);

/// A moment from days since 1899-12-30 as "yyyy-MM-dd hh:mm:ss", rounded to the second. The fraction counts forward
/// within its day before that date too. A number outside the years 100 to 9999 stays a number.
QVariant Moment(double days);

/// A currency amount (ten thousandths) as exact decimal text.
QString Money(qint64 tenThousandths);

/// A decimal of 17 bytes (sign, then four little-endian words, highest first) with `scale` decimals, as exact text;
/// null if there are not 17 bytes.
QVariant Numeric(QByteArrayView bytes, int scale);

} // namespace jet
