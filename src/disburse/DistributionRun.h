#pragma once

#include "hostdb/PaymentRow.h"

#include <QList>

#include <functional>

class ProgramState;
class ResponseMatcher;

// Pays the chosen entered checks electronically: writes the distribution
// file, sends it to the processor, keeps the answer in the response file,
// posts the accepted checks and removes them from the entered checks, and
// keeps the upload as the last-upload file.
//
// A payment cannot be taken back, so every step that moves money is on disk
// before the next one starts (DistributionRecord): the checks as sent, before
// the call; the answer, before the result is reported; the posting, with its
// record, in one transaction. Each selected check is read again just before
// sending: one that is gone or was changed in Dwellix since the list was read
// is not sent. Checks of a run whose answer was never recorded are not sent
// again unless the user, having checked with the processor, says so.
class DistributionRun
{
public:
    // stopRejections: the screen's "stop showing rejection messages" flag,
    // which lives as long as the screen.
    DistributionRun(ProgramState &state, bool &stopRejections);

    // The rows in the order they were chosen. emptySelection is called once
    // the accepted checks are posted. Returns true when the list has changed
    // and must be read again.
    bool makePaymentsNow(
        const QList<PaymentRow> &selected, const std::function<void()> &emptySelection);

    // The rows that were not sent because Dwellix changed or removed their
    // check since the list was read (the screen takes them out of the
    // selection).
    const QList<PaymentRow::Key> &staleRows() const { return m_stale; }

    // Posts the accepted rows of a run and removes the paid entered checks
    // and splits in one transaction with the run's record, after a backup of
    // the host database; renames the distribution file to the last-upload
    // file, shows the collected messages, calls emptySelection and closes
    // with the completion notice. False when the backup could not be made
    // (nothing is posted then; the run stays answered for the next time).
    static bool finish(ProgramState &state, qint64 runId, const QList<PaymentRow> &rows,
        const ResponseMatcher &response, bool &stopRejections,
        const std::function<void()> &emptySelection);

    static QString noSelectionText();
    static QString completeText();

private:
    // Reads every row's check again; the rows to send, fresh from Dwellix,
    // or none after telling the user which changed.
    QList<PaymentRow> freshRows(const QList<PaymentRow> &selected);
    // Leaves out (or, on the user's word, releases) the checks of runs
    // without a recorded answer.
    QList<PaymentRow> withoutUnanswered(const QList<PaymentRow> &rows);

    ProgramState &m_state;
    bool &m_stopRejections;
    QList<PaymentRow::Key> m_stale;
};
