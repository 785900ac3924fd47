#pragma once

#include "core/RunSettings.h"
#include "processor/CallText.h"

#include <QString>

#include <functional>

class ProgramState;

// One exchange with the processor, in the sequence every caller follows:
// a fresh client, the wait cursor, the URL, user and password of
// state.login, the call, state.lastResult.text "True"/"False", the pointer
// back, state.lastResult.code (a code outside 16 bits raises the overflow
// error), and reportResult.
//
// The processor cannot take back what it has done, so a caller whose answer
// carries money (rent handed over, payments accepted) gives a `keep` step:
// it runs with the outcome after the call and before the report, so the
// answer is on disk before any message waits on the user.
namespace ProcessorCall {

struct Outcome
{
    bool flag = false;
    qint16 code = 0;
    QString response;
    // False only when the request certainly did not reach the processor
    // (refused URL, no connection made); true when it may have.
    bool mayHaveArrived = true;
};
using Keep = std::function<void(const Outcome &)>;

// transmit(setupText, tenantText) to state.login.url. A text given as its
// transfer file (CallText::file) is sent from disk.
Outcome transmit(ProgramState &state, const CallText &setupText, const CallText &tenantText,
    const Keep &keep = {});
// transmitPayees(payeeText, paymentText, "") to the payee URL.
Outcome transmitPayees(ProgramState &state, const CallText &payeeText, const CallText &paymentText,
    const Keep &keep = {});

// True once start-up has built the transfer file names. A log in completed
// after start-up leaves them unbuilt until Remitra starts again; no transfer
// may reach the processor meanwhile, as its answer could not be stored.
bool fileNamesBuilt(const TransferFileNames &files);
// Tells the user that Remitra must be restarted (when the names are not
// built) and returns false; true when they are.
bool checkFileNames(ProgramState &state);

// The processor URL without its last 10 characters, followed by
// "evendorpay.php". A URL shorter than 10 characters raises
// RuntimeError::invalidArgument().
QString payeeUrl(const QString &processorUrl);

} // namespace ProcessorCall

// The whole content of a transfer file, unchanged; size 0 gives "" without
// opening it; a missing file raises the file-not-found error (53).
QString readWholeFile(const QString &path);
