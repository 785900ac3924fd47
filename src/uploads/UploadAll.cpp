#include "uploads/UploadAll.h"

#include "app/ProgramState.h"
#include "core/Prompter.h"
#include "hostdb/PendingUploadRecord.h"
#include "processor/ExchangeJournal.h"
#include "processor/ProcessorCall.h"
#include "uploads/SetupFile.h"
#include "uploads/TenantUpload.h"
#include "uploads/UploadTexts.h"

bool uploadAll(ProgramState &state)
{
    if (state.login.missing) {
        state.prompter().notice(UploadTexts::loginNotice(), UploadTexts::loginTitle());
        return false;
    }
    buildSetupFile(state);
    buildTenantUpload(state);
    // Both files go out from disk as they are: the portfolio is never held
    // in memory.
    const CallText setup = CallText::file(state.pathOf(state.files.setupUpload));
    const CallText tenants = CallText::file(state.pathOf(state.files.tenantUpload));
    ExchangeJournal exchange(state, Journal::Kind::UploadAll,
        { { state.files.setupUpload, state.files.tenantUpload }, {}, {}, {} });
    ProcessorCall::transmit(state, setup, tenants, exchange.keep());
    // Every tenant's flag went with it: no tenant change is owed any more.
    if (state.lastResult.text == u"True"_qs && state.lastResult.code == 200)
        PendingUploadRecord::clear(state.store(), PendingUploadRecord::Roster::Tenants);
    return true;
}
