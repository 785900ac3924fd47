#include "uploads/SetupFile.h"

#include "app/ProgramState.h"
#include "core/RuntimeError.h"

// Placeholder until this job is built.
void BuildSetupFile(ProgramState &) { throw RuntimeError(5, u"not built yet"_qs); }
