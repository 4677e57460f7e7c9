#include "core/IniUtility.h"

#include "platform/AnsiText.h"
#include "platform/WholeFile.h"

#include <QFileInfo>

#include <optional>

namespace {

constexpr qint64 LargestFile = 1'000'000; ///< bytes

/// The settings; empty if there is no file. Nothing if there is one that cannot be read.
std::optional<QByteArray> ReadSettings(const QString& path) {
    if (!QFileInfo::exists(path))
        return QByteArray();
    Result<QByteArray> content = ReadWhole(path, LargestFile);
    return content ? std::optional(*std::move(content)) : std::nullopt;
}

} // namespace

Result<> IniUtility::Check() const {
    if (!QFileInfo::exists(IniPath))
        return {};
    const Result<QByteArray> content = ReadWhole(IniPath, LargestFile);
    return content ? Result<>() : Failure{content.Error()};
}

bool IniUtility::ReadIni(const QString& section, const QString& key, QString& value) const {
    const std::optional<QByteArray> content = ReadSettings(IniPath);
    if (!content)
        return false;
    const QString found = initext::Value(*content, section, key);
    if (found.isEmpty())
        return false;
    value = found;
    return true;
}

bool IniUtility::WriteIni(const QString& section, const QString& key, const QString& value) const {
    return WriteAll({{section, key, value}});
}

bool IniUtility::WriteAll(const std::vector<Setting>& settings) const {
    // A file that is there but cannot be read must not be replaced by one that holds these keys alone.
    const std::optional<QByteArray> content = ReadSettings(IniPath);
    if (!content)
        return false;
    return static_cast<bool>(WriteWhole(IniPath, initext::WithValues(*content, settings)));
}

QString IniUtility::DecodePassword(const QString& text) {
    QByteArray codes = ansi::Encode(text).bytes;
    for (qsizetype i = 0; i < codes.size(); ++i)
        codes[i] = static_cast<char>(static_cast<quint8>(codes[i]) - (i + 1) * (i + 1));
    return ansi::Decode(codes);
}
