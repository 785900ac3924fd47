#include "processor/ExchangeJournal.h"

#include "app/ProgramState.h"
#include "core/FileArchive.h"
#include "core/RuntimeError.h"
#include "hostdb/RemitraStore.h"

ExchangeJournal::ExchangeJournal(ProgramState &state, Journal::Kind kind, const What &what)
    : m_state(state)
    , m_capture(state)
{
    Journal::Entry entry;
    entry.kind = kind;
    entry.title = what.sent.join(u", "_qs);
    qint64 lines = 0;
    for (const QString &name : what.sent) {
        entry.files.append(describe(name, u"sent"_qs, {}, &lines));
    }
    entry.lines = what.lines;
    entry.count
        = what.count ? what.count : (what.sent.isEmpty() ? std::nullopt : std::optional(lines));
    entry.total = what.total;
    const RemitraStore &store = m_state.store();
    RemitraStore::Transaction own(store);
    m_runId = Journal(store).addRun(entry);
    Journal(store).addResult(m_runId, { Journal::Sent, {}, {}, {}, {}, {} });
    own.commit();
    m_capture.attach(m_runId);
}

ExchangeJournal::~ExchangeJournal()
{
    if (m_answered)
        return;
    // The call did not come back with a result (an error stopped the job):
    // the run stays without an answer, said so once more with the reason
    // unknown here. Nothing may escape a destructor.
    try {
        Journal(m_state.store())
            .addResult(m_runId,
                { Journal::Sent, {}, {}, {}, {},
                    u"Remitra stopped before an answer was recorded."_qs });
    } catch (const RuntimeError &) {
    }
}

Journal::File ExchangeJournal::describe(
    const QString &name, const QString &role, QString archive, qint64 *lines) const
{
    const QString path = m_state.pathOf(name);
    const FileArchive::Facts facts = FileArchive::factsOf(path);
    if (lines)
        *lines += facts.lines;
    if (archive.isEmpty() && role == u"sent"_qs) {
        archive = Journal(m_state.store()).archiveOf(facts.sha256, m_state.folder());
        if (archive.isEmpty())
            archive = FileArchive::keep(m_state.folder(), path);
    }
    return { role, name, facts.size, facts.sha256, archive };
}

void ExchangeJournal::receives(const QString &name, const QString &archive,
    std::optional<qint64> count, std::optional<Currency> total)
{
    m_received.append(describe(name, u"received"_qs, archive));
    m_count = count;
    m_total = total;
}

ProcessorCall::Keep ExchangeJournal::keep(ProcessorCall::Keep inner)
{
    return [this, inner](const ProcessorCall::Outcome &outcome) {
        if (inner)
            inner(outcome);
        const RemitraStore &store = m_state.store();
        RemitraStore::Transaction own(store);
        Journal journal(store);
        for (const Journal::File &file : std::as_const(m_received))
            journal.addFile(m_runId, file);
        journal.addResult(m_runId,
            { Journal::Answered, outcome.code, outcome.flag ? u"True"_qs : u"False"_qs, m_count,
                m_total, {} });
        own.commit();
        m_answered = true;
    };
}
