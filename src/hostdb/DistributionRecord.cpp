#include "hostdb/DistributionRecord.h"

#include "core/RuntimeError.h"
#include "hostdb/HostDb.h"
#include "hostdb/RemitraStore.h"

namespace {

QString stateText(DistributionRecord::State state)
{
    switch (state) {
    case DistributionRecord::State::Sending:
        break;
    case DistributionRecord::State::Refused:
        return u"refused"_qs;
    case DistributionRecord::State::Answered:
        return u"answered"_qs;
    case DistributionRecord::State::Posted:
        return u"posted"_qs;
    }
    return u"sending"_qs;
}

} // namespace

DistributionRecord::DistributionRecord(const RemitraStore &store)
    : m_store(store)
{
}

qint64 DistributionRecord::begin(const QList<PaymentRow> &checks, const QString &paymentText)
{
    RemitraStore::Transaction transaction(m_store);
    QSqlQuery run = m_store.prepare(u"INSERT INTO "_qs + m_store.table("distribution_runs")
        + u" (sent_at, state, payment_text) VALUES (:at, 'sending', :text)"_qs);
    run.bindValue(u":at"_qs, RemitraStore::now());
    run.bindValue(u":text"_qs, paymentText);
    HostDb::exec(run, "recording a payment distribution");
    const qint64 id = run.lastInsertId().toLongLong();
    if (id <= 0)
        throw RuntimeError::database(u"recording a payment distribution"_qs, u"no run id"_qs);

    QSqlQuery check = m_store.prepare(u"INSERT INTO "_qs + m_store.table("distribution_checks")
        + u" (run_id, position, CkID, IDField, CkPayee, CkDate, CkAmount, CkRemark, CkInvoice, "
          "CkType, CkVendorID, CkNumber) VALUES (:run, :pos, :ck, :id, :payee, :date, :amount, "
          ":remark, :invoice, :type, :vendor, :number)"_qs);
    int position = 0;
    for (const PaymentRow &row : checks) {
        check.bindValue(u":run"_qs, id);
        check.bindValue(u":pos"_qs, ++position);
        check.bindValue(u":ck"_qs, row.CkID);
        check.bindValue(u":id"_qs, row.IDField);
        check.bindValue(u":payee"_qs, row.CkPayee);
        check.bindValue(u":date"_qs, row.CkDate);
        check.bindValue(u":amount"_qs, row.CkAmount.toPlainText());
        check.bindValue(u":remark"_qs, row.CkRemark);
        check.bindValue(u":invoice"_qs, row.CkInvoice);
        check.bindValue(u":type"_qs, row.CkType);
        check.bindValue(u":vendor"_qs, row.CkVendorID);
        check.bindValue(u":number"_qs, row.CkNumber);
        HostDb::exec(check, "recording a payment distribution");
    }
    transaction.commit();
    return id;
}

void DistributionRecord::setState(qint64 runId, const QString &state, const char *timeField)
{
    QSqlQuery update = m_store.prepare(u"UPDATE "_qs + m_store.table("distribution_runs")
        + u" SET state = :state, "_qs + QLatin1String(timeField)
        + u" = :at WHERE run_id = :run"_qs);
    update.bindValue(u":state"_qs, state);
    update.bindValue(u":at"_qs, RemitraStore::now());
    update.bindValue(u":run"_qs, runId);
    HostDb::exec(update, "recording the state of a payment distribution");
}

void DistributionRecord::setAnswered(qint64 runId, const QString &responseText)
{
    QSqlQuery update = m_store.prepare(u"UPDATE "_qs + m_store.table("distribution_runs")
        + u" SET state = 'answered', response_text = :text, answered_at = :at "
          "WHERE run_id = :run"_qs);
    update.bindValue(u":text"_qs, responseText);
    update.bindValue(u":at"_qs, RemitraStore::now());
    update.bindValue(u":run"_qs, runId);
    HostDb::exec(update, "recording the answer to a payment distribution");
}

void DistributionRecord::setRefused(qint64 runId)
{
    setState(runId, stateText(State::Refused), "answered_at");
}

void DistributionRecord::setPosted(qint64 runId)
{
    setState(runId, stateText(State::Posted), "finished_at");
}

QList<PaymentRow> DistributionRecord::checksOf(qint64 runId)
{
    QSqlQuery query = m_store.prepare(u"SELECT CkID, IDField, CkPayee, CkDate, CkAmount, CkRemark, "
                                      "CkInvoice, CkType, CkVendorID, CkNumber FROM "_qs
        + m_store.table("distribution_checks") + u" WHERE run_id = :run ORDER BY position"_qs);
    query.bindValue(u":run"_qs, runId);
    HostDb::exec(query, "reading a payment distribution");
    QList<PaymentRow> rows;
    while (query.next()) {
        PaymentRow row;
        row.CkID = query.value(0).toLongLong();
        row.IDField = query.value(1).toLongLong();
        row.CkPayee = query.value(2).toString();
        row.CkDate = query.value(3);
        row.CkAmount = Currency::parse(query.value(4).toString()).value_or(Currency());
        row.CkRemark = query.value(5).toString();
        row.CkInvoice = query.value(6).toString();
        row.CkType = query.value(7).toString();
        row.CkVendorID = query.value(8);
        row.CkNumber = query.value(9);
        rows.append(row);
    }
    return rows;
}

QList<DistributionRecord::Run> DistributionRecord::answered()
{
    QSqlQuery query
        = m_store.prepare(u"SELECT run_id, sent_at, payment_text, response_text FROM "_qs
            + m_store.table("distribution_runs") + u" WHERE state = 'answered' ORDER BY run_id"_qs);
    HostDb::exec(query, "reading the payment distributions");
    QList<Run> runs;
    while (query.next()) {
        Run run;
        run.id = query.value(0).toLongLong();
        run.sentAt = query.value(1).toString();
        run.state = State::Answered;
        run.paymentText = query.value(2).toString();
        run.responseText = query.value(3).toString();
        runs.append(run);
    }
    query.finish();
    for (Run &run : runs)
        run.checks = checksOf(run.id);
    return runs;
}

QList<DistributionRecord::Unanswered> DistributionRecord::unanswered()
{
    QSqlQuery query = m_store.prepare(u"SELECT r.run_id, r.sent_at, c.position FROM "_qs
        + m_store.table("distribution_runs") + u" r JOIN "_qs + m_store.table("distribution_checks")
        + u" c ON c.run_id = r.run_id WHERE r.state = 'sending' AND c.released_at IS NULL "
          "ORDER BY r.run_id, c.position"_qs);
    HostDb::exec(query, "reading the payment distributions");
    QList<std::pair<qint64, int>> keys;
    QHash<qint64, QString> sentAt;
    while (query.next()) {
        keys.append({ query.value(0).toLongLong(), query.value(2).toInt() });
        sentAt.insert(query.value(0).toLongLong(), query.value(1).toString());
    }
    query.finish();
    QList<Unanswered> found;
    QHash<qint64, QList<PaymentRow>> checks;
    for (const auto &[runId, position] : keys) {
        if (!checks.contains(runId))
            checks.insert(runId, checksOf(runId));
        const QList<PaymentRow> &rows = checks[runId];
        if (position >= 1 && position <= rows.size())
            found.append({ runId, sentAt.value(runId), rows[position - 1] });
    }
    return found;
}

void DistributionRecord::release(qint64 runId, qint64 ckId)
{
    QSqlQuery update = m_store.prepare(u"UPDATE "_qs + m_store.table("distribution_checks")
        + u" SET released_at = :at WHERE run_id = :run AND CkID = :ck"_qs);
    update.bindValue(u":at"_qs, RemitraStore::now());
    update.bindValue(u":run"_qs, runId);
    update.bindValue(u":ck"_qs, ckId);
    HostDb::exec(update, "releasing a payment for sending again");
}

bool DistributionRecord::anyOpen()
{
    return !answered().isEmpty() || !unanswered().isEmpty();
}
