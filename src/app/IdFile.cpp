#include "app/IdFile.h"

#include "app/ProgramState.h"
#include "core/RuntimeError.h"

// Placeholder until this job is built.
void LoadIDFile(ProgramState &) {}
