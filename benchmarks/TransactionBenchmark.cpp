#include "benchmarks/Benchmarks.h"

#include "benchmarks/Report.h"
#include "benchmarks/Responder.h"
#include "core/EventLog.h"
#include "link/Bus.h"
#include "link/Frames.h"
#include "platform/Clock.h"
#include "platform/SerialControl.h"

#include <QTemporaryDir>

#include <modbus/modbus-rtu.h>

#include <qcoro/qcorotask.h>

#include <array>

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

namespace {

constexpr int Transactions = 20'000;
constexpr int Rounds = 3;

/// A status reply of a printer, 15 bytes, to a request of 9.
QByteArray Answer() {
    return frames::BuildFrame("P007PP11111");
}

bool IsWholeFrame(const QByteArray& request) {
    return request.endsWith(frames::Etx);
}

QCoro::Task<int> SendMany(Bus& bus) {
    const QByteArray none;
    int failed = 0;
    for (int i = 0; i < Transactions; ++i) {
        const Reply reply = co_await bus.SendCommand(32, 'P', none, Bus::DirectTimeout, 1);
        failed += reply.ok ? 0 : 1;
    }
    co_return failed;
}

} // namespace

double TransactionRate(const std::function<void(Bus&, const std::function<void()>& work)>& around) {
    const Responder device(Answer(), IsWholeFrame);
    const QTemporaryDir folder;
    SystemClock clock;
    EventLog log(folder.path(), clock);
    SerialControl control;
    Bus bus(control, clock, log);
    if (const Result<> taken = control.SetPort(device.Path(), QStringLiteral("115200,n,8,1")); !taken)
        qFatal("%s", qPrintable(taken.Error()));
    if (!control.Open())
        qFatal("the line does not open");
    double rate = 0;
    around(bus, [&] {
        rate = Transactions / BestSeconds(Rounds, [&] {
                   if (const int failed = QCoro::waitFor(SendMany(bus)))
                       qFatal("%d transactions failed", failed);
               });
    });
    return rate;
}

namespace {

/// What the machine allows: the same system calls for the same bytes, and nothing else.
double BareRate() {
    const Responder device(Answer(), IsWholeFrame);
    const int line = ::open(qPrintable(device.Path()), O_RDWR | O_NOCTTY | O_NONBLOCK);
    termios settings{};
    if (line < 0 || ::tcgetattr(line, &settings) != 0)
        qFatal("the line does not open");
    ::cfmakeraw(&settings);
    ::tcsetattr(line, TCSANOW, &settings);
    const QByteArray request = frames::BuildFrame(frames::Body(32, '0', 'P', {}));
    const auto write = [line](QByteArrayView bytes) {
        if (::write(line, bytes.data(), static_cast<size_t>(bytes.size())) != bytes.size())
            qFatal("the line takes nothing");
    };
    const double rate = Transactions / BestSeconds(Rounds, [&] {
                            std::array<char, 64> answer{};
                            for (int i = 0; i < Transactions; ++i) {
                                write(request);
                                for (bool isWhole = false; !isWhole;) {
                                    pollfd ready{line, POLLIN, 0};
                                    ::poll(&ready, 1, 800);
                                    const ssize_t count = ::read(line, answer.data(), answer.size());
                                    isWhole = count > 0 && answer[static_cast<std::size_t>(count) - 1] == frames::Etx;
                                }
                                write(QByteArrayView(&frames::Ack, 1));
                            }
                        });
    ::close(line);
    return rate;
}

double ModbusRate() {
    // Five holding registers: 8 bytes there, 15 back, from unit 32.
    QByteArray answer = QByteArray("\x20\x03\x0A", 3) + QByteArray(10, 'r');
    quint16 crc = 0xFFFF;
    for (const char byte : answer) {
        crc ^= static_cast<quint8>(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = static_cast<quint16>(crc & 1 ? (crc >> 1) ^ 0xA001 : crc >> 1);
    }
    answer += static_cast<char>(crc & 0xFF);
    answer += static_cast<char>(crc >> 8);
    const Responder device(answer, [](const QByteArray& request) { return request.size() >= 8; });
    modbus_t* master = modbus_new_rtu(qPrintable(device.Path()), 115200, 'N', 8, 1);
    if (!master || modbus_set_slave(master, 32) != 0 || modbus_connect(master) != 0)
        qFatal("libmodbus does not open the line");
    const double rate = Transactions / BestSeconds(Rounds, [&] {
                            uint16_t registers[5];
                            for (int i = 0; i < Transactions; ++i) {
                                if (modbus_read_registers(master, 0, 5, registers) != 5)
                                    qFatal("libmodbus: %s", modbus_strerror(errno));
                            }
                        });
    modbus_close(master);
    modbus_free(master);
    return rate;
}

} // namespace

void BenchmarkTransactions() {
    const double orvex = TransactionRate([](Bus&, const std::function<void()>& work) { work(); });
    const double modbus = ModbusRate();
    Report("Transactions over a pseudo-terminal", orvex, "1/s", "bare calls of the system", BareRate());
    Report("Transactions over a pseudo-terminal", orvex, "1/s", "libmodbus RTU", modbus);
}
