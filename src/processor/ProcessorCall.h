#pragma once

#include <QString>

class ProgramState;

// One exchange with the processor, in the sequence every caller follows:
// a fresh client, the wait cursor, Url/UserName/Password from the state,
// the call, state.ResultText "True"/"False", the pointer back,
// state.ResultCode (a code outside 16 bits raises the overflow error), and
// ReportResult. The response text is read after the report.
namespace ProcessorCall {

struct Outcome
{
    bool flag = false;
    qint16 code = 0;
    QString response;
};

// Transmit(setupText, tenantText) to state.ProcessorUrl.
Outcome transmit(ProgramState &state, const QString &setupText, const QString &tenantText);
// TransmitPayees(payeeText, paymentText, "") to the payee URL.
Outcome transmitPayees(ProgramState &state, const QString &payeeText, const QString &paymentText);

// The processor URL without its last 10 characters, followed by
// "evendorpay.php". A URL shorter than 10 characters raises
// RuntimeError::invalidArgument().
QString payeeUrl(const QString &processorUrl);

} // namespace ProcessorCall

// The whole content of a transfer file, unchanged; size 0 gives "" without
// opening it; a missing file raises the file-not-found error (53).
QString ReadWholeFile(const QString &path);
