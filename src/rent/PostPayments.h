#pragma once

#include "core/RunSettings.h"
#include "hostdb/RentLedger.h"
#include "hostdb/RentPostingRecord.h"
#include "rent/AccountSetting.h"
#include "rent/PostingChoices.h"
#include "rent/RentPayment.h"

#include <span>

class ProgramState;

// Writes every payment row as an income line on the tenant's ledger, raises
// the balances its account's posting code names, and, when asked for, charges
// the owner's management fee on each rent payment. Stops at the first problem
// with a message; the lines written before the stop stay written (the caller
// commits them), and written() tells which rows reached the ledger and what
// the row of the stop still lacks, for the posting record.
class PostPayments
{
public:
    PostPayments(ProgramState &state, RentLedger &ledger, const RentPayments &rows,
        const PostingChoices &choices);

    // Runs the posting; false (and failed()) when it stopped on an error.
    bool run();
    bool failed() const { return m_failed; }
    // Shows the message of the stop, if there was one.
    void reportStop();
    const QString &stopMessage() const { return m_stopMessage; }

    using Missing = RentPostingRecord::Missing;
    // A row that an earlier run left half-posted is taken up where it
    // stopped: only the tenant's balance and the fee, or only the fee.
    void resumeAt(int line, Missing missing) { m_resume.insert(line, missing); }
    struct Written
    {
        int line = 0;
        Missing missing = Missing::Nothing; // what the row still lacks
    };
    // The rows that reached the ledger in this run, in order.
    const QList<Written> &written() const { return m_written; }

    // The account settings the posting and the deposit read.
    static AccountSetting rentIncome(const AccountSettings &account);
    static AccountSetting lateFee(const AccountSettings &account);
    static AccountSetting managementFee(const AccountSettings &account);
    static QString rentDefaultRemark(const AccountSettings &account);
    static QString lateDefaultRemark(const AccountSettings &account);

    // The management fee on a rent payment for an owner's OMgmtFee setting:
    // a flat amount, or "n%" of the payment (4 decimal places, not rounded to
    // cents); always negative or zero. nullopt when the setting cannot be read.
    static std::optional<Currency> managementFeeFor(const QString &ownerSetting, Currency payment);
    // The owners whose fee settings a posting of these rows looks up: those
    // of the rent payments, where the id is a whole number.
    static QList<qint64> feeOwnerIds(std::span<const RentPayment> rows);
    // Payments whose look-ups are read at once, a chunk at a time (run()).
    static inline std::size_t readAheadChunk = 8192;

private:
    bool stop(const QString &message);
    bool postRow(const RentPayment &row);
    bool postFee(const RentPayment &row, const RentLedger::Line &line);

    ProgramState &m_state;
    RentLedger &m_ledger;
    const RentPayments &m_rows;
    const PostingChoices &m_choices;
    AccountSetting m_rent;
    AccountSetting m_late;
    IsoDates m_isoDates;
    bool m_failed = false;
    QString m_stopMessage;
    QHash<int, Missing> m_resume;
    QList<Written> m_written;
};
