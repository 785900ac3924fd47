#include "hostdb/PortfolioQueries.h"

#include "core/RuntimeError.h"
#include "hostdb/HostDb.h"

namespace PortfolioQueries {

// The unary "+" on the two tenant columns only steers SQLite's plan: it
// walks Tenants in table order and finds each tenant's property, owner and
// unit through their indexes, instead of walking the units' index and
// jumping to every tenant, which reads far more pages on a large site.
const char *const PortfolioJoin = " FROM Owners"
                                  " INNER JOIN Properties ON Owners.OwnerID = Properties.POwnerID"
                                  " INNER JOIN Tenants ON Properties.PropID = +Tenants.TPropID"
                                  " INNER JOIN Units ON +Tenants.TenantID = Units.UTenantID";

namespace {

QSqlQuery run(HostDb &db, const QString &sql, const char *operation)
{
    QSqlQuery query = db.prepare(sql);
    HostDb::exec(query, operation);
    return query;
}

QString join()
{
    return QString::fromLatin1(PortfolioJoin);
}

} // namespace

QSqlQuery setupRows(HostDb &db)
{
    static const QString sql
        = u"SELECT Owners.OwnerID, Owners.OFirstName1, Owners.OLastName1, Properties.PropID,"
          " Properties.PropName, Properties.PropAddress1, Properties.PropAddress2,"
          " Properties.PropCity, Properties.PropState, Properties.PropZip, Units.UTenantID,"
          " Units.UAddress"_qs
        + join() + u" ORDER BY Owners.OwnerID, Properties.PropID, Units.UTenantID"_qs;
    return run(db, sql, "reading the portfolio for the setup file");
}

QSqlQuery tenantUploadRows(HostDb &db)
{
    // The database's order: tenants as they were entered, then their units.
    static const QString sql
        = u"SELECT Owners.OwnerID, Properties.PropID, Properties.PropCity, Properties.PropState,"
          " Properties.PropZip, Units.UTenantID, Units.UAddress, Tenants.TenantID,"
          " Tenants.TCurrBal, Tenants.TStartDate, Tenants.TFirstName1, Tenants.TLastName1,"
          " Tenants.TACH"_qs
        + join() + u" ORDER BY Tenants.rowid, Units.rowid"_qs;
    return run(db, sql, "reading the portfolio for the tenant upload");
}

QSqlQuery exportRows(HostDb &db)
{
    static const QString sql
        = u"SELECT Tenants.TenantID, Tenants.TFirstName1, Tenants.TLastName1, Properties.PropName,"
          " Units.UAddress, Tenants.TAddress, Tenants.TCity, Tenants.TState, Tenants.TZip,"
          " Tenants.TEmail1, Tenants.TEmail2, Tenants.TACH"_qs
        + join()
        + u" WHERE trim(Tenants.TACH) = 'Y' COLLATE NOCASE ORDER BY Tenants.rowid, Units.rowid"_qs;
    return run(db, sql, "reading the enrolled tenants");
}

QSqlQuery ownerRows(HostDb &db)
{
    static const QString sql
        = u"SELECT OwnerID, OFirstName1, OLastName1, OAddress1, OAddress2, OCity, OState, OZip,"
          " OPhone1, OPhone2, OEmail1, OACH, OPercent2, OFirstName2, OLastName2"
          " FROM Owners ORDER BY rowid"_qs;
    return run(db, sql, "reading the owners");
}

QSqlQuery vendorRows(HostDb &db)
{
    static const QString sql
        = u"SELECT VenID, VenName, VenAddress1, VenAddress2, VenCity, VenState, VenZip, VenContact,"
          " VenPhone1, VenPhone2, VenEmail1, VACH FROM Vendors ORDER BY rowid"_qs;
    return run(db, sql, "reading the vendors");
}

CompanyContact firstCompany(HostDb &db)
{
    QSqlQuery query = run(db,
        u"SELECT CName1, CEmail1, CPhone1, CPhone2 FROM Company ORDER BY rowid LIMIT 1"_qs,
        "reading the company record");
    if (!query.next())
        throw RuntimeError::noCurrentRecord();
    return CompanyContact { query.value(0), query.value(1), query.value(2), query.value(3) };
}

} // namespace PortfolioQueries
