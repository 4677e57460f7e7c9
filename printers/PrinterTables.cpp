#include "printers/PrinterTables.h"

#include "core/EventLog.h"
#include "core/Installation.h"
#include "link/Encodings.h"
#include "platform/AnsiText.h"

#include <algorithm>

namespace {

constexpr int NameOffset = 3;
constexpr int DescriptionOffset = NameOffset + PrinterTables::TextPlaces + 1;
constexpr int FieldLength = PrinterTables::TextPlaces + 1;

QByteArray Field(const QString& text, const QString& fieldName, const QString& serviceName, EventLog& log) {
    ansi::Encoded encoded = ansi::Encode(text);
    if (!encoded.lacking.isEmpty()) {
        log.WriteLog(QStringLiteral("Service '%1': %2 has characters that the printer lacks: %3")
                         .arg(serviceName, fieldName, encoded.lacking),
                     EventLog::Warning);
    }
    const auto isControl = [](char byte) { return static_cast<quint8>(byte) < 0x20; };
    if (std::any_of(encoded.bytes.cbegin(), encoded.bytes.cend(), isControl)) {
        log.WriteLog(
            QStringLiteral("Service '%1': %2 has control characters, sent as blanks.").arg(serviceName, fieldName),
            EventLog::Warning);
        std::replace_if(encoded.bytes.begin(), encoded.bytes.end(), isControl, ' ');
    }
    return encoded.bytes.left(PrinterTables::TextPlaces).leftJustified(FieldLength, '\0');
}

QByteArray DecimalNumbers(QByteArrayView bytes) {
    QByteArrayList numbers;
    for (const char byte : bytes)
        numbers += QByteArray::number(static_cast<quint8>(byte));
    return '{' + numbers.join(',') + '}';
}

} // namespace

PrinterTables::PrinterTables(const model::Installation& installation, const CounterList& counterListOfService,
                             EventLog& log) {
    for (qint16 i = 0; i < installation.NumServices; ++i) {
        const model::QService& service = installation.Service(i);
        m_buttons += static_cast<char>(service.Button);
        const QString description = ExpandServiceText(service.Description, i, installation, counterListOfService);
        m_rows.push_back(encoding::Hexadecimal(static_cast<quint32>(i), 2) +
                         encoding::SmallNumber(service.SeriesIndex) +
                         Field(service.Name, QStringLiteral("Name"), service.Name, log) +
                         Field(description, QStringLiteral("Description"), service.Name, log));
    }
}

QByteArray PrinterTables::ButtonTable(bool fullLoad) const {
    QByteArray table = encoding::Hexadecimal(static_cast<quint32>(m_buttons.size()), 2);
    for (const char button : m_buttons)
        table += encoding::Hexadecimal(static_cast<quint8>(button), 2);
    return table + (fullLoad ? '1' : '!');
}

QByteArray PrinterTables::Listing() const {
    QByteArray text = "Button Table:\n";
    const QByteArray count(1, static_cast<char>(m_buttons.size()));
    for (const char number : count + m_buttons)
        text += "0x" + encoding::Hexadecimal(static_cast<quint8>(number), 2) + ',';
    text += "0,0,0,0\nService Table:\n";
    for (const QByteArray& row : m_rows) {
        text += QByteArray("{'") + row[2] + "'," + DecimalNumbers(QByteArrayView(row).sliced(NameOffset, FieldLength)) +
                ',' + DecimalNumbers(QByteArrayView(row).sliced(DescriptionOffset, FieldLength)) + '}';
        if (&row != &m_rows.back())
            text += ',';
        text += '\n';
    }
    return text;
}

QString ExpandServiceText(const QString& text, qint16 serviceIndex, const model::Installation& installation,
                          const PrinterTables::CounterList& counterListOfService) {
    const model::QService& service = installation.Service(installation.Target(serviceIndex));
    QString expanded;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const bool isLast = i + 1 == text.size();
        if (text[i] == u'$' && !isLast && text[i + 1] == u'1') {
            expanded += counterListOfService(service.Id);
            ++i;
        } else if (text[i] != u'$' || !isLast) {
            expanded += text[i];
        }
    }
    return expanded;
}
