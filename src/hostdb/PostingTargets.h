#pragma once

#include "hostdb/HostDb.h"

#include <QHash>
#include <QList>

#include <array>
#include <optional>
#include <utility>

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

    // Reads at once (BatchRead) what the look-ups for these codes and ids
    // will ask: the tenants' properties and the properties' owners. Ids read
    // this way are answered from memory, the first row of each id as a
    // keyed look-up finds it.
    void prefetch(const QList<std::pair<QString, qint64>> &postings);

private:
    // Owner of a property, property of a tenant; nullopt when the look-up
    // failed (no row, or its value is not a number).
    std::optional<qint32> ownerOfProperty(qint32 propId);
    std::optional<qint32> propertyOfTenant(qint32 tenantId);

    const HostDb &m_db;
    QSqlQuery m_property;
    QSqlQuery m_tenant;
    QHash<qint64, std::optional<qint32>> m_owners; // by PropID, after prefetch()
    QHash<qint64, std::optional<qint32>> m_properties; // by TenantID, after prefetch()
};
