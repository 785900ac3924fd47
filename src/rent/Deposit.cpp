#include "rent/Deposit.h"

#include "app/ProgramState.h"
#include "core/Prompter.h"
#include "hostdb/RentLedger.h"
#include "rent/PostPayments.h"

#include <QDate>

Deposit::Deposit(ProgramState &state, RentLedger &ledger, const RentPayments &rows,
    const PostingChoices &choices)
    : m_state(state)
    , m_ledger(ledger)
    , m_rows(rows)
    , m_choices(choices)
{
}

bool Deposit::createDeposit()
{
    m_total = Currency();
    RentLedger::Deposit deposit;
    deposit.date = QDate::currentDate().toString(Qt::ISODate);
    deposit.number = RentPayment::longValue(VbText::val(m_choices.depositNumber));
    m_ledger.atLine(0);
    m_depositId = m_ledger.addDeposit(deposit);

    createSplits();

    return m_ledger.setDepositAmount(m_depositId, m_total);
}

void Deposit::showNotFound(ProgramState &state)
{
    state.prompter().notice(u"Deposit Not found"_qs, u"Remitra"_qs, Prompter::Icon::None);
}

void Deposit::createSplits()
{
    const AccountSetting rent = PostPayments::rentIncome(m_state.account);
    const AccountSetting late = PostPayments::lateFee(m_state.account);
    const QString defaultRemark = PostPayments::rentDefaultRemark(m_state.account);
    for (const RentPayment &row : m_rows) {
        m_ledger.atLine(row.line);
        const Currency amount = row.amount.value_or(Currency()).abs();
        RentLedger::Split split;
        split.depositId = m_depositId;
        split.checkNumber = row.checkValue();
        split.amount = amount;
        split.accountId = RentPayment::longValue(rent.accountId);
        split.postToId = RentPayment::longValue(row.tenantId());
        split.remark = m_choices.remarkFor(row.method, defaultRemark);
        split.postTo = row.isLateFee() ? late.postingCode : rent.postingCode;
        m_ledger.addSplit(split);
        m_total += amount;
    }
}
