#include "printers/FormTransfer.h"
#include "printers/FontTransfer.h"

#include "core/HubTable.h"
#include "hubs/HubRouter.h"
#include "link/Frames.h"
#include "tests/support/AnsweringEnd.h"
#include "tests/support/BusWorld.h"
#include "tests/support/Files.h"
#include "tests/support/Outcomes.h"
#include "tests/support/TestDialogs.h"
#include "tests/support/Waiting.h"
#include "tickets/VniTable.h"

#include <numeric>

namespace {

constexpr auto Designer = FormTransfer::Occasion::Designer;
constexpr auto StartUp = FormTransfer::Occasion::StartUp;

/// A printer on the bus and one behind a hub, both of which answer unless a test wants silence.
class FormTransferTest : public BusWorld {
protected:
    FormTransferTest() {
        Open(m_end.Terminal.Path());
        Add(2, 32, model::Printer, 0);
        Add(3, 33, model::Printer, 4);
        Add(4, 64, model::Hub, 0);
        BuildHubTable(*m_installation, m_log);
    }

    /// A form of `length` bytes and a logo block of `logos`.
    static CompiledForm Form(qsizetype length, qsizetype logos = 0) {
        return {QByteArray(length, 'f'), QByteArray(logos, 'l'), logos > 0 ? 1 : 0};
    }

    /// Letters of the commands in order, with "3x" for three times the same.
    QByteArray Letters() const {
        QByteArray letters;
        for (const QByteArray& command : m_end.Commands)
            letters += command[0] == 'p' && command[2] == 'N' ? command[4] : command[2];
        return letters;
    }

    void Silence(const QByteArray& letters) {
        m_end.IsSilent = [letters](const QByteArray& command) { return letters.contains(command[2]); };
    }

    void ExpectWarnings(const QStringList& texts) {
        for (const QString& text : texts)
            m_dialogs.ExpectMessage(BoxKind::Exclamation, text);
    }

    AnsweringEnd m_end;
    TestDialogs m_dialogs;
    HubRouter m_router{m_bus, *m_installation};
    const PrinterTransfer::Parts m_parts{*m_installation, m_router, m_clock, m_dialogs, m_log};
    FormTransfer m_transfer{m_parts};
    VniTable m_letters;
    FontTransfer m_fonts{m_parts, m_folder.path(), m_letters};
};

} // namespace

TEST_F(FormTransferTest, SendsTheFormAndTenSecondsLaterTheLogos) {
    EXPECT_TRUE(Await(m_transfer.SendFormAndLogo(0, Form(65, 129), Logos::With, Designer)));
    EXPECT_EQ(m_end.Commands,
              (QByteArrayList{"P L0041", "P O" + QByteArray(64, 'f'), "P Of", "P V1", "P X",
                              "P Y" + QByteArray(64, 'l'), "P Y" + QByteArray(64, 'l'), "P Yl", "P Z"}));
    EXPECT_EQ(std::accumulate(m_clock.Waits.begin(), m_clock.Waits.end(), 0), 15'000);
    m_end.Commands.clear();
    EXPECT_TRUE(Await(m_transfer.SendFormAndLogo(0, {QByteArray(64, '\x02'), "logos", 1}, Logos::With, StartUp)));
    EXPECT_EQ(m_end.Commands, (QByteArrayList{"P L0040", "P O" + QByteArray("\xC0\x22").repeated(64), "P V!"}));
    m_end.Commands.clear();
    EXPECT_TRUE(Await(m_transfer.SendFormAndLogo(1, Form(1), Logos::With, Designer)));
    EXPECT_EQ(m_end.Commands, (QByteArrayList{"p NQL0001", "p NQOf", "p NQV1"})) << "without logos nothing more";
}

TEST_F(FormTransferTest, AFailedStepEndsTheTransferAsItsTextTells) {
    const QString noStart = QStringLiteral("Could'n start send ticket form!");
    const QString dataError = QStringLiteral("Send ticket form data error!");
    const struct {
        const char* silent;
        QStringList warnings;
        bool result;
        const char* letters;
    } cases[] = {
        {"L", {noStart}, false, "LL"},
        {"O", {dataError}, true, "LOOV"}, // the answer to the end decides
        {"V", {QStringLiteral("Send ticket form Error!")}, false, "LOVV"},
        {"X", {QStringLiteral("Could'n start send Logo !")}, false, "LOVXX"},
        {"Y", {QStringLiteral("Send Logo data error!")}, false, "LOVXYY"},
        {"Z", {QStringLiteral("Send Logo Error!")}, false, "LOVXYZZ"},
    };
    for (const auto& [silent, warnings, result, letters] : cases) {
        m_end.Commands.clear();
        Silence(silent);
        const bool hasLogos = !QByteArray("O").contains(silent);
        ExpectWarnings(warnings);
        EXPECT_EQ(Await(m_transfer.SendFormAndLogo(0, Form(10, hasLogos ? 10 : 0), Logos::With, Designer)), result)
            << silent;
        EXPECT_EQ(Letters(), letters);
    }
    Silence("O");
    EXPECT_TRUE(Await(m_transfer.SendFormAndLogo(0, Form(10), Logos::Without, StartUp)));
    EXPECT_EQ(m_messages.last(), QStringLiteral("Send Prn Form to MEM error! Addr=32"));
}

TEST_F(FormTransferTest, CancellingEndsTheFormAndSaysSo) {
    ::QObject::connect(&m_transfer, &FormTransfer::Progress,
                       [this](const QString&, const QString&, int done, int total) {
                           if (done == 1 && total == 3)
                               m_transfer.Cancel();
                       });
    ExpectWarnings({QStringLiteral("Send ticket form data error!")});
    EXPECT_FALSE(Await(m_transfer.SendFormAndLogo(0, Form(150, 10), Logos::With, Designer)));
    EXPECT_EQ(Letters(), "LOV");
    m_end.Commands.clear();
    ExpectWarnings({QStringLiteral("Send Logo data error!")});
    EXPECT_FALSE(Await(m_transfer.SendFormAndLogo(0, Form(10, 150), Logos::With, Designer)));
    EXPECT_EQ(Letters(), "LOVXY");
}

TEST_F(FormTransferTest, ACancelBetweenTwoPrintersIsNotLost) {
    ::QObject::connect(&m_transfer, &FormTransfer::Progress, [this](const QString&, const QString& phase, int, int) {
        if (phase == QStringLiteral("the printer stores the logos"))
            m_transfer.Cancel();
    });
    for (const bool goOn : {false, true}) {
        m_end.Commands.clear();
        for (const int printer : {2, 3}) {
            if (printer == 2 || goOn) {
                m_dialogs.ExpectQuestion(
                    BoxKind::Exclamation,
                    QStringLiteral("Set ticket form to printer #object %1 error! Do you want to continue?")
                        .arg(printer),
                    goOn);
            }
        }
        EXPECT_EQ(Told(m_transfer.SendFormToAllPrinters(Form(1, 1), Logos::With)),
                  "failed Exclamation: There're errors on setting ticket form.");
        EXPECT_EQ(Letters(), goOn ? "LOVXYZJLOVXYZJ" : "LOVXYZ");
    }
}

TEST_F(FormTransferTest, EveryPrinterIsTriedUntilTheUserHasEnough) {
    const QString question = QStringLiteral("Set ticket form to printer #object 2 error! Do you want to continue?");
    EXPECT_EQ(Told(m_transfer.SendFormToAllPrinters(Form(1), Logos::Without)), "done Information: Set done.");
    EXPECT_EQ(m_end.Commands,
              (QByteArrayList{"P L0001", "P Of", "P V1", "p J0", "p NQL0001", "p NQOf", "p NQV1", "p J1"}));
    for (const bool goOn : {true, false}) {
        m_end.Commands.clear();
        m_end.IsSilent = [](const QByteArray& command) { return command.startsWith("P L"); };
        ExpectWarnings({QStringLiteral("Could'n start send ticket form!")});
        m_dialogs.ExpectQuestion(BoxKind::Exclamation, question, goOn);
        EXPECT_EQ(Told(m_transfer.SendFormToAllPrinters(Form(1), Logos::Without)),
                  "failed Exclamation: There're errors on setting ticket form.");
        EXPECT_EQ(Letters(), goOn ? "LLJLOVJ" : "LL");
    }
}

TEST_F(FormTransferTest, OnePrinterIsToldItsOutcome) {
    m_dialogs.ExpectMessage(BoxKind::Information, QStringLiteral("Set done."));
    EXPECT_EQ(Told(m_transfer.SendToPrinter(1, Form(1), Logos::Without)), "done Plain: ");
    EXPECT_EQ(m_end.Commands.first() + m_end.Commands.last(), "p J0p J1");
    ExpectWarnings({QStringLiteral("Could'n start send ticket form!"),
                    QStringLiteral("Set ticket form to printer #object 2 error!")});
    Silence("L");
    EXPECT_EQ(Await(m_transfer.SendToPrinter(0, Form(1), Logos::Without)).silent, QStringList{u"object 2"_qs});
    m_end.Commands.clear();
    const char* tooLarge = "refused Exclamation: Logo data too large: 32768 bytes, at most 32767.";
    EXPECT_EQ(Told(m_transfer.SendToPrinter(0, Form(1, 32'768), Logos::With)), tooLarge);
    EXPECT_EQ(Told(m_transfer.SendFormToAllPrinters(Form(1, 32'768), Logos::With)), tooLarge);
    EXPECT_TRUE(m_end.Commands.isEmpty());
}

TEST_F(FormTransferTest, TheLetterTableGoesInSeventeenFrames) {
    QByteArray table(1474, 'x');
    for (int i = 0; i < VniTable::Records; ++i)
        table[i * 11 + 2] = 3;
    WriteFile(m_folder.filePath(QStringLiteral("VNIl.dat")), table);
    ASSERT_TRUE(m_letters.LoadVNITable(m_folder.filePath(QStringLiteral("VNIl.dat"))));
    EXPECT_TRUE(Await(m_fonts.SendVNIToPrinter(0, LetterSet::Table)));
    ASSERT_EQ(m_end.Commands.size(), 19);
    QByteArray sent;
    for (const QByteArray& command : m_end.Commands.sliced(1, 17))
        sent += frames::UnescapeData(command.sliced(3));
    EXPECT_EQ(sent, table);
    EXPECT_EQ(frames::UnescapeData(m_end.Commands[17].sliced(3)).size(), 66);

    Silence("J");
    m_end.Commands.clear();
    m_dialogs.ExpectQuestion(BoxKind::Exclamation,
                             QStringLiteral("Set VNI table to printer #object 2 error! Do you want to continue?"),
                             false);
    EXPECT_EQ(Await(m_fonts.LoadVNIToAllPrinters(LetterSet::Table)), QStringList{u"object 2"_qs});
    EXPECT_EQ(Letters(), "GJ") << "one try, no end, no bracket of the hub";
}

TEST_F(FormTransferTest, AFontFileIsSplitWhereStuffingWouldPassTheFrame) {
    const QString path = m_folder.filePath(QStringLiteral("VNI-ZR.bin"));
    ExpectWarnings({QStringLiteral("Font file not found (VNI-ZR.bin)")});
    EXPECT_FALSE(Await(m_fonts.SendVNIToPrinter(0, LetterSet::FontFile)));
    WriteFile(path, QByteArray(32'768, 'x'));
    ExpectWarnings({QStringLiteral("Font file too large (VNI-ZR.bin)")});
    EXPECT_FALSE(Await(m_fonts.SendVNIToPrinter(0, LetterSet::FontFile)));
    EXPECT_TRUE(m_end.Commands.isEmpty());

    WriteFile(path, QByteArray(128, '\xC0') + QByteArray(129, 'y'));
    for (const auto& [object, sizes] : {std::pair(qint16(0), std::vector<qsizetype>{254, 2, 128, 1}),
                                        std::pair(qint16(1), std::vector<qsizetype>{252, 4, 128, 1})}) {
        m_end.Commands.clear();
        m_clock.Waits.clear();
        EXPECT_TRUE(Await(m_fonts.SendVNIToPrinter(object, LetterSet::FontFile)));
        const qsizetype head = object == 0 ? 3 : 5;
        std::vector<qsizetype> sent;
        QByteArray content;
        for (const QByteArray& command : m_end.Commands.sliced(1, m_end.Commands.size() - 2)) {
            sent.push_back(command.size() - head);
            content += frames::UnescapeData(command.sliced(head));
        }
        EXPECT_EQ(sent, sizes);
        EXPECT_EQ(content, ReadFile(path));
        EXPECT_EQ(m_clock.Waits, std::vector<int>(sizes.size(), 10));
    }
}
