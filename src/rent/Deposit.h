#pragma once

#include "rent/PostingChoices.h"
#include "rent/RentPayment.h"

class ProgramState;
class RentLedger;

// The bank deposit of a posting run: one "DEPOSIT" record in the check and
// deposit register with one split line per payment row, its amount the sum
// of the payments.
class Deposit
{
public:
    Deposit(ProgramState &state, RentLedger &ledger, const RentPayments &rows,
        const PostingChoices &choices);

    // Writes the deposit, its splits, then stores the total on it. False
    // when the deposit could not be found again (its amount then stays 0):
    // the caller tells the user once the database is free again
    // (showNotFound()).
    bool createDeposit();
    static void showNotFound(ProgramState &state);
    // Writes the split lines and adds each absolute amount to the running total.
    void createSplits();

    Currency runningTotal() const { return m_total; }
    qint64 depositId() const { return m_depositId; }

private:
    ProgramState &m_state;
    RentLedger &m_ledger;
    const RentPayments &m_rows;
    const PostingChoices &m_choices;
    qint64 m_depositId = 0;
    Currency m_total;
};
