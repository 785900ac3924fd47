#pragma once

class HostDb;
class RemitraStore;

// Settles the journal entries of postings that a program ended between
// their two commits. With the store on a connection of its own (the Access
// host) a posting writes its journal entry first, marked "pending", then
// commits the host, then writes its result and the store's records. A
// pending entry found later is settled from what the host holds: when the
// host holds the rows the run wrote (WrittenRows::holdsWrites), the result
// it was to have is added, with the records that go with it (the payments
// posted, a reversed posting marked reversed and its payments no longer
// posted); when not, the host rolled it back, and the entry says so.
// Attached to an SQLite host, nothing is ever pending.
namespace JournalRecovery {

// Start-up, and before anything reads what was posted. Cheap when nothing
// is pending (one read of the store).
void settle(const HostDb &host, const RemitraStore &store);

} // namespace JournalRecovery
