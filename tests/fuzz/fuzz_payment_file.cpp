// The review screen's load of a downloaded rent payment file: reading,
// matching each payment to owner, unit and tenant, the total, and the check
// for payments the ledger already holds.
#include "FuzzSite.h"

#include "core/RuntimeError.h"
#include "hostdb/RentLookup.h"
#include "rent/PaymentFile.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FuzzSite &site = FuzzSite::get();
    ProgramState &state = site.state();
    site.writeFile(state.files.paymentDownload, data, size);
    try {
        PaymentFile::LoadResult result = PaymentFile::load(state);
        if (result.status == PaymentFile::LoadStatus::Loaded && !result.rows.empty()) {
            RentLookup lookup(state.db());
            PaymentFile::markPosted(lookup, result.rows);
        }
    } catch (const RuntimeError &) {
        // An untrapped runtime error is the program's own reaction.
    }
    site.prompter().clear();
    return 0;
}
