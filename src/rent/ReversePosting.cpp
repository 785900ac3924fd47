#include "rent/ReversePosting.h"

#include "app/MessageCapture.h"
#include "app/ProgramState.h"
#include "core/FileArchive.h"
#include "core/Prompter.h"
#include "core/RuntimeError.h"
#include "core/TransferFile.h"
#include "core/VbText.h"
#include "hostdb/EngineSql.h"
#include "hostdb/JournalRecovery.h"
#include "hostdb/RemitraStore.h"
#include "hostdb/RentBackup.h"
#include "hostdb/RentPostingRecord.h"
#include "hostdb/WrittenRows.h"

#include <QDateTime>
#include <QFile>
#include <QLocale>

#include <map>

namespace ReversePosting {

namespace {

const QString kNothingChanged = u" Nothing was changed."_qs;

QString whenText(const QString &iso)
{
    const QDateTime at = QDateTime::fromString(iso, Qt::ISODateWithMs);
    if (!at.isValid())
        return iso;
    return VbText::shortDate(at.date()) + u' '
        + QLocale::system().toString(at.time(), QLocale::ShortFormat);
}

bool isPosted(const Journal::Line &line)
{
    return line.outcome == u"posted"_qs || line.outcome == u"part posted"_qs;
}

// A row of the run, as the user knows it.
QString describe(const Journal::Row &row)
{
    const QVariantMap &f = row.fields;
    const auto money = [](const QVariant &v) {
        return Currency::parse(v.toString()).value_or(Currency()).toDollarsParen();
    };
    const auto date = [](const QVariant &v) {
        return VbText::shortDate(QDate::fromString(v.toString(), Qt::ISODate));
    };
    QString text;
    if (row.table == u"Transactions"_qs) {
        text = u"The ledger transaction of tenant "_qs + f.value(u"TransTID"_qs).toString()
            + u" for "_qs + money(f.value(u"TransAmount"_qs)) + u" dated "_qs
            + date(f.value(u"TransDate"_qs));
    } else if (row.table == u"CheckDepPrinted"_qs) {
        text = u"The deposit number "_qs + f.value(u"CkNumber"_qs).toString() + u" of "_qs
            + money(f.value(u"CkAmount"_qs)) + u" dated "_qs + date(f.value(u"CkDate"_qs));
    } else if (row.table == u"SplitPrintedChecks"_qs) {
        text = u"The deposit line of tenant "_qs + f.value(u"CkPostToID"_qs).toString()
            + u" for "_qs + money(f.value(u"CkAmount"_qs));
    } else {
        const QString key
            = f.value(row.table == u"Units"_qs ? u"UTenantID"_qs : u"TenantID"_qs).toString();
        text = row.table == u"Units"_qs ? u"The unit of tenant "_qs + key : u"Tenant "_qs + key;
    }
    if (row.line > 0)
        text += u" (line "_qs + QString::number(row.line) + u" of the payment file)"_qs;
    return text;
}

QString whyRefused(const Journal::Row &row, const WrittenRows::Now &now)
{
    switch (now.state) {
    case WrittenRows::State::Changed:
        return describe(row) + u" was changed in Dwellix after it was posted (its "_qs + now.field
            + u" is now "_qs + (now.value.isNull() ? u"empty"_qs : now.value.toString()) + u")."_qs;
    case WrittenRows::State::Gone:
        return describe(row) + u" was changed or removed in Dwellix after it was posted."_qs;
    case WrittenRows::State::Alike:
        return describe(row)
            + u" cannot be told apart from other records in Dwellix that hold the very same "
              "values."_qs;
    case WrittenRows::State::Same:
        break;
    }
    return {};
}

// A balance row of the run: the same row whatever the entry.
QString balanceKey(const Journal::Row &row)
{
    return row.table + u'|' + row.handle.toString() + u'|' + WrittenRows::valuesKey(row);
}

struct Balance
{
    Journal::Row row;
    Currency delta; // what the run added in all
};

QString refuseText(const QString &reason)
{
    return u"This posting cannot be reversed. "_qs + reason + kNothingChanged;
}

void recordRefusal(
    ProgramState &state, MessageCapture &capture, const Journal::Run &run, const QString &reason)
{
    Journal::Entry entry;
    entry.kind = Journal::Kind::Reversal;
    entry.title = run.title;
    entry.fileSha256 = run.fileSha256;
    entry.reverses = run.id;
    const RemitraStore &store = state.store();
    RemitraStore::Transaction own(store);
    Journal journal(store);
    const qint64 id = journal.addRun(entry);
    journal.addResult(id, { Journal::Refused, {}, {}, {}, {}, reason });
    own.commit();
    capture.attach(id);
}

} // namespace

Summary summarize(Journal &journal, const Journal::Run &run)
{
    Summary s;
    for (const Journal::Line &line : journal.lines(run.id)) {
        if (!isPosted(line))
            continue;
        ++s.payments;
        s.total += Currency::parse(line.amount).value_or(Currency());
    }
    journal.forEachRow(run.id, [&](const Journal::Row &row) {
        if (row.change != HostWriteLog::Change::Added)
            return true;
        if (row.table == u"Transactions"_qs && row.fields.value(u"TransType"_qs) == u"E"_qs)
            s.fees += Currency::parse(row.fields.value(u"TransAmount"_qs).toString())
                          .value_or(Currency())
                          .abs();
        if (row.table == u"CheckDepPrinted"_qs) {
            s.deposit = true;
            s.depositNumber = row.fields.value(u"CkNumber"_qs).toLongLong();
            s.depositAmount
                = Currency::parse(row.fields.value(u"CkAmount"_qs).toString()).value_or(Currency());
        }
        return true;
    });
    return s;
}

QString refusal(Journal &journal, const Journal::Run &run)
{
    if (run.kind != Journal::Kind::RentPosting)
        return u"Only a rent posting can be reversed."_qs;
    const QString &state = run.result.state;
    if (state == Journal::Reversed) {
        return u"It was already reversed"_qs
            + (run.reversedBy ? u" (run "_qs + QString::number(run.reversedBy) + u')' : QString())
            + u" on "_qs + whenText(run.resultAt) + u'.';
    }
    if (state == Journal::RolledBack)
        return u"It never reached the Dwellix ledgers: its writes were rolled back."_qs;
    if (state == Journal::Pending)
        return u"Whether it reached the Dwellix ledgers is not known yet. Start Remitra again "
               "to settle it."_qs;
    if (state != Journal::Posted && state != Journal::Stopped)
        return u"It has no recorded result."_qs;
    for (const Journal::Run &later : journal.postingsOf(run.fileSha256)) {
        if (later.id <= run.id)
            continue;
        const QString &s = later.result.state;
        if (s == Journal::Posted || s == Journal::Stopped || s == Journal::Pending) {
            return u"The same payment file was posted again afterwards (run "_qs
                + QString::number(later.id) + u" of "_qs + whenText(later.at)
                + u"). Reverse that posting first."_qs;
        }
    }
    return {};
}

QString confirmationText(const Journal::Run &run, const Summary &s)
{
    QString text = u"Reverse the rent posting of "_qs + whenText(run.at) + u"?\r\rIt posted "_qs
        + QString::number(s.payments) + u" payment(s) totalling "_qs + s.total.toDollars()
        + u" to the Dwellix ledgers, "_qs
        + (s.fees.isZero() ? u"charged no management fees"_qs
                           : u"charged management fees of "_qs + s.fees.toDollars())
        + u", and "_qs
        + (s.deposit ? u"made deposit number "_qs + QString::number(s.depositNumber) + u" of "_qs
                    + s.depositAmount.toDollars()
                     : u"made no deposit"_qs)
        + u".\r\rReversing it takes out exactly what it wrote: its ledger transactions, its "
          "changes to the tenant and unit balances, and its deposit with the deposit's lines. "
          "Changes made in Dwellix since then stay as they are. Its payment file is then put "
          "back for review, so that the payments can be posted again.\r\rReverse this posting "
          "now?"_qs;
    return text;
}

bool canPutBack(ProgramState &state, const Journal::Run &run)
{
    if (run.kind != Journal::Kind::RentPosting || run.result.state != Journal::Reversed)
        return false;
    if (TransferFile::exists(state.pathOf(state.files.paymentDownload)))
        return false;
    return !Journal(state.store()).archiveOf(run.fileSha256, state.folder()).isEmpty();
}

namespace {

// The file back as the waiting payment file; "" when it was put back, else
// why not.
QString putFileBack(ProgramState &state, const Journal::Run &run, qint64 reversalRun)
{
    const QString target = state.pathOf(state.files.paymentDownload);
    // The very file may be waiting already (put back by a later run's
    // reversal).
    if (TransferFile::exists(target) && FileArchive::factsOf(target).sha256 == run.fileSha256)
        return {};
    if (TransferFile::exists(target))
        return u"Another Remitra Payment File is waiting to be posted, so the payments of this "
               "posting were not put back. Post or delete the waiting payments first, then use "
               "'Put Back Payment File' in History."_qs;
    Journal journal(state.store());
    const QString archive = journal.archiveOf(run.fileSha256, state.folder());
    if (archive.isEmpty())
        return u"The payment file of this posting is not in the \"archive\" folder any more, so "
               "it could not be put back."_qs;
    QFile copy(state.pathOf(archive));
    if (!copy.open(QIODevice::ReadOnly))
        throw RuntimeError::permissionDenied();
    const QByteArray bytes = copy.readAll();
    if (FileArchive::sha256(bytes) != run.fileSha256)
        return u"The copy of the payment file in the \"archive\" folder has changed, so it was "
               "not put back."_qs;
    TransferFile::writeAtomicBytes(target, bytes);
    journal.addFile(reversalRun ? reversalRun : run.id,
        { u"put back"_qs, state.files.paymentDownload, bytes.size(), run.fileSha256, archive });
    return {};
}

const QString kPutBack
    = u"The payments are waiting again in the Remitra Payment File: click 'Download and Post "
      "Rent Payments' on the main menu to review them and post them again."_qs;

} // namespace

bool putBack(ProgramState &state, qint64 runId)
{
    MessageCapture capture(state);
    Journal journal(state.store());
    const std::optional<Journal::Run> run = journal.run(runId);
    if (!run || run->kind != Journal::Kind::RentPosting || run->result.state != Journal::Reversed)
        return false;
    capture.attach(run->reversedBy ? run->reversedBy : runId);
    const QString problem = putFileBack(state, *run, run->reversedBy);
    state.prompter().notice(problem.isEmpty() ? kPutBack : problem, Title);
    return problem.isEmpty();
}

bool run(ProgramState &state, qint64 runId)
{
    MessageCapture capture(state);
    Prompter &prompter = state.prompter();
    HostDb &db = state.db();
    JournalRecovery::settle(db, state.store());
    Journal journal(state.store());
    const std::optional<Journal::Run> posting = journal.run(runId);
    if (!posting)
        return false;
    if (const QString reason = refusal(journal, *posting); !reason.isEmpty()) {
        recordRefusal(state, capture, *posting, reason);
        prompter.notice(refuseText(reason), Title);
        return false;
    }
    const Summary summary = summarize(journal, *posting);
    if (prompter.ask(confirmationText(*posting, summary), Title) != Prompter::Answer::Yes)
        return false;

    db.require(HostFeature::RentPosting);
    if (summary.deposit)
        db.require(HostFeature::Deposit);
    BusyCursor busy(prompter);
    try {
        RentBackup::write(db, state.folder());
    } catch (const RuntimeError &error) {
        busy.release();
        prompter.notice(
            RentBackup::notWrittenText(error.description()) + u'.' + kNothingChanged, Title);
        return false;
    }

    QList<int> postedLines, depositedLines;
    QList<Journal::Line> lines;
    for (Journal::Line line : journal.lines(runId)) {
        if (isPosted(line))
            postedLines << line.line;
        if (line.deposited)
            depositedLines << line.line;
        if (isPosted(line) || line.deposited) {
            line.outcome = u"reversed"_qs;
            lines << line;
        }
    }

    QString reason;
    qint64 reversal = 0;
    {
        HostDb::Transaction tx(db);
        WrittenRows host(db);
        // Rows alike in every field (engines without handles) go together.
        QHash<QString, int> alike;
        if (db.sql().handleColumns() == 0) {
            journal.forEachRow(runId, [&](const Journal::Row &row) {
                if (row.change == HostWriteLog::Change::Added)
                    ++alike[WrittenRows::valuesKey(row)];
                return true;
            });
        }
        const auto alikeOf = [&](const Journal::Row &row) {
            return row.handle.isNull() ? alike.value(WrittenRows::valuesKey(row), 1) : 1;
        };
        // First everything is checked, then everything is undone.
        std::map<QString, Balance> balances;
        journal.forEachRow(runId, [&](const Journal::Row &row) {
            if (row.change == HostWriteLog::Change::Added) {
                reason = whyRefused(row, host.added(row, alikeOf(row)));
            } else if (row.change == HostWriteLog::Change::Balance) {
                const Currency delta = Currency::parse(row.after.toString()).value_or(Currency())
                    - Currency::parse(row.before.toString()).value_or(Currency());
                auto [it, fresh] = balances.try_emplace(balanceKey(row), Balance { row, {} });
                it->second.delta += delta;
                if (fresh && !host.balance(row)) {
                    reason = describe(row)
                        + u" is no longer in Dwellix as it was, or holds no balance, so its "
                          "balance cannot be taken back."_qs;
                }
            }
            return reason.isEmpty();
        });
        if (reason.isEmpty()) {
            HostWriteLog undone;
            QSet<QString> removedAlike;
            journal.forEachRow(runId, [&](const Journal::Row &row) {
                if (row.change != HostWriteLog::Change::Added)
                    return true;
                undone.setLine(row.line);
                if (row.handle.isNull()) {
                    // Rows alike go in one statement, the first time they come.
                    const QString key = WrittenRows::valuesKey(row);
                    if (!removedAlike.contains(key)) {
                        host.remove(row, alikeOf(row));
                        removedAlike.insert(key);
                    }
                } else {
                    host.remove(row);
                }
                undone.removed(row.table, row.handle, row.fields);
                return true;
            });
            for (const auto &[key, b] : balances) {
                const Currency before = *host.balance(b.row);
                const Currency after = before - b.delta;
                host.setBalance(b.row, after);
                undone.setLine(b.row.line);
                undone.balance(b.row.table, b.row.handle, b.row.fields, b.row.field, before, after);
            }

            Journal::Entry entry;
            entry.kind = Journal::Kind::Reversal;
            entry.title = posting->title;
            entry.fileSha256 = posting->fileSha256;
            entry.reverses = runId;
            entry.lines = lines;
            entry.rows = &undone;
            entry.count = summary.payments;
            entry.total = summary.total;
            RentPostingRecord record(state.store());
            reversal = journal.commitPosting(
                tx, entry, { Journal::Posted, {}, {}, summary.payments, summary.total, {} }, [&] {
                    journal.addResult(runId, { Journal::Reversed, {}, {}, {}, {}, {} });
                    record.forget(posting->fileSha256, postedLines, depositedLines);
                });
        }
    }
    busy.release();
    if (!reason.isEmpty()) {
        recordRefusal(state, capture, *posting, reason);
        prompter.notice(refuseText(reason), Title);
        return false;
    }
    capture.attach(reversal);

    // The ledgers are free again before anything waits on the user.
    Journal::Run reversed = *posting;
    reversed.result.state = Journal::Reversed;
    const QString problem = putFileBack(state, reversed, reversal);
    prompter.notice(u"The rent posting was reversed: "_qs + QString::number(summary.payments)
            + u" payment(s) totalling "_qs + summary.total.toDollars()
            + u" were taken out of the Dwellix ledgers."_qs
            + (summary.deposit ? u" Its deposit was removed."_qs : QString()) + u"\r\r"_qs
            + (problem.isEmpty() ? kPutBack : problem),
        Title);
    return true;
}

} // namespace ReversePosting
