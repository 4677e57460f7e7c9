#pragma once

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

/// The classes of device; the values are those of column `d_Type`, the power unit has none there.
enum class DeviceClass { Counter = 0, Printer = 1, Display = 2, Hub = 3, PowerUnit = 4 };

/// "counter", "printer", "display", "hub" or "power".
QString DeviceClassName(DeviceClass deviceClass);

struct BusDevice {
    DeviceClass Class = DeviceClass::Counter;
    quint8 Address = 0;        ///< 0 to 207, but not 127
    int Number = 0;            ///< the number that people see
    QString Name;              ///< Unicode, or VNI letters as a station database holds them
    std::optional<quint8> Hub; ///< address of the hub that it is attached to
    bool Detached = false;     ///< its hub does not exist, so nothing reaches it
};

/// Which devices hang on the bus.
///
/// Text form, one device a line, words separated by blanks, "#" begins a comment line:
///
///     counter 1  1           First counter
///     hub     64 1           Second hall
///     printer 33 2  hub=64   Printer of the second hall
///
/// that is: class (counter, printer, display, hub, power), bus address, number, `hub=` with the address of its hub if
/// it stands behind one, and the name up to the end of the line. The order of lines does not matter. UTF-8.
class BusInstallation {
public:
    /// Reads a station database (the enabled rows of table `Display`) or a text file; which of both is told by content.
    /// A row of a database that can be no device of its own is left out, as the station does, and stands in `Notes`.
    /// @param problem what is wrong, with file and line or row; set only on failure.
    static std::optional<BusInstallation> Read(const QString& path, QString& problem);
    /// Reads the text form. @param source name of the text in `problem`.
    static std::optional<BusInstallation> Parse(const QString& text, const QString& source, QString& problem);

    const std::vector<BusDevice>& Devices() const { return m_devices; }
    /// The rows that were left out, and why.
    const QStringList& Notes() const { return m_notes; }

private:
    static std::optional<BusInstallation> ReadDatabase(const QString& path, QString& problem);
    /// An address that one character can carry, and not that of the broadcast.
    static bool IsDeviceAddress(int address);
    /// False if the address is taken. @param where file and line or row.
    bool Add(const BusDevice& device, const QString& where, QString& problem);

    std::vector<BusDevice> m_devices;
    QStringList m_notes;
};
