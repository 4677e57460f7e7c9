#include "simulator/TicketPictures.h"

#include "simulator/TicketPrinter.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

TEST(TicketPictures, APrintedTicketIsAPictureOfTheLoadedForm) {
    QTemporaryDir folder;
    TicketPrinter printer({.Class = DeviceClass::Printer, .Address = 32, .Number = 1, .Name = {}, .Hub = {}});
    TicketPictures pictures(folder.path());
    EXPECT_TRUE(pictures.Save(printer).isEmpty()) << "nothing was printed";
    printer.Handle('W', {});
    const QImage bare(pictures.Save(printer));
    EXPECT_EQ(bare.width(), TicketPaper::Width);

    const QByteArray form("\x04\xDF\x1B@Ticket $VAR(3)\n14", 21);
    printer.Handle('L', "0015");
    printer.Handle('O', form);
    printer.Handle('V', "1");
    ASSERT_EQ(printer.Form(), form) << "the check sum is right";
    printer.Handle('W', {});
    const QString path = pictures.Save(printer);
    EXPECT_EQ(path, folder.filePath(QStringLiteral("ticket-32-2.png")));
    EXPECT_NE(QImage(path), bare);
    EXPECT_TRUE(TicketPictures(QStringLiteral("/nowhere")).Save(printer).isEmpty());
}
