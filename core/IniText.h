#pragma once

#include <QByteArray>
#include <QString>

#include <vector>

/// What stands in an ini file, as bytes, by the rules that `IniUtility` tells.
namespace initext {

/// A value has at most this many characters; the rest is not read.
constexpr int LongestValue = 127;

struct Setting {
    QString section;
    QString key;
    QString value; ///< line ends in it become blanks
};

/// The value of a key, empty if there is none.
QString Value(const QByteArray& content, const QString& section, const QString& key);

/// The content with these values set, sections and keys made as needed, and everything else as it was.
QByteArray WithValues(const QByteArray& content, const std::vector<Setting>& settings);

} // namespace initext
