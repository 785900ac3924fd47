#pragma once

class ProgramState;

// A distribution run that was answered by the processor but not finished
// (the program or the machine stopped, or the database failed, while the
// accepted checks were being posted). It is recognised by its distribution
// file, which a finished run renames, and a response file at least as new.
namespace UnfinishedRun {

enum class Outcome {
    Clear, // no unfinished run (any left with nothing to post was completed)
    Posted, // its accepted checks were posted now
    Declined, // the user chose to leave them unposted for now
};

// Looks for an unfinished run. When some of its accepted checks are still
// among the entered checks, offers to post them now (and posts them on Yes);
// when none is left, completes the run quietly.
Outcome settle(ProgramState &state, bool &stopRejections);

// True when an unfinished run is on disk.
bool present(const ProgramState &state);

} // namespace UnfinishedRun
