#pragma once

#include "core/Currency.h"
#include "hostdb/HostDb.h"
#include "hostdb/HostStatement.h"
#include "hostdb/HostWriteLog.h"
#include "hostdb/KeyedRows.h"
#include "hostdb/LedgerWriter.h"
#include "hostdb/PaymentRow.h"

#include <QList>
#include <QSet>
#include <QSqlQuery>
#include <QVariant>

#include <array>

// The host writes that move a paid check from the entered checks to the
// printed checks and post its split lines to the ledgers. Every statement is
// prepared once and reused for each row; the caller holds the transaction,
// and one object serves one transaction (the split lines are read once).
// The paid marks are written by flush(), a batch of rows per statement; the
// caller flushes before anything else reads them and before its
// transaction commits.
// Creating one checks the host's fields for check posting (error 3265).
class CheckPosting
{
public:
    explicit CheckPosting(const HostDb &db);

    // Every row written, changed or removed from now on goes to the log
    // (for the journal).
    void setLog(HostWriteLog *log);

    // A split line of an entered check. Split lines have no key of their
    // own in the host: a line is known by its row (see KeyedRows).
    struct Split
    {
        KeyedRows::Row row;
        QVariant amount;
        QVariant accountId;
        QVariant postToId;
        QVariant remark;
        QVariant status;
        QString type;
        QVariant postTo;
    };

    // Adds the printed check (status "P", split "Y", type "C", no account or
    // number, post-to "") copied from the entered check and returns its new
    // CkID.
    qint64 addPrintedCheck(const PaymentRow &check);
    // Sets CkType "X" on the entered check (at flush()).
    void markEnteredPaid(qint64 ckId);
    // The split lines of an entered check, in the order they were entered.
    QList<Split> splitsOf(qint64 ckId);
    // Copies a split line under the printed check with minus its absolute
    // amount.
    void addPrintedSplit(qint64 printedCkId, const Split &split);
    // Sets CkType "X" on the split line (at flush()).
    void markSplitPaid(const Split &split);

    // Adds amount to the balance of the first owner ("O"), property ("P"),
    // tenant ("T") or unit ("U") with the id. "B" changes the tenant and then
    // the tenant's unit, when there is one. False when the record (for "B":
    // the tenant) is not there; nothing is changed then.
    bool addToBalance(const QString &code, qint64 id, Currency amount);
    // Writes the marks that wait.
    void flush();
    // Reads at once the balances that addToBalance() will change for these
    // codes and ids, a batch of ids per statement.
    void prefetchBalances(const QList<std::pair<QString, qint64>> &postings);

    struct LedgerEntry
    {
        Currency amount;
        QVariant date;
        qint32 accountId = 0;
        qint32 postToId = 0;
        QString code;
        QString remark;
        std::array<qint32, 4> targets {}; // owner, property, unit, tenant
    };
    // Adds the ledger transaction of a posted split line (type "C", tax "N",
    // no check number). The unit goes to TransTID and the tenant to
    // TransUID, as the host's own check posting stores them.
    void addTransaction(const LedgerEntry &t);

    // Deletes every split line marked "X".
    void deleteEnteredSplits();
    // Deletes those of the entered checks that are marked "X", a batch of
    // checks per statement.
    void deleteEnteredIfPaid(const QList<qint64> &ckIds);

private:
    const HostDb &m_host;
    HostStatement m_addPrinted, m_addSplit;
    LedgerWriter m_ledger;
    QList<qint64> m_enteredPaid; // marked at flush()
    KeyedRows m_splits;
    bool m_splitsRead = false;
    QSqlQuery m_deleteSplits;
    HostWriteLog *m_log = nullptr;
    QList<Split> m_marked; // split lines marked "X" (removed at the end)
    QList<qint64> m_markedHandles; // the same, by handle, for a slim log
    QSet<qint64> m_markedEntered; // entered checks this posting marked "X"
};
