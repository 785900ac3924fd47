#include "hostdb/PostingTargets.h"

#include "hostdb/BatchRead.h"

#include <QVariant>

namespace {
const QString kPropertySql = u"SELECT POwnerID FROM Properties WHERE PropID = :id"_qs;
const QString kTenantSql = u"SELECT TPropID FROM Tenants WHERE TenantID = :id"_qs;
const QString kPropertyBatchSql = u"SELECT PropID, POwnerID FROM Properties WHERE PropID IN ("_qs;
const QString kTenantBatchSql = u"SELECT TenantID, TPropID FROM Tenants WHERE TenantID IN ("_qs;

// The first value of a keyed look-up; nullopt when there is no row or the
// statement fails.
std::optional<qint32> firstValue(QSqlQuery &query, qint32 id)
{
    query.bindValue(u":id"_qs, id);
    if (!query.exec() || !query.next())
        return std::nullopt;
    const qint32 value = query.value(0).toInt();
    query.finish();
    return value;
}

// What prefetch() read for the id; null when it was not read.
const std::optional<qint32> *known(const QHash<qint64, std::optional<qint32>> &read, qint32 id)
{
    const auto it = read.constFind(id);
    return it == read.cend() ? nullptr : &it.value();
}

// Reads the ids not read yet into `into`, the first row of each.
void readInto(const HostDb &db, const QString &sql, const QList<qint64> &ids,
    QHash<qint64, std::optional<qint32>> &into)
{
    QList<qint64> wanted;
    for (qint64 id : ids) {
        if (!into.contains(id)) {
            into.insert(id, std::nullopt);
            wanted.append(id);
        }
    }
    BatchRead::run(db, sql, wanted, "finding the posting targets", [&](const BatchRead::Row &q) {
        std::optional<qint32> &slot = into[q.value(0).toLongLong()];
        if (!slot)
            slot = q.value(1).toInt();
    });
}

} // namespace

PostingTargets::PostingTargets(const HostDb &db)
    : m_db(db)
    , m_property(db.prepare(kPropertySql))
    , m_tenant(db.prepare(kTenantSql))
{
}

std::optional<qint32> PostingTargets::ownerOfProperty(qint32 propId)
{
    if (const auto *read = known(m_owners, propId))
        return *read;
    return firstValue(m_property, propId);
}

std::optional<qint32> PostingTargets::propertyOfTenant(qint32 tenantId)
{
    if (const auto *read = known(m_properties, tenantId))
        return *read;
    return firstValue(m_tenant, tenantId);
}

PostingTargets::Ids PostingTargets::operator()(qint32 id, const QString &code)
{
    Ids ids { 0, 0, 0, 0 };
    // Any failure below ends the look-up at once, without a message.
    if (code == u"O"_qs) {
        ids[0] = id;
    } else if (code == u"P"_qs) {
        if (const std::optional<qint32> owner = ownerOfProperty(id))
            ids = { *owner, id, 0, 0 };
    } else if (code == u"U"_qs || code == u"T"_qs) {
        const std::optional<qint32> propId = propertyOfTenant(id);
        if (!propId)
            return ids;
        if (const std::optional<qint32> owner = ownerOfProperty(*propId))
            ids = { *owner, *propId, id, id };
    }
    return ids;
}

void PostingTargets::prefetch(const QList<std::pair<QString, qint64>> &postings)
{
    QList<qint64> properties, tenants;
    for (const auto &[code, id] : postings) {
        if (code == u"P"_qs)
            properties.append(id);
        else if (code == u"U"_qs || code == u"T"_qs)
            tenants.append(id);
    }
    readInto(m_db, kTenantBatchSql, tenants, m_properties);
    for (qint64 tenant : std::as_const(tenants)) {
        if (const std::optional<qint32> &prop = m_properties.value(tenant))
            properties.append(*prop);
    }
    readInto(m_db, kPropertyBatchSql, properties, m_owners);
}
