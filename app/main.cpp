#include "app/Program.h"
#include "platform/Clock.h"
#include "widgets/Artwork.h"
#include "widgets/DesktopIcon.h"
#include "widgets/WindowDialogs.h"

#include <QApplication>

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Orvex"));
    constexpr int IconSize = 128;
    QApplication::setWindowIcon(QIcon(artwork::Sign(IconSize)));
    // Boxes come and go before the first window stays.
    QApplication::setQuitOnLastWindowClosed(false);

    SystemClock clock;
    WindowDialogs dialogs;
    std::unique_ptr<ShellIcon> shell;
    if (DesktopIcon::IsAvailable())
        shell = std::make_unique<DesktopIcon>();
    Program program(FoldersOfProgram(), clock, dialogs, std::move(shell));
    // Queued: the program may end before the event loop has begun.
    QObject::connect(&program, &Program::Ended, &application, &QApplication::quit, Qt::QueuedConnection);
    const auto running = program.Main();
    return QApplication::exec();
}
