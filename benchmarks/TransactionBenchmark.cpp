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

namespace {

constexpr int Transactions = 20'000;
constexpr int Rounds = 3;

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
    // A status reply of a printer, 15 bytes, to a request of 9.
    const Responder device(frames::BuildFrame("P007PP11111"),
                           [](const QByteArray& request) { return request.endsWith(frames::Etx); });
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
    Report("Transactions over a pseudo-terminal", orvex, "1/s", "libmodbus RTU", modbus);
}
