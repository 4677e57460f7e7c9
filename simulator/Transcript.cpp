#include "simulator/Transcript.h"

#include <QTime>

QString Transcript::OpenFile(const QString& path) {
    m_file.close();
    m_file.setFileName(path);
    if (m_file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Text))
        return {};
    return QStringLiteral("%1: %2").arg(path, m_file.errorString());
}

QString Transcript::Readable(const QByteArray& data) {
    QString text;
    for (const char byte : data) {
        const auto code = static_cast<quint8>(byte);
        if (code == '\\' || code == '"')
            text += u'\\';
        if (code >= 0x20 && code < 0x7F)
            text += QLatin1Char(byte);
        else
            text += QStringLiteral("\\x%1").arg(code, 2, 16, QLatin1Char('0'));
    }
    return text;
}

void Transcript::Frame(bool toDevice, const QString& who, char sequence, const QString& what, const QByteArray& data,
                       const QByteArray& raw, const QString& remark) {
    if (!IsOn())
        return;
    Write(QStringLiteral("%1 %2, seq %3, %4, data \"%5\" [%6]%7")
              .arg(toDevice ? QStringLiteral(">>") : QStringLiteral("<<"), who, Readable(QByteArray(1, sequence)), what,
                   Readable(data), QString::fromLatin1(raw.toHex(' ')),
                   remark.isEmpty() ? QString() : QStringLiteral(" (%1)").arg(remark)));
}

void Transcript::Remark(const QString& text) {
    if (IsOn())
        Write(QStringLiteral("-- ") + text);
}

void Transcript::Write(const QString& line) {
    const QString whole = QTime::currentTime().toString(QStringLiteral("hh:mm:ss.zzz ")) + line;
    if (m_file.isOpen()) {
        m_file.write(whole.toUtf8() + '\n');
        m_file.flush();
    }
    if (OnLine)
        OnLine(whole);
}
