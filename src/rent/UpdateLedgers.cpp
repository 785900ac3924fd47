#include "rent/UpdateLedgers.h"

#include "app/MessageCapture.h"
#include "app/ProgramState.h"
#include "core/FileArchive.h"
#include "core/Prompter.h"
#include "core/RuntimeError.h"
#include "core/TransferFile.h"
#include "hostdb/HostDb.h"
#include "hostdb/Journal.h"
#include "hostdb/JournalRecovery.h"
#include "hostdb/RentBackup.h"
#include "hostdb/RentLedger.h"
#include "hostdb/RentLookup.h"
#include "hostdb/RentPostingRecord.h"
#include "rent/Deposit.h"
#include "rent/DuplicateGuard.h"
#include "rent/PaymentFile.h"
#include "rent/PostPayments.h"

#include <QSet>

#include <algorithm>
#include <optional>

namespace UpdateLedgers {

namespace {

const QString kTitle = u"Remitra"_qs;
const QString kNothingPosted = u" Nothing was posted to the Dwellix Ledgers."_qs;
const QString kFileChanged
    = u"The Remitra Payment File has changed since this screen read it. Close this screen and "
      "open it again to see the payments it holds now."_qs;
const QString kAlreadyPosted
    = u"These Remitra payments were already posted to the Dwellix Ledgers. They were not posted "
      "again."_qs;

QString quoted(const QString &text)
{
    return u'"' + VbText::trim(text).remove(u'\r') + u'"';
}

QString lineText(const RentPayment &row)
{
    return u"line "_qs + QString::number(row.line) + u" of the Remitra Payment File"_qs;
}

} // namespace

namespace {

// The first row whose values cannot be read, as a sentence; "" when none.
QString firstUnreadable(
    ProgramState &state, const RentPayments &rows, const PostingChoices &choices)
{
    const bool fees = choices.postMgmtFees && PostPayments::managementFee(state.account).valid;
    std::optional<RentLookup::ReadScope> snapshot;
    std::optional<RentLedger> ledger;
    if (fees) {
        snapshot.emplace(state.db());
        ledger.emplace(state.db());
        ledger->readAhead({}, PostPayments::feeOwnerIds(rows));
    }
    IsoDates isoDates;
    for (const RentPayment &row : rows) {
        if (!row.amount)
            return u"The amount "_qs + quoted(row.amountText) + u" on "_qs + lineText(row)
                + u" cannot be read."_qs;
        if (isoDates.of(row).isEmpty())
            return u"The date "_qs + quoted(row.date) + u" on "_qs + lineText(row)
                + u" cannot be read."_qs;
        if (!fees || !row.isRent())
            continue;
        const auto setting = ledger->ownerMgmtFee(RentPayment::key(row.ownerId()));
        if (setting && !VbText::trim(*setting).isEmpty()
            && !PostPayments::managementFeeFor(*setting, *row.amount)) {
            return u"The management fee "_qs + quoted(*setting) + u" of owner "_qs
                + RentPayment::idText(row.ownerId()) + u" (for the payment on "_qs + lineText(row)
                + u") cannot be read."_qs;
        }
    }
    return {};
}

} // namespace

bool checkReadable(ProgramState &state, const RentPayments &rows, const PostingChoices &choices)
{
    const QString problem = firstUnreadable(state, rows, choices);
    if (problem.isEmpty())
        return true;
    state.prompter().notice(problem + kNothingPosted, kTitle);
    return false;
}

namespace {

// The payment file as the journal names it: with its copy in archive/ (the
// one the download made, or a new one when there is none).
Journal::File postedFile(ProgramState &state, const QString &fileSha256)
{
    Journal::File file { u"posted"_qs, state.files.paymentDownload, 0, fileSha256, {} };
    const QString path = state.pathOf(state.files.paymentDownload);
    file.archive = Journal(state.store()).archiveOf(fileSha256, state.folder());
    if (TransferFile::exists(path)) {
        const FileArchive::Facts facts = FileArchive::factsOf(path);
        file.size = facts.size;
        if (file.archive.isEmpty() && facts.sha256 == fileSha256)
            file.archive = FileArchive::keep(state.folder(), path);
    }
    return file;
}

Journal::Line journalLine(const RentPayment &row, const QString &outcome, IsoDates &isoDates)
{
    Journal::Line line;
    line.line = row.line;
    line.tenantId = RentPayment::longValue(row.tenantId());
    line.amount = row.amount.value_or(Currency()).abs().toPlainText();
    line.date = isoDates.of(row);
    line.checkNumber = row.checkValue().toString();
    line.transType = row.transType.trimmed();
    line.text = row.tenantName + u", "_qs + row.address;
    line.outcome = outcome;
    return line;
}

} // namespace

bool run(ProgramState &state, const RentPayments &rows, const PostingChoices &choices,
    QString fileSha256)
{
    // Every message of the run belongs to its journal entry.
    MessageCapture capture(state);
    if (TransferFile::exists(state.pathOf(state.files.paymentDownload))) {
        const QString onDisk = PaymentFile::fileSha256(state);
        if (fileSha256.isEmpty())
            fileSha256 = onDisk;
        else if (onDisk != fileSha256) {
            state.prompter().notice(kFileChanged + kNothingPosted, kTitle);
            return false;
        }
    } else if (fileSha256.isEmpty()) {
        throw RuntimeError::fileNotFound();
    }

    // A posting that a program ended between its two commits (store of its
    // own) is settled first, so its payments count as posted.
    JournalRecovery::settle(state.db(), state.store());
    RentPostingRecord record(state.store());
    const QString completedAt = record.completedAt(fileSha256);
    if (!completedAt.isEmpty()) {
        // Posted by an earlier run that could not move the file aside.
        if (TransferFile::exists(state.pathOf(state.files.paymentDownload)))
            PaymentFile::moveAside(state);
        state.prompter().notice(kAlreadyPosted, u"Dwellix Remitra"_qs);
        return true;
    }
    // Payments an earlier posting holds already are left out on the user's
    // word; nothing is asked when there are none.
    const DuplicateGuard::Choice duplicates = DuplicateGuard::confirm(state, rows, fileSha256);
    const RentPayments &kept = duplicates.rowsToPost(rows);
    if (!checkReadable(state, kept, choices))
        return false;
    HostDb &db = state.db();
    // A field the posting needs and the host lacks stops it before anything.
    db.require(HostFeature::RentPosting);
    if (choices.createDeposit)
        db.require(HostFeature::Deposit);
    BusyCursor busy(state.prompter());
    try {
        RentBackup::write(db, state.folder());
    } catch (const RuntimeError &error) {
        state.prompter().notice(
            RentBackup::notWrittenText(error.description()) + u'.' + kNothingPosted, kTitle);
        return false;
    }
    const Journal::File file = postedFile(state, fileSha256);

    // What earlier runs on this file already wrote.
    const QHash<int, RentPostingRecord::Line> done = record.lines(fileSha256);
    // A first posting of the file takes every kept row (no copies of a
    // large file); a later one only what is still missing.
    RentPayments laterPost;
    RentPayments laterDeposit;
    if (!done.isEmpty()) {
        for (const RentPayment &row : kept) {
            const RentPostingRecord::Line previous = done.value(row.line);
            if (previous.postedAt.isEmpty()
                || previous.missing != RentPostingRecord::Missing::Nothing)
                laterPost.push_back(row);
            if (previous.depositedAt.isEmpty())
                laterDeposit.push_back(row);
        }
    }
    const RentPayments &toPost = done.isEmpty() ? kept : laterPost;
    const RentPayments &toDeposit = done.isEmpty() ? kept : laterDeposit;

    RentLedger ledger(db);
    HostWriteLog written;
    written.keepSlim(Journal::readsRowsFromHost(db, state.store()) ? &db : nullptr);
    ledger.setLog(&written);
    PostPayments posting(state, ledger, toPost, choices);
    for (const RentPayment &row : toPost) {
        const RentPostingRecord::Line previous = done.value(row.line);
        if (!previous.postedAt.isEmpty())
            posting.resumeAt(row.line, previous.missing);
    }
    qint64 runId = 0;
    bool depositNotFound = false;
    {
        HostDb::Transaction transaction(db);
        posting.run();
        // The deposit is made after a stop as well; the payments a deposit
        // already holds are not deposited again.
        const bool deposit = choices.createDeposit && !toDeposit.empty();
        if (deposit) {
            Deposit bankDeposit(state, ledger, toDeposit, choices);
            depositNotFound = !bankDeposit.createDeposit();
        }
        // What the posting read of the ledgers is freed before the journal
        // entry is written: a large posting's peak memory.
        ledger.dropReadAhead();

        // The journal entry: each payment this run touched, what it wrote
        // and the file it came from.
        QHash<int, PostPayments::Missing> posted;
        for (const PostPayments::Written &w : posting.written())
            posted.insert(w.line, w.missing);
        QSet<int> toPostLines;
        for (const RentPayment &row : toPost)
            toPostLines.insert(row.line);
        QSet<int> deposited;
        if (deposit) {
            for (const RentPayment &row : toDeposit)
                deposited.insert(row.line);
        }
        Journal::Entry entry;
        entry.kind = Journal::Kind::RentPosting;
        entry.title = state.files.paymentDownload;
        entry.fileSha256 = fileSha256;
        entry.files = { file };
        entry.rows = &written;
        qint64 count = 0;
        Currency total;
        IsoDates isoDates;
        for (const RentPayment &row : rows) {
            Journal::Line line;
            if (const auto it = duplicates.earlier.constFind(row.line);
                it != duplicates.earlier.cend()) {
                line = journalLine(row, u"left out"_qs, isoDates);
                line.text += u" (the same as line "_qs + QString::number(it->line) + u" of run "_qs
                    + QString::number(it->runId) + u')';
            } else if (const auto it = posted.constFind(row.line); it != posted.cend()) {
                const bool whole = it.value() == PostPayments::Missing::Nothing;
                line = journalLine(row, whole ? u"posted"_qs : u"part posted"_qs, isoDates);
                line.missing = RentPostingRecord::missingText(it.value());
                ++count;
                total += row.amount.value_or(Currency()).abs();
            } else if (deposited.contains(row.line)) {
                line = journalLine(row, u"deposited"_qs, isoDates);
            } else if (toPostLines.contains(row.line)) {
                line = journalLine(row, u"not posted"_qs, isoDates);
            } else {
                continue; // posted by an earlier run, nothing done now
            }
            line.deposited = deposited.contains(row.line);
            entry.lines.append(line);
        }
        entry.count = count;
        entry.total = total;
        const Journal::Result result { posting.failed() ? Journal::Stopped : Journal::Posted, {},
            {}, count, total, posting.stopMessage() };
        // The record of which payments were posted commits with the ledgers
        // and the journal (see Journal::commitPosting for the Access host).
        runId = Journal(state.store()).commitPosting(transaction, entry, result, [&] {
            QList<std::pair<int, RentPostingRecord::Missing>> postedLines;
            postedLines.reserve(qsizetype(posting.written().size()));
            for (const PostPayments::Written &w : posting.written())
                postedLines.append({ w.line, w.missing });
            record.recordPosted(fileSha256, postedLines);
            QList<int> depositedLines = deposited.values();
            std::sort(depositedLines.begin(), depositedLines.end());
            record.recordDeposited(fileSha256, depositedLines);
            if (!posting.failed())
                record.recordComplete(fileSha256);
        });
    }
    capture.attach(runId);

    busy.release();
    if (posting.failed()) {
        // The lines written before the stop are safe now; the messages come
        // once the database is free again.
        if (depositNotFound)
            Deposit::showNotFound(state);
        posting.reportStop();
        return false;
    }
    // The file is out of the way before anything waits on the user.
    if (TransferFile::exists(state.pathOf(state.files.paymentDownload)))
        PaymentFile::moveAside(state);
    if (depositNotFound)
        Deposit::showNotFound(state);
    state.prompter().notice(u"Your Dwellix Ledgers are now updated."_qs, u"Dwellix Remitra"_qs);
    return true;
}

} // namespace UpdateLedgers
