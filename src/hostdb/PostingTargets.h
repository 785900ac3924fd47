#pragma once

#include "hostdb/HostDb.h"

#include <array>

// The owner, property, unit and tenant ids (in that order) that a posting to
// a ledger record touches, given the record's id and post-to code:
//   "O" -> (id, 0, 0, 0); "P" -> (POwnerID, id, 0, 0);
//   "U"/"T" -> (POwnerID, PropID, id, id) through the tenant's property;
//   "B" or anything else -> zeros.
// A record that cannot be found ends the look-up silently with the ids found
// so far (zeros for the rest). The statements are prepared once per object.
class PostingTargets
{
public:
    using Ids = std::array<qint32, 4>;

    explicit PostingTargets(const HostDb &db);
    Ids operator()(qint32 id, const QString &code);

private:
    QSqlQuery m_property;
    QSqlQuery m_tenant;
};
