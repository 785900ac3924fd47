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
    if (!fileNamesBuilt(state))
        throw RuntimeError::badFileName();
    std::unique_ptr<ProcessorClient> client = state.newClient();
    BusyCursor busy(state.prompter());
    CallStatus status(state.prompter(), activity);
    client->setUrl(url);
    client->setUserName(state.ProcessorUser);
    client->setPassword(state.ProcessorPassword);
    const bool flag = send(*client);
    status.release();
    state.ResultText = flag ? u"True"_qs : u"False"_qs;
    const qint32 code = client->ResultCode();
    if (code < std::numeric_limits<qint16>::min() || code > std::numeric_limits<qint16>::max()) {
        busy.release();
        throw RuntimeError::overflow();
    }
    Outcome outcome { flag, static_cast<qint16>(code), client->ResponseText(),
        flag || client->mayHaveArrived() };
    // What came back is kept before the pointer changes back and before any
    // message is shown.
    if (keep)
        keep(outcome);
    busy.release();
    state.ResultCode = outcome.code;
    ReportResult(state, state.ResultCode);
    return outcome;
}

} // namespace

Outcome transmit(
    ProgramState &state, const CallText &setupText, const CallText &tenantText, const Keep &keep)
{
    return call(state, state.ProcessorUrl, CallStatus::transmitText(setupText, tenantText), keep,
        [&](ProcessorClient &c) { return c.Transmit(setupText, tenantText); });
}

Outcome transmitPayees(
    ProgramState &state, const CallText &payeeText, const CallText &paymentText, const Keep &keep)
{
    const QString url = payeeUrl(state.ProcessorUrl);
    return call(
        state, url, CallStatus::payeesText(payeeText, paymentText), keep, [&](ProcessorClient &c) {
            return c.TransmitPayees(payeeText, paymentText, CallText(QStringLiteral("")));
        });
}

bool fileNamesBuilt(const ProgramState &state)
{
    return !state.PaymentDownloadName.isEmpty() && !state.DisbursementUploadName.isEmpty()
        && !state.TenantUploadName.isEmpty();
}

bool checkFileNames(ProgramState &state)
{
    if (fileNamesBuilt(state))
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

QString ReadWholeFile(const QString &path)
{
    return TransferFile::readWhole(path);
}
