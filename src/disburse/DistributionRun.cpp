#include "disburse/DistributionRun.h"

#include "app/MessageCapture.h"
#include "app/ProgramState.h"
#include "core/FileArchive.h"
#include "core/Prompter.h"
#include "core/RuntimeError.h"
#include "core/TransferFile.h"
#include "core/VbText.h"
#include "disburse/DistributionFile.h"
#include "disburse/DistributionJournal.h"
#include "disburse/PaidCheckPosting.h"
#include "disburse/ResponseMatcher.h"
#include "disburse/UnfinishedRun.h"
#include "hostdb/DisburseLookup.h"
#include "hostdb/DistributionRecord.h"
#include "hostdb/RentBackup.h"
#include "processor/ExchangeJournal.h"
#include "processor/ProcessorCall.h"

#include <QDateTime>
#include <QFile>
#include <QHash>

namespace {

const QString kNoticeTitle = u"Payment Distribution Notice"_qs;
const QString kTitle = u"Make Payments"_qs;

// Marks a response file that is used again as this run's answer.
void touch(const QString &path)
{
    QFile file(path);
    if (file.open(QIODevice::Append))
        file.setFileTime(QDateTime::currentDateTime(), QFileDevice::FileModificationTime);
}

bool sameCheck(const PaymentRow &a, const PaymentRow &b)
{
    return a.CkPayee == b.CkPayee && a.CkAmount == b.CkAmount
        && VbText::text(a.CkDate) == VbText::text(b.CkDate) && a.CkRemark == b.CkRemark;
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

QList<PaymentRow> DistributionRun::freshRows(const QList<PaymentRow> &selected)
{
    QList<PaymentRow> rows;
    QStringList gone, changed;
    {
        DisburseLookup lookup(m_state.db());
        QList<qint64> ids;
        ids.reserve(selected.size());
        for (const PaymentRow &row : selected)
            ids.append(row.CkID);
        const QHash<qint64, PaymentRow> current = lookup.enteredChecks(ids);
        rows.reserve(selected.size());
        for (const PaymentRow &row : selected) {
            const auto found = current.constFind(row.CkID);
            std::optional<PaymentRow> now;
            if (found != current.cend())
                now = *found;
            if (!now) {
                gone << UnfinishedRun::describe(row);
                m_stale.append(row.key());
                continue;
            }
            if (!sameCheck(*now, row)) {
                changed << UnfinishedRun::describe(row) + u"  is now  "_qs
                        + UnfinishedRun::describe(*now);
                m_stale.append(row.key());
                continue;
            }
            now->IDField = row.IDField;
            now->NameA = row.NameA;
            now->NameB = row.NameB;
            rows.append(*now);
        }
    }
    if (m_stale.isEmpty())
        return rows;
    QString text = u"Some of the selected checks were changed in Dwellix after this list was "
                   "read. Nothing was sent to Quenta Payment Services."_qs;
    if (!gone.isEmpty())
        text += u"\r\rNo longer in the Entered Check File:\r"_qs + gone.join(u'\r');
    if (!changed.isEmpty())
        text += u"\r\rChanged:\r"_qs + changed.join(u'\r');
    text += u"\r\rThe list now shows the checks as they are. Those checks were taken out of "
            "the selection: look them over, select the payments again and press 'Make all "
            "SELECTED payments now'."_qs;
    m_state.prompter().notice(text, kTitle);
    return {};
}

QList<PaymentRow> DistributionRun::withoutUnanswered(const QList<PaymentRow> &rows)
{
    DistributionRecord record(m_state.store());
    QHash<qint64, QList<DistributionRecord::Unanswered>> open;
    for (const DistributionRecord::Unanswered &u : record.unanswered())
        open[u.check.CkID].append(u);
    QList<PaymentRow> blocked, kept;
    for (const PaymentRow &row : rows)
        (open.contains(row.CkID) ? blocked : kept).append(row);
    if (blocked.isEmpty())
        return rows;

    QStringList lines;
    for (const PaymentRow &row : blocked)
        lines << UnfinishedRun::describe(row) + u"  (sent "_qs
                + UnfinishedRun::sentText(open[row.CkID].first().sentAt) + u')';
    const QString question
        = u"These payments were sent to Quenta Payment Services before, and Remitra has no "
          "record of an answer (Remitra or the computer stopped, or the connection was lost, "
          "while it waited):\r\r"_qs
        + lines.join(u'\r')
        + u"\r\rThey may have been paid. Check with Quenta Payment Services before sending "
          "them again.\r\rHave you checked that these payments were NOT made, and do you want "
          "to send them again now? (No leaves them out of this run.)"_qs;
    if (m_state.prompter().ask(question, kTitle) == Prompter::Answer::Yes) {
        for (const PaymentRow &row : blocked) {
            for (const DistributionRecord::Unanswered &u : open[row.CkID])
                record.release(u.runId, row.CkID);
        }
        return rows;
    }
    return kept;
}

bool DistributionRun::makePaymentsNow(
    const QList<PaymentRow> &selected, const std::function<void()> &emptySelection)
{
    Prompter &prompter = m_state.prompter();
    if (selected.isEmpty()) {
        prompter.notice(noSelectionText(), kTitle);
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

    // What is sent is what Dwellix holds now, not what the list showed.
    QList<PaymentRow> rows = freshRows(selected);
    if (!m_stale.isEmpty())
        return true;
    rows = withoutUnanswered(rows);
    if (rows.isEmpty())
        return false;

    const QString distribution = m_state.pathOf(m_state.files.disbursementUpload);
    DistributionFile::write(m_state.db(), distribution, rows);

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
        paymentText = readWholeFile(distribution);
    }

    // The run is on disk before anything leaves.
    DistributionRecord record(m_state.store());
    const qint64 runId = record.begin(rows, paymentText);
    const QString responsePath = m_state.pathOf(DistributionFile::ResponseName);
    bool answered = false;
    QString responseText;
    ExchangeJournal exchange(m_state, Journal::Kind::Distribution,
        { { m_state.files.disbursementUpload }, DistributionJournal::lines(rows), rows.size(),
            DistributionJournal::total(rows) });
    ProcessorCall::transmitPayees(m_state, QStringLiteral(""), paymentText,
        exchange.keep([&](const ProcessorCall::Outcome &outcome) {
            if (!outcome.flag) {
                // No answer: the payments may still have arrived, unless the
                // request certainly never left.
                if (!outcome.mayHaveArrived)
                    record.setRefused(runId);
                return;
            }
            if (outcome.code != 200) {
                record.setRefused(runId);
                return;
            }
            if (!outcome.response.isEmpty())
                TransferFile::writeAtomic(responsePath, outcome.response + u"\r\n"_qs);
            else if (TransferFile::exists(responsePath))
                touch(responsePath); // the earlier answer is read again
            if (!TransferFile::exists(responsePath))
                return; // an answer without content: nothing is known of the payments
            responseText = readWholeFile(responsePath);
            record.setAnswered(runId, responseText);
            answered = true;
            exchange.receives(
                DistributionFile::ResponseName, FileArchive::keep(m_state.folder(), responsePath));
        }));
    if (m_state.lastResult.code != 200)
        return false;
    if (!answered) {
        m_state.prompter().notice(
            u"Quenta Payment Services sent no answer for these payments, so none of "
            "them was posted. The checks remain in your 'Entered Check File'. Look "
            "up the payments at the Quenta Payment website before sending them "
            "again."_qs,
            kNoticeTitle);
        return false;
    }
    const ResponseMatcher response(responseText);
    finish(m_state, runId, rows, response, m_stopRejections, emptySelection);
    return true;
}

bool DistributionRun::finish(ProgramState &state, qint64 runId, const QList<PaymentRow> &rows,
    const ResponseMatcher &response, bool &stopRejections,
    const std::function<void()> &emptySelection)
{
    // The messages of the posting belong to its journal entry.
    MessageCapture capture(state);
    Prompter &prompter = state.prompter();
    QList<PaidCheckPosting::Message> messages;
    {
        BusyCursor busy(prompter);
        HostDb &db = state.db();
        try {
            RentBackup::write(db, state.folder());
        } catch (const RuntimeError &error) {
            busy.release();
            prompter.notice(RentBackup::notWrittenText(error.description())
                    + u". The payments that Quenta Payment Services accepted were not posted "
                      "yet; they will be posted the next time you make payments."_qs,
                kNoticeTitle);
            return false;
        }
        DistributionRecord record(state.store());
        HostDb::Transaction tx(db);
        HostWriteLog written;
        written.keepSlim(Journal::readsRowsFromHost(db, state.store()) ? &db : nullptr);
        written.keepKeysOnly(true);
        int posted = 0;
        {
            // The posting's caches of split lines and balances are freed
            // before the journal entry is written.
            PaidCheckPosting posting(db, &written);
            posted = posting.postCheck(rows, response);
            posting.deleteEnteredSplits();
            posting.deleteEnteredChecks(rows);
            messages = posting.messages();
        }
        // Attached, the record and the journal commit with the posting; on
        // its own connection the record follows the commit (a run found
        // answered whose checks are gone is then closed quietly by
        // UnfinishedRun, and the journal entry by JournalRecovery).
        Journal::Entry entry;
        entry.kind = Journal::Kind::CheckPosting;
        entry.title = u"Checks accepted by Quenta Payment Services"_qs;
        entry.lines = DistributionJournal::lines(rows, &response);
        entry.rows = &written;
        const qint64 journalRun
            = Journal(state.store())
                  .commitPosting(tx, entry,
                      { Journal::Posted, {}, {}, posted, DistributionJournal::acceptedTotal(rows, response), {} },
                      [&] { record.setPosted(runId); });
        capture.attach(journalRun);

        const QString sent = state.pathOf(state.files.disbursementUpload);
        if (TransferFile::exists(sent))
            TransferFile::renameReplacing(sent, state.pathOf(DistributionFile::LastUploadName));
    }
    PaidCheckPosting::showMessages(state, messages, stopRejections);
    if (emptySelection)
        emptySelection();
    prompter.notice(completeText(), kNoticeTitle);
    return true;
}
