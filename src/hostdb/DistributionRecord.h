#pragma once

#include "hostdb/PaymentRow.h"

#include <QList>
#include <QString>

class RemitraStore;

// Every distribution run, kept in Remitra's own store from before its
// payments are sent until its accepted checks are posted. The processor
// cannot take back a payment, so what was sent is on disk before the call,
// and the answer is on disk before anything waits on the user:
//
//   Sending   recorded before the call; stays so when no answer was recorded
//             (the program or the machine stopped during the call, the call
//             timed out, or the answer broke off): its checks may have been
//             paid, and are not sent again unless the user releases them.
//   Refused   the processor answered with an error, or the request never
//             left: nothing was paid.
//   Answered  the answer is stored; the accepted checks are still to post.
//   Posted    the accepted checks are posted (in the posting's transaction).
class DistributionRecord
{
public:
    explicit DistributionRecord(const RemitraStore &store);

    enum class State { Sending, Refused, Answered, Posted };

    struct Run
    {
        qint64 id = 0;
        QString sentAt; // ISO 8601
        State state = State::Sending;
        QString paymentText;
        QString responseText;
        QList<PaymentRow> checks; // as they were sent, in the order sent
    };

    // Records a run about to be sent, committed on its own; returns its id.
    qint64 begin(const QList<PaymentRow> &checks, const QString &paymentText);
    void setAnswered(qint64 runId, const QString &responseText);
    void setRefused(qint64 runId);
    // Inside the posting's transaction.
    void setPosted(qint64 runId);

    // Runs answered but not posted, oldest first.
    QList<Run> answered();

    // A check of a run without a recorded answer, not released since.
    struct Unanswered
    {
        qint64 runId = 0;
        QString sentAt;
        PaymentRow check;
    };
    QList<Unanswered> unanswered();
    // The user has checked with the processor that the check was not paid:
    // it may be sent again.
    void release(qint64 runId, qint64 ckId);

    // True when a run is answered but not posted, or a check waits for the
    // user to check with the processor.
    bool anyOpen();

private:
    QList<PaymentRow> checksOf(qint64 runId);
    void setState(qint64 runId, const QString &state, const char *timeField);

    const RemitraStore &m_store;
};
