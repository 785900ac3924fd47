#pragma once

#include "hostdb/CheckPosting.h"
#include "hostdb/PaymentRow.h"
#include "hostdb/PostingTargets.h"

#include <QList>
#include <QString>

class ProgramState;
class ResponseMatcher;

// Posts the checks the processor accepted: each becomes a printed check, its
// "C" split lines are copied with negative amounts and posted to the ledger
// they name, and the entered check and its splits are marked "X" and then
// removed. Runs inside the caller's transaction.
//
// Messages for the user (rejections, ledger records that are missing) are
// collected in order rather than shown, so that no question waits on the user
// while the host database is held for writing; showMessages() shows them
// once the writes are committed.
class PaidCheckPosting
{
public:
    // The rows written go to log when one is given (for the journal), each
    // under the position of its check among the rows (1 for the first).
    explicit PaidCheckPosting(HostDb &db, HostWriteLog *log = nullptr);

    struct Message
    {
        enum Kind { NotPosted, Rejected } kind;
        QString text;
    };

    // Walks the rows in order; each accepted one is posted, each other one
    // gets the rejection message. Returns the number posted.
    int postCheck(const QList<PaymentRow> &rows, const ResponseMatcher &response);

    // The working values of the split line being posted.
    struct Work
    {
        Currency amount; // minus the absolute split amount
        qint32 postToId = 0;
        QString postTo; // "O", "P", "T", "U" or "B"
        qint32 accountId = 0;
        QString remark;
    };
    // Lowers the named ledger balance and writes its transaction; a missing
    // ledger record gives the "post manually" message and no transaction.
    void postTransaction(const Work &work, const PaymentRow &check);

    // Removes every split line marked "X".
    void deleteEnteredSplits();
    // Removes the rows' entered checks that are marked "X".
    void deleteEnteredChecks(const QList<PaymentRow> &rows);

    const QList<Message> &messages() const { return m_messages; }

    // Shows the collected messages: a missing ledger record as a notice
    // ("Post Transaction"); a rejection as a Yes/No question ("Dwellix
    // Remitra") while stopRejections is off. The answer goes to
    // state.msgAnswer ("6" Yes, "7" No); No turns stopRejections on.
    static void showMessages(
        ProgramState &state, const QList<Message> &messages, bool &stopRejections);

    static QString rejectionText(
        const PaymentRow &check, const QString &payeeField, const QString &reason);
    static QString notPostedText(const QVariant &checkNumber);

private:
    // Reads at once the balances and posting targets the accepted checks'
    // split lines will need.
    void prefetch(const QList<PaymentRow> &rows, const ResponseMatcher &response);

    CheckPosting m_db;
    HostWriteLog *m_log;
    PostingTargets m_targets;
    QList<Message> m_messages;
};
