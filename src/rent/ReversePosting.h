#pragma once

#include "core/Currency.h"
#include "hostdb/Journal.h"

class ProgramState;

// Undoes a rent posting run from its journal entry: removes the ledger
// transactions, the deposit and the deposit's split lines it added, and
// takes back the balance changes it made on tenants and units, in one host
// transaction with the journal entry of the reversal, which also marks the
// run reversed and tells the posting record that its payments are no longer
// posted. Then the run's payment file is put back from the archive as the
// waiting payment file (unless one is waiting), to be reviewed and posted
// again.
//
// What Dwellix did since is never undone. A row the run added must hold
// exactly what the run wrote, or the reversal is refused and names it. A
// balance is taken back by subtracting what the run added, so whatever
// changed it since stays; it is refused only when its row is gone, belongs
// to another tenant now, or holds no amount. A run already reversed, one
// that never reached the ledgers, and one whose payment file was posted
// again afterwards (that later posting must be reversed first) are refused
// as well.
namespace ReversePosting {

struct Summary
{
    qint64 payments = 0;
    Currency total;
    Currency fees; // the management fee lines, as a positive amount
    bool deposit = false;
    qint64 depositNumber = 0;
    Currency depositAmount;
};
Summary summarize(Journal &journal, const Journal::Run &run);

// "" when the run may be reversed; else why not.
QString refusal(Journal &journal, const Journal::Run &run);

QString confirmationText(const Journal::Run &run, const Summary &summary);
inline const QString Title = u"Reverse Posting"_qs;

// Asks, reverses and tells the user. True when the run was reversed.
bool run(ProgramState &state, qint64 runId);

// Puts a reversed run's payment file back as the waiting payment file, when
// none is waiting; tells the user either way. True when it was put back.
bool putBack(ProgramState &state, qint64 runId);
// Whether putBack() has a file to put back now.
bool canPutBack(ProgramState &state, const Journal::Run &run);

} // namespace ReversePosting
