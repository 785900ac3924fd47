#include "hostdb/RentLookup.h"

#include "hostdb/BatchRead.h"
#include "hostdb/EngineSql.h"

#include <QDate>

#include <cmath>

namespace {
const QString kPropertySql = u"SELECT POwnerID FROM Properties WHERE PropID = :id"_qs;
const QString kUnitSql = u"SELECT UAddress FROM Units WHERE UTenantID = :id"_qs;
const QString kTenantSql = u"SELECT TFirstName1, TLastName1 FROM Tenants WHERE TenantID = :id"_qs;
// The same, for a batch of ids ("IN (" is followed by the marks).
const QString kPropertyBatchSql = u"SELECT PropID, POwnerID FROM Properties WHERE PropID IN ("_qs;
const QString kUnitBatchSql = u"SELECT UTenantID, UAddress FROM Units WHERE UTenantID IN ("_qs;
const QString kTenantBatchSql
    = u"SELECT TenantID, TFirstName1, TLastName1 FROM Tenants WHERE TenantID IN ("_qs;
// The income lines of one day.
const QString kIncomeSql = u"SELECT TransTID, TransAmount, TransCheckNumber FROM Transactions"
                           " WHERE TransType = 'I' AND TransDate = :date"_qs;

const HostDb &checked(const HostDb &db)
{
    db.require(HostFeature::RentReview);
    return db;
}

// A whole-number id, or nullopt.
std::optional<qint64> wholeId(const QVariant &id)
{
    bool ok = false;
    const double value = id.toDouble(&ok);
    if (!ok || !std::isfinite(value) || std::trunc(value) != value || std::fabs(value) > 9.0e15)
        return std::nullopt;
    return static_cast<qint64>(value);
}

bool sameCheckNumber(const QVariant &a, const QVariant &b)
{
    if (a.isNull() || b.isNull())
        return a.isNull() && b.isNull();
    return a.toDouble() == b.toDouble();
}
} // namespace

RentLookup::ReadScope::ReadScope(const HostDb &db)
    : m_db(db)
{
    const QString begin = db.sql().beginRead();
    if (begin.isEmpty()) {
        m_open = db.database().transaction();
    } else {
        QSqlQuery query(db.database());
        m_open = query.exec(begin);
    }
}

RentLookup::ReadScope::~ReadScope()
{
    if (!m_open)
        return;
    const QString commit = m_db.sql().commit();
    if (commit.isEmpty()) {
        m_db.database().commit();
    } else {
        QSqlQuery end(m_db.database());
        end.exec(commit);
    }
}

RentLookup::RentLookup(const HostDb &db)
    : m_db(checked(db))
    , m_property(db.prepare(kPropertySql))
    , m_unit(db.prepare(kUnitSql))
    , m_tenant(db.prepare(kTenantSql))
    , m_income(db.prepare(kIncomeSql))
{
}

template <typename Value, typename Take>
void RentLookup::readBatches(const QString &sql, const char *operation, const QList<qint64> &ids,
    QHash<qint64, std::optional<Value>> &into, Take take)
{
    QList<qint64> wanted;
    for (qint64 id : ids) {
        if (!into.contains(id)) {
            into.insert(id, std::nullopt);
            wanted.append(id);
        }
    }
    BatchRead::run(m_db, sql, wanted, operation, [&](const BatchRead::Row &q) {
        // The first row of an id, as a keyed look-up meets it.
        std::optional<Value> &slot = into[q.value(0).toLongLong()];
        if (!slot)
            slot = take(q);
    });
}

void RentLookup::prefetch(const QList<qint64> &propertyIds, const QList<qint64> &tenantIds)
{
    readBatches(kPropertyBatchSql, "finding the properties", propertyIds, m_owners,
        [](const BatchRead::Row &q) { return q.value(1); });
    readBatches(kUnitBatchSql, "finding the units", tenantIds, m_addresses,
        [](const BatchRead::Row &q) { return q.value(1); });
    readBatches(
        kTenantBatchSql, "finding the tenants", tenantIds, m_names, [](const BatchRead::Row &q) {
            return TenantName { q.value(1), q.value(2) };
        });
}

template <typename Value>
const std::optional<Value> *RentLookup::fetched(
    const QHash<qint64, std::optional<Value>> &found, const QVariant &id)
{
    if (found.isEmpty() || id.typeId() != QMetaType::LongLong)
        return nullptr;
    const auto it = found.constFind(id.toLongLong());
    return it == found.cend() ? nullptr : &it.value();
}

std::optional<QVariant> RentLookup::ownerOfProperty(const QVariant &propId)
{
    if (const auto *known = fetched(m_owners, propId))
        return *known;
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
    if (const auto *known = fetched(m_addresses, tenantId))
        return *known;
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
    if (const auto *known = fetched(m_names, tenantId))
        return *known;
    m_tenant.bindValue(u":id"_qs, tenantId);
    HostDb::exec(m_tenant, "finding a tenant");
    std::optional<TenantName> name;
    if (m_tenant.next())
        name = TenantName { m_tenant.value(0), m_tenant.value(1) };
    m_tenant.finish();
    return name;
}

const QMultiHash<qint64, RentLookup::Income> &RentLookup::incomeOn(const QString &isoDate)
{
    auto it = m_incomeByDate.find(isoDate);
    if (it != m_incomeByDate.end())
        return it.value();
    QMultiHash<qint64, Income> lines;
    m_income.bindValue(u":date"_qs, QDate::fromString(isoDate, Qt::ISODate));
    HostDb::exec(m_income, "looking for earlier postings");
    while (m_income.next()) {
        const std::optional<qint64> tenant = wholeId(m_income.value(0));
        const std::optional<Currency> amount = Currency::fromVariant(m_income.value(1));
        if (tenant && amount)
            lines.insert(*tenant, Income { *amount, m_income.value(2) });
    }
    m_income.finish();
    return m_incomeByDate.insert(isoDate, lines).value();
}

std::optional<RentLookup::Posted> RentLookup::postedPayment(
    const QVariant &tenantId, Currency amount, const QString &isoDate, const QVariant &checkNumber)
{
    const std::optional<qint64> tenant = wholeId(tenantId);
    if (!tenant || isoDate.isEmpty())
        return std::nullopt;
    const QMultiHash<qint64, Income> &lines = incomeOn(isoDate);
    for (auto it = lines.constFind(*tenant); it != lines.cend() && it.key() == *tenant; ++it) {
        if (it->amount == amount && sameCheckNumber(it->checkNumber, checkNumber))
            return Posted { isoDate };
    }
    return std::nullopt;
}
