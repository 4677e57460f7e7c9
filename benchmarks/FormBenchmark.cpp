#include "benchmarks/Benchmarks.h"

#include "benchmarks/PacedPrinter.h"
#include "benchmarks/Report.h"
#include "printers/FormTransfer.h"
#include "tickets/RichText.h"
#include "tickets/TicketPaper.h"
#include "tickets/VniTable.h"
#include "widgets/WindowDialogs.h"

namespace {

/// A document of about `characters` characters, with Vietnamese letters and a change of format in each line.
TicketDocument MakeDocument(qsizetype characters) {
    TicketDocument document{{}};
    for (qsizetype length = 0; length < characters;) {
        TicketDocument::Paragraph& paragraph = document.paragraphs.emplace_back();
        paragraph.Append(QStringLiteral("Xin cha\u00F8o "), {});
        paragraph.Append(QStringLiteral("quy\u00F9 kha\u00F9ch $VAR(0)"), {true, 12});
        length += 34;
    }
    return document;
}

} // namespace

void BenchmarkForms() {
    VniTable letters;
    if (const Result<> loaded = letters.LoadVNITable(QStringLiteral(DATA_FOLDER "/VNIl.dat")); !loaded)
        qFatal("%s", qPrintable(loaded.Error()));

    const TicketDocument form = MakeDocument(1'850);
    CompilerResult compiled;
    const double compile = BestSeconds(20, [&] { compiled = CompileForm(form, {}, {}, letters, 1, 4); });
    if (!compiled.form)
        qFatal("the form is too large");
    const QByteArray what = "Compiling a form of " + QByteArray::number(compiled.form->PrnForm.size()) + " bytes";
    Report(what.constData(), compile * 1000, "ms", "aim", 5);

    TicketPaper paper;
    const TicketValues values{"Name", "", "", "1001", "", "", "", ""};
    const double print = BestSeconds(20, [&] { paper.Print(compiled.form->PrnForm, {}, values, &letters); });
    Report("Rendering that ticket", print * 1000, "ms", "aim", 20);

    const TicketDocument large = MakeDocument(700'000);
    QByteArray file;
    const double write = BestSeconds(3, [&] { file = richtext::Write(large); });
    const double read = BestSeconds(3, [&] {
        if (const auto document = richtext::Read(file); !document)
            qFatal("%s", qPrintable(document.Error()));
    });
    const double megabytes = static_cast<double>(file.size()) / 1e6;
    Report("Writing a rich text, a megabyte", write * 1000 / megabytes, "ms", "reading it", read * 1000 / megabytes);

    for (const int baud : {9600, 115200}) {
        PacedPrinter printer(baud);
        WindowDialogs dialogs;
        FormTransfer transfer({*printer.Installation, printer.Router, printer.Waits, dialogs, printer.Log});
        const CompiledForm full{QByteArray(CompiledForm::LongestForm, 'x'), {}, 0};
        printer.Measure("Transfer of a form of 65 frames", [&] {
            return QCoro::waitFor(transfer.SendFormAndLogo(0, full, Logos::Without, FormTransfer::Occasion::Designer));
        });
    }
}
