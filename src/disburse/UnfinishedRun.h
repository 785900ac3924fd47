#pragma once

#include "hostdb/PaymentRow.h"

#include <QString>

class ProgramState;

// Distribution runs that did not reach their end (see DistributionRecord):
// a run answered by the processor whose accepted checks were not posted (the
// program or the machine stopped, or the database failed, while they were
// being posted, or while the result was being reported), and runs whose
// answer was never recorded.
namespace UnfinishedRun {

enum class Outcome {
    Clear, // no answered run left to post
    Posted, // accepted checks of an answered run were posted now
    Declined, // the user chose to leave them unposted for now
};

// Finds answered runs. When some of their accepted checks are still among
// the entered checks, offers to post them now, as they were sent (and posts
// them on Yes); when none is left, closes the run quietly.
Outcome settle(ProgramState &state, bool &stopRejections);

// Tells the user about checks sent by a run without a recorded answer that
// are still among the entered checks; nothing when there are none.
void reportUnanswered(ProgramState &state);

// True when a run waits to be posted or a check waits for the user to check
// with the processor.
bool present(const ProgramState &state);

// A check as a line of a message: payee, amount, date and remark.
QString describe(const PaymentRow &check);
// A recorded time as the user reads it.
QString sentText(const QString &isoTime);

} // namespace UnfinishedRun
