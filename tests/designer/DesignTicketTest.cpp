#include "designer/frmDesignTicket.h"

#include "designer/FormEdit.h"
#include "designer/TokenList.h"
#include "link/Frames.h"
#include "tests/support/AnsweringEnd.h"
#include "tests/support/Files.h"
#include "tests/support/OpenStation.h"
#include "tests/support/WindowDriver.h"

#include <QClipboard>
#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QRadioButton>
#include <QSpinBox>

namespace {

/// The designer with two printers, the fixtures as forms and logos, and the letter table that ships.
class DesignTicketTest : public StationFolder {
protected:
    DesignTicketTest() {
        EXPECT_TRUE(m_station.control.SetPort(m_end.Terminal.Path(), QStringLiteral("115200,n,8,1")));
        EXPECT_TRUE(m_station.control.Open());
        model::Installation& model = *m_station.installation;
        for (const auto& [address, type] : {std::pair(1, model::Counter), {32, model::Printer}, {33, model::Printer}}) {
            model::QObject& object = model.Object(model.NumObjects++);
            object.Id = model.NumObjects;
            object.Name = QStringLiteral("object %1").arg(object.Id);
            object.Address = static_cast<quint8>(address);
            object.Type = type;
        }
        model.Object(2).Number = 7;
        QDir(m_folder.path()).mkdir(QStringLiteral("Data"));
        for (const QString& name : QDir(QStringLiteral(TEST_DATA_FOLDER "/forms")).entryList(QDir::Files))
            QFile::copy(QStringLiteral(TEST_DATA_FOLDER "/forms/") + name, Data(name));
        CopyLetterFiles(m_folder.path());
        Await(m_forms.LoadLetters());
    }

    QString Data(const QString& name) const { return m_folder.filePath(QStringLiteral("Data/") + name); }

    void Show() {
        m_window = new frmDesignTicket(m_station);
        m_guard.reset(m_window);
        m_window->setAttribute(Qt::WA_DeleteOnClose, false);
        m_window->show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(m_window));
        m_hands.emplace(*m_window);
    }

    FormEdit& Edit() const { return m_hands->Find<FormEdit>("rtfPrintForm"); }
    bool IsChosen(const char* name) const { return m_hands->Find<QRadioButton>(name).isChecked(); }
    void Choose(const char* name) const { QTest::mouseClick(&m_hands->Find<QRadioButton>(name), Qt::LeftButton); }
    void Trigger(const char* name) const { m_window->findChild<QAction*>(QString::fromLatin1(name))->trigger(); }

    void Select(int start, int length) const {
        QTextCursor cursor(Edit().document());
        cursor.setPosition(start);
        cursor.setPosition(start + length, QTextCursor::KeepAnchor);
        Edit().setTextCursor(cursor);
    }

    /// The form in a file as it went out: what its `O` carried.
    QByteArray SentForm() const {
        QByteArray form;
        for (const QByteArray& command : m_end.Commands) {
            if (command[2] == 'O')
                form += frames::UnescapeData(command.sliced(3));
        }
        return form;
    }

    AnsweringEnd m_end;
    TicketForms& m_forms = m_station.forms;
    IniUtility& m_ini = m_station.ini;
    frmDesignTicket* m_window = nullptr;
    std::unique_ptr<frmDesignTicket> m_guard;
    std::optional<WindowDriver> m_hands;
};

} // namespace

TEST_F(DesignTicketTest, OpensTheLastFormAndEverythingThatIsOffered) {
    m_ini.WriteIni(QStringLiteral("Ticket"), QStringLiteral("LastForm"), Data(QStringLiteral("ticket.rtf")));
    Show();
    EXPECT_EQ(m_hands->Find<QLabel>("lblFile").text(), QStringLiteral("ticket.rtf"));
    EXPECT_TRUE(Edit().toPlainText().startsWith(QStringLiteral("NGA\u00C2N HA\u00D8NG\n")));
    auto& printers = m_hands->Find<QComboBox>("cboPrinters");
    EXPECT_EQ(printers.itemText(0) + printers.itemText(1) + printers.itemText(2),
              QStringLiteral("Allobject 2object 3"));
    EXPECT_EQ(m_hands->Find<QListWidget>("lstFields").count(), 8);
    EXPECT_EQ(m_hands->Find<QListWidget>("fileLogos").count(), 2);
    EXPECT_EQ(m_hands->Find<QSpinBox>("txtNumcopy").value() * 10 + m_hands->Find<QSpinBox>("txtTicketdigits").value(),
              14);
    EXPECT_TRUE(IsChosen("optEffect_1") && IsChosen("optSize_1") && IsChosen("optAlign_2") && IsChosen("optColor_0"));
    EXPECT_TRUE(m_window->close()) << "nothing has changed";
}

TEST_F(DesignTicketTest, FormatsGoToTheSelectionAndShowUnlessTheyAreMixed) {
    Show();
    WindowDriver::Keys(QStringLiteral("abcd"));
    Select(1, 2);
    for (const char* button : {"optEffect_1", "optSize_2", "optColor_1", "optAlign_1"})
        Choose(button);
    EXPECT_TRUE(Edit().hasFocus());
    const TicketDocument::Paragraph paragraph = Edit().Document().paragraphs[0];
    ASSERT_EQ(paragraph.runs.size(), 3U);
    EXPECT_EQ(paragraph.runs[1], (TicketDocument::Run{QStringLiteral("bc"), {true, 22, 0xFF0000}}));
    EXPECT_EQ(paragraph.alignment, Alignment::Right);
    EXPECT_EQ(paragraph.runs[2].format, CharacterFormat());
    Select(0, 4);
    const FormEdit::Formats mixed = Edit().SelectionFormats();
    EXPECT_FALSE(mixed.bold || mixed.size || mixed.colour);
    EXPECT_EQ(mixed.alignment, Alignment::Right);
    EXPECT_EQ(m_hands->Find<QLabel>("Label3").text(), QStringLiteral("0"));
    Trigger("mnUndo");
    EXPECT_NE(Edit().Document().paragraphs[0], paragraph);
    Trigger("mnRedo");
    EXPECT_EQ(Edit().Document().paragraphs[0], paragraph);
}

TEST_F(DesignTicketTest, WhatIsCutComesBackAsItWasAndGoesOutInUnicode) {
    m_ini.WriteIni(QStringLiteral("Ticket"), QStringLiteral("LastForm"), Data(QStringLiteral("ticket.rtf")));
    Show();
    Select(0, 0);
    WindowDriver::Keys(QStringLiteral("D\u1ECBch S\u01A1n ")); // alone it reads as Unicode as well as VNI
    const TicketDocument before = Edit().Document();
    const int length = Edit().document()->characterCount() - 1;
    for (const auto& [start, count] : {std::pair(0, length), {2, 5}, {length / 2, length / 3}, {0, 5}}) {
        Select(start, count);
        QTest::keyClick(&Edit(), Qt::Key_X, Qt::ControlModifier);
        EXPECT_NE(Edit().Document(), before) << start;
        QTest::keyClick(&Edit(), Qt::Key_V, Qt::ControlModifier);
        EXPECT_EQ(Edit().Document(), before) << start;
    }
    EXPECT_EQ(QApplication::clipboard()->text(), QStringLiteral("D\u1ECBch "));
}

TEST_F(DesignTicketTest, LogosAreOfferedIfAFormCanNameThemAndNamedIfTheyAreMissing) {
    for (const char16_t* name : {u"\u1EA3nh.bmp", u"a).bmp", u"\u00F3.bmp"})
        WriteFile(Data(QString::fromUtf16(name)), "");
    Show();
    EXPECT_EQ(m_hands->Find<QListWidget>("fileLogos").count(), 2);
    WindowDriver::Keys(QStringLiteral("$BMP(gone.bmp) is here"));
    EXPECT_TRUE(WaitUntil([this] {
        return m_window->findChild<QLabel*>(QStringLiteral("lblFindings"))
            ->text()
            .contains(QStringLiteral("Logo gone.bmp is not in the folder of the form"));
    }));
    Trigger("mnNew");
    EXPECT_EQ(Edit().toPlainText(), QString());
    Trigger("mnUndo");
    EXPECT_EQ(Edit().toPlainText(), QStringLiteral("$BMP(gone.bmp) is here"));
}

TEST_F(DesignTicketTest, ADroppedFieldStandsBeforeTheSelectionAndIsSelected) {
    Show();
    WindowDriver::Keys(QStringLiteral("abcd"));
    Select(2, 2);
    auto& fields = m_hands->Find<TokenList>("lstFields");
    const auto drag = [&](const QWidget& to) {
        QWindow* window = m_window->windowHandle();
        const QPoint start = fields.viewport()->mapTo(m_window, fields.visualItemRect(fields.item(3)).center());
        const QPoint end = to.mapTo(m_window, to.rect().center());
        QTest::mousePress(window, Qt::LeftButton, {}, start);
        for (const QPoint place : {start + QPoint(30, 0), end})
            QTest::mouseMove(window, place);
        QTest::mouseRelease(window, Qt::LeftButton, {}, end);
    };
    drag(m_hands->Find<QListWidget>("fileLogos"));
    EXPECT_EQ(Edit().toPlainText(), QStringLiteral("abcd"));
    drag(*Edit().viewport());
    EXPECT_EQ(Edit().toPlainText(), QStringLiteral("ab$VAR(3)cd"));
    EXPECT_EQ(Edit().textCursor().selectedText(), QStringLiteral("$VAR(3)"));
    m_hands->Find<QListWidget>("fileLogos").setCurrentRow(0);
    m_hands->Find<QListWidget>("fileLogos").setFocus();
    WindowDriver::Press(Qt::Key_Return);
    EXPECT_EQ(Edit().textCursor().selectedText(), QStringLiteral("$BMP(logo.bmp)"));
}

TEST_F(DesignTicketTest, UnicodeBecomesVniAndWhatCannotBePrintedIsRefused) {
    Show();
    WindowDriver::Keys(QStringLiteral("ti\u1EC1n "));
    QApplication::clipboard()->setText(QStringLiteral("s\u1ED1\r\nhai"));
    Edit().paste();
    EXPECT_EQ(Edit().Document().Text(), QStringLiteral("tie\u00E0n so\u00E1\r\nhai"));
    m_dialogs.ExpectMessage(BoxKind::Exclamation,
                            QStringLiteral("These characters cannot be printed and were left out: \u4E2D"));
    WindowDriver::Keys(QStringLiteral("\u4E2D"));
    EXPECT_EQ(Edit().Document().Text(), QStringLiteral("tie\u00E0n so\u00E1\r\nhai"));
}

TEST_F(DesignTicketTest, FilesAreOpenedSavedAndNotLostByAccident) {
    Show();
    const QString path = Data(QStringLiteral("mine.rtf"));
    const QString question = QStringLiteral("File not saved, exit anyway?");
    WindowDriver::Keys(QStringLiteral("text"));
    m_dialogs.ExpectChoice(QString());
    Trigger("mnSave");
    m_dialogs.ExpectQuestion(BoxKind::Exclamation, question, false);
    EXPECT_FALSE(m_window->close());
    m_dialogs.ExpectChoice(path);
    Trigger("mnSave");
    EXPECT_EQ(m_hands->Find<QLabel>("lblFile").text(), QStringLiteral("mine.rtf"));
    Trigger("mnNew");
    EXPECT_EQ(Edit().Document().Text(), QString());
    m_dialogs.ExpectChoice(QString());
    Trigger("mnOpen");
    EXPECT_EQ(Edit().Document().Text(), QString());
    m_dialogs.ExpectChoice(path);
    Trigger("mnOpen");
    EXPECT_EQ(Edit().Document().Text(), QStringLiteral("text"));
    WriteFile(path, "no rich text");
    m_dialogs.ExpectChoice(path);
    m_dialogs.ExpectMessage(BoxKind::Exclamation, QString());
    Trigger("mnOpen");
    EXPECT_EQ(Edit().Document().Text(), QStringLiteral("text"));
    m_dialogs.ExpectQuestion(BoxKind::Exclamation, question, true);
    m_window->close();
    EXPECT_TRUE(WaitUntil([this] { return !m_window->isVisible(); }));
    m_guard.reset();
    EXPECT_EQ(m_forms.LastForm(), path);
}

TEST_F(DesignTicketTest, WhatASavedFormHoldsComesBack) {
    Show();
    m_dialogs.ExpectChoice(Data(QStringLiteral("ticket.rtf")));
    Trigger("mnOpen");
    const TicketDocument before = Edit().Document();
    m_dialogs.ExpectChoice(Data(QStringLiteral("copy.rtf")));
    Trigger("mnSave");
    m_dialogs.ExpectChoice(Data(QStringLiteral("copy.rtf")));
    Trigger("mnOpen");
    EXPECT_EQ(Edit().Document(), before);
    EXPECT_EQ(before.Text().count(QStringLiteral("\r\n")), 8) << "a line break ends a line as well";
}

TEST_F(DesignTicketTest, ThePreviewFollowsTypingAndNamesWhatGoesWrong) {
    Show();
    const auto picture = [this] { return m_hands->Find<QLabel>("lblPreview").pixmap().toImage(); };
    const QImage before = picture();
    WindowDriver::Keys(QStringLiteral("$VAR(3)"));
    EXPECT_TRUE(WaitUntil([&] { return picture() != before; }, 200));
    Select(2, 2);
    Choose("optEffect_1");
    EXPECT_TRUE(WaitUntil([this] {
        return m_window->findChild<QLabel*>(QStringLiteral("lblFindings"))->text() ==
               QStringLiteral("Token $VAR(3) has mixed formats");
    }));
}

TEST_F(DesignTicketTest, SendsTheFormOfThisMomentAndKeepsItInItsFile) {
    Show();
    WindowDriver::Keys(QStringLiteral("A"));
    WindowDriver::Press(Qt::Key_Return);
    m_dialogs.ExpectMessage(BoxKind::Information, QStringLiteral("Set done."));
    m_hands->ClickButton("cmdSend");
    EXPECT_TRUE(WaitUntil([this] { return !m_station.IsBusy(); }));
    const QByteArray form = QByteArray::fromHex("03D91B401B74021B45301D21000000001B6130410D0A1B6D0D0A0D0A3134");
    EXPECT_EQ(SentForm(), form + form) << "to both printers";
    EXPECT_EQ(ReadFile(m_folder.filePath(QStringLiteral("Ticket.bin"))), QByteArray("\x1E\0", 2) + form);

    m_end.Commands.clear();
    m_hands->Find<QSpinBox>("txtNumcopy").setValue(3);
    m_hands->Find<QSpinBox>("txtTicketdigits").setValue(2);
    m_hands->Find<QComboBox>("cboPrinters").setCurrentIndex(2);
    m_dialogs.ExpectMessage(BoxKind::Information, QStringLiteral("Set done."));
    m_hands->ClickButton("cmdSend");
    EXPECT_TRUE(WaitUntil([this] { return !m_station.IsBusy(); }));
    EXPECT_TRUE(SentForm().endsWith("32"));
    EXPECT_EQ(ReadFile(m_folder.filePath(QStringLiteral("Ticket7.bin"))).sliced(2), SentForm());
    EXPECT_EQ(ReadFile(m_folder.filePath(QStringLiteral("Ticket.bin"))).sliced(2), form);
    EXPECT_TRUE(ReadFile(m_ini.IniPath).contains("TicketCopies=3"));
    EXPECT_TRUE(ReadFile(m_ini.IniPath).contains("m_TicketDigits =2"));
}

TEST_F(DesignTicketTest, ATransferIsShownCancelledAndHoldsTheWindow) {
    Show();
    WindowDriver::Keys(QString(300, u'x'));
    m_end.IsSilent = [this](const QByteArray& command) {
        if (command[2] != 'O' || m_end.Commands.size() < 4)
            return false;
        EXPECT_FALSE(m_window->close());
        QTest::mouseClick(m_window->findChild<QPushButton*>(QStringLiteral("cmdCancelSend")), Qt::LeftButton);
        return false;
    };
    m_hands->Find<QComboBox>("cboPrinters").setCurrentIndex(1);
    m_dialogs.ExpectMessage(BoxKind::Exclamation, QStringLiteral("Send ticket form data error!"));
    m_dialogs.ExpectMessage(BoxKind::Exclamation, QStringLiteral("Set ticket form to printer #object 2 error!"));
    m_hands->ClickButton("cmdSend");
    EXPECT_FALSE(m_window->findChild<QPushButton*>(QStringLiteral("cmdSend"))->isEnabled());
    EXPECT_TRUE(WaitUntil([this] { return !m_station.IsBusy(); }));
    EXPECT_TRUE(m_end.Commands.last().startsWith("P V"));
}

TEST_F(DesignTicketTest, ATooLargeFormOrAMissingTableSendsNothing) {
    Show();
    QApplication::clipboard()->setText(QString(4'100, u'x'));
    Edit().paste();
    m_dialogs.ExpectMessage(BoxKind::Critical, QStringLiteral("Printer form too large!"));
    m_hands->ClickButton("cmdSend");
    QFile::remove(m_folder.filePath(QStringLiteral("VNIl.dat")));
    m_dialogs.ExpectMessage(BoxKind::Exclamation, QString());
    Await(m_forms.LoadLetters());
    Trigger("mnNew");
    m_dialogs.ExpectMessage(BoxKind::Exclamation, QString());
    m_hands->ClickButton("cmdSend");
    EXPECT_EQ(Await(m_station.LoadVniFont(LetterSet::Table)).end, Outcome::End::Refused);
    EXPECT_TRUE(m_end.Commands.isEmpty());
    EXPECT_FALSE(QFile::exists(m_folder.filePath(QStringLiteral("Ticket.bin"))));
}

TEST_F(DesignTicketTest, AFormIsNotSentIntoWhatRunsAlready) {
    Show();
    WindowDriver::Keys(QStringLiteral("A"));
    auto running = m_station.SetPrinterClocks();
    ASSERT_TRUE(m_station.IsBusy());
    EXPECT_FALSE(m_window->findChild<QPushButton*>(QStringLiteral("cmdSend"))->isEnabled());
    m_dialogs.ExpectMessage(BoxKind::Exclamation,
                            QStringLiteral("Devices are being configured. Please try again when this is done."));
    Q_EMIT m_window->findChild<QAction*>(QStringLiteral("mnSend"))->triggered(false);
    EXPECT_TRUE(WaitUntil([&] { return running.isReady(); }));
    EXPECT_TRUE(m_hands->Find<QPushButton>("cmdSend").isEnabled());
    EXPECT_TRUE(SentForm().isEmpty());
}
