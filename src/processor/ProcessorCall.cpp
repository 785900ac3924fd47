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

template <typename Send>
Outcome call(ProgramState &state, const QString &url, const QString &activity, Send &&send)
{
    std::unique_ptr<ProcessorClient> client = state.newClient();
    BusyCursor busy(state.prompter());
    CallStatus status(state.prompter(), activity);
    client->setUrl(url);
    client->setUserName(state.ProcessorUser);
    client->setPassword(state.ProcessorPassword);
    const bool flag = send(*client);
    status.release();
    state.ResultText = flag ? u"True"_qs : u"False"_qs;
    busy.release();
    const qint32 code = client->ResultCode();
    if (code < std::numeric_limits<qint16>::min() || code > std::numeric_limits<qint16>::max())
        throw RuntimeError::overflow();
    state.ResultCode = static_cast<qint16>(code);
    ReportResult(state, state.ResultCode);
    return Outcome{flag, state.ResultCode, client->ResponseText()};
}

} // namespace

Outcome transmit(ProgramState &state, const QString &setupText, const QString &tenantText)
{
    return call(state, state.ProcessorUrl, CallStatus::transmitText(setupText, tenantText),
                [&](ProcessorClient &c) { return c.Transmit(setupText, tenantText); });
}

Outcome transmitPayees(ProgramState &state, const QString &payeeText, const QString &paymentText)
{
    const QString url = payeeUrl(state.ProcessorUrl);
    return call(state, url, CallStatus::payeesText(payeeText, paymentText),
                [&](ProcessorClient &c) {
        return c.TransmitPayees(payeeText, paymentText, QStringLiteral(""));
    });
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
