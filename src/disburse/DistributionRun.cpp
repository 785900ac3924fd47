#include "disburse/DistributionRun.h"

#include "app/ProgramState.h"
#include "core/Prompter.h"
#include "core/TransferFile.h"
#include "disburse/DistributionFile.h"
#include "disburse/PaidCheckPosting.h"
#include "disburse/ResponseMatcher.h"
#include "disburse/UnfinishedRun.h"
#include "processor/ProcessorCall.h"

#include <QDateTime>
#include <QFile>

namespace {

const QString kNoticeTitle = u"Payment Distribution Notice"_qs;

// Marks a response file that is used again as this run's answer, so that a
// run stopped while posting is recognised by its newer response.
void touch(const QString &path)
{
    QFile file(path);
    if (file.open(QIODevice::Append))
        file.setFileTime(QDateTime::currentDateTime(), QFileDevice::FileModificationTime);
}

} // namespace

DistributionRun::DistributionRun(ProgramState &state, bool &stopRejections)
    : m_state(state)
    , m_stopRejections(stopRejections)
{
}

QString DistributionRun::noSelectionText()
{
    return u"There are no payments selected"_qs;
}

QString DistributionRun::completeText()
{
    return u"Process Complete - if any transactions did not get posted with Remitra be sure to "
           "correct the error and try again or process them manually."_qs;
}

bool DistributionRun::MakePaymentsNow(
    const QList<PaymentRow> &selected, const std::function<void()> &emptySelection)
{
    Prompter &prompter = m_state.prompter();
    if (selected.isEmpty()) {
        prompter.notice(noSelectionText(), u"Make Payments"_qs);
        return false;
    }
    // Checks already paid by an unfinished run must be posted before anything
    // is sent again, or they would be paid twice. When some were posted now,
    // the list has changed under the selection: nothing is sent, and the user
    // looks at the list again.
    switch (UnfinishedRun::settle(m_state, m_stopRejections)) {
    case UnfinishedRun::Outcome::Clear:
        break;
    case UnfinishedRun::Outcome::Posted:
        return true;
    case UnfinishedRun::Outcome::Declined:
        return false;
    }

    const QString distribution = m_state.pathOf(m_state.DisbursementUploadName);
    DistributionFile::write(m_state.db(), distribution, selected);

    QString paymentText;
    {
        BusyCursor busy(prompter);
        if (!TransferFile::exists(distribution)) {
            busy.release();
            prompter.notice(u"The Remitra distribution file was not found. Please make sure that "
                            "you have Owner or Vendor payments to process."_qs,
                u"Remitra"_qs);
            return false;
        }
        paymentText = ReadWholeFile(distribution);
    }
    const ProcessorCall::Outcome outcome
        = ProcessorCall::transmitPayees(m_state, QStringLiteral(""), paymentText);
    if (m_state.ResultCode != 200)
        return false;

    const QString responsePath = m_state.pathOf(DistributionFile::ResponseName);
    if (!outcome.response.isEmpty())
        TransferFile::writeAtomic(responsePath, outcome.response + u"\r\n"_qs);
    else if (TransferFile::exists(responsePath))
        touch(responsePath); // the earlier answer is read again
    if (!TransferFile::exists(responsePath)) {
        prompter.notice(u"Quenta Payment Services sent no answer for these payments, so none of "
                        "them was posted. The checks remain in your 'Entered Check File'. Look "
                        "up the payments at the Quenta Payment website before sending them "
                        "again."_qs,
            kNoticeTitle);
        return false;
    }
    const ResponseMatcher response(ReadWholeFile(responsePath));
    finish(m_state, selected, response, m_stopRejections, emptySelection);
    return true;
}

void DistributionRun::finish(ProgramState &state, const QList<PaymentRow> &rows,
    const ResponseMatcher &response, bool &stopRejections,
    const std::function<void()> &emptySelection)
{
    Prompter &prompter = state.prompter();
    QList<PaidCheckPosting::Message> messages;
    {
        BusyCursor busy(prompter);
        HostDb &db = state.db();
        HostDb::Transaction tx(db);
        PaidCheckPosting posting(db);
        posting.PostCheck(rows, response);
        posting.DeleteEnteredSplits();
        posting.DeleteEnteredChecks(rows);
        tx.commit();
        messages = posting.messages();

        TransferFile::renameReplacing(state.pathOf(state.DisbursementUploadName),
            state.pathOf(DistributionFile::LastUploadName));
    }
    PaidCheckPosting::showMessages(state, messages, stopRejections);
    if (emptySelection)
        emptySelection();
    prompter.notice(completeText(), kNoticeTitle);
}
