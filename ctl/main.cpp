// The station without windows.

#include "ctl/Control.h"
#include "ctl/LineDialogs.h"
#include "platform/Clock.h"
#include "platform/SerialControl.h"
#include "station/Station.h"

#include <QCoreApplication>

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("orvexctl"));
    const Reading reading = ReadCommandLine(QCoreApplication::arguments());
    if (!reading.request)
        return static_cast<int>(reading.status);

    const QString& folder = reading.request->folder;
    const ProgramFolders folders =
        folder.isEmpty() ? FoldersOfProgram() : PrepareFolders(QCoreApplication::applicationDirPath(), folder, false);
    SystemClock clock;
    LineDialogs dialogs(reading.request->saysYes);
    SerialControl port;
    Station station(folders, {clock, port, dialogs});
    return static_cast<int>(QCoro::waitFor(Carry(station, *reading.request)));
}
