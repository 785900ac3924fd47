#include "hostdb/RentLedger.h"

#include "core/VbText.h"
#include "hostdb/BatchRead.h"
#include "hostdb/EngineSql.h"

#include <QDate>

#include <iterator>

namespace {
const QString kOwnerFeeSql = u"SELECT OMgmtFee FROM Owners WHERE OwnerID = :id"_qs;
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

const HostDb &checked(const HostDb &db)
{
    db.require(HostFeature::RentPosting);
    return db;
}

// A date goes to the host as a date: the embedded engine stores it as ISO
// text, the Access engine as a date value.
QVariant dateValue(const QString &iso)
{
    return QDate::fromString(iso, Qt::ISODate);
}
} // namespace

RentLedger::RentLedger(const HostDb &db)
    : m_db(checked(db))
    , m_ledger(db)
    , m_ownerFee(db.prepare(kOwnerFeeSql))
{
}

void RentLedger::prepareDeposit()
{
    if (m_depositReady)
        return;
    m_db.require(HostFeature::Deposit);
    m_insertDeposit = m_db.prepare(kInsertDepositSql);
    m_insertSplit.emplace(m_db, kInsertSplitSql);
    m_setDepositAmount = m_db.prepare(kSetDepositAmountSql);
    m_depositReady = true;
}

void RentLedger::setLog(HostWriteLog *log)
{
    m_log = log;
    m_ledger.setLog(log);
}

void RentLedger::addTransaction(const Line &line)
{
    m_ledger.addTransaction(line);
}

QVariant RentLedger::insertedHandle(const QSqlQuery &insert) const
{
    return m_db.sql().handleColumns() > 0 ? insert.lastInsertId() : QVariant();
}

bool RentLedger::addToUnitBalance(const QVariant &tenantId, Currency delta)
{
    return m_ledger.addToBalance(LedgerWriter::Balance::Unit, tenantId, delta);
}

bool RentLedger::addToTenantBalance(const QVariant &tenantId, Currency delta)
{
    return m_ledger.addToBalance(LedgerWriter::Balance::Tenant, tenantId, delta);
}

void RentLedger::readAhead(const QList<qint64> &tenantIds, const QList<qint64> &ownerIds)
{
    if (m_db.sql().handleColumns() > 0) {
        m_ledger.readBalances(LedgerWriter::Balance::Unit, tenantIds);
        m_ledger.readBalances(LedgerWriter::Balance::Tenant, tenantIds);
    }
    QList<qint64> owners;
    for (const qint64 id : ownerIds) {
        if (!m_feesRead.contains(id)) {
            m_feesRead.insert(id);
            owners.append(id);
        }
    }
    // OwnerID is unique, so an owner has one fee setting at most.
    BatchRead::run(m_db, u"SELECT OwnerID, OMgmtFee FROM Owners WHERE OwnerID IN ("_qs, owners,
        "finding an owner", [&](const BatchRead::Row &row) {
            const qint64 id = row.value(0).toLongLong();
            if (!m_fees.contains(id))
                m_fees.insert(id, VbText::text(row.value(1)));
        });
}

void RentLedger::dropReadAhead()
{
    m_ledger.dropBalances();
    m_fees = {};
    m_feesRead = {};
}

std::optional<QString> RentLedger::ownerMgmtFee(const QVariant &ownerId)
{
    if (ownerId.typeId() == QMetaType::LongLong && m_feesRead.contains(ownerId.toLongLong())) {
        const auto it = m_fees.constFind(ownerId.toLongLong());
        if (it == m_fees.cend())
            return std::nullopt;
        return *it;
    }
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
    prepareDeposit();
    m_insertDeposit.bindValue(u":date"_qs, dateValue(deposit.date));
    m_insertDeposit.bindValue(u":number"_qs, deposit.number);
    HostDb::exec(m_insertDeposit, "adding a deposit");
    const qint64 id = m_db.newCounter(m_insertDeposit);
    if (m_log) {
        m_log->addedRow(u"CheckDepPrinted"_qs, insertedHandle(m_insertDeposit), [&] {
            return QVariantMap { { u"CkID"_qs, id }, { u"CkPayee"_qs, u"DEPOSIT"_qs },
                { u"CkAccountID"_qs, 0 }, { u"CkAmount"_qs, 0 }, { u"CkDate"_qs, deposit.date },
                { u"CkInvoice"_qs, u""_qs }, { u"CkRemark"_qs, u"REMITRA DEPOSIT"_qs },
                { u"CkStatus"_qs, u"P"_qs }, { u"CkVendorID"_qs, -1 },
                { u"CkPostTo"_qs, QVariant() }, { u"CkNumber"_qs, deposit.number },
                { u"CkType"_qs, u"D"_qs }, { u"CkSplit"_qs, u"Y"_qs },
                { u"CkPostToText"_qs, u"Y"_qs } };
        });
    }
    m_insertDeposit.finish();
    return id;
}

void RentLedger::addSplit(const Split &split)
{
    prepareDeposit();
    // In the order of the statement's parameters.
    HostStatement &q = *m_insertSplit;
    const QVariant values[] = { split.depositId, split.checkNumber,
        split.amount.toDatabaseValue(), split.accountId, split.postToId, split.remark,
        split.postTo };
    for (int i = 0; i < int(std::size(values)); ++i)
        q.bind(i, values[i]);
    q.exec("adding a deposit split");
    if (m_log) {
        const QVariant handle = q.insertedHandle();
        // The values bound and the statement's own, in the order of
        // HostWriteLog::hostFields, the amount as the journal keeps money.
        m_log->addedAsWritten(u"SplitPrintedChecks"_qs, handle, [&] {
            return QVariantList { split.depositId, split.checkNumber, split.amount.toPlainText(),
                split.accountId, split.postToId, split.remark, u"P"_qs, u"D"_qs, split.postTo };
        });
    }
}

bool RentLedger::setDepositAmount(qint64 depositId, Currency total)
{
    prepareDeposit();
    m_setDepositAmount.bindValue(u":amount"_qs, total.toDatabaseValue());
    m_setDepositAmount.bindValue(u":id"_qs, depositId);
    HostDb::exec(m_setDepositAmount, "storing the deposit amount");
    const bool found = m_setDepositAmount.numRowsAffected() > 0;
    if (found && m_log) {
        m_log->amendAdded(
            u"CheckDepPrinted"_qs, u"CkID"_qs, depositId, u"CkAmount"_qs, total.toPlainText());
    }
    return found;
}
