#include "hostdb/RentLookup.h"

namespace {
const QString kPropertySql = u"SELECT POwnerID FROM Properties WHERE PropID = :id"_qs;
const QString kUnitSql = u"SELECT UAddress FROM Units WHERE UTenantID = :id"_qs;
const QString kTenantSql = u"SELECT TFirstName1, TLastName1 FROM Tenants WHERE TenantID = :id"_qs;
// Income lines of one tenant (TransTenantIndex), narrowed to the payment.
// "IS" matches a Null check number with Null.
const QString kPostedSql = u"SELECT TransDate FROM Transactions"
                           " WHERE TransTID = :tid AND TransType = 'I' AND TransAmount = :amount"
                           " AND TransDate = :date AND TransCheckNumber IS :check"_qs;
} // namespace

RentLookup::ReadScope::ReadScope(const HostDb &db)
    : m_db(db)
{
    if (db.isAccess()) {
        m_open = db.database().transaction();
    } else {
        // A deferred transaction: the shared lock comes with the first read,
        // and no writer of the host is kept out.
        QSqlQuery begin(db.database());
        m_open = begin.exec(u"BEGIN DEFERRED"_qs);
    }
}

RentLookup::ReadScope::~ReadScope()
{
    if (!m_open)
        return;
    if (m_db.isAccess()) {
        m_db.database().commit();
    } else {
        QSqlQuery end(m_db.database());
        end.exec(u"COMMIT"_qs);
    }
}

RentLookup::RentLookup(const HostDb &db)
    : m_property(db.prepare(kPropertySql))
    , m_unit(db.prepare(kUnitSql))
    , m_tenant(db.prepare(kTenantSql))
    , m_hasPosted(!db.isAccess())
{
    if (m_hasPosted)
        m_posted = db.prepare(kPostedSql);
}

std::optional<QVariant> RentLookup::ownerOfProperty(const QVariant &propId)
{
    m_property.bindValue(u":id"_qs, propId);
    HostDb::exec(m_property, "finding a property");
    std::optional<QVariant> owner;
    if (m_property.next())
        owner = m_property.value(0);
    m_property.finish();
    return owner;
}

std::optional<QVariant> RentLookup::unitAddress(const QVariant &tenantId)
{
    m_unit.bindValue(u":id"_qs, tenantId);
    HostDb::exec(m_unit, "finding a unit");
    std::optional<QVariant> address;
    if (m_unit.next())
        address = m_unit.value(0);
    m_unit.finish();
    return address;
}

std::optional<RentLookup::TenantName> RentLookup::tenantName(const QVariant &tenantId)
{
    m_tenant.bindValue(u":id"_qs, tenantId);
    HostDb::exec(m_tenant, "finding a tenant");
    std::optional<TenantName> name;
    if (m_tenant.next())
        name = TenantName { m_tenant.value(0), m_tenant.value(1) };
    m_tenant.finish();
    return name;
}

std::optional<RentLookup::Posted> RentLookup::postedPayment(
    const QVariant &tenantId, Currency amount, const QString &isoDate, const QVariant &checkNumber)
{
    if (!m_hasPosted)
        return std::nullopt;
    m_posted.bindValue(u":tid"_qs, tenantId);
    m_posted.bindValue(u":amount"_qs, amount.toDatabaseValue());
    m_posted.bindValue(u":date"_qs, isoDate);
    m_posted.bindValue(u":check"_qs, checkNumber);
    HostDb::exec(m_posted, "looking for an earlier posting");
    std::optional<Posted> posted;
    if (m_posted.next())
        posted = Posted { m_posted.value(0).toString() };
    m_posted.finish();
    return posted;
}
