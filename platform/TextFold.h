#pragma once

#include <QString>

/// A text as people search for it: small letters without marks, "đ" as "d". Two texts that fold to the same are the
/// same to somebody who types without marks.
QString Folded(const QString& text);
