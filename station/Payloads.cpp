#include "station/Payloads.h"

#include "core/Installation.h"
#include "hubs/HubConfig.h"
#include "link/Frames.h"
#include "printers/TicketForms.h"
#include "station/LoadWatch.h"

#include <QCoreApplication>

namespace {

struct Words {
    Q_DECLARE_TR_FUNCTIONS(Payloads)
};

/// The source of the last load of a kind that is known: of the device itself, else of any. A document comes before a
/// form that was compiled earlier, as the initialization sends it: that one may be older.
QString SourceText(const LoadRecord& record, const DeviceIdentity& device, LoadKind kind) {
    if (const LoadRecord::Standing* const standing = record.Of(device, kind)) {
        if (!standing->document.isEmpty())
            return standing->document;
        if (!standing->last.source.isEmpty())
            return standing->last.source;
        if (standing->good && !standing->good->source.isEmpty())
            return standing->good->source;
    }
    const LoadEntry* const last = record.LastGood(kind);
    return last ? last->source : QString();
}

} // namespace

Payloads::Payloads(Parts parts)
    : m_parts(std::move(parts)) {}

Payload Payloads::Members(qint16 object) const {
    const QByteArray list = MemberList(m_parts.installation, object);
    // The faults name the members of all hubs; those of another one are no fault of this list.
    for (const BlockFault& fault : MemberFaults(m_parts.installation)) {
        const qint16 member = m_parts.installation.FindObjectById(fault.id);
        if (member >= 0 && m_parts.installation.Object(member).HubId == m_parts.installation.Object(object).Id)
            return {.kind = LoadKind::Members, .content = {}, .fault = fault.text, .form = {}};
    }
    return {.kind = LoadKind::Members, .content = list, .fault = {}, .form = {}};
}

Payload Payloads::Block() {
    if (!m_block) {
        m_block = Payload{.kind = LoadKind::Block, .content = {}, .fault = {}, .form = {}};
        if (const std::vector<BlockFault> faults = BlockFaults(m_parts.installation); !faults.empty())
            m_block->fault = faults.front().text;
        else
            m_block->content = frames::UnescapeData(BuildHubConfig(m_parts.installation));
    }
    return *m_block;
}

Payload Payloads::Tables() {
    if (!m_tables) {
        const PrinterTables tables(m_parts.installation, m_parts.counterListOfService, m_parts.log);
        m_tables =
            Payload{.kind = LoadKind::Tables, .content = tables.ButtonTable(true).chopped(1), .fault = {}, .form = {}};
        for (const QByteArray& row : tables.ServiceTable())
            m_tables->content += row;
    }
    return *m_tables;
}

std::vector<Payload> Payloads::FormAndLogos(const DeviceIdentity& device) {
    Payload form{.kind = LoadKind::Form, .content = {}, .fault = {}, .form = {}};
    const QString folder = m_parts.forms.ProgramFolder();
    form.form = FormSource::Parse(SourceText(m_parts.record, device, LoadKind::Form), folder);
    if (!form.form)
        form.form = m_parts.forms.LastSource();
    if (!form.form) {
        form.fault = Words::tr("no form has been chosen: open one in the ticket designer");
        return {form};
    }
    const QString key = form.form->Text(folder);
    auto compiled = m_forms.find(key);
    if (compiled == m_forms.end())
        compiled = m_forms.emplace(key, m_parts.forms.CompileSource(*form.form)).first;
    const Result<CompiledForm>& result = compiled->second;
    if (!result) {
        form.fault = result.Error();
        return {form};
    }
    form.content = result->PrnForm;
    std::vector<Payload> both{form};
    if (result->LogoCount > 0) {
        Payload& logos = both.emplace_back(form);
        logos.kind = LoadKind::Logos;
        logos.content = result->LogoData;
        if (logos.content.size() > CompiledForm::LongestLogoData) {
            logos.content.clear();
            logos.fault = Words::tr("the logos are too large: at most %1 bytes").arg(CompiledForm::LongestLogoData);
        }
    }
    return both;
}

Payload Payloads::Letters(const DeviceIdentity& device) {
    const QString source = SourceText(m_parts.record, device, LoadKind::Letters);
    LetterSet set = m_parts.forms.Family().PrinterZoneRich ? LetterSet::FontFile : LetterSet::Table;
    if (!source.isEmpty())
        set = source == LetterSource(LetterSet::FontFile) ? LetterSet::FontFile : LetterSet::Table;
    const auto known = m_letters.find(set);
    if (known != m_letters.end())
        return known->second;
    Payload letters{.kind = LoadKind::Letters, .content = {}, .fault = {}, .form = {}, .letters = set};
    if (set == LetterSet::Table)
        letters.fault = m_parts.forms.LetterFault();
    if (letters.fault.isEmpty()) {
        const Result<QByteArray> content = m_parts.forms.fonts.Content(set);
        if (content)
            letters.content = *content;
        else
            letters.fault = content.Error();
    }
    return m_letters.emplace(set, letters).first->second;
}

std::vector<Payload> Payloads::Of(qint16 object) {
    const model::QObject& device = m_parts.installation.Object(object);
    std::vector<Payload> all;
    if (device.Type == model::Hub) {
        all = {Members(object), Block()};
    } else if (device.Type == model::Printer) {
        const DeviceIdentity identity = IdentityOf(m_parts.installation, device);
        all = {Tables()};
        for (const Payload& payload : FormAndLogos(identity))
            all.push_back(payload);
        all.push_back(Letters(identity));
    }
    const bool hasClock = device.Type == model::Hub || (device.Type == model::Printer && device.HubId == 0);
    if (hasClock)
        all.push_back(
            {.kind = LoadKind::Clock, .content = LoadWatch::ClockContent(m_parts.clock), .fault = {}, .form = {}});
    return all;
}

std::chrono::milliseconds Payloads::LoadTime(const Payload& payload, int baud, bool isRelayed) {
    using std::chrono::milliseconds;
    constexpr int BitsPerCharacter = 10;
    // A frame without data, the answer to it, and the acknowledgement.
    const qsizetype around = 19 + (isRelayed ? 3 : 0);
    const qsizetype stuffed = frames::EscapeData(payload.content).size();
    const auto chunks = [&](qsizetype length) { return (payload.content.size() + length - 1) / length; };
    qsizetype commands = 1;
    qsizetype characters = stuffed;
    milliseconds pauses{0};
    switch (payload.kind) {
    case LoadKind::Tables:
        // K, P, N beside the rows; the row's first two digits tell how many there are.
        commands = 3 + (payload.content.size() - 2) / (2 + qsizetype(PrinterTables::RowLength));
        characters = payload.content.size() + 1;
        pauses = milliseconds(5200);
        break;
    case LoadKind::Form:
        commands = 2 + chunks(64);
        break;
    case LoadKind::Logos:
        commands = 2 + chunks(64);
        pauses = milliseconds(15'000);
        break;
    case LoadKind::Letters:
        commands = 2 + chunks(payload.letters == LetterSet::FontFile ? 128 : 88);
        break;
    default:
        break;
    }
    return pauses + milliseconds((commands * around + characters) * BitsPerCharacter * 1000 / std::max(baud, 1));
}
