#pragma once

#include <QStringView>

/// How the system reads numbers out of text that people typed or that a file holds.
namespace number {

/// The whole number that `text` begins with: leading blanks and a sign are read, then decimal digits.
/// 0 if the text begins with no number; "12abc" is 12. Held to the range of 32 bits signed.
qint32 LeadingInteger(QStringView text);

/// The decimal number that `text` begins with ("." as the decimal point, no exponent), 0 if there is none.
double LeadingDecimal(QStringView text);

/// A number typed into a box: `LeadingDecimal`, rounded to a whole number, a half to the even neighbour.
/// Held to the range of 32 bits signed.
qint32 TypedNumber(QStringView text);

} // namespace number
