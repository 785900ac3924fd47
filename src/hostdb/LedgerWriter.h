#pragma once

#include "core/Currency.h"
#include "hostdb/HostStatement.h"
#include "hostdb/KeyedRows.h"

#include <QList>
#include <QSqlQuery>
#include <QString>
#include <QVariant>

#include <memory>

class HostDb;
class HostWriteLog;

// The ledger writes that the rent posting and the paid checks posting
// share: a Transactions row, and a change to the balance of the first
// owner, property, tenant or unit with an id. Each goes through one
// prepared statement, and each row written goes to the log (for the
// journal) when one is set. The caller holds the transaction.
class LedgerWriter
{
public:
    explicit LedgerWriter(const HostDb &db);
    ~LedgerWriter();

    void setLog(HostWriteLog *log) { m_log = log; }

    struct Line
    {
        qint64 accountId = 0;
        qint64 postToId = 0;
        Currency amount; // as stored, sign included
        QVariant date; // a date, or ISO text
        QVariant checkNumber; // Null or a number
        QVariant remark; // Null when not set
        QString type;
        QString status;
        QString tax;
        qint64 ownerId = 0, propertyId = 0, unitId = 0, tenantId = 0;
    };
    void addTransaction(const Line &line);

    enum class Balance { Owner, Property, Tenant, Unit };
    // Adds delta to OCurrBal, PCurrBal, TCurrBal or UCurrBal of the first
    // record with the id; false when there is none (nothing changed then).
    bool addToBalance(Balance which, const QVariant &id, Currency delta);
    // Reads at once the records that addToBalance() will change.
    void readBalances(Balance which, const QList<qint64> &ids);
    // Lets go of every balance record read so far (they are read again when
    // next needed).
    void dropBalances();

private:
    KeyedRows &rows(Balance which);

    const HostDb &m_db;
    HostStatement m_insertTransaction;
    // Made when first used: a posting that changes no owner needs no
    // owner's balance field.
    std::unique_ptr<KeyedRows> m_balances[4];
    HostWriteLog *m_log = nullptr;
};
