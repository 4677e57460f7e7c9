#include "core/IniUtility.h"

#include "platform/AnsiText.h"
#include "platform/WholeFile.h"

#include <QFileInfo>
#include <QStringDecoder>

#include <algorithm>
#include <optional>

namespace {

/// A file as its lines, each with the line end that it has.
QByteArrayList LinesOf(const QByteArray& content) {
    QByteArrayList lines;
    for (qsizetype at = 0; at < content.size();) {
        const qsizetype end = content.indexOf('\n', at);
        const qsizetype next = end < 0 ? content.size() : end + 1;
        lines += content.mid(at, next - at);
        at = next;
    }
    return lines;
}

QString TextOf(QByteArrayView bytes) {
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder(bytes);
    return decoder.hasError() ? ansi::Decode(bytes) : text;
}

bool IsBlank(const QByteArray& line) {
    return line.trimmed().isEmpty();
}

bool IsSame(const QString& left, const QString& right) {
    return QStringView(left).trimmed().compare(QStringView(right).trimmed(), Qt::CaseInsensitive) == 0;
}

/// The name between the brackets of a section line, none for any other line.
std::optional<QString> SectionName(const QByteArray& line) {
    // Some editors put a byte-order mark before the first line.
    const QByteArray mark = QByteArrayLiteral("\xEF\xBB\xBF");
    const QByteArray text = (line.startsWith(mark) ? line.sliced(mark.size()) : line).trimmed();
    if (!text.startsWith('['))
        return std::nullopt;
    const qsizetype end = text.indexOf(']');
    return TextOf(QByteArrayView(text).sliced(1, (end < 0 ? text.size() : end) - 1));
}

/// The key of a line of the form key=value, none for any other line.
std::optional<QString> KeyName(const QByteArray& line) {
    const QByteArray text = line.trimmed();
    const qsizetype equals = text.indexOf('=');
    if (equals < 0 || text.startsWith(';') || text.startsWith('['))
        return std::nullopt;
    return TextOf(QByteArrayView(text).first(equals));
}

QString ValueOf(const QByteArray& line) {
    const QByteArray text = line.trimmed();
    QString value = TextOf(QByteArrayView(text).sliced(text.indexOf('=') + 1)).trimmed();
    const bool isQuoted =
        value.size() >= 2 && value.front() == value.back() && (value.front() == u'"' || value.front() == u'\'');
    if (isQuoted)
        value = value.sliced(1, value.size() - 2);
    return value.left(IniUtility::LongestValue);
}

struct Place {
    qsizetype sectionEnd = -1; ///< index behind the last line of the section that is not blank, -1 without the section
    qsizetype keyLine = -1;    ///< index of the key's line, -1 without the key
};

/// Where a key stands; of several sections or keys of one name the first counts.
Place Find(const QByteArrayList& lines, const QString& section, const QString& key) {
    Place place;
    bool inSection = false;
    for (qsizetype i = 0; i < lines.size(); ++i) {
        if (const auto name = SectionName(lines[i])) {
            if (place.sectionEnd >= 0)
                break;
            inSection = IsSame(*name, section);
            if (inSection)
                place.sectionEnd = i + 1;
            continue;
        }
        if (!inSection)
            continue;
        if (!IsBlank(lines[i]))
            place.sectionEnd = i + 1;
        const auto name = KeyName(lines[i]);
        if (name && place.keyLine < 0 && IsSame(*name, key))
            place.keyLine = i;
    }
    return place;
}

constexpr qint64 LargestFile = 1'000'000; ///< bytes

/// The settings; empty if there is no file. Nothing if there is one that cannot be read.
std::optional<QByteArray> ReadSettings(const QString& path) {
    if (!QFileInfo::exists(path))
        return QByteArray();
    Result<QByteArray> content = ReadWhole(path, LargestFile);
    return content ? std::optional(*std::move(content)) : std::nullopt;
}

QByteArray LineEndOf(const QByteArrayList& lines) {
    return !lines.isEmpty() && lines.first().endsWith("\r\n") ? QByteArrayLiteral("\r\n") : QByteArrayLiteral("\n");
}

void Put(QByteArrayList& lines, const IniUtility::Setting& setting) {
    const QByteArray lineEnd = LineEndOf(lines);
    if (!lines.isEmpty() && !lines.last().endsWith('\n'))
        lines.last() += lineEnd;
    QString oneLine = setting.value;
    oneLine.replace(u'\r', u' ').replace(u'\n', u' ');
    const Place place = Find(lines, setting.section, setting.key);
    if (place.keyLine >= 0) {
        QByteArray& line = lines[place.keyLine];
        const QByteArray ownEnd = line.endsWith("\r\n") ? QByteArrayLiteral("\r\n") : QByteArrayLiteral("\n");
        line = line.first(line.indexOf('=') + 1) + oneLine.toUtf8() + ownEnd;
        return;
    }
    const QByteArray line = (setting.key + u'=' + oneLine).toUtf8() + lineEnd;
    if (place.sectionEnd >= 0) {
        lines.insert(place.sectionEnd, line);
    } else {
        lines += '[' + setting.section.toUtf8() + ']' + lineEnd;
        lines += line;
    }
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
    const QByteArrayList lines = LinesOf(*content);
    const Place place = Find(lines, section, key);
    if (place.keyLine < 0)
        return false;
    const QString found = ValueOf(lines[place.keyLine]);
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
    QByteArrayList lines = LinesOf(*content);
    for (const Setting& setting : settings)
        Put(lines, setting);
    return static_cast<bool>(WriteWhole(IniPath, lines.join()));
}

QString IniUtility::DecodePassword(const QString& text) {
    QByteArray codes = ansi::Encode(text).bytes;
    for (qsizetype i = 0; i < codes.size(); ++i)
        codes[i] = static_cast<char>(static_cast<quint8>(codes[i]) - (i + 1) * (i + 1));
    return ansi::Decode(codes);
}
