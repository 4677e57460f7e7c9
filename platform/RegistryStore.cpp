#include "platform/RegistryStore.h"

#include "platform/WholeFile.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStandardPaths>

namespace {

constexpr qint64 LargestFile = 1'000'000; ///< bytes

const QString TypeKey = QStringLiteral("type");
const QString BytesKey = QStringLiteral("bytes");

QString KeyName(qint32 root, const QString& section) {
    return QStringLiteral("%1\\%2").arg(static_cast<quint32>(root), 8, 16, QLatin1Char('0')).arg(section.toLower());
}

/// The keys of a file, each with its values; none if the file is missing. Nothing at all if it is damaged, which must
/// not be written over.
std::optional<QJsonObject> ReadKeys(const QString& path) {
    if (!QFileInfo::exists(path))
        return QJsonObject();
    const QJsonDocument document = QJsonDocument::fromJson(ReadWhole(path, LargestFile).ValueOr({}));
    if (!document.isObject())
        return std::nullopt;
    return document.object();
}

/// The Exec line of a desktop entry: program and arguments, quoted by the rules of desktop entries. The program is all
/// of `command` up to the first " /".
QByteArray ExecLine(const QString& command) {
    const qsizetype end = command.indexOf(QStringLiteral(" /"));
    QString program = end < 0 ? command : command.first(end);
    // Escaped once for the quotes and once for the entry.
    program.replace(u'\\', QString(4, u'\\'));
    for (const QChar special : {u'"', u'`', u'$'})
        program.replace(special, QString(2, u'\\') + special);
    program.replace(u'%', QStringLiteral("%%"));
    return (u'"' + program + u'"' + (end < 0 ? QString() : command.sliced(end))).toUtf8();
}

} // namespace

RegistryStore::RegistryStore(QString path, QString autostartFolder)
    : m_path(std::move(path))
    , m_autostartFolder(std::move(autostartFolder)) {}

RegistryStore RegistryStore::OfUser(const QString& folder) {
    return RegistryStore(folder + QStringLiteral("/Registry.json"),
                         QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
                             QStringLiteral("/autostart"));
}

bool RegistryStore::IsRunKey(qint32 root, const QString& section) {
    return root == LocalMachine && section.compare(QStringLiteral("SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Run"),
                                                   Qt::CaseInsensitive) == 0;
}

QString RegistryStore::AutostartFile(const QString& value) const {
    return m_autostartFolder + u'/' + value.toLower() + QStringLiteral(".desktop");
}

bool RegistryStore::HasKey(qint32 root, const QString& section) const {
    const auto keys = ReadKeys(m_path);
    return keys && keys->contains(KeyName(root, section));
}

std::optional<RegistryStore::Entry> RegistryStore::Read(qint32 root, const QString& section,
                                                        const QString& value) const {
    const auto keys = ReadKeys(m_path);
    if (!keys)
        return std::nullopt;
    const QJsonObject entry = keys->value(KeyName(root, section)).toObject().value(value.toLower()).toObject();
    if (entry.isEmpty())
        return std::nullopt;
    // The desktop, or its user, may have taken the program out of what it starts.
    if (IsRunKey(root, section) && !QFile::exists(AutostartFile(value)))
        return std::nullopt;
    return Entry{entry.value(TypeKey).toInt(), QByteArray::fromBase64(entry.value(BytesKey).toString().toLatin1())};
}

bool RegistryStore::Write(qint32 root, const QString& section, const QString& value, const Entry& entry) const {
    auto keys = ReadKeys(m_path);
    if (!keys)
        return false;
    const QByteArray before = QJsonDocument(*keys).toJson();
    QJsonObject values = keys->value(KeyName(root, section)).toObject();
    values[value.toLower()] =
        QJsonObject{{TypeKey, entry.type}, {BytesKey, QString::fromLatin1(entry.bytes.toBase64())}};
    (*keys)[KeyName(root, section)] = values;
    if (!WriteWhole(m_path, QJsonDocument(*keys).toJson()))
        return false;
    if (!IsRunKey(root, section))
        return true;
    // A value whose entry of the desktop is missing counts as none, so that a kill between the two leaves neither.
    const QByteArray desktopEntry = "[Desktop Entry]\nType=Application\nName=" + value.toUtf8() +
                                    "\nExec=" + ExecLine(QString::fromUtf8(entry.bytes.split('\0').constFirst())) +
                                    "\nTerminal=false\n";
    if (QDir().mkpath(m_autostartFolder) && WriteWhole(AutostartFile(value), desktopEntry))
        return true;
    (void)WriteWhole(m_path, before);
    return false;
}

bool RegistryStore::Delete(qint32 root, const QString& section, const QString& value) const {
    auto keys = ReadKeys(m_path);
    if (!keys)
        return false;
    QJsonObject values = keys->value(KeyName(root, section)).toObject();
    if (!values.contains(value.toLower()))
        return false;
    const QString autostart = AutostartFile(value);
    const bool isStarted = IsRunKey(root, section) && QFile::exists(autostart);
    const QByteArray entry = isStarted ? ReadWhole(autostart, LargestFile).ValueOr({}) : QByteArray();
    if (isStarted && !QFile::remove(autostart))
        return false;
    values.remove(value.toLower());
    (*keys)[KeyName(root, section)] = values;
    if (WriteWhole(m_path, QJsonDocument(*keys).toJson()))
        return true;
    if (isStarted)
        (void)WriteWhole(autostart, entry);
    return false;
}
