#include "uploads/OwnerFile.h"

#include "app/ProgramState.h"
#include "core/RuntimeError.h"

// Placeholder until this job is built.
void UploadOwnerFile(ProgramState &) { throw RuntimeError(5, u"not built yet"_qs); }
