#pragma once

#include <QByteArray>
#include <QDateTime>

/// The encodings that commands and replies are made of.
namespace encoding {

constexpr int LargestSmallNumber = 207;

/// A small number: one character, code `n` plus 48. @param n 0 to 207; the low 8 bits of the code go out.
char SmallNumber(int n);

/// The number that a small number's character stands for, -48 to 207.
int FromSmallNumber(char character);

/// Hour, minute, second, year less 2000, month, day, weekday (Sunday 1) as seven small numbers. A year before 2000 is
/// 0.
QByteArray ClockText(const QDateTime& moment);

/// The first three characters of the clock text.
QByteArray TimeText(const QDateTime& moment);

/// `value` in upper-case hexadecimal, filled with "0" on the left and cut to its `digits` low digits.
QByteArray Hexadecimal(quint32 value, int digits);

/// Display text of a counter: four decimal digits, the last four of `number`. The empty value 0 is "0>><" for a
/// `displayType` of 0, else "----".
QByteArray DisplayText(qint16 number, qint16 displayType);

} // namespace encoding
