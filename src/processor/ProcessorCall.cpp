#include "processor/ProcessorCall.h"

#include "app/ProgramState.h"
#include "core/Prompter.h"
#include "core/RuntimeError.h"
#include "core/TransferFile.h"
#include "processor/CallStatus.h"
#include "processor/ProcessorClient.h"
#include "processor/ReportResult.h"

#include <limits>

namespace ProcessorCall {

namespace {

const QString kRestartText
    = u"Remitra must be restarted before it can exchange files with Quenta Payment Services: "
      "the log in was completed after Remitra started, and the names of the transfer files are "
      "set up only when Remitra starts. Please close Remitra and start it again. Nothing was "
      "sent."_qs;

template <typename Send>
Outcome call(
    ProgramState &state, const QString &url, const QString &activity, const Keep &keep, Send &&send)
{
    if (!fileNamesBuilt(state.files))
        throw RuntimeError::badFileName();
    std::unique_ptr<ProcessorClient> client = state.newClient();
    BusyCursor busy(state.prompter());
    CallStatus status(state.prompter(), activity);
    client->setUrl(url);
    client->setUserName(state.login.user);
    client->setPassword(state.login.password);
    const bool flag = send(*client);
    status.release();
    state.lastResult.text = flag ? u"True"_qs : u"False"_qs;
    const qint32 code = client->resultCode();
    if (code < std::numeric_limits<qint16>::min() || code > std::numeric_limits<qint16>::max()) {
        busy.release();
        throw RuntimeError::overflow();
    }
    Outcome outcome { flag, static_cast<qint16>(code), client->responseText(),
        flag || client->mayHaveArrived() };
    // What came back is kept before the pointer changes back and before any
    // message is shown.
    if (keep)
        keep(outcome);
    busy.release();
    state.lastResult.code = outcome.code;
    reportResult(state.prompter(), state.lastResult);
    return outcome;
}

} // namespace

Outcome transmit(
    ProgramState &state, const CallText &setupText, const CallText &tenantText, const Keep &keep)
{
    return call(state, state.login.url, CallStatus::transmitText(setupText, tenantText), keep,
        [&](ProcessorClient &c) { return c.transmit(setupText, tenantText); });
}

Outcome transmitPayees(
    ProgramState &state, const CallText &payeeText, const CallText &paymentText, const Keep &keep)
{
    const QString url = payeeUrl(state.login.url);
    return call(
        state, url, CallStatus::payeesText(payeeText, paymentText), keep, [&](ProcessorClient &c) {
            return c.transmitPayees(payeeText, paymentText, CallText(QStringLiteral("")));
        });
}

bool fileNamesBuilt(const TransferFileNames &files)
{
    return !files.paymentDownload.isEmpty() && !files.disbursementUpload.isEmpty()
        && !files.tenantUpload.isEmpty();
}

bool checkFileNames(ProgramState &state)
{
    if (fileNamesBuilt(state.files))
        return true;
    state.prompter().notice(kRestartText, u"Remitra"_qs);
    return false;
}

QString payeeUrl(const QString &processorUrl)
{
    if (processorUrl.size() < 10)
        throw RuntimeError::invalidArgument();
    return processorUrl.left(processorUrl.size() - 10) + u"evendorpay.php"_qs;
}

} // namespace ProcessorCall

QString readWholeFile(const QString &path)
{
    return TransferFile::readWhole(path);
}
