#include "hostdb/RentLedger.h"

#include "core/VbText.h"

namespace {
const QString kInsertTransactionSql
    = u"INSERT INTO Transactions (TransAccountID, TransPostToID, TransAmount, TransDate,"
      " TransCheckNumber, TransRemark, TransType, TransStatus, TransTax,"
      " TransOID, TransPID, TransUID, TransTID)"
      " VALUES (:account, :postTo, :amount, :date, :check, :remark, :type, :status, :tax,"
      " :oid, :pid, :uid, :tid)"_qs;
// The first unit of the tenant, as a seek on UTenantIDIndex finds it; only
// that unit changes. The Access engine has no rowid: there the key is used.
const QString kUnitBalanceSql
    = u"SELECT rowid, UCurrBal FROM Units WHERE UTenantID = :id ORDER BY rowid"_qs;
const QString kSetUnitBalanceSql = u"UPDATE Units SET UCurrBal = :balance WHERE rowid = :row"_qs;
const QString kUnitBalanceAccessSql
    = u"SELECT UTenantID, UCurrBal FROM Units WHERE UTenantID = :id"_qs;
const QString kSetUnitBalanceAccessSql
    = u"UPDATE Units SET UCurrBal = :balance WHERE UTenantID = :row"_qs;
const QString kTenantBalanceSql = u"SELECT TenantID, TCurrBal FROM Tenants WHERE TenantID = :id"_qs;
const QString kSetTenantBalanceSql
    = u"UPDATE Tenants SET TCurrBal = :balance WHERE TenantID = :row"_qs;
const QString kOwnerFeeSql = u"SELECT OMgmtFee FROM Owners WHERE OwnerID = :id"_qs;
const QString kLastDepositSql = u"SELECT MAX(CkID) FROM CheckDepPrinted WHERE CkType = 'D'"_qs;
const QString kInsertDepositSql
    = u"INSERT INTO CheckDepPrinted (CkPayee, CkAccountID, CkAmount, CkDate, CkInvoice, CkRemark,"
      " CkStatus, CkVendorID, CkPostTo, CkNumber, CkType, CkSplit, CkPostToText)"
      " VALUES ('DEPOSIT', 0, 0, :date, '', 'REMITRA DEPOSIT', 'P', -1, NULL, :number, 'D', 'Y',"
      " 'Y')"_qs;
const QString kInsertSplitSql
    = u"INSERT INTO SplitPrintedChecks (CkNumber, CkCheckNumber, CkAmount, CkAccountID,"
      " CkPostToID, CkRemark, CkStatus, CkType, CkPostTo)"
      " VALUES (:deposit, :check, :amount, :account, :postTo, :remark, 'P', 'D', :code)"_qs;
const QString kSetDepositAmountSql
    = u"UPDATE CheckDepPrinted SET CkAmount = :amount WHERE CkType = 'D' AND CkID = :id"_qs;
} // namespace

RentLedger::RentLedger(const HostDb &db)
    : m_insertTransaction(db.prepare(kInsertTransactionSql))
    , m_unitBalance(db.prepare(db.isAccess() ? kUnitBalanceAccessSql : kUnitBalanceSql))
    , m_setUnitBalance(db.prepare(db.isAccess() ? kSetUnitBalanceAccessSql : kSetUnitBalanceSql))
    , m_tenantBalance(db.prepare(kTenantBalanceSql))
    , m_setTenantBalance(db.prepare(kSetTenantBalanceSql))
    , m_ownerFee(db.prepare(kOwnerFeeSql))
    , m_insertDeposit(db.prepare(kInsertDepositSql))
    , m_insertSplit(db.prepare(kInsertSplitSql))
    , m_setDepositAmount(db.prepare(kSetDepositAmountSql))
    , m_lastDeposit(db.prepare(kLastDepositSql))
{
}

void RentLedger::addTransaction(const Line &line)
{
    QSqlQuery &q = m_insertTransaction;
    q.bindValue(u":account"_qs, line.accountId);
    q.bindValue(u":postTo"_qs, line.postToId);
    q.bindValue(u":amount"_qs, line.amount.toDatabaseValue());
    q.bindValue(u":date"_qs, line.date);
    q.bindValue(u":check"_qs, line.checkNumber);
    q.bindValue(u":remark"_qs, line.remark);
    q.bindValue(u":type"_qs, line.type);
    q.bindValue(u":status"_qs, line.status);
    q.bindValue(u":tax"_qs, line.tax);
    q.bindValue(u":oid"_qs, line.ownerId);
    q.bindValue(u":pid"_qs, line.propertyId);
    q.bindValue(u":uid"_qs, line.unitId);
    q.bindValue(u":tid"_qs, line.tenantId);
    HostDb::exec(q, "adding a ledger transaction");
}

std::optional<std::pair<qint64, Currency>> RentLedger::balanceRow(
    QSqlQuery &select, const QVariant &id, const char *operation)
{
    select.bindValue(u":id"_qs, id);
    HostDb::exec(select, operation);
    std::optional<std::pair<qint64, Currency>> row;
    if (select.next())
        row = std::pair { select.value(0).toLongLong(),
            Currency::fromVariant(select.value(1)).value_or(Currency()) };
    select.finish();
    return row;
}

bool RentLedger::addToUnitBalance(const QVariant &tenantId, Currency delta)
{
    const auto row = balanceRow(m_unitBalance, tenantId, "finding a unit balance");
    if (!row)
        return false;
    m_setUnitBalance.bindValue(u":balance"_qs, (row->second + delta).toDatabaseValue());
    m_setUnitBalance.bindValue(u":row"_qs, row->first);
    HostDb::exec(m_setUnitBalance, "updating a unit balance");
    return true;
}

bool RentLedger::addToTenantBalance(const QVariant &tenantId, Currency delta)
{
    const auto row = balanceRow(m_tenantBalance, tenantId, "finding a tenant balance");
    if (!row)
        return false;
    m_setTenantBalance.bindValue(u":balance"_qs, (row->second + delta).toDatabaseValue());
    m_setTenantBalance.bindValue(u":row"_qs, row->first);
    HostDb::exec(m_setTenantBalance, "updating a tenant balance");
    return true;
}

std::optional<QString> RentLedger::ownerMgmtFee(const QVariant &ownerId)
{
    m_ownerFee.bindValue(u":id"_qs, ownerId);
    HostDb::exec(m_ownerFee, "finding an owner");
    std::optional<QString> fee;
    if (m_ownerFee.next())
        fee = VbText::text(m_ownerFee.value(0));
    m_ownerFee.finish();
    return fee;
}

qint64 RentLedger::addDeposit(const Deposit &deposit)
{
    m_insertDeposit.bindValue(u":date"_qs, deposit.date);
    m_insertDeposit.bindValue(u":number"_qs, deposit.number);
    HostDb::exec(m_insertDeposit, "adding a deposit");
    const QVariant inserted = m_insertDeposit.lastInsertId();
    m_insertDeposit.finish();
    if (inserted.isValid())
        return inserted.toLongLong();
    // A driver that cannot tell the new counter: the newest deposit is ours,
    // the write lock being held.
    HostDb::exec(m_lastDeposit, "finding the new deposit");
    const qint64 id = m_lastDeposit.next() ? m_lastDeposit.value(0).toLongLong() : 0;
    m_lastDeposit.finish();
    return id;
}

void RentLedger::addSplit(const Split &split)
{
    QSqlQuery &q = m_insertSplit;
    q.bindValue(u":deposit"_qs, split.depositId);
    q.bindValue(u":check"_qs, split.checkNumber);
    q.bindValue(u":amount"_qs, split.amount.toDatabaseValue());
    q.bindValue(u":account"_qs, split.accountId);
    q.bindValue(u":postTo"_qs, split.postToId);
    q.bindValue(u":remark"_qs, split.remark);
    q.bindValue(u":code"_qs, split.postTo);
    HostDb::exec(q, "adding a deposit split");
}

bool RentLedger::setDepositAmount(qint64 depositId, Currency total)
{
    m_setDepositAmount.bindValue(u":amount"_qs, total.toDatabaseValue());
    m_setDepositAmount.bindValue(u":id"_qs, depositId);
    HostDb::exec(m_setDepositAmount, "storing the deposit amount");
    return m_setDepositAmount.numRowsAffected() > 0;
}
