#pragma once

#include "rent/PostingChoices.h"
#include "rent/RentPayment.h"

class ProgramState;

// "Update Dwellix Ledgers NOW": posts the reviewed payments, makes the bank
// deposit when chosen, and after a clean run tells the user and moves the
// payment file aside. The whole run is one database transaction, committed
// at the end and at a stop (the lines written before a stop are kept), after
// a backup copy of the host database has been written.
namespace UpdateLedgers {

// True when every payment was posted: the file has been moved aside and the
// screen may close. False after a stop: the file stays where it is.
bool run(ProgramState &state, const RentPayments &rows, const PostingChoices &choices);

// Checks, before anything is written, that every amount and date (and, when
// management fees are charged, every owner's fee setting) can be read; tells
// the user about the first that cannot, naming its line of the payment file.
bool checkReadable(ProgramState &state, const RentPayments &rows, const PostingChoices &choices);

} // namespace UpdateLedgers
