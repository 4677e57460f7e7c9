#include "widgets/PortBoxes.h"

#include <QComboBox>

namespace {

constexpr int NamedPorts = 8; ///< COM1 to COM8

/// Only a saved speed that stands in this text is shown.
const QString& PresetSpeeds() {
    static const QString speeds = QStringLiteral("300,600,1200,2400,4800,9600,19200,38400");
    return speeds;
}

} // namespace

void ports::FillPorts(QComboBox& box, const QList<SerialControl::Port>& available, const QString& saved) {
    for (int number = 1; number <= NamedPorts; ++number)
        box.addItem(QStringLiteral("COM%1").arg(number));
    for (const SerialControl::Port& port : available) {
        box.addItem(port.name);
        box.setItemData(box.count() - 1, port.description, Qt::ToolTipRole);
    }
    box.setCurrentIndex(-1);
    Show(box, saved);
}

void ports::FillSpeeds(QComboBox& box, const QString& saved) {
    box.addItems(PresetSpeeds().split(u','));
    box.addItems({QStringLiteral("57600"), QStringLiteral("115200")});
    const QString trimmed = saved.trimmed();
    const bool isPreset = !trimmed.isEmpty() && PresetSpeeds().contains(trimmed);
    box.setCurrentIndex(isPreset ? box.findText(trimmed) : -1);
}

void ports::Show(QComboBox& box, const QString& text) {
    const QString trimmed = text.trimmed();
    if (trimmed.isEmpty())
        return;
    if (box.findText(trimmed) < 0)
        box.addItem(trimmed);
    box.setCurrentIndex(box.findText(trimmed));
}
