#pragma once

#include "disburse/PaymentRow.h"

#include <QList>

#include <functional>

class ProgramState;
class ResponseMatcher;

// Pays the chosen entered checks electronically: writes the distribution
// file, sends it to the processor, keeps the answer in the response file,
// posts the accepted checks and removes them from the entered checks, and
// keeps the upload as the last-upload file.
//
// The answer is on disk before anything is posted, and all posting of a run
// is one transaction; a run that stops between the two is found and finished
// by UnfinishedRun.
class DistributionRun
{
public:
    // stopRejections: the screen's "stop showing rejection messages" flag,
    // which lives as long as the screen.
    DistributionRun(ProgramState &state, bool &stopRejections);

    // The rows in the order they were chosen. emptySelection is called once
    // the accepted checks are posted. Returns true when the run reached its
    // end (the list has changed).
    bool MakePaymentsNow(
        const QList<PaymentRow> &selected, const std::function<void()> &emptySelection);

    // Posts the accepted rows and removes the paid entered checks and splits
    // in one transaction, renames the distribution file to the last-upload
    // file, shows the collected messages, calls emptySelection and closes
    // with the completion notice.
    static void finish(ProgramState &state, const QList<PaymentRow> &rows,
        const ResponseMatcher &response, bool &stopRejections,
        const std::function<void()> &emptySelection);

    static QString noSelectionText();
    static QString completeText();

private:
    ProgramState &m_state;
    bool &m_stopRejections;
};
