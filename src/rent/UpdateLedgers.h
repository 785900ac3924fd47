#pragma once

#include "rent/PostingChoices.h"
#include "rent/RentPayment.h"

class ProgramState;

// "Update Dwellix Ledgers NOW": posts the reviewed payments, makes the bank
// deposit when chosen, and after a clean run moves the payment file aside
// and tells the user. After a backup copy of the host database, the whole
// run (payments, fees, deposit, and the record of which payments were
// posted) is one database transaction, committed before any message waits;
// the lines written before a stop are kept. The record makes every payment
// post once: a run after a stop posts only what is still missing and
// deposits only what no deposit holds yet, and a file whose payments are all
// posted is moved aside (now, or at the next start if the program ends
// first) and never offered again.
namespace UpdateLedgers {

// True when every payment is posted: the file has been moved aside and the
// screen may close. False after a stop: the file stays where it is.
// fileSha256: the SHA-256 of the payment file the rows were read from (the
// file on disk when empty); rows of a file that has changed since are not
// posted.
bool run(ProgramState &state, const RentPayments &rows, const PostingChoices &choices,
    QString fileSha256 = {});

// Checks, before anything is written, that every amount and date (and, when
// management fees are charged, every owner's fee setting) can be read; tells
// the user about the first that cannot, naming its line of the payment file.
bool checkReadable(ProgramState &state, const RentPayments &rows, const PostingChoices &choices);

} // namespace UpdateLedgers
