#include "app/Program.h"
#include "platform/Clock.h"
#include "platform/WindowDialogs.h"

#include <QApplication>

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Orvex"));
    // Boxes come and go before the first window stays.
    QApplication::setQuitOnLastWindowClosed(false);

    SystemClock clock;
    WindowDialogs dialogs;
    Program program(QApplication::applicationDirPath(), clock, dialogs);
    // Queued: the program may end before the event loop has begun.
    QObject::connect(&program, &Program::Ended, &application, &QApplication::quit, Qt::QueuedConnection);
    const auto running = program.Main();
    return QApplication::exec();
}
