#include "utilities/SystemInfo.h"

#include <QFileInfo>
#include <QProcess>
#include <QtEndian>

bool systeminfo::GetKeyValue(const RegistryStore& registry, qint32 root, const QString& section, const QString& name,
                             QString& value) {
    constexpr qint32 Text = 1;
    constexpr qint32 Number = 4;
    const auto entry = registry.Read(root, section, name);
    if (!entry) {
        value.clear();
        return false;
    }
    if (entry->type == Text)
        value = QString::fromUtf8(entry->bytes.endsWith('\0') ? entry->bytes.chopped(1) : entry->bytes);
    else if (entry->type == Number && entry->bytes.size() == sizeof(quint32))
        value = QString::number(qFromLittleEndian<quint32>(entry->bytes.constData()));
    return true;
}

bool systeminfo::Start(const RegistryStore& registry) {
    const qint32 root = RegistryStore::LocalMachine;
    QString path;
    if (GetKeyValue(registry, root, QStringLiteral("SOFTWARE\\Microsoft\\Shared Tools\\MSINFO"), QStringLiteral("PATH"),
                    path))
        return QProcess::startDetached(path, {});
    if (!GetKeyValue(registry, root, QStringLiteral("SOFTWARE\\Microsoft\\Shared Tools Location"),
                     QStringLiteral("MSINFO"), path))
        return false;
    const QString tool = path + QStringLiteral("\\MSINFO32.EXE");
    return QFileInfo::exists(tool) && QProcess::startDetached(tool, {});
}
