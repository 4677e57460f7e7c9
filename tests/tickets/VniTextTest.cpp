#include "tickets/VniText.h"

#include <gtest/gtest.h>

#include <QFile>

namespace {

struct Row {
    QString letter;
    QString vni;
};

/// The published table, which the code holds a copy of.
std::vector<Row> ReadTable() {
    QFile file(QStringLiteral(TEST_DATA_FOLDER "/../../data/vni-table.tsv"));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    file.readLine();
    std::vector<Row> rows;
    while (!file.atEnd()) {
        const QList<QByteArray> fields = file.readLine().split('\t');
        rows.push_back({QString::fromUtf8(fields[1]), QString::fromLatin1(QByteArray::fromHex(fields[3]))});
    }
    return rows;
}

TEST(VniText, TurnsEveryLetterComposedOrDecomposedIntoVniAndBack) {
    const std::vector<Row> table = ReadTable();
    ASSERT_EQ(table.size(), 134u);
    ASSERT_EQ(vni::Letters().size(), 134u);
    for (std::size_t i = 0; i < table.size(); ++i) {
        const auto& [letter, text] = table[i];
        SCOPED_TRACE(qPrintable(letter));
        EXPECT_EQ(vni::Letters()[i].unicode, letter[0].unicode());
        EXPECT_EQ(vni::FromUnicode(letter), text);
        EXPECT_EQ(vni::FromUnicode(letter.normalized(QString::NormalizationForm_D)), text);
        EXPECT_EQ(vni::ToUnicode(text), letter);
    }
}

TEST(VniText, ReadsATextAsUnicodeOrAsVniByWhatItHolds) {
    const std::pair<QString, QString> cases[] = {
        {QStringLiteral("Dịch vụ Số 1"), QStringLiteral("Dòch vuï Soá 1")},
        {QStringLiteral("Nước Đường"), QStringLiteral("Nöôùc Ñöôøng")},
        {QStringLiteral("Hoá đơn, có phí"), QStringLiteral("Hoaù ñôn, coù phí")},
        {QStringLiteral("hoàn"), QStringLiteral("hoaøn")},
        {QStringLiteral("Dòch vuï Soá 1"), QStringLiteral("Dòch vuï Soá 1")},
        {QStringLiteral("NGAÂN HAØNG"), QStringLiteral("NGAÂN HAØNG")},
        {QStringLiteral("Soá"), QStringLiteral("Soá")},
        {QStringLiteral("Coá ñònh"), QStringLiteral("Coá ñònh")},
        {QStringLiteral("Coù thể"), QStringLiteral("Coù theå")},
        {QStringLiteral("Kasse 3 \u20AC, Größe, \u4E2D \U0001F600 x\u0301"),
         QStringLiteral("Kasse 3 \u20AC, Größe, \u4E2D \U0001F600 x\u0301")},
        {QString(), QString()},
    };
    for (const auto& [typed, stored] : cases)
        EXPECT_EQ(vni::FromUnicode(typed).toStdString(), stored.toStdString()) << qPrintable(typed);
    EXPECT_EQ(vni::ToUnicode(QStringLiteral("Nöôùc Ñöôøng 5")), QStringLiteral("Nước Đường 5"));
}

TEST(VniText, TypingLetterByLetterGivesVni) {
    const std::pair<QString, QString> cases[] = {
        {QStringLiteral("a\u0306\u0301"), QStringLiteral("aé")},            // marks one after the other
        {QStringLiteral("u\u031B\u0323"), QStringLiteral("öï")},            // horn, then dot below
        {QStringLiteral("vi\u00EA\u0323t"), QStringLiteral("vieät")},       // a keyboard with ê and dead marks
        {QStringLiteral("où"), QStringLiteral("où")},                       // VNI typed as such
        {QStringLiteral("hoà"), QStringLiteral("hoaø")},                    // a rhyme that looks like VNI
        {QStringLiteral("\u0301b\u0301"), QStringLiteral("\u0301b\u0301")}, // marks that join nothing
    };
    for (const auto& [keys, stored] : cases) {
        QString text;
        for (const QChar key : keys) {
            const vni::Insertion insertion = vni::Typed(text, QString(key));
            text.chop(insertion.replaces);
            text += insertion.text;
        }
        EXPECT_EQ(text.toStdString(), stored.toStdString()) << qPrintable(keys);
    }
}

} // namespace
