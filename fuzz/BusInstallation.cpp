#include "simulator/BusInstallation.h"

#include <algorithm>
#include <cstdlib>

namespace {

bool IsNumber(QStringView digits, int number) {
    while (digits.size() > 1 && digits.front() == u'0')
        digits = digits.sliced(1);
    return digits == QString::number(number);
}

/// Whether the line says what was read from it; its name is not looked at.
bool Tells(const QString& line, const BusDevice& device) {
    const QStringList words = line.simplified().split(u' ');
    if (words.size() < 3 || words[0] != DeviceClassName(device.Class) || !IsNumber(words[1], device.Address) ||
        !IsNumber(words[2], device.Number))
        return false;
    const QString hub = QStringLiteral("hub=");
    return !device.Hub || (words.size() > 3 && words[3].startsWith(hub) &&
                           IsNumber(QStringView(words[3]).sliced(hub.size()), *device.Hub));
}

QString Line(const BusDevice& device) {
    QString line = DeviceClassName(device.Class) + u' ' + QString::number(device.Address) + u' ' +
                   QString::number(device.Number) + u' ';
    if (device.Hub)
        line += QStringLiteral("hub=") + QString::number(*device.Hub) + u' ';
    return line + device.Name + u'\n';
}

} // namespace

/// Any bytes as the text of an installation: what was read is what the lines say, and comes back the same from lines in
/// the opposite order; what was refused has a reason with its line.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QString text = QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const QString source = QStringLiteral("bus.txt");
    QString problem;
    const std::optional<BusInstallation> read = BusInstallation::Parse(text, source, problem);
    if (!read) {
        if (!problem.startsWith(source + u':'))
            std::abort();
        return 0;
    }

    const std::vector<BusDevice>& devices = read->Devices();
    std::size_t told = 0;
    for (const QString& line : text.split(u'\n')) {
        const QString trimmed = line.trimmed();
        if (trimmed.isEmpty() || trimmed.startsWith(u'#'))
            continue;
        if (told == devices.size() || !Tells(trimmed, devices[told++]))
            std::abort();
    }
    QString backwards;
    for (auto device = devices.rbegin(); device != devices.rend(); ++device)
        backwards += Line(*device);
    const std::optional<BusInstallation> again = BusInstallation::Parse(backwards, source, problem);
    const auto isSame = [](const BusDevice& a, const BusDevice& b) { return Line(a) == Line(b); };
    if (told != devices.size() || !problem.isEmpty() || !again ||
        !std::equal(devices.rbegin(), devices.rend(), again->Devices().begin(), again->Devices().end(), isSame))
        std::abort();
    return 0;
}
