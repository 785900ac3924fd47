#include "hostdb/CheckPosting.h"

#include "core/VbText.h"

namespace {

const QString kAddPrinted
    = u"INSERT INTO CheckDepPrinted (CkPayee, CkVendorID, CkAmount, CkDate, CkInvoice, CkRemark, "
      "CkStatus, CkSplit, CkType, CkAccountID, CkPostToID, CkNumber, CkPostTo) "
      "VALUES (:payee, :vendor, :amount, :date, :invoice, :remark, 'P', 'Y', 'C', NULL, NULL, NULL, '')"_qs;
const QString kMarkEntered = u"UPDATE CheckEntered SET CkType = 'X' WHERE CkID = :id"_qs;
const QString kSplits
    = u"SELECT SplitID, CkAmount, CkAccountID, CkPostToID, CkRemark, CkStatus, CkType, CkPostTo "
      "FROM SplitChecks WHERE CkNumber = :ck ORDER BY SplitID"_qs;
const QString kAddSplit
    = u"INSERT INTO SplitPrintedChecks (CkNumber, CkAmount, CkAccountID, CkPostToID, CkRemark, "
      "CkStatus, CkType, CkPostTo) VALUES (:ck, :amount, :account, :postToId, :remark, :status, "
      ":type, :postTo)"_qs;
const QString kMarkSplit = u"UPDATE SplitChecks SET CkType = 'X' WHERE SplitID = :id"_qs;
const QString kAddTransaction
    = u"INSERT INTO Transactions (TransAmount, TransDate, TransAccountID, TransPostToID, "
      "TransStatus, TransType, TransTax, TransRemark, TransCheckNumber, TransOID, TransPID, "
      "TransTID, TransUID) VALUES (:amount, :date, :account, :postToId, :status, 'C', 'N', "
      ":remark, "
      "NULL, :oid, :pid, :tid, :uid)"_qs;

// The first record with the key, as a seek on the table's index finds it.
const QString kFindOwner
    = u"SELECT rowid, OCurrBal FROM Owners WHERE OwnerID = :id ORDER BY rowid LIMIT 1"_qs;
const QString kSetOwner = u"UPDATE Owners SET OCurrBal = :bal WHERE rowid = :row"_qs;
const QString kFindProperty
    = u"SELECT rowid, PCurrBal FROM Properties WHERE PropID = :id ORDER BY rowid LIMIT 1"_qs;
const QString kSetProperty = u"UPDATE Properties SET PCurrBal = :bal WHERE rowid = :row"_qs;
const QString kFindTenant
    = u"SELECT rowid, TCurrBal FROM Tenants WHERE TenantID = :id ORDER BY rowid LIMIT 1"_qs;
const QString kSetTenant = u"UPDATE Tenants SET TCurrBal = :bal WHERE rowid = :row"_qs;
const QString kFindUnit
    = u"SELECT rowid, UCurrBal FROM Units WHERE UTenantID = :id ORDER BY rowid LIMIT 1"_qs;
const QString kSetUnit = u"UPDATE Units SET UCurrBal = :bal WHERE rowid = :row"_qs;

// The host's own check posting marks and compares "X" in capitals.
const QString kDeleteSplits = u"DELETE FROM SplitChecks WHERE CkType = 'X' COLLATE BINARY"_qs;
const QString kDeleteEntered
    = u"DELETE FROM CheckEntered WHERE CkID = :id AND CkType = 'X' COLLATE BINARY"_qs;

// Text fields are copied as they are, Null included.
QVariant nullable(const QString &text)
{
    return text.isNull() ? QVariant() : QVariant(text);
}

Currency money(const QVariant &v)
{
    return Currency::fromVariant(v).value_or(Currency());
}

} // namespace

CheckPosting::CheckPosting(const HostDb &db)
    : m_addPrinted(db.prepare(kAddPrinted))
    , m_markEntered(db.prepare(kMarkEntered))
    , m_splits(db.prepare(kSplits))
    , m_addSplit(db.prepare(kAddSplit))
    , m_markSplit(db.prepare(kMarkSplit))
    , m_addTransaction(db.prepare(kAddTransaction))
    , m_findOwner(db.prepare(kFindOwner))
    , m_setOwner(db.prepare(kSetOwner))
    , m_findProperty(db.prepare(kFindProperty))
    , m_setProperty(db.prepare(kSetProperty))
    , m_findTenant(db.prepare(kFindTenant))
    , m_setTenant(db.prepare(kSetTenant))
    , m_findUnit(db.prepare(kFindUnit))
    , m_setUnit(db.prepare(kSetUnit))
    , m_deleteSplits(db.prepare(kDeleteSplits))
    , m_deleteEntered(db.prepare(kDeleteEntered))
{
}

qint64 CheckPosting::addPrintedCheck(const PaymentRow &check)
{
    m_addPrinted.bindValue(u":payee"_qs, nullable(check.CkPayee));
    m_addPrinted.bindValue(u":vendor"_qs, check.CkVendorID);
    m_addPrinted.bindValue(u":amount"_qs, check.CkAmount.toDatabaseValue());
    m_addPrinted.bindValue(u":date"_qs, check.CkDate);
    m_addPrinted.bindValue(u":invoice"_qs, nullable(check.CkInvoice));
    m_addPrinted.bindValue(u":remark"_qs, nullable(check.CkRemark));
    HostDb::exec(m_addPrinted, "adding a printed check");
    return m_addPrinted.lastInsertId().toLongLong();
}

void CheckPosting::markEnteredPaid(qint64 ckId)
{
    m_markEntered.bindValue(u":id"_qs, ckId);
    HostDb::exec(m_markEntered, "marking an entered check paid");
}

QList<CheckPosting::Split> CheckPosting::splitsOf(qint64 ckId)
{
    m_splits.bindValue(u":ck"_qs, ckId);
    HostDb::exec(m_splits, "reading the split lines of a check");
    QList<Split> splits;
    while (m_splits.next()) {
        Split s;
        s.splitId = m_splits.value(0).toLongLong();
        s.amount = m_splits.value(1);
        s.accountId = m_splits.value(2);
        s.postToId = m_splits.value(3);
        s.remark = m_splits.value(4);
        s.status = m_splits.value(5);
        s.type = VbText::text(m_splits.value(6));
        s.postTo = m_splits.value(7);
        splits.append(s);
    }
    m_splits.finish();
    return splits;
}

void CheckPosting::addPrintedSplit(qint64 printedCkId, const Split &split)
{
    m_addSplit.bindValue(u":ck"_qs, printedCkId);
    m_addSplit.bindValue(u":amount"_qs, (-money(split.amount).abs()).toDatabaseValue());
    m_addSplit.bindValue(u":account"_qs, split.accountId);
    m_addSplit.bindValue(u":postToId"_qs, split.postToId);
    m_addSplit.bindValue(u":remark"_qs, split.remark);
    m_addSplit.bindValue(u":status"_qs, split.status);
    m_addSplit.bindValue(u":type"_qs, split.type);
    m_addSplit.bindValue(u":postTo"_qs, split.postTo);
    HostDb::exec(m_addSplit, "adding a printed split line");
}

void CheckPosting::markSplitPaid(qint64 splitId)
{
    m_markSplit.bindValue(u":id"_qs, splitId);
    HostDb::exec(m_markSplit, "marking a split line paid");
}

bool CheckPosting::addTo(QSqlQuery &find, QSqlQuery &update, qint64 id, Currency amount)
{
    find.bindValue(u":id"_qs, id);
    HostDb::exec(find, "finding a ledger record");
    if (!find.next()) {
        find.finish();
        return false;
    }
    const qint64 row = find.value(0).toLongLong();
    const Currency balance = money(find.value(1)) + amount;
    find.finish();
    update.bindValue(u":bal"_qs, balance.toDatabaseValue());
    update.bindValue(u":row"_qs, row);
    HostDb::exec(update, "changing a ledger balance");
    return true;
}

bool CheckPosting::addToBalance(const QString &code, qint64 id, Currency amount)
{
    if (code == u"O"_qs)
        return addTo(m_findOwner, m_setOwner, id, amount);
    if (code == u"P"_qs)
        return addTo(m_findProperty, m_setProperty, id, amount);
    if (code == u"T"_qs)
        return addTo(m_findTenant, m_setTenant, id, amount);
    if (code == u"U"_qs)
        return addTo(m_findUnit, m_setUnit, id, amount);
    if (code == u"B"_qs) {
        if (!addTo(m_findTenant, m_setTenant, id, amount))
            return false;
        addTo(m_findUnit, m_setUnit, id, amount);
        return true;
    }
    return false;
}

void CheckPosting::addTransaction(const LedgerEntry &t)
{
    m_addTransaction.bindValue(u":amount"_qs, (-t.amount.abs()).toDatabaseValue());
    m_addTransaction.bindValue(u":date"_qs, t.date);
    m_addTransaction.bindValue(u":account"_qs, t.accountId);
    m_addTransaction.bindValue(u":postToId"_qs, t.postToId);
    m_addTransaction.bindValue(u":status"_qs, t.code);
    m_addTransaction.bindValue(u":remark"_qs, t.remark);
    m_addTransaction.bindValue(u":oid"_qs, t.targets[0]);
    m_addTransaction.bindValue(u":pid"_qs, t.targets[1]);
    m_addTransaction.bindValue(u":tid"_qs, t.targets[2]);
    m_addTransaction.bindValue(u":uid"_qs, t.targets[3]);
    HostDb::exec(m_addTransaction, "adding a ledger transaction");
}

void CheckPosting::deleteEnteredSplits()
{
    HostDb::exec(m_deleteSplits, "removing the paid split lines");
}

void CheckPosting::deleteEnteredIfPaid(qint64 ckId)
{
    m_deleteEntered.bindValue(u":id"_qs, ckId);
    HostDb::exec(m_deleteEntered, "removing a paid entered check");
}
