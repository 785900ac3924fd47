#include "uploads/EnrolmentUpload.h"

#include "app/ProgramState.h"
#include "hostdb/PendingUploadRecord.h"
#include "uploads/OwnerFile.h"
#include "uploads/TenantUpload.h"
#include "uploads/VendorFile.h"

namespace EnrolmentUpload {

void send(ProgramState &state, Roster roster)
{
    // A send that never reaches the processor (no file to send) must not
    // count as taken because of an earlier call's result.
    state.lastResult.text.clear();
    state.lastResult.code = 0;
    switch (roster) {
    case Roster::Tenants:
        buildTenantUpload(state);
        sendTenantUpload(state);
        break;
    case Roster::Owners:
        uploadOwnerFile(state);
        break;
    case Roster::Vendors:
        uploadVendorFile(state);
        break;
    }
    // Taken by the processor, or nothing to send (no rows on the roster).
    if ((state.lastResult.text == u"True"_qs && state.lastResult.code == 200)
        || state.lastResult.text.isEmpty())
        PendingUploadRecord::clear(state.store(), roster);
}

bool owed(const ProgramState &state, Roster roster)
{
    return PendingUploadRecord::isPending(state.store(), roster);
}

void sendOwed(ProgramState &state)
{
    for (const Roster roster : { Roster::Tenants, Roster::Owners, Roster::Vendors }) {
        if (owed(state, roster))
            send(state, roster);
    }
}

} // namespace EnrolmentUpload
