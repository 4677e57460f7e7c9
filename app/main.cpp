#include "app/OneProgram.h"
#include "app/Program.h"
#include "platform/Clock.h"
#include "widgets/Artwork.h"
#include "widgets/DesktopIcon.h"
#include "widgets/WindowDialogs.h"

#include <QApplication>

#include <functional>
#include <optional>

namespace {

std::unique_ptr<ShellIcon> NotificationArea() {
    return DesktopIcon::IsAvailable() ? std::make_unique<DesktopIcon>() : nullptr;
}

/// The program on one database.
struct Run {
    SystemClock clock;
    WindowDialogs dialogs;
    Program program{FoldersOfProgram(), clock, dialogs, NotificationArea()};
    std::optional<QCoro::Task<>> running;
};

} // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Orvex"));
    constexpr int IconSize = 128;
    QApplication::setWindowIcon(QIcon(artwork::Sign(IconSize)));
    // Boxes come and go before the first window stays.
    QApplication::setQuitOnLastWindowClosed(false);

    OneProgram one(FoldersOfProgram().user);
    if (!one.Begin())
        return 0;
    // The user may go on with another database: each has a program of its own.
    std::unique_ptr<Run> run;
    const std::function<void(const QString&)> begin = [&](const QString& store) {
        run.reset();
        run = std::make_unique<Run>();
        // Queued: the program may end before the event loop has begun, and it must not go under its own signal.
        QObject::connect(
            &run->program, &Program::Ended, &application,
            [&] {
                const QString next = run->program.NextStore();
                if (next.isEmpty())
                    QApplication::quit();
                else
                    begin(next);
            },
            Qt::QueuedConnection);
        run->running.emplace(run->program.Main(store));
    };
    QObject::connect(&one, &OneProgram::Wanted, &application, [&run] {
        if (run)
            run->program.ShowUp();
    });
    begin({});
    return QApplication::exec();
}
