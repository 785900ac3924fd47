#include "rent/UpdateLedgers.h"

#include "app/ProgramState.h"
#include "core/Prompter.h"
#include "core/RuntimeError.h"
#include "hostdb/HostDb.h"
#include "hostdb/RentBackup.h"
#include "hostdb/RentLedger.h"
#include "hostdb/RentLookup.h"
#include "rent/Deposit.h"
#include "rent/PaymentFile.h"
#include "rent/PostPayments.h"

#include <optional>

namespace UpdateLedgers {

namespace {

const QString kTitle = u"Remitra"_qs;
const QString kNothingPosted = u" Nothing was posted to the Dwellix Ledgers."_qs;

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

bool run(ProgramState &state, const RentPayments &rows, const PostingChoices &choices)
{
    if (!checkReadable(state, rows, choices))
        return false;
    HostDb &db = state.db();
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

    RentLedger ledger(db);
    PostPayments posting(state, ledger, rows, choices);
    std::optional<HostDb::Transaction> transaction(std::in_place, db);
    posting.run();
    if (posting.failed()) {
        // The lines written before the stop are kept; the message comes once
        // they are safe and the database is free again.
        transaction->commit();
        transaction.reset();
        posting.reportStop();
    }
    if (choices.createDeposit) {
        if (!transaction)
            transaction.emplace(db);
        Deposit deposit(state, ledger, rows, choices);
        deposit.CreateDeposit();
    }
    if (transaction)
        transaction->commit();

    busy.release();
    if (posting.failed())
        return false;
    state.prompter().notice(u"Your Dwellix Ledgers are now updated."_qs, u"Dwellix Remitra"_qs);
    PaymentFile::moveAside(state);
    return true;
}

} // namespace UpdateLedgers
