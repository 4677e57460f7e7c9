#include "benchmarks/PacedPrinter.h"

#include "benchmarks/Report.h"

#include <QCoreApplication>
#include <QFile>

namespace {

constexpr qint64 BitsPerCharacter = 10;

} // namespace

PacedPrinter::PacedPrinter(int baud)
    : m_baud(baud) {
    const QString line = Folder.filePath(QStringLiteral("bus"));
    const QString devices = Folder.filePath(QStringLiteral("devices.txt"));
    {
        QFile file(devices);
        if (!file.open(QIODevice::WriteOnly))
            qFatal("%s", qPrintable(file.errorString()));
        file.write("printer 32 1 Printer\n");
    }
    m_bus.start(QCoreApplication::applicationDirPath() + QStringLiteral("/OrvexBus"),
                {QStringLiteral("--link"), line, QStringLiteral("--baud"), QString::number(baud), devices});
    if (!m_bus.waitForStarted() || !m_bus.waitForReadyRead())
        qFatal("OrvexBus does not start");
    Installation->NumObjects = 1;
    Installation->QObjects[0].Type = model::Printer;
    Installation->QObjects[0].Address = 32;
    if (const Result<> taken = Control.SetPort(line, QStringLiteral("%1,n,8,1").arg(baud)); !taken)
        qFatal("%s", qPrintable(taken.Error()));
    if (!Control.Open())
        qFatal("the line does not open");
}

PacedPrinter::~PacedPrinter() {
    Control.Close();
    m_bus.terminate();
    m_bus.waitForFinished();
}

void PacedPrinter::Measure(const char* what, const std::function<bool()>& transfer) {
    qint64 characters = 0;
    const QObject counting;
    QObject::connect(&Master, &Bus::FrameSent, &counting,
                     [&](quint8, const QByteArray& frame) { characters += frame.size(); });
    QObject::connect(&Master, &Bus::ReplyTaken, &counting,
                     [&](quint8, const QByteArray& frame) { characters += frame.size() + 1; });
    const double seconds = BestSeconds(1, [&] {
        if (!transfer())
            qFatal("the transfer failed");
    });
    const double wire = static_cast<double>(characters * BitsPerCharacter) / m_baud;
    const QByteArray text = QByteArray(what) + ", " + QByteArray::number(m_baud) + " bit/s";
    Report(text.constData(), seconds * 1000, "ms", "wire time", wire * 1000);
}
