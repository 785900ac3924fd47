#include "hostdb/EnrolmentQueries.h"

#include "hostdb/EngineSql.h"
#include "hostdb/HostDb.h"
#include "hostdb/PortfolioQueries.h"
#include "hostdb/TenantListing.h"

#include <QRegularExpression>

namespace EnrolmentQueries {

namespace {

// The SQL of one screen's list.
struct RosterSql
{
    const char *table; // table whose flag is written
    const char *flag; // flag field
    const char *idField; // field the flag is written by
    const char *qualifiedId; // the same, with its table
    bool portfolio; // listed through the portfolio join, else from the table
    const char *rowTable; // table whose row a listed row is (its handle is the key)
    HostFeature feature; // what the screen needs of the host
    const char *columns; // listed columns
    QList<const char *> searchFields; // fields the search text is looked for in
    QList<QPair<const char *, const char *>> sorts; // sort text, ORDER BY
};

const RosterSql &sqlFor(Roster roster)
{
    static const RosterSql tenants {
        "Tenants",
        "TACH",
        "TenantID",
        "Tenants.TenantID",
        true,
        "Units",
        HostFeature::TenantEnrolment,
        "Owners.OwnerID, Properties.PropID, Tenants.TenantID, Owners.OLastName1,"
        " Owners.OFirstName1, Properties.PropName, Units.UAddress, Tenants.TLastName1,"
        " Tenants.TFirstName1, Units.UNumber, Tenants.TACH",
        { "Tenants.TFirstName1", "Tenants.TLastName1", "Owners.OFirstName1", "Owners.OLastName1",
            "Properties.PropName", "Units.UAddress" },
        {
            { "Owner Name",
                "Owners.OLastName1, Owners.OFirstName1, Properties.PropName, Units.UAddress" },
            { "Property/Building Name", "PropName, UAddress" },
            { "Rental Unit Address", "UAddress, UNumber" },
            { "Tenant Name", "TLastName1, TFirstName1" },
            { "Remitra", "TACH, TLastName1, TFirstName1" },
        },
    };
    static const RosterSql owners {
        "Owners",
        "OACH",
        "OwnerID",
        "Owners.OwnerID",
        false,
        "Owners",
        HostFeature::OwnerEnrolment,
        "OwnerID, OLastName1, OFirstName1, OCity, OPhone1, OACH",
        { "OFirstName1", "OLastName1", "OFirstName2", "OLastName2" },
        {
            { "Owner Name", "Owners.OLastName1, Owners.OFirstName1" },
            { "Remitra", "OACH, OLastName1, OFirstName1" },
        },
    };
    static const RosterSql vendors {
        "Vendors",
        "VACH",
        "VenID",
        "Vendors.VenID",
        false,
        "Vendors",
        HostFeature::VendorEnrolment,
        "VenID, VenName, VenContact, VenCity, VenPhone1, VACH",
        { "VenName", "VenContact" },
        {
            { "Vendor Name", "Vendors.VenName, Vendors.VenID" },
            { "Remitra", "VACH, Vendors.VenName, Vendors.VenID" },
        },
    };
    switch (roster) {
    case Roster::Tenants:
        return tenants;
    case Roster::Owners:
        return owners;
    case Roster::Vendors:
        break;
    }
    return vendors;
}

QString latin(const char *text)
{
    return QString::fromLatin1(text);
}

// The unit's or the table's row handle, or, where the engine has none, the
// tenant's, owner's or vendor's id.
QString rowKey(const HostDb &db, const RosterSql &sql)
{
    return db.sql().rowKey(latin(sql.rowTable), latin(sql.qualifiedId));
}

const RosterSql &checkedSql(const HostDb &db, Roster roster)
{
    const RosterSql &sql = sqlFor(roster);
    db.require(sql.feature);
    return sql;
}

QString fromClause(const HostDb &db, const RosterSql &sql)
{
    return sql.portfolio ? PortfolioQueries::portfolioJoin(db) : u" FROM "_qs + latin(sql.table);
}

// Rows picked by their unit's key are best found entering the join from
// the units.
QString keyedFromClause(const HostDb &db, const RosterSql &sql)
{
    if (!sql.portfolio)
        return fromClause(db, sql);
    return db.sql().portfolioJoinFromUnits();
}

QChar keyLetter(Roster roster)
{
    switch (roster) {
    case Roster::Tenants:
        return u'T';
    case Roster::Owners:
        return u'O';
    case Roster::Vendors:
        break;
    }
    return u'V';
}

// The WHERE clause of a listing (empty when nothing is filtered). The flag's
// first character, blanks removed, is compared without regard to case: it
// is "Y" exactly when the flag begins with "Y" (LIKE ignores case in both
// engines).
QString whereClause(const HostDb &db, const RosterSql &sql, const Listing &listing)
{
    QStringList conditions;
    const QString flag = latin(sql.table) + u'.' + latin(sql.flag);
    if (listing.enrolledOnly)
        conditions << flag + u" LIKE 'Y%'"_qs;
    if (!listing.search.trimmed().isEmpty()) {
        const QString like = db.sql().likeClause();
        QStringList any;
        for (const char *field : sql.searchFields)
            any << latin(field) + like;
        any << latin(sql.qualifiedId) + u" = :id"_qs;
        conditions << u'(' + any.join(u" OR "_qs) + u')';
    }
    return conditions.isEmpty() ? QString() : u" WHERE "_qs + conditions.join(u" AND "_qs);
}

void bindSearch(const HostDb &db, QSqlQuery &query, Roster roster, const Listing &listing)
{
    const QString text = listing.search.trimmed();
    if (text.isEmpty())
        return;
    // The text is looked for as it stands: its own wildcards are escaped.
    query.bindValue(u":pattern"_qs, db.sql().containsPattern(text));
    // "T12" or "12" finds tenant 12; anything else matches no id.
    static const QRegularExpression key(u"^([A-Za-z])?\\s*(\\d{1,9})$"_qs);
    const QRegularExpressionMatch m = key.match(text);
    qint64 id = -1;
    if (m.hasMatch()
        && (m.captured(1).isEmpty() || m.captured(1).at(0).toUpper() == keyLetter(roster)))
        id = m.captured(2).toLongLong();
    query.bindValue(u":id"_qs, id);
}

QString orderClause(const HostDb &db, const RosterSql &sql, const QString &sortText)
{
    for (const auto &sort : sql.sorts) {
        if (sortText == QLatin1String(sort.first))
            return u" ORDER BY "_qs + latin(sort.second) + u", "_qs + rowKey(db, sql);
    }
    return QString();
}

} // namespace

QStringList sortTexts(Roster roster)
{
    QStringList out;
    for (const auto &sort : sqlFor(roster).sorts)
        out << QString::fromLatin1(sort.first);
    return out;
}

int columnCount(Roster roster)
{
    return roster == Roster::Tenants ? 11 : 6;
}

int flagColumn(Roster roster)
{
    return columnCount(roster) - 1;
}

int idColumn(Roster roster)
{
    return roster == Roster::Tenants ? 2 : 0;
}

QList<qint64> listedKeys(HostDb &db, Roster roster, const Listing &listing)
{
    // A long tenant list is worked out faster in the program than by the
    // database's sort of the join, where it can be (same rows, same order).
    if (roster == Roster::Tenants) {
        if (std::optional<QList<qint64>> keys = TenantListing::keys(db, listing))
            return *std::move(keys);
    }
    return listedKeysBySql(db, roster, listing);
}

QList<qint64> listedKeysBySql(HostDb &db, Roster roster, const Listing &listing)
{
    const RosterSql &sql = checkedSql(db, roster);
    QSqlQuery query = db.prepare(u"SELECT "_qs + rowKey(db, sql) + fromClause(db, sql)
        + whereClause(db, sql, listing) + orderClause(db, sql, listing.sortText));
    bindSearch(db, query, roster, listing);
    HostDb::exec(query, "listing the enrolment rows");
    QList<qint64> keys;
    while (query.next())
        keys.append(query.value(0).toLongLong());
    return keys;
}

QHash<qint64, QList<QVariant>> rowsFor(HostDb &db, Roster roster, const QList<qint64> &keys)
{
    QHash<qint64, QList<QVariant>> rows;
    if (keys.isEmpty())
        return rows;
    const RosterSql &sql = checkedSql(db, roster);
    QString marks;
    for (qsizetype i = 0; i < keys.size(); ++i)
        marks += i ? u",?"_qs : u"?"_qs;
    const QString key = rowKey(db, sql);
    QSqlQuery query = db.prepare(u"SELECT "_qs + key + u", "_qs + latin(sql.columns)
        + keyedFromClause(db, sql) + u" WHERE "_qs + key + u" IN ("_qs + marks + u")"_qs);
    for (qsizetype i = 0; i < keys.size(); ++i)
        query.bindValue(int(i), keys[i]);
    HostDb::exec(query, "reading the enrolment rows");
    const int columns = columnCount(roster);
    while (query.next()) {
        QList<QVariant> values;
        values.reserve(columns);
        for (int c = 0; c < columns; ++c)
            values.append(query.value(c + 1));
        rows.insert(query.value(0).toLongLong(), values);
    }
    return rows;
}

void setFlag(HostDb &db, Roster roster, const QVariant &id, const QString &flag)
{
    const RosterSql &sql = checkedSql(db, roster);
    HostDb::Transaction tx(db);
    QSqlQuery query = db.prepare(u"UPDATE "_qs + latin(sql.table) + u" SET "_qs + latin(sql.flag)
        + u" = :flag WHERE "_qs + latin(sql.idField) + u" = :id"_qs);
    query.bindValue(u":flag"_qs, flag);
    query.bindValue(u":id"_qs, id);
    HostDb::exec(query, "saving the enrolment flag");
    tx.commit();
}

int setFlagForListed(HostDb &db, Roster roster, const Listing &listing, const QString &flag)
{
    const RosterSql &sql = checkedSql(db, roster);
    HostDb::Transaction tx(db);
    QSqlQuery query = db.prepare(u"UPDATE "_qs + latin(sql.table) + u" SET "_qs + latin(sql.flag)
        + u" = :flag WHERE "_qs + latin(sql.idField) + u" IN (SELECT "_qs + latin(sql.qualifiedId)
        + fromClause(db, sql) + whereClause(db, sql, listing) + u")"_qs);
    query.bindValue(u":flag"_qs, flag);
    bindSearch(db, query, roster, listing);
    HostDb::exec(query, "setting the enrolment flags");
    const int written = query.numRowsAffected();
    tx.commit();
    return written;
}

} // namespace EnrolmentQueries
