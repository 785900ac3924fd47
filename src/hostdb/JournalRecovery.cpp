#include "hostdb/JournalRecovery.h"

#include "hostdb/Journal.h"
#include "hostdb/RemitraStore.h"
#include "hostdb/RentPostingRecord.h"
#include "hostdb/WrittenRows.h"

namespace JournalRecovery {

namespace {

// The payments of a rent posting run, as the posting record keeps them.
void recordPosting(Journal &journal, const Journal::Run &run, RentPostingRecord &record)
{
    for (const Journal::Line &line : journal.lines(run.id)) {
        if (line.outcome == u"posted"_qs || line.outcome == u"part posted"_qs)
            record.recordPosted(
                run.fileSha256, line.line, RentPostingRecord::missingOf(line.missing));
        if (line.deposited)
            record.recordDeposited(run.fileSha256, line.line);
    }
    // The result it was to have is kept in the pending result's flag.
    if (run.result.flag == Journal::Posted)
        record.recordComplete(run.fileSha256);
}

} // namespace

void settle(const HostDb &host, const RemitraStore &store)
{
    Journal journal(store);
    const QList<Journal::Run> pending = journal.pending();
    if (pending.isEmpty())
        return;
    WrittenRows rows(host);
    for (const Journal::Run &run : pending) {
        const bool committed = rows.holdsWrites(journal, run.id);
        RemitraStore::Transaction own(store);
        if (committed) {
            RentPostingRecord record(store);
            if (run.kind == Journal::Kind::RentPosting)
                recordPosting(journal, run, record);
            if (run.kind == Journal::Kind::Reversal && run.reverses) {
                journal.addResult(run.reverses, { Journal::Reversed, {}, {}, {}, {}, {} });
                QList<int> posted, deposited;
                for (const Journal::Line &line : journal.lines(run.reverses)) {
                    if (line.outcome == u"posted"_qs || line.outcome == u"part posted"_qs)
                        posted << line.line;
                    if (line.deposited)
                        deposited << line.line;
                }
                record.forget(run.fileSha256, posted, deposited);
            }
            journal.addResult(run.id,
                { run.result.flag, {}, {}, run.result.count, run.result.total, run.result.note });
        } else {
            journal.addResult(run.id, { Journal::RolledBack, {}, {}, {}, {}, {} });
        }
        own.commit();
    }
}

} // namespace JournalRecovery
