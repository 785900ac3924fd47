#include "hostdb/LedgerWriter.h"

#include "hostdb/EngineSql.h"
#include "hostdb/HostDb.h"
#include "hostdb/HostWriteLog.h"

#include <QDate>

#include <iterator>

namespace {

const QString kInsertTransactionSql
    = u"INSERT INTO Transactions (TransAccountID, TransPostToID, TransAmount, TransDate,"
      " TransCheckNumber, TransRemark, TransType, TransStatus, TransTax,"
      " TransOID, TransPID, TransUID, TransTID)"
      " VALUES (:account, :postTo, :amount, :date, :check, :remark, :type, :status, :tax,"
      " :oid, :pid, :uid, :tid)"_qs;

// A date goes to the host as a date: the embedded engine stores it as ISO
// text, the Access engine as a date value.
QVariant dateValue(const QVariant &date)
{
    if (date.typeId() == QMetaType::QString)
        return QDate::fromString(date.toString(), Qt::ISODate);
    return date;
}

} // namespace

LedgerWriter::LedgerWriter(const HostDb &db)
    : m_db(db)
    , m_insertTransaction(db, kInsertTransactionSql)
{
}

LedgerWriter::~LedgerWriter() = default;

void LedgerWriter::addTransaction(const Line &line)
{
    // In the order of the statement's parameters.
    HostStatement &q = m_insertTransaction;
    const QVariant values[] = { line.accountId, line.postToId, line.amount.toDatabaseValue(),
        dateValue(line.date), line.checkNumber, line.remark, line.type, line.status, line.tax,
        line.ownerId, line.propertyId, line.unitId, line.tenantId };
    for (int i = 0; i < int(std::size(values)); ++i)
        q.bind(i, values[i]);
    q.exec("adding a ledger transaction");
    if (!m_log)
        return;
    const QVariant handle = q.insertedHandle();
    // The values bound, the amount as the journal keeps money.
    m_log->addedAsWritten(u"Transactions"_qs, handle, [&] {
        QVariantList kept(std::begin(values), std::end(values));
        kept[2] = line.amount.toPlainText();
        return kept;
    });
}

KeyedRows &LedgerWriter::rows(Balance which)
{
    std::unique_ptr<KeyedRows> &rows = m_balances[int(which)];
    if (!rows) {
        switch (which) {
        case Balance::Owner:
            rows = std::make_unique<KeyedRows>(
                m_db, u"Owners"_qs, u"OwnerID"_qs, QStringList { u"OCurrBal"_qs });
            break;
        case Balance::Property:
            rows = std::make_unique<KeyedRows>(
                m_db, u"Properties"_qs, u"PropID"_qs, QStringList { u"PCurrBal"_qs });
            break;
        case Balance::Tenant:
            rows = std::make_unique<KeyedRows>(
                m_db, u"Tenants"_qs, u"TenantID"_qs, QStringList { u"TCurrBal"_qs });
            break;
        case Balance::Unit:
            // A unit is also known by its address and number, which tell two
            // units of one tenant apart where the engine has no row handle.
            rows = std::make_unique<KeyedRows>(m_db, u"Units"_qs, u"UTenantID"_qs,
                QStringList { u"UCurrBal"_qs, u"UAddress"_qs, u"UNumber"_qs });
            break;
        }
    }
    return *rows;
}

bool LedgerWriter::addToBalance(Balance which, const QVariant &id, Currency delta)
{
    KeyedRows &records = rows(which);
    KeyedRows::Change change;
    if (!records.addToFirst(id, 0, delta, &change))
        return false;
    if (m_log)
        m_log->balance(records, change, 0);
    return true;
}

void LedgerWriter::readBalances(Balance which, const QList<qint64> &ids)
{
    if (!ids.isEmpty())
        rows(which).readKeys(ids);
}

void LedgerWriter::dropBalances()
{
    for (std::unique_ptr<KeyedRows> &rows : m_balances)
        rows.reset();
}
