#include "disburse/PaidCheckPosting.h"

#include "app/ProgramState.h"
#include "core/Prompter.h"
#include "core/VbText.h"
#include "disburse/ResponseMatcher.h"

namespace {

const QString kRejectedTitle = u"Dwellix Remitra"_qs;
const QString kNotPostedTitle = u"Post Transaction"_qs;

bool isLedgerCode(const QString &code)
{
    return code == u"U"_qs || code == u"B"_qs || code == u"T"_qs || code == u"O"_qs
        || code == u"P"_qs;
}

// A date as the host shows it; text that is not a date as it stands.
QString dateText(const QVariant &value)
{
    const QString text = VbText::text(value);
    const QDate date = VbText::parseDate(text);
    return date.isValid() ? VbText::shortDate(date) : text;
}

} // namespace

PaidCheckPosting::PaidCheckPosting(HostDb &db, HostWriteLog *log)
    : m_db(db)
    , m_log(log)
    , m_targets(db)
{
    m_db.setLog(log);
}

int PaidCheckPosting::postCheck(const QList<PaymentRow> &rows, const ResponseMatcher &response)
{
    prefetch(rows, response);
    int posted = 0;
    int position = 0;
    for (const PaymentRow &check : rows) {
        if (m_log)
            m_log->setLine(++position);
        const ResponseMatcher::Verdict verdict = response.verdict(check.payeeId(), check.CkID);
        if (!verdict.accepted) {
            m_messages.append(
                { Message::Rejected, rejectionText(check, verdict.payeeField, verdict.reason) });
            continue;
        }
        const qint64 printedId = m_db.addPrintedCheck(check);
        m_db.markEnteredPaid(check.CkID);
        for (const CheckPosting::Split &split : m_db.splitsOf(check.CkID)) {
            if (split.type != u"C"_qs)
                continue;
            m_db.addPrintedSplit(printedId, split);
            Work work;
            work.amount = -Currency::fromVariant(split.amount).value_or(Currency()).abs();
            work.postToId = split.postToId.toInt();
            work.postTo = VbText::left(VbText::text(split.postTo), 1);
            work.accountId = split.accountId.toInt();
            work.remark = split.remark.isNull() ? QStringLiteral("") : VbText::text(split.remark);
            if (isLedgerCode(work.postTo))
                postTransaction(work, check);
            m_db.markSplitPaid(split);
        }
        ++posted;
    }
    // The paid marks are written before anything reads them.
    m_db.flush();
    return posted;
}

void PaidCheckPosting::prefetch(const QList<PaymentRow> &rows, const ResponseMatcher &response)
{
    // The ledger records the accepted checks' split lines post to, read in
    // a few statements before the posting reads and changes them one by one.
    QList<std::pair<QString, qint64>> postings;
    for (const PaymentRow &check : rows) {
        if (!response.verdict(check.payeeId(), check.CkID).accepted)
            continue;
        for (const CheckPosting::Split &split : m_db.splitsOf(check.CkID)) {
            const QString code = VbText::left(VbText::text(split.postTo), 1);
            if (split.type == u"C"_qs && isLedgerCode(code))
                postings.append({ code, split.postToId.toInt() });
        }
    }
    m_db.prefetchBalances(postings);
    m_targets.prefetch(postings);
}

void PaidCheckPosting::postTransaction(const Work &work, const PaymentRow &check)
{
    if (!m_db.addToBalance(work.postTo, work.postToId, work.amount)) {
        m_messages.append({ Message::NotPosted, notPostedText(check.CkNumber) });
        return;
    }
    CheckPosting::LedgerEntry entry;
    entry.amount = work.amount;
    entry.date = check.CkDate;
    entry.accountId = work.accountId;
    entry.postToId = work.postToId;
    entry.code = work.postTo;
    entry.remark = work.remark;
    entry.targets = m_targets(work.postToId, work.postTo);
    m_db.addTransaction(entry);
}

void PaidCheckPosting::deleteEnteredSplits()
{
    if (m_log)
        m_log->setLine(0);
    m_db.deleteEnteredSplits();
}

void PaidCheckPosting::deleteEnteredChecks(const QList<PaymentRow> &rows)
{
    QList<qint64> ids;
    ids.reserve(rows.size());
    for (const PaymentRow &check : rows)
        ids.append(check.CkID);
    m_db.deleteEnteredIfPaid(ids);
}

void PaidCheckPosting::showMessages(
    ProgramState &state, const QList<Message> &messages, bool &stopRejections)
{
    Prompter &prompter = state.prompter();
    for (const Message &m : messages) {
        if (m.kind == Message::NotPosted) {
            prompter.notice(m.text, kNotPostedTitle);
        } else if (!stopRejections) {
            const bool yes = prompter.ask(m.text, kRejectedTitle) == Prompter::Answer::Yes;
            state.msgAnswer = yes ? u"6"_qs : u"7"_qs;
            if (!yes)
                stopRejections = true;
        }
    }
}

QString PaidCheckPosting::rejectionText(
    const PaymentRow &check, const QString &payeeField, const QString &reason)
{
    const QChar cr(u'\r');
    return u"This transaction was NOT successfully posted to Quenta Property Pay and will still "
           "remain in your 'Entered Check File' so you can process it later:"_qs
        + cr + cr + u"Payee ID: "_qs + payeeField + cr + u"Payee Name: "_qs + check.CkPayee + cr
        + u"Transaction Date: "_qs + dateText(check.CkDate) + cr + u"Transaction Amount: "_qs
        + check.CkAmount.toPlainText() + cr + u"Transaction Invoice: "_qs + check.CkInvoice + cr
        + u"Transaction Remark: "_qs + check.CkRemark + cr + cr + reason + cr + cr
        + u"To see details of all rejected payments, visit your account at the Quenta "
          "Payment website after the rest of the transactions are processed."_qs
        + cr + cr
        + u"Do you want to continue receiving these messages stopping at each "
          "unprocessed transaction?"_qs;
}

QString PaidCheckPosting::notPostedText(const QVariant &checkNumber)
{
    // The number as the runtime's Str() writes it: a blank before a
    // non-negative number.
    QString number;
    if (!checkNumber.isNull()) {
        const qint64 n = checkNumber.toLongLong();
        number = (n >= 0 ? u" "_qs : QString()) + QString::number(n);
    }
    return u"Not able to post check #"_qs + number + u" - post manually"_qs;
}
