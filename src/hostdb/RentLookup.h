#pragma once

#include "core/Currency.h"
#include "hostdb/HostDb.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QVariant>

#include <optional>

// The keyed look-ups the review screen makes for each payment: the owner of a
// property, the address of a tenant's unit, a tenant's name, and whether the
// ledger already holds a payment. Statements are prepared once per object;
// ids are bound as given (see RentPayment::key). Creating one checks the
// host's fields for the review (error 3265).
class RentLookup
{
public:
    explicit RentLookup(const HostDb &db);

    // Keeps one read snapshot open for a run of look-ups: one consistent view
    // of the host database, and the engine's lock and page cache are taken
    // once rather than for every statement. Best effort: where a snapshot
    // cannot be begun (a transaction is already open), the look-ups run as
    // they are. Never used around writes.
    class ReadScope
    {
    public:
        explicit ReadScope(const HostDb &db);
        ~ReadScope();
        ReadScope(const ReadScope &) = delete;
        ReadScope &operator=(const ReadScope &) = delete;

    private:
        const HostDb &m_db;
        bool m_open = false;
    };

    // Reads at once what the look-ups below will ask of these properties and
    // tenants (a batch of ids per statement, one run of statements per
    // table), so that a long payment file costs a few statements rather than
    // three for every line. Ids read this way are answered from memory, the
    // first row of each id as a keyed look-up finds it; other ids still go
    // to the database.
    void prefetch(const QList<qint64> &propertyIds, const QList<qint64> &tenantIds);

    // POwnerID of the property; nullopt when there is no such property.
    std::optional<QVariant> ownerOfProperty(const QVariant &propId);
    // UAddress of the (first) unit of the tenant; nullopt when none.
    std::optional<QVariant> unitAddress(const QVariant &tenantId);

    struct TenantName
    {
        QVariant first;
        QVariant last;
    };
    std::optional<TenantName> tenantName(const QVariant &tenantId);

    // An income line on the tenant's ledger with this amount, date (ISO) and
    // check number (Null matches Null); nullopt when none. The ledger has no
    // index the look-up could use: the income lines of a date are read once,
    // when a payment of that date is first looked up.
    struct Posted
    {
        QString date;
    };
    std::optional<Posted> postedPayment(const QVariant &tenantId, Currency amount,
        const QString &isoDate, const QVariant &checkNumber);

private:
    struct Income
    {
        Currency amount;
        QVariant checkNumber;
    };
    const QMultiHash<qint64, Income> &incomeOn(const QString &isoDate);

    // Values of the rows of `ids` not read yet (BatchRead; the statement's
    // first column is the id), the first row of each id kept.
    template <typename Value, typename Take>
    void readBatches(const QString &sql, const char *operation, const QList<qint64> &ids,
        QHash<qint64, std::optional<Value>> &into, Take take);
    template <typename Value>
    static const std::optional<Value> *fetched(
        const QHash<qint64, std::optional<Value>> &found, const QVariant &id);

    const HostDb &m_db;
    QSqlQuery m_property;
    QSqlQuery m_unit;
    QSqlQuery m_tenant;
    QSqlQuery m_income;
    // What prefetch() read, by id; nullopt for an id without a row.
    QHash<qint64, std::optional<QVariant>> m_owners;
    QHash<qint64, std::optional<QVariant>> m_addresses;
    QHash<qint64, std::optional<TenantName>> m_names;
    QHash<QString, QMultiHash<qint64, Income>> m_incomeByDate; // by tenant
};
