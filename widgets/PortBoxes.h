#pragma once

#include "platform/SerialControl.h"

class QComboBox;

/// The lists of ports and speeds that the windows offer.
namespace ports {

/// COM1 to COM8, then the machine's own `available` ports, then `saved` if it is none of these; `saved` is chosen.
void FillPorts(QComboBox& box, const QList<SerialControl::Port>& available, const QString& saved);

/// The speeds from 300 to 115200. `saved` is chosen if it is one of those up to 38400, otherwise none is.
void FillSpeeds(QComboBox& box, const QString& saved);

/// Chooses `text`, which is added if the list lacks it; an empty text changes nothing.
void Show(QComboBox& box, const QString& text);

} // namespace ports
