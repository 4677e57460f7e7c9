#include "simulator/SimulatedBus.h"

#include "link/Frames.h"

#include <QFile>
#include <QFileInfo>
#include <QSocketNotifier>

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/timerfd.h>
#include <termios.h>
#include <time.h>
#include <unistd.h>

namespace {

constexpr qint64 Second = 1'000'000'000;
constexpr qint64 Millisecond = 1'000'000;
constexpr int BitsPerCharacter = 10;
/// Waking for each character of a fast line would cost more than it shows.
constexpr qint64 PacedBurst = 2 * Millisecond;
/// Apart far enough that the reader sees most characters one by one.
constexpr qint64 SliceGap = Millisecond / 5;
constexpr int SlaveWatchMilliseconds = 10;

qint64 Now() {
    timespec time{};
    ::clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<qint64>(time.tv_sec) * Second + time.tv_nsec;
}

QString SystemError(const QString& what) {
    return QStringLiteral("%1: %2").arg(what, QString::fromLocal8Bit(std::strerror(errno)));
}

} // namespace

SimulatedBus::SimulatedBus(const BusInstallation& installation, QObject* parent)
    : QObject(parent)
    , DeviceBus(installation)
    , m_timer(::timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC)) {
    m_slaveWatch.setInterval(SlaveWatchMilliseconds);
    connect(&m_slaveWatch, &QTimer::timeout, this, &SimulatedBus::WaitForSlave);
    if (m_timer >= 0) {
        m_timerNotifier = new QSocketNotifier(m_timer, QSocketNotifier::Read, this);
        connect(m_timerNotifier, &QSocketNotifier::activated, this, [this] {
            quint64 expirations = 0;
            if (::read(m_timer, &expirations, sizeof expirations) > 0)
                Pump();
        });
    }
}

SimulatedBus::~SimulatedBus() {
    // Whoever listens may have gone before the bus.
    blockSignals(true);
    Log().OnLine = nullptr;
    HangUp();
    delete m_timerNotifier;
    if (m_timer >= 0)
        ::close(m_timer);
}

void SimulatedBus::SetBaudRate(int baudRate) {
    m_characterTime = baudRate > 0 ? Second * BitsPerCharacter / baudRate : 0;
}

QString SimulatedBus::Open() {
    if (IsOpen())
        return {};
    if (m_timer < 0)
        return QStringLiteral("no timer for the bus");
    m_master = ::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    termios settings{};
    std::array<char, 128> name{};
    if (m_master < 0 || ::grantpt(m_master) != 0 || ::unlockpt(m_master) != 0 ||
        ::tcgetattr(m_master, &settings) != 0 || ::ptsname_r(m_master, name.data(), name.size()) != 0) {
        const QString problem = SystemError(QStringLiteral("pseudo-terminal"));
        HangUp();
        return problem;
    }
    ::cfmakeraw(&settings);
    ::tcsetattr(m_master, TCSANOW, &settings);
    const QString slavePath = QString::fromLocal8Bit(name.data());
    if (!m_linkPath.isEmpty()) {
        if (QFileInfo(m_linkPath).isSymLink())
            QFile::remove(m_linkPath);
        if (!QFile::link(slavePath, m_linkPath)) {
            const QString problem = SystemError(m_linkPath);
            ::close(std::exchange(m_master, -1));
            return problem;
        }
    }
    m_slavePath = slavePath;
    m_readable = new QSocketNotifier(m_master, QSocketNotifier::Read, this);
    connect(m_readable, &QSocketNotifier::activated, this, &SimulatedBus::ReadLine);
    return {};
}

void SimulatedBus::HangUp() {
    if (!IsOpen())
        return;
    if (m_readable != nullptr) {
        // It may be the one whose signal is being handled.
        m_readable->setEnabled(false);
        m_readable->deleteLater();
        m_readable = nullptr;
    }
    m_slaveWatch.stop();
    ::close(std::exchange(m_master, -1));
    if (!m_linkPath.isEmpty() && QFileInfo(m_linkPath).isSymLink() && QFile::symLinkTarget(m_linkPath) == m_slavePath)
        QFile::remove(m_linkPath);
    m_slavePath.clear();
    Forget();
    Log().Remark(QStringLiteral("hung up"));
    Q_EMIT HungUp();
}

void SimulatedBus::Forget() {
    ForgetUnfinished();
    m_incoming.clear();
    m_outgoing.clear();
    m_inFree = m_outFree = 0;
}

void SimulatedBus::WaitForSlave() {
    // A master whose slave nobody holds open is always ready to read and gives nothing.
    pollfd state{m_master, POLLIN, 0};
    if (::poll(&state, 1, 0) >= 0 && (state.revents & POLLHUP) != 0)
        return;
    m_slaveWatch.stop();
    m_readable->setEnabled(true);
}

void SimulatedBus::ReadLine() {
    std::array<char, 4096> buffer{};
    while (IsOpen()) {
        const ssize_t count = ::read(m_master, buffer.data(), buffer.size());
        if (count > 0) {
            Queue(QByteArray(buffer.data(), count));
            if (static_cast<size_t>(count) < buffer.size())
                return;
            continue;
        }
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0 && errno == EAGAIN)
            return;
        m_readable->setEnabled(false);
        m_slaveWatch.start();
        Forget();
        return;
    }
}

void SimulatedBus::Queue(const QByteArray& bytes) {
    if (m_characterTime == 0 && m_incoming.empty()) {
        m_wireTime = 0;
        Hear(bytes);
        return;
    }
    const qint64 start = std::max(Now(), m_inFree);
    qsizetype begin = 0;
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        if (bytes[i] != frames::Etx && bytes[i] != frames::Ack && i + 1 < bytes.size())
            continue;
        m_incoming.push_back({start + (i + 1) * m_characterTime, bytes.sliced(begin, i + 1 - begin)});
        begin = i + 1;
    }
    m_inFree = start + bytes.size() * m_characterTime;
    ArmTimer();
}

void SimulatedBus::Pump() {
    const qint64 now = Now();
    while (!m_incoming.empty() && m_incoming.front().due <= now) {
        const Incoming piece = std::move(m_incoming.front());
        m_incoming.pop_front();
        m_wireTime = piece.due;
        Hear(piece.bytes);
    }
    ArmTimer();
}

void SimulatedBus::ArmTimer() {
    const qint64 now = Now();
    qint64 next = WriteDue(now);
    if (!m_incoming.empty() && (next == 0 || m_incoming.front().due < next))
        next = m_incoming.front().due;
    itimerspec when{};
    when.it_value.tv_sec = next / Second;
    when.it_value.tv_nsec = next % Second;
    ::timerfd_settime(m_timer, TFD_TIMER_ABSTIME, &when, nullptr);
}

qint64 SimulatedBus::WriteDue(qint64 now) {
    while (IsOpen() && !m_outgoing.empty()) {
        Outgoing& piece = m_outgoing.front();
        const qsizetype size = piece.bytes.size();
        if (now < piece.start)
            return piece.start + (piece.gap > 0 ? piece.gap : 0);
        const qsizetype ready =
            piece.gap > 0 ? std::min(size, static_cast<qsizetype>((now - piece.start) / piece.gap)) : size;
        if (ready > piece.sent) {
            const ssize_t written =
                ::write(m_master, piece.bytes.constData() + piece.sent, static_cast<size_t>(ready - piece.sent));
            if (written > 0)
                piece.sent += written;
            if (piece.sent < ready)
                return now + Millisecond; // the reader has fallen behind
        }
        if (piece.sent == size) {
            m_outgoing.pop_front();
            continue;
        }
        const qint64 following = piece.start + (piece.sent + 1) * piece.gap;
        return std::min(piece.start + size * piece.gap, std::max(following, now + piece.burst));
    }
    return 0;
}

void SimulatedBus::Send(const Answer& answer) {
    const bool sliced = answer.isSliced && m_characterTime < SliceGap;
    const qint64 gap = answer.isEcho ? 0 : sliced ? SliceGap : m_characterTime;
    const bool isLate = answer.lateMilliseconds > 0;
    qint64 start = m_wireTime;
    if (start == 0 && (gap > 0 || isLate || !m_outgoing.empty()))
        start = Now();
    start += answer.lateMilliseconds * Millisecond;
    start = std::max(start, m_outFree);
    const QByteArray& bytes = answer.bytes;
    m_outgoing.push_back({start, gap, answer.isSliced ? 0 : PacedBurst, bytes});
    m_outFree = gap > 0 || isLate ? start + bytes.size() * gap : m_outFree;
    if (start == 0 && m_outgoing.size() == 1)
        WriteDue(1);
    if (!m_outgoing.empty())
        ArmTimer();
}
