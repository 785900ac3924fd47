#pragma once

#include "hostdb/EnrolmentQueries.h"

class RemitraStore;

// Enrolment uploads owed to the processor, kept in Remitra's own store: a
// roster is marked before one of its flags is saved in the host database,
// and cleared only once the processor has taken an upload of that roster,
// so a saved flag always reaches the processor, however the program or the
// send fails in between.
namespace PendingUploadRecord {

using Roster = EnrolmentQueries::Roster;

void mark(const RemitraStore &store, Roster roster);
bool isPending(const RemitraStore &store, Roster roster);
void clear(const RemitraStore &store, Roster roster);

} // namespace PendingUploadRecord
