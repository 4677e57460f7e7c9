#include "core/IniText.h"

#include "platform/AnsiText.h"

#include <QByteArrayList>
#include <QStringDecoder>

#include <optional>

namespace {

/// A file as its lines, each with the line end that it has. They point into the content.
QByteArrayList LinesOf(const QByteArray& content) {
    QByteArrayList lines;
    for (qsizetype at = 0; at < content.size();) {
        const qsizetype end = content.indexOf('\n', at);
        const qsizetype next = end < 0 ? content.size() : end + 1;
        lines += QByteArray::fromRawData(content.constData() + at, next - at);
        at = next;
    }
    return lines;
}

QString TextOf(QByteArrayView bytes) {
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder(bytes);
    return decoder.hasError() ? ansi::Decode(bytes) : text;
}

bool IsBlank(QByteArrayView line) {
    return line.trimmed().isEmpty();
}

bool IsSame(const QString& left, const QString& right) {
    return QStringView(left).trimmed().compare(QStringView(right).trimmed(), Qt::CaseInsensitive) == 0;
}

/// The name between the brackets of a section line, none for any other line.
std::optional<QString> SectionName(QByteArrayView line) {
    // Some editors put a byte-order mark before the first line.
    constexpr QByteArrayView Mark("\xEF\xBB\xBF", 3);
    const QByteArrayView text = (line.startsWith(Mark) ? line.sliced(Mark.size()) : line).trimmed();
    if (!text.startsWith('['))
        return std::nullopt;
    const qsizetype end = text.indexOf(']');
    return TextOf(text.sliced(1, (end < 0 ? text.size() : end) - 1));
}

/// The key of a line of the form key=value, none for any other line.
std::optional<QString> KeyName(QByteArrayView line) {
    const QByteArrayView text = line.trimmed();
    const qsizetype equals = text.indexOf('=');
    if (equals < 0 || text.startsWith(';') || text.startsWith('['))
        return std::nullopt;
    return TextOf(text.first(equals));
}

QString ValueOf(QByteArrayView line) {
    const QByteArrayView text = line.trimmed();
    QString value = TextOf(text.sliced(text.indexOf('=') + 1)).trimmed();
    const bool isQuoted =
        value.size() >= 2 && value.front() == value.back() && (value.front() == u'"' || value.front() == u'\'');
    if (isQuoted)
        value = value.sliced(1, value.size() - 2);
    return value.left(initext::LongestValue);
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

QByteArray LineEndOf(const QByteArrayList& lines) {
    return !lines.isEmpty() && lines.first().endsWith("\r\n") ? QByteArrayLiteral("\r\n") : QByteArrayLiteral("\n");
}

void Put(QByteArrayList& lines, const initext::Setting& setting) {
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

QString initext::Value(const QByteArray& content, const QString& section, const QString& key) {
    const QByteArrayList lines = LinesOf(content);
    const Place place = Find(lines, section, key);
    return place.keyLine < 0 ? QString() : ValueOf(lines[place.keyLine]);
}

QByteArray initext::WithValues(const QByteArray& content, const std::vector<Setting>& settings) {
    QByteArrayList lines = LinesOf(content);
    for (const Setting& setting : settings)
        Put(lines, setting);
    return lines.join();
}
