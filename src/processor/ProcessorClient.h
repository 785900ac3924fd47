#pragma once

#include "processor/CallText.h"

#include <QString>

#include <functional>
#include <memory>

// The processor's client: one instance per job, used for one call. Url,
// UserName and Password are set before calling Transmit or TransmitPayees;
// the call blocks until the processor has answered (or not), then ResultCode
// and ResponseText hold its outcome. The flag is true when any answer came
// back, whatever its code.
class ProcessorClient
{
public:
    virtual ~ProcessorClient() = default;

    virtual void setUrl(const QString &url) = 0;
    virtual void setUserName(const QString &userName) = 0;
    virtual void setPassword(const QString &password) = 0;

    virtual qint32 resultCode() const = 0;
    virtual QString responseText() const = 0;

    // Sends the setup and tenant uploads; both empty fetches rent payments.
    // A text given as its transfer file is read while it is sent.
    virtual bool transmit(const CallText &setupText, const CallText &tenantText) = 0;
    // Sends owner/vendor enrolments (payee) or a distribution (payment); the
    // third text is always empty.
    virtual bool transmitPayees(
        const CallText &payeeText, const CallText &paymentText, const CallText &thirdText)
        = 0;

    // After a call without an answer: false only when the request certainly
    // never reached the processor (the URL was refused, or no connection
    // could be made), so that nothing it carried can have been acted on.
    virtual bool mayHaveArrived() const { return true; }
};

using ProcessorClientFactory = std::function<std::unique_ptr<ProcessorClient>()>;
