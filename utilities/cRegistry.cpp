#include "utilities/cRegistry.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QRegularExpression>
#include <QtEndian>

namespace {

constexpr quint32 AccessError = 26001;
constexpr quint32 WriteError = 0x800469A9;

enum Type : qint32 { Text = 1, TextWithVariables = 2, Bytes = 3, Number = 4, BigEndianNumber = 5, TextList = 7 };

const QRegularExpression& Variable() {
    static const QRegularExpression expression(QStringLiteral("%([^%]+)%"));
    return expression;
}

/// A variable that the environment lacks stays as it stands.
QString Expanded(const QString& text) {
    QString expanded;
    qsizetype end = 0;
    for (const QRegularExpressionMatch& match : Variable().globalMatch(text)) {
        const QString name = match.captured(1);
        expanded += text.sliced(end, match.capturedStart() - end);
        expanded += qEnvironmentVariable(qPrintable(name), match.captured(0));
        end = match.capturedEnd();
    }
    return expanded + text.sliced(end);
}

QString TextOf(const QByteArray& bytes) {
    return QString::fromUtf8(bytes.endsWith('\0') ? bytes.chopped(1) : bytes);
}

} // namespace

cRegistry::cRegistry(const RegistryStore& store)
    : m_store(store) {}

cRegistry::Error cRegistry::MakeError(quint32 number, const QString& description) const {
    const QString program = QFileInfo(QCoreApplication::applicationFilePath()).completeBaseName();
    return {number, program + QStringLiteral(".cRegistry"), description};
}

QVariant cRegistry::Value() {
    const auto entry = m_store.Read(ClassKey, SectionKey, ValueKey);
    if (!entry)
        return Default;
    ValueType = entry->type;
    switch (entry->type) {
    case Text:
    case TextList:
        return TextOf(entry->bytes);
    case TextWithVariables:
        return Expanded(TextOf(entry->bytes));
    case Number:
    case BigEndianNumber: {
        if (entry->bytes.size() != sizeof(qint32))
            return Default;
        const auto number = qFromLittleEndian<qint32>(entry->bytes.constData());
        return entry->type == Number ? number : qbswap(number);
    }
    default:
        return entry->bytes;
    }
}

std::optional<cRegistry::Error> cRegistry::SetValue(const QVariant& value) {
    const auto failed = [this](quint32 number) {
        return MakeError(number, QStringLiteral("Failed to set registry value Key: '%1',Section: '%2',Key: '%3' to "
                                                "value: '%4'")
                                     .arg(QString::number(ClassKey), SectionKey, ValueKey, m_lastWritten));
    };
    RegistryStore::Entry entry;
    switch (ValueType) {
    case Text:
    case TextWithVariables: {
        const QString text = value.toString();
        entry.type = Variable().match(text).hasMatch() ? TextWithVariables : Text;
        entry.bytes = text.toUtf8() + '\0';
        break;
    }
    case Bytes:
        if (value.typeId() != QMetaType::QByteArray)
            return failed(AccessError);
        entry = {Bytes, value.toByteArray()};
        break;
    case Number:
    case BigEndianNumber: {
        const int kind = value.typeId();
        if (kind != QMetaType::Int && kind != QMetaType::Short)
            return std::nullopt;
        entry.type = Number;
        entry.bytes.resize(sizeof(qint32));
        qToLittleEndian<qint32>(value.toInt(), entry.bytes.data());
        break;
    }
    default:
        return failed(WriteError);
    }
    if (!m_store.Write(ClassKey, SectionKey, ValueKey, entry))
        return failed(WriteError);
    m_lastWritten = value.toString();
    return std::nullopt;
}

std::optional<cRegistry::Error> cRegistry::DeleteValue() {
    const QString position = QStringLiteral("'%1',Section: '%2'").arg(QString::number(ClassKey), SectionKey);
    if (!m_store.HasKey(ClassKey, SectionKey))
        return MakeError(AccessError, QStringLiteral("Failed to open key %1 for delete access").arg(position));
    if (!m_store.Delete(ClassKey, SectionKey, ValueKey))
        return MakeError(AccessError,
                         QStringLiteral("Failed to delete registry Key: %1,Key: '%2").arg(position, ValueKey));
    return std::nullopt;
}
