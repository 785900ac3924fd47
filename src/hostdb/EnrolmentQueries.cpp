#include "hostdb/EnrolmentQueries.h"

#include "hostdb/HostDb.h"
#include "hostdb/PortfolioQueries.h"

#include <QRegularExpression>

namespace EnrolmentQueries {

namespace {

// The SQL of one screen's list. The search condition takes :pattern (the
// text anywhere, LIKE) and :id (the key's number, or -1).
struct RosterSql
{
    const char *table; // table whose flag is written
    const char *flag; // flag field
    const char *idField; // field the flag is written by
    const char *from; // FROM clause of the list; null: the portfolio join
    const char *rowKey; // row key expression
    const char *columns; // listed columns
    const char *enrolled; // the enrolled-only condition
    const char *search; // the search condition
    QList<QPair<const char *, const char *>> sorts; // sort text, ORDER BY
};

#define LIKE_PATTERN " LIKE :pattern ESCAPE '\\'"

const RosterSql &sqlFor(Roster roster)
{
    static const RosterSql tenants {
        "Tenants",
        "TACH",
        "TenantID",
        nullptr,
        "Units.rowid",
        "Owners.OwnerID, Properties.PropID, Tenants.TenantID, Owners.OLastName1,"
        " Owners.OFirstName1, Properties.PropName, Units.UAddress, Tenants.TLastName1,"
        " Tenants.TFirstName1, Units.UNumber, Tenants.TACH",
        "trim(substr(Tenants.TACH, 1, 1)) = 'Y' COLLATE NOCASE",
        "(Tenants.TFirstName1" LIKE_PATTERN " OR Tenants.TLastName1" LIKE_PATTERN
        " OR Owners.OFirstName1" LIKE_PATTERN " OR Owners.OLastName1" LIKE_PATTERN
        " OR Properties.PropName" LIKE_PATTERN " OR Units.UAddress" LIKE_PATTERN
        " OR Tenants.TenantID = :id)",
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
        " FROM Owners",
        "Owners.rowid",
        "OwnerID, OLastName1, OFirstName1, OCity, OPhone1, OACH",
        "trim(substr(Owners.OACH, 1, 1)) = 'Y' COLLATE NOCASE",
        "(OFirstName1" LIKE_PATTERN " OR OLastName1" LIKE_PATTERN " OR OFirstName2" LIKE_PATTERN
        " OR OLastName2" LIKE_PATTERN " OR OwnerID = :id)",
        {
            { "Owner Name", "Owners.OLastName1, Owners.OFirstName1" },
            { "Remitra", "OACH, OLastName1, OFirstName1" },
        },
    };
    static const RosterSql vendors {
        "Vendors",
        "VACH",
        "VenID",
        " FROM Vendors",
        "Vendors.rowid",
        "VenID, VenName, VenContact, VenCity, VenPhone1, VACH",
        "trim(substr(Vendors.VACH, 1, 1)) = 'Y' COLLATE NOCASE",
        "(VenName" LIKE_PATTERN " OR VenContact" LIKE_PATTERN " OR VenID = :id)",
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

#undef LIKE_PATTERN

QString fromClause(const RosterSql &sql)
{
    return QString::fromLatin1(sql.from ? sql.from : PortfolioQueries::PortfolioJoin);
}

// For rows picked by their unit's rowid the join is best entered from the
// units, so it is written without the table-order steering of the list.
QString keyedFromClause(const RosterSql &sql)
{
    if (sql.from)
        return QString::fromLatin1(sql.from);
    return u" FROM Units INNER JOIN Tenants ON Tenants.TenantID = Units.UTenantID"
           " INNER JOIN Properties ON Properties.PropID = Tenants.TPropID"
           " INNER JOIN Owners ON Owners.OwnerID = Properties.POwnerID"_qs;
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

// The WHERE clause of a listing (empty when nothing is filtered).
QString whereClause(const RosterSql &sql, const Listing &listing)
{
    QStringList conditions;
    if (listing.enrolledOnly)
        conditions << QString::fromLatin1(sql.enrolled);
    if (!listing.search.trimmed().isEmpty())
        conditions << QString::fromLatin1(sql.search);
    return conditions.isEmpty() ? QString() : u" WHERE "_qs + conditions.join(u" AND "_qs);
}

void bindSearch(QSqlQuery &query, Roster roster, const Listing &listing)
{
    const QString text = listing.search.trimmed();
    if (text.isEmpty())
        return;
    QString escaped = text;
    escaped.replace(u'\\', u"\\\\"_qs).replace(u'%', u"\\%"_qs).replace(u'_', u"\\_"_qs);
    query.bindValue(u":pattern"_qs, QString(u'%' + escaped + u'%'));
    // "T12" or "12" finds tenant 12; anything else matches no id.
    static const QRegularExpression key(u"^([A-Za-z])?\\s*(\\d{1,15})$"_qs);
    const QRegularExpressionMatch m = key.match(text);
    qint64 id = -1;
    if (m.hasMatch()
        && (m.captured(1).isEmpty() || m.captured(1).at(0).toUpper() == keyLetter(roster)))
        id = m.captured(2).toLongLong();
    query.bindValue(u":id"_qs, id);
}

QString orderClause(const RosterSql &sql, const QString &sortText)
{
    for (const auto &sort : sql.sorts) {
        if (sortText == QLatin1String(sort.first))
            return u" ORDER BY "_qs + QString::fromLatin1(sort.second) + u", "_qs
                + QString::fromLatin1(sql.rowKey);
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
    const RosterSql &sql = sqlFor(roster);
    QSqlQuery query = db.prepare(u"SELECT "_qs + QString::fromLatin1(sql.rowKey) + fromClause(sql)
        + whereClause(sql, listing) + orderClause(sql, listing.sortText));
    bindSearch(query, roster, listing);
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
    const RosterSql &sql = sqlFor(roster);
    QString marks;
    for (qsizetype i = 0; i < keys.size(); ++i)
        marks += i ? u",?"_qs : u"?"_qs;
    QSqlQuery query = db.prepare(u"SELECT "_qs + QString::fromLatin1(sql.rowKey) + u", "_qs
        + QString::fromLatin1(sql.columns) + keyedFromClause(sql) + u" WHERE "_qs
        + QString::fromLatin1(sql.rowKey) + u" IN ("_qs + marks + u")"_qs);
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
    const RosterSql &sql = sqlFor(roster);
    HostDb::Transaction tx(db);
    QSqlQuery query = db.prepare(u"UPDATE "_qs + QString::fromLatin1(sql.table) + u" SET "_qs
        + QString::fromLatin1(sql.flag) + u" = :flag WHERE "_qs + QString::fromLatin1(sql.idField)
        + u" = :id"_qs);
    query.bindValue(u":flag"_qs, flag);
    query.bindValue(u":id"_qs, id);
    HostDb::exec(query, "saving the enrolment flag");
    tx.commit();
}

int setFlagForListed(HostDb &db, Roster roster, const Listing &listing, const QString &flag)
{
    const RosterSql &sql = sqlFor(roster);
    const QString table = QString::fromLatin1(sql.table);
    const QString idField = table + u'.' + QString::fromLatin1(sql.idField);
    HostDb::Transaction tx(db);
    QSqlQuery query = db.prepare(u"UPDATE "_qs + table + u" SET "_qs + QString::fromLatin1(sql.flag)
        + u" = :flag WHERE "_qs + QString::fromLatin1(sql.idField) + u" IN (SELECT "_qs + idField
        + fromClause(sql) + whereClause(sql, listing) + u")"_qs);
    query.bindValue(u":flag"_qs, flag);
    bindSearch(query, roster, listing);
    HostDb::exec(query, "setting the enrolment flags");
    const int written = query.numRowsAffected();
    tx.commit();
    return written;
}

} // namespace EnrolmentQueries
