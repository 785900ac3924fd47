#pragma once

#include "processor/CallText.h"

#include <QElapsedTimer>
#include <QString>
#include <QTimer>

class Prompter;

// What the window shows while a processor call is in flight: the work being
// done, then every second how long the processor has been waited for. The
// HTTP client waits in a local event loop, so the timer ticks (and the
// window repaints) while the call runs. Shown from construction until
// release() or destruction.
class CallStatus
{
public:
    CallStatus(Prompter &prompter, const QString &activity);
    ~CallStatus() { release(); }
    void release();

    CallStatus(const CallStatus &) = delete;
    CallStatus &operator=(const CallStatus &) = delete;

    // The work of a Transmit: the portfolio (setup and tenants), the tenants'
    // enrolment alone, or, with both texts empty, the request for rent.
    static QString transmitText(const CallText &setupText, const CallText &tenantText);
    // The work of a TransmitPayees: owners' and vendors' enrolment (payee
    // lines "O…"/"V…") or a batch of payments.
    static QString payeesText(const CallText &payeeText, const CallText &paymentText);
    // "Waiting for the processor… 12 s".
    static QString waitingText(qint64 seconds);

private:
    Prompter *m_prompter;
    QString m_activity;
    QTimer m_tick;
    QElapsedTimer m_elapsed;
};
