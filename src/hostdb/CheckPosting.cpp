#include "hostdb/CheckPosting.h"

#include "core/VbText.h"
#include "hostdb/BatchRead.h"
#include "hostdb/EngineSql.h"

#include <iterator>
#include <utility>

namespace {

// CkPostToID is not among the fields of the printed checks that the
// program writes: the new row takes the host's default there.
const QString kAddPrinted
    = u"INSERT INTO CheckDepPrinted (CkPayee, CkVendorID, CkAmount, CkDate, CkInvoice, CkRemark, "
      "CkStatus, CkSplit, CkType, CkAccountID, CkNumber, CkPostTo) "
      "VALUES (:payee, :vendor, :amount, :date, :invoice, :remark, 'P', 'Y', 'C', NULL, NULL, '')"_qs;
const QString kMarkEntered = u"UPDATE CheckEntered SET CkType = 'X' WHERE CkID IN ("_qs;
const QString kAddSplit
    = u"INSERT INTO SplitPrintedChecks (CkNumber, CkAmount, CkAccountID, CkPostToID, CkRemark, "
      "CkStatus, CkType, CkPostTo) VALUES (:ck, :amount, :account, :postToId, :remark, :status, "
      ":type, :postTo)"_qs;

// The fields of a split line, in the order Split holds them.
const QStringList kSplitFields = { u"CkAmount"_qs, u"CkAccountID"_qs, u"CkPostToID"_qs,
    u"CkRemark"_qs, u"CkStatus"_qs, u"CkType"_qs, u"CkPostTo"_qs };
constexpr int kSplitType = 5;

// The host's own check posting marks and compares "X" in capitals.
QString deleteSplitsSql(const EngineSql &sql)
{
    return u"DELETE FROM SplitChecks WHERE "_qs + sql.equalsExactly(u"CkType"_qs, 'X');
}

QString deleteEnteredSql(const EngineSql &sql)
{
    return u"DELETE FROM CheckEntered WHERE "_qs + sql.equalsExactly(u"CkType"_qs, 'X')
        + u" AND CkID IN ("_qs;
}

// Text fields are copied as they are, Null included.
QVariant nullable(const QString &text)
{
    return text.isNull() ? QVariant() : QVariant(text);
}

Currency money(const QVariant &v)
{
    return Currency::fromVariant(v).value_or(Currency());
}

QVariantMap splitFields(const CheckPosting::Split &split)
{
    QVariantMap fields { { u"CkNumber"_qs, split.row.key } };
    for (qsizetype i = 0; i < kSplitFields.size(); ++i)
        fields.insert(kSplitFields.at(i), split.row.values.value(i));
    return fields;
}

const HostDb &checked(const HostDb &db)
{
    db.require(HostFeature::CheckPosting);
    return db;
}

} // namespace

CheckPosting::CheckPosting(const HostDb &db)
    : m_host(checked(db))
    , m_addPrinted(db, kAddPrinted)
    , m_addSplit(db, kAddSplit)
    , m_ledger(db)
    , m_splits(db, u"SplitChecks"_qs, u"CkNumber"_qs, kSplitFields)
    , m_deleteSplits(db.prepare(deleteSplitsSql(db.sql())))
{
}

qint64 CheckPosting::addPrintedCheck(const PaymentRow &check)
{
    // In the order of the statement's parameters.
    const QVariant values[] = { nullable(check.CkPayee), check.CkVendorID,
        check.CkAmount.toDatabaseValue(), check.CkDate, nullable(check.CkInvoice),
        nullable(check.CkRemark) };
    for (int i = 0; i < int(std::size(values)); ++i)
        m_addPrinted.bind(i, values[i]);
    m_addPrinted.exec("adding a printed check");
    const qint64 id = m_host.newCounter(m_addPrinted.lastInsertId());
    if (m_log) {
        m_log->addedRow(u"CheckDepPrinted"_qs, m_addPrinted.insertedHandle(), [&] {
            return QVariantMap { { u"CkID"_qs, id }, { u"CkPayee"_qs, nullable(check.CkPayee) },
                { u"CkVendorID"_qs, check.CkVendorID },
                { u"CkAmount"_qs, check.CkAmount.toPlainText() }, { u"CkDate"_qs, check.CkDate },
                { u"CkInvoice"_qs, nullable(check.CkInvoice) },
                { u"CkRemark"_qs, nullable(check.CkRemark) }, { u"CkStatus"_qs, u"P"_qs },
                { u"CkSplit"_qs, u"Y"_qs }, { u"CkType"_qs, u"C"_qs },
                { u"CkAccountID"_qs, QVariant() }, { u"CkNumber"_qs, QVariant() },
                { u"CkPostTo"_qs, u""_qs } };
        });
    }
    return id;
}

void CheckPosting::markEnteredPaid(qint64 ckId)
{
    m_enteredPaid.append(ckId);
    m_markedEntered.insert(ckId);
}

QList<CheckPosting::Split> CheckPosting::splitsOf(qint64 ckId)
{
    // The split lines have no index on their check number: they are read
    // once, rather than the table scanned for every check.
    if (!m_splitsRead) {
        m_splits.readAll();
        m_splitsRead = true;
    }
    QList<Split> splits;
    for (const KeyedRows::Row &row : m_splits.rows(ckId)) {
        Split s;
        s.row = row;
        s.amount = row.values[0];
        s.accountId = row.values[1];
        s.postToId = row.values[2];
        s.remark = row.values[3];
        s.status = row.values[4];
        s.type = VbText::text(row.values[kSplitType]);
        s.postTo = row.values[6];
        splits.append(s);
    }
    return splits;
}

void CheckPosting::addPrintedSplit(qint64 printedCkId, const Split &split)
{
    // In the order of the statement's parameters.
    const QVariant values[] = { printedCkId, (-money(split.amount).abs()).toDatabaseValue(),
        split.accountId, split.postToId, split.remark, split.status, split.type, split.postTo };
    for (int i = 0; i < int(std::size(values)); ++i)
        m_addSplit.bind(i, values[i]);
    m_addSplit.exec("adding a printed split line");
    if (m_log) {
        m_log->addedRow(u"SplitPrintedChecks"_qs, m_addSplit.insertedHandle(), [&] {
            return QVariantMap { { u"CkNumber"_qs, printedCkId },
                { u"CkAmount"_qs, (-money(split.amount).abs()).toPlainText() },
                { u"CkAccountID"_qs, split.accountId }, { u"CkPostToID"_qs, split.postToId },
                { u"CkRemark"_qs, split.remark }, { u"CkStatus"_qs, split.status },
                { u"CkType"_qs, split.type }, { u"CkPostTo"_qs, split.postTo } };
        });
    }
}

void CheckPosting::markSplitPaid(const Split &split)
{
    // Without row handles, lines identical in every field are marked
    // together; each is still copied and posted once, as the walk meets it,
    // and all of them end marked, as they would one by one.
    m_splits.setLater(split.row, kSplitType, u"X"_qs);
    if (m_log && m_log->keepsSlim())
        m_markedHandles.append(split.row.handle.toLongLong());
    else if (m_log)
        m_marked.append(split);
}

void CheckPosting::setLog(HostWriteLog *log)
{
    m_log = log;
    m_ledger.setLog(log);
}

bool CheckPosting::addToBalance(const QString &code, qint64 id, Currency amount)
{
    using Balance = LedgerWriter::Balance;
    if (code == u"O"_qs)
        return m_ledger.addToBalance(Balance::Owner, id, amount);
    if (code == u"P"_qs)
        return m_ledger.addToBalance(Balance::Property, id, amount);
    if (code == u"T"_qs)
        return m_ledger.addToBalance(Balance::Tenant, id, amount);
    if (code == u"U"_qs)
        return m_ledger.addToBalance(Balance::Unit, id, amount);
    if (code == u"B"_qs) {
        if (!m_ledger.addToBalance(Balance::Tenant, id, amount))
            return false;
        m_ledger.addToBalance(Balance::Unit, id, amount);
        return true;
    }
    return false;
}

void CheckPosting::flush()
{
    BatchRead::run(m_host, kMarkEntered, std::exchange(m_enteredPaid, {}),
        "marking the entered checks paid", [](const BatchRead::Row &) {});
    m_splits.flush();
}

void CheckPosting::prefetchBalances(const QList<std::pair<QString, qint64>> &postings)
{
    QList<qint64> owners, properties, tenants, units;
    for (const auto &[code, id] : postings) {
        if (code == u"O"_qs)
            owners.append(id);
        else if (code == u"P"_qs)
            properties.append(id);
        else if (code == u"T"_qs)
            tenants.append(id);
        else if (code == u"U"_qs)
            units.append(id);
        else if (code == u"B"_qs)
            tenants.append(id), units.append(id);
    }
    m_ledger.readBalances(LedgerWriter::Balance::Owner, owners);
    m_ledger.readBalances(LedgerWriter::Balance::Property, properties);
    m_ledger.readBalances(LedgerWriter::Balance::Tenant, tenants);
    m_ledger.readBalances(LedgerWriter::Balance::Unit, units);
}

void CheckPosting::addTransaction(const LedgerEntry &t)
{
    // The unit goes to TransTID and the tenant to TransUID.
    m_ledger.addTransaction(
        { t.accountId, t.postToId, -t.amount.abs(), t.date, QVariant(), t.remark, u"C"_qs, t.code,
            u"N"_qs, t.targets[0], t.targets[1], t.targets[3], t.targets[2] });
}

void CheckPosting::deleteEnteredSplits()
{
    if (m_log && m_log->keepsSlim())
        m_log->removing(m_host, u"SplitChecks"_qs, std::exchange(m_markedHandles, {}));
    HostDb::exec(m_deleteSplits, "removing the paid split lines");
    if (m_log && !m_log->keepsSlim()) {
        for (const Split &split : std::as_const(m_marked)) {
            QVariantMap fields = splitFields(split);
            fields.insert(u"CkType"_qs, u"X"_qs);
            m_log->removed(u"SplitChecks"_qs, split.row.handle, fields);
        }
    }
    m_marked.clear();
}

void CheckPosting::deleteEnteredIfPaid(const QList<qint64> &ckIds)
{
    // Only the checks this posting marked paid are removed.
    QList<qint64> paid;
    for (const qint64 ckId : ckIds) {
        if (m_markedEntered.contains(ckId))
            paid.append(ckId);
    }
    if (m_log && m_log->keepsSlim())
        m_log->removing(m_host, u"CheckEntered"_qs, paid); // a check's CkID is its handle
    BatchRead::run(m_host, deleteEnteredSql(m_host.sql()), ckIds,
        "removing the paid entered checks", [](const BatchRead::Row &) {});
    if (!m_log || m_log->keepsSlim())
        return;
    for (const qint64 ckId : std::as_const(paid))
        m_log->removed(u"CheckEntered"_qs,
            m_host.sql().handleColumns() > 0 ? QVariant(ckId) : QVariant(),
            { { u"CkID"_qs, ckId } });
}
