#include "disburse/DistributionJournal.h"

#include "core/VbText.h"
#include "disburse/ResponseMatcher.h"
#include "disburse/UnfinishedRun.h"
#include "hostdb/HostWriteLog.h"

namespace DistributionJournal {

QList<Journal::Line> lines(const QList<PaymentRow> &checks, const ResponseMatcher *answer)
{
    QList<Journal::Line> found;
    found.reserve(checks.size());
    int position = 0;
    for (const PaymentRow &check : checks) {
        Journal::Line line;
        line.line = ++position;
        line.amount = check.CkAmount.abs().toPlainText();
        line.date = HostWriteLog::normal(u"CkDate"_qs, check.CkDate).toString();
        line.checkNumber = QString::number(check.CkID);
        line.text = UnfinishedRun::describe(check);
        if (!answer) {
            line.outcome = u"sent"_qs;
        } else {
            const ResponseMatcher::Verdict verdict = answer->verdict(check.payeeId(), check.CkID);
            line.outcome
                = verdict.accepted ? u"posted"_qs : u"rejected: "_qs + verdict.reason.trimmed();
        }
        found.append(line);
    }
    return found;
}

Currency total(const QList<PaymentRow> &checks)
{
    Currency sum;
    for (const PaymentRow &check : checks)
        sum += check.CkAmount.abs();
    return sum;
}

Currency acceptedTotal(const QList<PaymentRow> &checks, const ResponseMatcher &response)
{
    Currency sum;
    for (const PaymentRow &check : checks) {
        if (response.verdict(check.payeeId(), check.CkID).accepted)
            sum += check.CkAmount.abs();
    }
    return sum;
}

} // namespace DistributionJournal
