#include "benchmarks/Responder.h"

#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

Responder::Responder(const QByteArray& answer, const std::function<bool(const QByteArray&)>& isWhole)
    : m_master(::posix_openpt(O_RDWR | O_NOCTTY)) {
    termios settings{};
    if (m_master < 0 || ::grantpt(m_master) != 0 || ::unlockpt(m_master) != 0 || ::tcgetattr(m_master, &settings) != 0)
        qFatal("no pseudo-terminal");
    ::cfmakeraw(&settings);
    ::tcsetattr(m_master, TCSANOW, &settings);
    m_path = QString::fromLocal8Bit(::ptsname(m_master));

    m_process = ::fork();
    if (m_process != 0)
        return;
    QByteArray request;
    char buffer[256];
    for (;;) {
        const ssize_t count = ::read(m_master, buffer, sizeof buffer);
        if (count <= 0)
            ::_exit(0);
        request.append(buffer, count);
        if (!isWhole(request))
            continue;
        request.clear();
        if (::write(m_master, answer.constData(), static_cast<size_t>(answer.size())) != answer.size())
            ::_exit(1);
    }
}

Responder::~Responder() {
    ::kill(m_process, SIGKILL);
    ::waitpid(m_process, nullptr, 0);
    ::close(m_master);
}
