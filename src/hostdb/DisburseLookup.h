#pragma once

#include "hostdb/HostDb.h"
#include "hostdb/PaymentRow.h"

#include <QSqlQuery>

#include <QHash>
#include <QList>

#include <optional>

// Keyed look-ups made while a distribution is written or finished. The
// statements are prepared once and reused for every row. Creating one checks
// the host's fields for the payment list and for check posting (error
// 3265), so that nothing is sent that could not be posted.
class DisburseLookup
{
public:
    explicit DisburseLookup(const HostDb &db);

    // True when the trimmed payee equals the owner's second name pair (the
    // payment goes to that pair's account). False when the owner is missing
    // or the pair is incomplete.
    bool paysSecondPair(qint64 ownerId, const QString &payee);
    // Reads the second name pairs of these owners at once (BatchRead), so
    // that paysSecondPair() answers them from memory.
    void prefetchOwners(const QList<qint64> &ownerIds);

    // The entered check with this CkID (IDField and names left empty), or
    // nullopt when it is no longer there.
    std::optional<PaymentRow> enteredCheck(qint64 ckId);
    // The same for many checks at once, by CkID; a check no longer there is
    // left out.
    QHash<qint64, PaymentRow> enteredChecks(const QList<qint64> &ckIds);

private:
    const HostDb &m_db;
    QSqlQuery m_owner;
    QSqlQuery m_check;
    // Second name pairs read by prefetchOwners(); a Null pair is incomplete.
    QHash<qint64, QString> m_secondPairs;
};
