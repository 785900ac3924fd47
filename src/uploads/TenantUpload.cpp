#include "uploads/TenantUpload.h"

#include "app/ProgramState.h"
#include "core/RuntimeError.h"

// Placeholder until this job is built.
void BuildTenantUpload(ProgramState &) { throw RuntimeError(5, u"not built yet"_qs); }
void SendTenantUpload(ProgramState &) { throw RuntimeError(5, u"not built yet"_qs); }
