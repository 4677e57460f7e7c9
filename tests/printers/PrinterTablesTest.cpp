#include "printers/PrinterTables.h"

#include "core/EventLog.h"
#include "core/Installation.h"
#include "tests/support/TestClock.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

namespace {

class PrinterTablesTest : public ::testing::Test {
protected:
    PrinterTablesTest() {
        QObject::connect(&m_log, &EventLog::Written, [this](const QString& message) { m_messages += message; });
    }

    model::QService& AddService(const QString& name, const QString& description = {}) {
        model::QService& service = m_installation->QServices[static_cast<std::size_t>(m_installation->NumServices++)];
        service.Id = 100 + m_installation->NumServices;
        service.Number = m_installation->NumServices;
        service.Button = static_cast<quint8>(m_installation->NumServices);
        service.SeriesIndex = static_cast<qint16>(m_installation->NumServices - 1);
        service.Name = name;
        service.Description = description;
        return service;
    }

    PrinterTables Tables() { return PrinterTables(*m_installation, Counters, m_log); }

    QString Expanded(const QString& text, qint16 index) const {
        return ExpandServiceText(text, index, *m_installation, Counters);
    }

    static QString Counters(qint32 id) {
        return id == 101 ? QStringLiteral("3, 5, 8") : id == 102 ? QString() : QStringLiteral("9");
    }

    QTemporaryDir m_folder;
    TestClock m_clock;
    EventLog m_log{m_folder.path(), m_clock};
    std::unique_ptr<model::Installation> m_installation = std::make_unique<model::Installation>();
    QStringList m_messages;
};

} // namespace

TEST_F(PrinterTablesTest, WithoutServicesThereIsOnlyTheCount) {
    EXPECT_EQ(Tables().ButtonTable(true), "001");
    EXPECT_EQ(Tables().Listing(), "Button Table:\n0x00,0,0,0,0\nService Table:\n");
}

TEST_F(PrinterTablesTest, ButtonTableListsEveryKeyAndTheFlag) {
    AddService(QStringLiteral("A")).Button = 255;
    AddService(QStringLiteral("B"));
    EXPECT_EQ(Tables().ButtonTable(true), "02FF021");
    EXPECT_EQ(Tables().ButtonTable(false), "02FF02!");
}

TEST_F(PrinterTablesTest, ARowHasItsFieldsAtTheirPlaces) {
    AddService(QStringLiteral("first"));
    AddService(QStringLiteral("G\u00F4\u00FBi \u20AC\u00C0"), QStringLiteral("Qua\u00E0y $1")).SeriesIndex = 10;
    m_installation->QServices[1].Id = 101;
    const QByteArray row = Tables().ServiceTable()[1];
    EXPECT_EQ(row, "01:" + QByteArray("G\xF4\xFBi \x80\xC0").leftJustified(64, '\0') +
                       QByteArray("Qua\xE0y 3, 5, 8").leftJustified(64, '\0'));
    EXPECT_EQ(row.size(), PrinterTables::RowLength);
}

TEST_F(PrinterTablesTest, TextsAreCutTo63PlacesAfterTheExpansion) {
    AddService(QString(70, u'n'), QString(60, u'd') + QStringLiteral("$1"));
    const QByteArray row = Tables().ServiceTable()[0];
    EXPECT_EQ(row, "000" + QByteArray(63, 'n') + '\0' + QByteArray(60, 'd') + "3, " + '\0');
}

TEST_F(PrinterTablesTest, WhatThePrinterCannotShowIsLoggedWithTheService) {
    AddService(QStringLiteral("Ti\u1EC1n"), QStringLiteral("a\tb"));
    const QByteArray row = Tables().ServiceTable()[0];
    EXPECT_TRUE(row.startsWith("000Ti?n"));
    EXPECT_TRUE(row.sliced(67).startsWith("a b"));
    ASSERT_EQ(m_messages.size(), 2);
    for (const QString& message : m_messages)
        EXPECT_TRUE(message.startsWith(QStringLiteral("Service 'Ti\u1EC1n': "))) << qPrintable(message);
}

TEST_F(PrinterTablesTest, ExpandsOnlyTheCounterList) {
    AddService(QStringLiteral("A"));
    AddService(QStringLiteral("B")).Route = 1;
    AddService(QStringLiteral("C")).Route = 77;
    AddService(QStringLiteral("D"));
    m_installation->QServices[1].Number = 4;
    const struct {
        const char16_t* text;
        qint16 service;
        const char16_t* expanded;
    } cases[] = {
        {u"Q $1", 0, u"Q 3, 5, 8"},
        {u"$1$1", 0, u"3, 5, 83, 5, 8"},
        {u"$$1", 0, u"$3, 5, 8"},
        {u"5$ or $2", 0, u"5$ or $2"},
        {u"end$", 0, u"end"},
        {u"$$", 0, u"$"},
        {u"", 0, u""},
        {u"<$1>", 1, u"<3, 5, 8>"},
        {u"<$1>", 2, u"<3, 5, 8>"},
        {u"<$1>", 3, u"<9>"},
        {u"$12", 3, u"92"},
    };
    for (const auto& [text, service, expanded] : cases)
        EXPECT_EQ(Expanded(QString::fromUtf16(text), service).toStdU16String(), expanded);
}

TEST_F(PrinterTablesTest, TheListingShowsWhatIsSent) {
    AddService(QStringLiteral("A"), QStringLiteral("$1"));
    AddService(QStringLiteral("\u00FF"));
    const QByteArray zeros62 = QByteArray(",0").repeated(62);
    EXPECT_EQ(Tables().Listing(), "Button Table:\n0x02,0x01,0x02,0,0,0,0\nService Table:\n"
                                  "{'0',{65" +
                                      zeros62 + ",0},{51,44,32,53,44,32,56" + QByteArray(",0").repeated(57) +
                                      "}},\n"
                                      "{'1',{255" +
                                      zeros62 + ",0},{0" + zeros62 + ",0}}\n");
}
