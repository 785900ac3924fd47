#pragma once

#include "core/Currency.h"
#include "hostdb/HostDb.h"
#include "hostdb/HostStatement.h"
#include "hostdb/HostWriteLog.h"
#include "hostdb/LedgerWriter.h"

#include <QHash>
#include <QSet>
#include <QString>
#include <QVariant>

#include <optional>

// The writes of the rent posting: ledger lines, unit and tenant balances, the
// owner's management fee setting, and the deposit with its split lines.
// Statements are prepared once per object; the caller brackets the writes in
// a HostDb::Transaction. Creating one checks the host's fields for the
// posting, and the first deposit write those for the deposit (error 3265).
class RentLedger
{
public:
    explicit RentLedger(const HostDb &db);

    // Every row written from now on goes to the log (for the journal),
    // under the payment file line last given to atLine().
    void setLog(HostWriteLog *log);
    void atLine(int line)
    {
        if (m_log)
            m_log->setLine(line);
    }

    using Line = LedgerWriter::Line;
    void addTransaction(const Line &line);

    // Adds delta to UCurrBal of the tenant's first unit (only that one);
    // false when the tenant has no unit.
    bool addToUnitBalance(const QVariant &tenantId, Currency delta);
    // Adds delta to TCurrBal of the tenant; false when there is no such tenant.
    bool addToTenantBalance(const QVariant &tenantId, Currency delta);

    // OMgmtFee of the owner: nullopt when there is no such owner, a null
    // text when the field is Null.
    std::optional<QString> ownerMgmtFee(const QVariant &ownerId);

    // Reads at once what posting these tenants' payments will look up: the
    // tenants' and their units' balances and the owners' fee settings, a
    // batch of keys per statement instead of a seek per payment. Balances
    // only where the engine has row handles, so that a tenant's units keep
    // the order a seek meets them in. The caller's transaction must already
    // hold the database, so that what is read cannot change before it is
    // used.
    void readAhead(const QList<qint64> &tenantIds, const QList<qint64> &ownerIds);
    // Lets go of what readAhead() and the posting read (a large posting
    // frees it before its journal entry is written).
    void dropReadAhead();

    struct Deposit
    {
        QString date; // ISO
        qint64 number = 0; // CkNumber: the deposit number the user typed
    };
    // Adds the deposit row (amount 0 until setDepositAmount) and returns its CkID.
    qint64 addDeposit(const Deposit &deposit);

    struct Split
    {
        qint64 depositId = 0;
        QVariant checkNumber; // Null when the payment had none
        Currency amount;
        qint64 accountId = 0;
        qint64 postToId = 0;
        QVariant remark;
        QString postTo;
    };
    void addSplit(const Split &split);
    // Stores the total on the deposit found again by its CkID among the
    // deposits; false when it cannot be found.
    bool setDepositAmount(qint64 depositId, Currency total);

private:
    void prepareDeposit();
    // The handle of the row the insert just added; null without handles.
    QVariant insertedHandle(const QSqlQuery &insert) const;

    const HostDb &m_db;
    LedgerWriter m_ledger;
    QSqlQuery m_ownerFee;
    // Owners' fee settings read by readAhead(); an owner read and not found
    // is in m_feesRead only.
    QHash<qint64, QString> m_fees;
    QSet<qint64> m_feesRead;
    HostWriteLog *m_log = nullptr;
    bool m_depositReady = false;
    QSqlQuery m_insertDeposit;
    std::optional<HostStatement> m_insertSplit;
    QSqlQuery m_setDepositAmount;
};
