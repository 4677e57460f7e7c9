#include "printers/TicketForms.h"

#include "core/EventLog.h"
#include "core/IniUtility.h"
#include "core/Installation.h"
#include "platform/AnsiText.h"
#include "platform/Clock.h"
#include "platform/WholeFile.h"
#include "tickets/RichText.h"

#include <QFileInfo>

namespace {

QString OptionsSection() {
    return QStringLiteral("options");
}

QString TicketSection() {
    return QStringLiteral("Ticket");
}

QString LastFormKey() {
    return QStringLiteral("LastForm");
}

} // namespace

TicketForms::TicketForms(const PrinterTransfer::Parts& parts, QString programFolder, const IniUtility& ini,
                         PrinterTables::CounterList counterListOfService)
    : transfer(parts)
    , fonts(parts, programFolder, letters)
    , m_installation(parts.installation)
    , m_clock(parts.clock)
    , m_dialogs(parts.dialogs)
    , m_log(parts.log)
    , m_programFolder(std::move(programFolder))
    , m_ini(ini)
    , m_counterListOfService(std::move(counterListOfService)) {}

QCoro::Task<> TicketForms::LoadLetters() {
    const Result<> loaded = letters.LoadVNITable(m_programFolder + QStringLiteral("/VNIl.dat"));
    m_letterFault = loaded.Error();
    if (!loaded) {
        m_log.WriteLog(m_letterFault, EventLog::Error);
        co_await m_dialogs.ShowMessage(BoxKind::Exclamation, m_letterFault);
    }
    if (!LoadVCode(m_programFolder + QStringLiteral("/VCODE.dat")))
        co_await m_dialogs.ShowMessage(BoxKind::Plain, QStringLiteral("Error load VNI table"));
}

void TicketForms::Save(const QString& section, const QString& key, const QString& value) {
    if (!m_ini.WriteIni(section, key, value))
        m_log.WriteLog(QStringLiteral("%1 could not be written.").arg(m_ini.IniPath), EventLog::Error);
}

void TicketForms::SetTicketCopies(qint16 copies) {
    m_TicketCopies = copies;
    Save(OptionsSection(), QStringLiteral("TicketCopies"), QString::number(copies));
}

void TicketForms::SetTicketDigits(qint16 digits) {
    m_TicketDigits = digits;
    // The blank belongs to the key.
    Save(OptionsSection(), QStringLiteral("m_TicketDigits "), QString::number(digits));
}

QString TicketForms::DataFolder() const {
    return m_programFolder + QStringLiteral("/Data");
}

QString TicketForms::LastForm() const {
    QString path;
    m_ini.ReadIni(TicketSection(), LastFormKey(), path);
    return path;
}

void TicketForms::SetLastForm(const QString& path) {
    if (path != LastForm())
        Save(TicketSection(), LastFormKey(), path);
}

void TicketForms::SetLastLogo(const QString& name) {
    Save(QStringLiteral("Logo"), QStringLiteral("Filename"), name);
}

QString TicketForms::FolderOf(const QString& formPath) const {
    // A form without a file finds the logos that the designer offers.
    return formPath.isEmpty() ? DataFolder() : QFileInfo(formPath).absolutePath();
}

CompilerResult TicketForms::Compile(const TicketDocument& document, const QString& formPath) const {
    return ::CompileForm(document, FolderOf(formPath), m_family, letters, m_TicketCopies, m_TicketDigits);
}

Result<CompiledForm> TicketForms::CompileSource(const FormSource& source) const {
    if (source.IsCompiled()) {
        const std::optional<QByteArray> stored = ReadFormFile(source.file);
        if (!stored || !VerifyFormChecksum(*stored))
            return Failure{QStringLiteral("%1 is missing or damaged.").arg(source.file)};
        return CompiledForm{*stored, {}, 0};
    }
    const Result<QByteArray> content = ReadWhole(source.file, richtext::LargestFile);
    if (!content)
        return Failure{content.Error()};
    const Result<richtext::Document> read = richtext::Read(*content);
    if (!read)
        return Failure{QStringLiteral("%1: %2").arg(source.file, read.Error())};
    if (!source.family.PrinterZoneRich && !letters.IsLoaded())
        return Failure{m_letterFault};
    const CompilerResult result =
        ::CompileForm(read->document, FolderOf(source.file), source.family, letters, source.copies, source.digits);
    if (result.form)
        return *result.form;
    QStringList texts;
    for (const CompilerMessage& message : result.messages)
        texts += message.text;
    return Failure{QStringLiteral("%1: %2").arg(source.file, texts.join(u' '))};
}

std::optional<FormSource> TicketForms::LastSource() const {
    const QString path = LastForm();
    if (path.isEmpty())
        return std::nullopt;
    return FormSource{path, m_family, m_TicketCopies, m_TicketDigits};
}

std::optional<FormSource> TicketForms::FindSource(const std::function<bool(const CompiledForm&)>& isIt,
                                                  const QString& printerNumber) const {
    std::vector<FormSource> candidates;
    for (const std::optional<FormSource>& named : {m_sending, LastSource()}) {
        if (named)
            candidates.push_back(*named);
    }
    candidates.push_back({CompiledPath(printerNumber), {}, 0, 0});
    candidates.push_back({CompiledPath({}), {}, 0, 0});
    for (const FormSource& source : candidates) {
        const Result<CompiledForm> form = CompileSource(source);
        if (form && isIt(*form))
            return source;
    }
    return std::nullopt;
}

QString TicketForms::CompiledPath(const QString& printerNumber) const {
    return QStringLiteral("%1/Ticket%2.bin").arg(m_programFolder, printerNumber);
}

TicketValues TicketForms::SampleValues() const {
    const QDateTime now = m_clock.Now();
    const QByteArray number = QByteArray::number(1001).rightJustified(m_TicketDigits, '0', true);
    const auto services = m_installation.LoadedServices();
    const QByteArray name = services.empty() ? QByteArray("Service") : ansi::Encode(services[0].Name).bytes;
    const QByteArray description =
        services.empty()
            ? QByteArray("Description")
            : ansi::Encode(ExpandServiceText(services[0].Description, 0, m_installation, m_counterListOfService)).bytes;
    return {name,
            description,
            QByteArray("0995").right(m_TicketDigits),
            number,
            now.toString(QStringLiteral("dd/MM/yyyy")).toLatin1(),
            now.toString(QStringLiteral("hh:mm:ss")).toLatin1(),
            now.toString(QStringLiteral("MM/dd/yyyy")).toLatin1(),
            now.toString(QStringLiteral("hh:mm ")).toLatin1() + number};
}

QCoro::Task<std::optional<CompiledForm>> TicketForms::CompileForm(TicketDocument document, QString formPath,
                                                                  QString printerNumber) {
    if (!m_family.PrinterZoneRich && !letters.IsLoaded()) {
        co_await m_dialogs.ShowMessage(BoxKind::Exclamation, m_letterFault);
        co_return std::nullopt;
    }
    m_sending = FormSource{formPath.isEmpty() ? CompiledPath(printerNumber) : formPath, m_family, m_TicketCopies,
                           m_TicketDigits};
    const CompilerResult result = Compile(document, formPath);
    for (const CompilerMessage& message : result.messages)
        co_await m_dialogs.ShowMessage(message.kind, message.text);
    if (!result.form)
        co_return std::nullopt;
    if (const Result<> written = WriteFormFile(CompiledPath(printerNumber), result.form->PrnForm); !written)
        m_log.WriteLog(written.Error(), EventLog::Error);
    co_return result.form;
}

QCoro::Task<Outcome> TicketForms::SendToPrinter(qint16 object, TicketDocument document, QString formPath, Logos logos) {
    const QString number = QString::number(m_installation.Object(object).Number);
    const std::optional<CompiledForm> form = co_await CompileForm(document, formPath, number);
    if (!form)
        co_return Outcome::Failed({});
    co_return co_await transfer.SendToPrinter(object, *form, logos);
}

QCoro::Task<Outcome> TicketForms::SendToAllPrinters(TicketDocument document, QString formPath, Logos logos) {
    const std::optional<CompiledForm> form = co_await CompileForm(document, formPath, {});
    if (!form)
        co_return Outcome::Failed({});
    co_return co_await transfer.SendFormToAllPrinters(*form, logos);
}

QCoro::Task<bool> TicketForms::SendStoredForm(qint16 object) {
    const std::optional<QByteArray> stored = ReadFormFile(CompiledPath({}));
    if (!stored || !VerifyFormChecksum(*stored))
        co_return true;
    const CompiledForm form{*stored, {}, 0};
    m_sending = FormSource{CompiledPath({}), {}, 0, 0};
    co_return co_await transfer.SendFormAndLogo(object, form, Logos::Without, FormTransfer::Occasion::StartUp);
}

QCoro::Task<Outcome> TicketForms::LoadVniFont(LetterSet letterSet) {
    m_family.PrinterZoneRich = letterSet == LetterSet::FontFile;
    if (letterSet == LetterSet::Table && !letters.IsLoaded())
        co_return Outcome::Refused(m_letterFault);
    const QStringList failed = co_await fonts.LoadVNIToAllPrinters(letterSet);
    Outcome outcome = failed.isEmpty() ? Outcome::Done() : Outcome::Failed({});
    outcome.kind = BoxKind::Information;
    outcome.text = QStringLiteral("Done.");
    outcome.silent = fonts.Silent();
    co_return outcome;
}
