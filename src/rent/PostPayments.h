#pragma once

#include "rent/AccountSetting.h"
#include "rent/PostingChoices.h"
#include "rent/RentPayment.h"

class ProgramState;
class RentLedger;

// Writes every payment row as an income line on the tenant's ledger, raises
// the balances its account's posting code names, and, when asked for, charges
// the owner's management fee on each rent payment. Stops at the first problem
// with a message; the lines written before the stop stay written (the caller
// commits them).
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

    // The account settings the posting and the deposit read from IdItems.
    static AccountSetting rentIncome(const ProgramState &state);
    static AccountSetting lateFee(const ProgramState &state);
    static AccountSetting managementFee(const ProgramState &state);
    static QString rentDefaultRemark(const ProgramState &state);
    static QString lateDefaultRemark(const ProgramState &state);

    // The management fee on a rent payment for an owner's OMgmtFee setting:
    // a flat amount, or "n%" of the payment (4 decimal places, not rounded to
    // cents); always negative or zero. nullopt when the setting cannot be read.
    static std::optional<Currency> managementFeeFor(const QString &ownerSetting, Currency payment);

private:
    bool stop(const QString &message);
    bool postRow(const RentPayment &row);

    ProgramState &m_state;
    RentLedger &m_ledger;
    const RentPayments &m_rows;
    const PostingChoices &m_choices;
    AccountSetting m_rent;
    AccountSetting m_late;
    bool m_failed = false;
    QString m_stopMessage;
};
