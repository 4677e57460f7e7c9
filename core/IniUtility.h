#pragma once

#include "core/IniText.h"
#include "platform/Result.h"

#include <QString>

#include <vector>

/// Reads and writes the values of an ini file, the one that `IniPath` names.
///
/// Sections and keys are compared without regard to case and to blanks around them; the first match wins. A value loses
/// the blanks around it and one pair of quotes (" or ') that encloses it. Lines that begin with ";" are comments. A
/// missing file reads as empty. Bytes that are valid UTF-8 are read as UTF-8, any other line as Windows-1252; what is
/// written is UTF-8.
class IniUtility {
public:
    static constexpr int LongestValue = initext::LongestValue;
    using Setting = initext::Setting;

    explicit IniUtility(QString iniPath)
        : IniPath(std::move(iniPath)) {}

    /// The file that the other operations work on.
    QString IniPath;

    /// Fails, with the file's name, if the file is there and cannot be read; all keys then count as missing.
    Result<> Check() const;

    /// Sets `value` and returns true if the key is there and its value is not empty; else leaves `value` alone.
    bool ReadIni(const QString& section, const QString& key, QString& value) const;

    /// Sets a value, making file, section and key as needed. Everything else in the file stays as it is, byte for byte,
    /// and the file is replaced as a whole. False if it could not be written; the old file then stays.
    bool WriteIni(const QString& section, const QString& key, const QString& value) const;

    /// Sets several values together: all of them are in the file afterwards, or none is.
    bool WriteAll(const std::vector<Setting>& settings) const;

    /// Undoes the scrambling of a stored password: character number i (from 1) holds the code of the clear character
    /// plus i squared, codes being those of the ANSI code page.
    static QString DecodePassword(const QString& text);
};
