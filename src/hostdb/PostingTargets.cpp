#include "hostdb/PostingTargets.h"

#include <QVariant>

namespace {
const QString kPropertySql = u"SELECT POwnerID FROM Properties WHERE PropID = :id"_qs;
const QString kTenantSql = u"SELECT TPropID FROM Tenants WHERE TenantID = :id"_qs;
} // namespace

PostingTargets::PostingTargets(const HostDb &db)
    : m_property(db.prepare(kPropertySql)), m_tenant(db.prepare(kTenantSql))
{
}

PostingTargets::Ids PostingTargets::operator()(qint32 id, const QString &code)
{
    Ids ids{0, 0, 0, 0};
    // Any failure below ends the look-up at once, without a message.
    auto ownerOfProperty = [this](qint32 propId, qint32 &owner) {
        m_property.bindValue(u":id"_qs, propId);
        if (!m_property.exec() || !m_property.next())
            return false;
        owner = m_property.value(0).toInt();
        m_property.finish();
        return true;
    };

    if (code == u"O"_qs) {
        ids[0] = id;
    } else if (code == u"P"_qs) {
        qint32 owner = 0;
        if (ownerOfProperty(id, owner))
            ids = {owner, id, 0, 0};
    } else if (code == u"U"_qs || code == u"T"_qs) {
        m_tenant.bindValue(u":id"_qs, id);
        if (!m_tenant.exec() || !m_tenant.next())
            return ids;
        const qint32 propId = m_tenant.value(0).toInt();
        m_tenant.finish();
        qint32 owner = 0;
        if (ownerOfProperty(propId, owner))
            ids = {owner, propId, id, id};
    }
    return ids;
}
