#include "tests/support/PseudoTerminal.h"

#include <gtest/gtest.h>

#include <QFile>

#include <memory>
#include <vector>

#include <fcntl.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

PseudoTerminal::PseudoTerminal()
    : m_master(::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK)) {
    EXPECT_GE(m_master, 0);
    EXPECT_EQ(::grantpt(m_master), 0);
    EXPECT_EQ(::unlockpt(m_master), 0);
    termios settings{};
    EXPECT_EQ(::tcgetattr(m_master, &settings), 0);
    ::cfmakeraw(&settings);
    EXPECT_EQ(::tcsetattr(m_master, TCSANOW, &settings), 0);
    m_path = QString::fromLocal8Bit(::ptsname(m_master));
}

PseudoTerminal::~PseudoTerminal() {
    // The other end may still be open. Its number must not go to another process before that has also given up its lock
    // file, so that it ends with the process.
    static std::vector<std::unique_ptr<QFile>> ended;
    if (m_master >= 0) {
        ended.push_back(std::make_unique<QFile>());
        EXPECT_TRUE(ended.back()->open(m_master, QIODevice::ReadWrite, QFileDevice::AutoCloseHandle));
    }
}

QByteArray PseudoTerminal::Read() {
    QByteArray all;
    char buffer[512];
    for (;;) {
        const ssize_t count = ::read(m_master, buffer, sizeof buffer);
        if (count <= 0)
            return all;
        all.append(buffer, count);
    }
}

void PseudoTerminal::Write(const QByteArray& bytes) {
    EXPECT_EQ(::write(m_master, bytes.constData(), static_cast<size_t>(bytes.size())), bytes.size());
}

void PseudoTerminal::HangUp() {
    if (m_master >= 0)
        ::close(m_master);
    m_master = -1;
}
