#pragma once

#include "disburse/PaymentRow.h"
#include "hostdb/HostDb.h"

#include <QSqlQuery>

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
    // The entered check with this CkID (IDField and names left empty), or
    // nullopt when it is no longer there.
    std::optional<PaymentRow> enteredCheck(qint64 ckId);

private:
    QSqlQuery m_owner;
    QSqlQuery m_check;
};
