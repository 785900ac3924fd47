#pragma once

#include "hostdb/EnrolmentQueries.h"

class ProgramState;

// The upload an enrolment screen sends when it closes after a change: the
// tenant upload, the owner file or the vendor file. What is owed is kept
// (PendingUploadRecord) until the processor has taken it.
namespace EnrolmentUpload {

using Roster = EnrolmentQueries::Roster;

// Builds and sends the roster's upload and reports the result; the owed
// mark is cleared once the processor answered 200.
void send(ProgramState &state, Roster roster);

// True when the roster has a change that has not reached the processor.
bool owed(const ProgramState &state, Roster roster);

// Sends every roster whose upload is still owed (at start-up, once the
// transfer file names are built).
void sendOwed(ProgramState &state);

} // namespace EnrolmentUpload
