#include "core/IniText.h"

#include <cstdlib>

/// Any bytes as an ini file: what is set in it comes back, nothing else changes, and setting it again changes nothing.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QByteArray content(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const QString section = QStringLiteral("Comm");
    const QString device = QStringLiteral("Device");
    const QString baud = QStringLiteral("Baud");
    if (initext::Value(content, section, device).size() > initext::LongestValue)
        std::abort();
    const QString baudBefore = initext::Value(content, section, baud);

    const QString written = QStringLiteral("tty\u00E9\u1EBF");
    const QByteArray once = initext::WithValues(content, {{section, device, written}});
    if (initext::Value(once, section.toLower(), device.toUpper()) != written)
        std::abort();
    if (initext::Value(once, section, baud) != baudBefore)
        std::abort();
    if (initext::WithValues(once, {{section, device, written}}) != once)
        std::abort();
    return 0;
}
