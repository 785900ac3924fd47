#include "rent/UpdateLedgers.h"

#include "app/ProgramState.h"
#include "core/Prompter.h"
#include "core/RuntimeError.h"
#include "hostdb/HostDb.h"
#include "hostdb/RentBackup.h"
#include "hostdb/RentLedger.h"
#include "hostdb/RentLookup.h"
#include "hostdb/RentPostingRecord.h"
#include "core/TransferFile.h"
#include "rent/Deposit.h"
#include "rent/PaymentFile.h"
#include "rent/PostPayments.h"

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
    return u'"' + VbText::Trim(text).remove(u'\r') + u'"';
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
    const bool fees = choices.postMgmtFees && PostPayments::managementFee(state).valid;
    std::optional<RentLookup::ReadScope> snapshot;
    std::optional<RentLedger> ledger;
    if (fees) {
        snapshot.emplace(state.db());
        ledger.emplace(state.db());
    }
    for (const RentPayment &row : rows) {
        if (!row.amount)
            return u"The amount "_qs + quoted(row.amountText) + u" on "_qs + lineText(row)
                + u" cannot be read."_qs;
        if (row.isoDate().isEmpty())
            return u"The date "_qs + quoted(row.date) + u" on "_qs + lineText(row)
                + u" cannot be read."_qs;
        if (!fees || !row.isRent())
            continue;
        const auto setting = ledger->ownerMgmtFee(RentPayment::key(row.ownerId()));
        if (setting && !VbText::Trim(*setting).isEmpty()
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

bool run(ProgramState &state, const RentPayments &rows, const PostingChoices &choices,
    QString fileSha256)
{
    if (TransferFile::exists(state.pathOf(state.PaymentDownloadName))) {
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

    RentPostingRecord record(state.store());
    const QString completedAt = record.completedAt(fileSha256);
    if (!completedAt.isEmpty()) {
        // Posted by an earlier run that could not move the file aside.
        if (TransferFile::exists(state.pathOf(state.PaymentDownloadName)))
            PaymentFile::moveAside(state);
        state.prompter().notice(kAlreadyPosted, u"Dwellix Remitra"_qs);
        return true;
    }
    if (!checkReadable(state, rows, choices))
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
        state.prompter().notice(u"A backup copy of the Dwellix data could not be written to the "
                                "\"backups\" folder ("_qs
                + error.description() + u")."_qs + kNothingPosted,
            kTitle);
        return false;
    }

    // What earlier runs on this file already wrote.
    const QHash<int, RentPostingRecord::Line> done = record.lines(fileSha256);
    RentPayments toPost;
    RentPayments toDeposit;
    for (const RentPayment &row : rows) {
        const RentPostingRecord::Line previous = done.value(row.line);
        if (previous.postedAt.isEmpty() || previous.missing != RentPostingRecord::Missing::Nothing)
            toPost.push_back(row);
        if (previous.depositedAt.isEmpty())
            toDeposit.push_back(row);
    }

    RentLedger ledger(db);
    PostPayments posting(state, ledger, toPost, choices);
    for (const RentPayment &row : toPost) {
        const RentPostingRecord::Line previous = done.value(row.line);
        if (!previous.postedAt.isEmpty())
            posting.resumeAt(row.line, previous.missing);
    }
    {
        HostDb::Transaction transaction(db);
        posting.run();
        // The deposit is made after a stop as well; the payments a deposit
        // already holds are not deposited again.
        const bool deposit = choices.createDeposit && !toDeposit.empty();
        if (deposit) {
            Deposit bankDeposit(state, ledger, toDeposit, choices);
            bankDeposit.CreateDeposit();
        }
        const auto writeRecord = [&] {
            // Attached, the host transaction holds these writes as well.
            std::optional<RemitraStore::Transaction> own;
            if (!state.store().attached())
                own.emplace(state.store());
            for (const PostPayments::Written &written : posting.written())
                record.recordPosted(fileSha256, written.line, written.missing);
            if (deposit) {
                for (const RentPayment &row : toDeposit)
                    record.recordDeposited(fileSha256, row.line);
            }
            if (!posting.failed())
                record.recordComplete(fileSha256);
            if (own)
                own->commit();
        };
        // Attached, the record commits with the ledgers. On a connection of
        // its own (Access host) it follows the host's commit: a stop between
        // the two leaves the ledgers posted without their record.
        if (state.store().attached()) {
            writeRecord();
            transaction.commit();
        } else {
            transaction.commit();
            writeRecord();
        }
    }

    busy.release();
    if (posting.failed()) {
        // The lines written before the stop are safe now; the message comes
        // once the database is free again.
        posting.reportStop();
        return false;
    }
    // The file is out of the way before anything waits on the user.
    if (TransferFile::exists(state.pathOf(state.PaymentDownloadName)))
        PaymentFile::moveAside(state);
    state.prompter().notice(u"Your Dwellix Ledgers are now updated."_qs, u"Dwellix Remitra"_qs);
    return true;
}

} // namespace UpdateLedgers
