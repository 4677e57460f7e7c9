#pragma once

#include <QFont>

/// The fonts in which Vietnamese shows: the program's own "Orvex VNI", built in.
namespace fonts {

/// Makes the built-in fonts known to the application and lets them stand in for VNI-Avo and VNI-Aptima, each unless the
/// computer has the real one. Needs the QApplication; further calls do nothing.
void Register();

/// The font in which stored letters show, otherwise like `like`.
QFont ForStoredText(QFont like);

} // namespace fonts
