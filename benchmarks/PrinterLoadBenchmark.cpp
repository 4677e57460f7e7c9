#include "benchmarks/Benchmarks.h"

#include "benchmarks/Report.h"
#include "core/EventLog.h"
#include "core/Installation.h"
#include "hubs/HubRouter.h"
#include "platform/Clock.h"
#include "platform/SerialControl.h"
#include "printers/PrinterConfig.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

namespace {

constexpr qint16 PrinterObject = 0;
constexpr qint64 BitsPerCharacter = 10;

/// Waits pass at once: what is measured is the line.
class NoWaits final : public Clock {
public:
    QDateTime Now() const override { return QDateTime::currentDateTime(); }
    QCoro::Task<> DelayMilliseconds(qint16) override { co_return; }
    QCoro::Task<> DelaySeconds(qint16) override { co_return; }
    void Close() override {}
};

void DescribeInstallation(model::Installation& installation) {
    installation.NumServices = model::SlotCount;
    for (std::size_t i = 0; i < model::SlotCount; ++i) {
        model::QService& service = installation.QServices[i];
        service.Name = QStringLiteral("Service number %1").arg(i);
        service.Description = QStringLiteral("Please go to counter $1");
        service.Button = static_cast<quint8>(i);
        service.SeriesIndex = static_cast<qint16>(i);
    }
    installation.NumObjects = 1;
    installation.QObjects[PrinterObject].Type = model::Printer;
    installation.QObjects[PrinterObject].Address = 32;
}

void MeasureLoad(int baud) {
    const QTemporaryDir folder;
    const QString line = folder.filePath(QStringLiteral("bus"));
    const QString devices = folder.filePath(QStringLiteral("devices.txt"));
    {
        QFile file(devices);
        if (!file.open(QIODevice::WriteOnly))
            qFatal("%s", qPrintable(file.errorString()));
        file.write("printer 32 1 Printer\n");
    }
    QProcess bus;
    bus.start(QCoreApplication::applicationDirPath() + QStringLiteral("/OrvexBus"),
              {QStringLiteral("--link"), line, QStringLiteral("--baud"), QString::number(baud), devices});
    if (!bus.waitForStarted() || !bus.waitForReadyRead())
        qFatal("OrvexBus does not start");

    NoWaits clock;
    EventLog log(folder.path(), clock);
    const auto installation = std::make_unique<model::Installation>();
    DescribeInstallation(*installation);
    SerialControl control;
    Bus master(control, log);
    HubRouter router(master, *installation);
    PrinterConfig config(
        folder.path(), *installation, router, clock, [](qint32) { return QStringLiteral("1, 2, 3"); }, log);
    control.SetPort(line, QStringLiteral("%1,n,8,1").arg(baud));
    if (!control.Open())
        qFatal("the line does not open");

    // Request, reply and acknowledgement follow one another on the wire.
    qint64 characters = 0;
    QObject::connect(&master, &Bus::FrameSent, [&](quint8, const QByteArray& frame) { characters += frame.size(); });
    QObject::connect(&master, &Bus::ReplyTaken,
                     [&](quint8, const QByteArray& frame) { characters += frame.size() + 1; });
    const double seconds = BestSeconds(1, [&] {
        if (!QCoro::waitFor(config.SendPrinterConfig(PrinterObject, true)))
            qFatal("the load failed");
    });
    const double wire = static_cast<double>(characters * BitsPerCharacter) / baud;
    const QByteArray what = "Load of a printer, 64 services, " + QByteArray::number(baud) + " bit/s";
    Report(what.constData(), seconds * 1000, "ms", "wire time", wire * 1000);
    control.Close();
    bus.terminate();
    bus.waitForFinished();
}

} // namespace

void BenchmarkPrinterLoad() {
    for (const int baud : {9600, 115200})
        MeasureLoad(baud);
}
