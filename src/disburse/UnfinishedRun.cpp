#include "disburse/UnfinishedRun.h"

#include "app/ProgramState.h"
#include "core/Prompter.h"
#include "core/TransferFile.h"
#include "core/VbText.h"
#include "disburse/DistributionFile.h"
#include "disburse/DistributionRun.h"
#include "disburse/ResponseMatcher.h"
#include "hostdb/DisburseLookup.h"
#include "hostdb/DistributionRecord.h"

#include <QDateTime>
#include <QLocale>

namespace UnfinishedRun {

namespace {

const QString kTitle = u"Make Payments"_qs;

} // namespace

QString describe(const PaymentRow &check)
{
    const QString dateText = VbText::text(check.CkDate);
    const QDate date = VbText::parseDate(dateText);
    QString text = u"Check "_qs + QString::number(check.CkID) + u" to "_qs
        + VbText::trim(check.CkPayee) + u", "_qs + check.CkAmount.toDollarsParen() + u", "_qs
        + (date.isValid() ? VbText::shortDate(date) : dateText);
    const QString remark = VbText::trim(check.CkRemark);
    if (!remark.isEmpty())
        text += u", \""_qs + remark + u'"';
    return text;
}

QString sentText(const QString &isoTime)
{
    const QDateTime when = QDateTime::fromString(isoTime, Qt::ISODateWithMs);
    if (!when.isValid())
        return isoTime;
    return VbText::shortDate(when.date()) + u' '
        + QLocale::system().toString(when.time(), QLocale::ShortFormat);
}

bool present(const ProgramState &state)
{
    if (!state.hasDb())
        return false;
    return DistributionRecord(state.store()).anyOpen();
}

void reportUnanswered(ProgramState &state)
{
    const QList<DistributionRecord::Unanswered> open
        = DistributionRecord(state.store()).unanswered();
    if (open.isEmpty())
        return;
    QStringList lines;
    {
        DisburseLookup lookup(state.db());
        for (const DistributionRecord::Unanswered &u : open) {
            if (lookup.enteredCheck(u.check.CkID))
                lines << describe(u.check) + u"  (sent "_qs + sentText(u.sentAt) + u')';
        }
    }
    if (lines.isEmpty())
        return;
    state.prompter().notice(
        u"These payments were sent to Quenta Payment Services, and Remitra has no record of an "
        "answer (Remitra or the computer stopped, or the connection was lost, while it "
        "waited):\r\r"_qs
            + lines.join(u'\r')
            + u"\r\rThey may have been paid, so they are still in your 'Entered Check File' and "
              "must not be paid again by any other means before you check with Quenta Payment "
              "Services. Remitra will not send them again unless you confirm that they were "
              "not paid."_qs,
        kTitle);
}

Outcome settle(ProgramState &state, bool &stopRejections)
{
    DistributionRecord record(state.store());
    for (const DistributionRecord::Run &run : record.answered()) {
        const ResponseMatcher response(run.responseText);
        // The accepted checks of that run that are still waiting to be
        // posted, as they were sent.
        QList<PaymentRow> waiting;
        Currency total;
        {
            DisburseLookup lookup(state.db());
            for (const PaymentRow &sent : run.checks) {
                if (!response.verdict(sent.payeeId(), sent.CkID).accepted)
                    continue;
                const std::optional<PaymentRow> entered = lookup.enteredCheck(sent.CkID);
                if (!entered || entered->CkType == u"X"_qs)
                    continue;
                total += sent.CkAmount;
                waiting.append(sent);
            }
        }
        if (waiting.isEmpty()) {
            // Everything it paid is posted: only its record was left open.
            record.setPosted(run.id);
            continue;
        }

        const QString question
            = u"The last payment distribution was not finished. Quenta Payment Services "
              "accepted "_qs
            + QString::number(waiting.size()) + u" payment(s) totalling "_qs
            + total.toDollarsParen()
            + u" that are still in your 'Entered Check File'. They have been paid and must "
              "not be sent again.\r\rPost them now?"_qs;
        if (state.prompter().ask(question, kTitle) == Prompter::Answer::No) {
            state.prompter().notice(
                u"The accepted payments were not posted and no new payments can be sent until "
                "they are. You will be asked again the next time you make payments."_qs,
                kTitle);
            return Outcome::Declined;
        }
        if (!DistributionRun::finish(state, run.id, waiting, response, stopRejections, {}))
            return Outcome::Declined;
        return Outcome::Posted;
    }
    return Outcome::Clear;
}

} // namespace UnfinishedRun
