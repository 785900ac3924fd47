#include "processor/RentDownload.h"

#include "app/ProgramState.h"
#include "core/RuntimeError.h"

// Placeholder until this job is built.
void CheckForPaymentFile(ProgramState &) {}
void DownloadPaymentFile(ProgramState &) {}
