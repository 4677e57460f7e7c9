#include "core/IniUtility.h"

#include <QFile>
#include <QTemporaryDir>

#include <cstdlib>

/// Reads from and writes into a file of any content: what was written comes back, and writing it again changes nothing.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const QTemporaryDir folder;
    const IniUtility ini(folder.filePath(QStringLiteral("fuzz.ini")));
    {
        QFile file(ini.IniPath);
        if (!file.open(QIODevice::WriteOnly))
            std::abort();
        file.write(reinterpret_cast<const char*>(data), static_cast<qint64>(size));
    }
    QString value;
    ini.ReadIni(QStringLiteral("Comm"), QStringLiteral("Device"), value);
    if (value.size() > IniUtility::LongestValue)
        std::abort();

    const QString written = QStringLiteral("tty\u00E9\u1EBF");
    if (!ini.WriteIni(QStringLiteral("Comm"), QStringLiteral("Device"), written))
        std::abort();
    if (!ini.ReadIni(QStringLiteral("comm"), QStringLiteral("DEVICE"), value) || value != written)
        std::abort();

    QFile file(ini.IniPath);
    if (!file.open(QIODevice::ReadOnly))
        std::abort();
    const QByteArray once = file.readAll();
    file.close();
    if (!ini.WriteIni(QStringLiteral("Comm"), QStringLiteral("Device"), written) || !file.open(QIODevice::ReadOnly))
        std::abort();
    if (file.readAll() != once)
        std::abort();
    return 0;
}
