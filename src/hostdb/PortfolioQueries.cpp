#include "hostdb/PortfolioQueries.h"

#include "core/RuntimeError.h"
#include "hostdb/HostDb.h"

namespace PortfolioQueries {

namespace {

QSqlQuery run(HostDb &db, const QString &sql, const char *operation)
{
    QSqlQuery query = db.prepare(sql);
    HostDb::exec(query, operation);
    return query;
}

// The order rows were entered in, where the engine can name it.
QString entryOrder(const HostDb &db, const char *sqliteOrder)
{
    return db.isAccess() ? QString() : u" ORDER BY "_qs + QString::fromLatin1(sqliteOrder);
}

} // namespace

QString portfolioJoin(const HostDb &db)
{
    if (db.isAccess()) {
        return u" FROM ((Owners INNER JOIN Properties ON Owners.OwnerID = Properties.POwnerID)"
               " INNER JOIN Tenants ON Properties.PropID = Tenants.TPropID)"
               " INNER JOIN Units ON Tenants.TenantID = Units.UTenantID"_qs;
    }
    // The unary "+" on the two tenant columns only steers SQLite's plan: it
    // walks Tenants in table order and finds each tenant's property, owner
    // and unit through their indexes, instead of walking the units' index and
    // jumping to every tenant, which reads far more pages on a large site.
    return u" FROM Owners"
           " INNER JOIN Properties ON Owners.OwnerID = Properties.POwnerID"
           " INNER JOIN Tenants ON Properties.PropID = +Tenants.TPropID"
           " INNER JOIN Units ON +Tenants.TenantID = Units.UTenantID"_qs;
}

QSqlQuery setupRows(HostDb &db)
{
    const QString sql
        = u"SELECT Owners.OwnerID, Owners.OFirstName1, Owners.OLastName1, Properties.PropID,"
          " Properties.PropName, Properties.PropAddress1, Properties.PropAddress2,"
          " Properties.PropCity, Properties.PropState, Properties.PropZip, Units.UTenantID,"
          " Units.UAddress"_qs
        + portfolioJoin(db) + u" ORDER BY Owners.OwnerID, Properties.PropID, Units.UTenantID"_qs;
    return run(db, sql, "reading the portfolio for the setup file");
}

QSqlQuery tenantUploadRows(HostDb &db)
{
    const QString sql
        = u"SELECT Owners.OwnerID, Properties.PropID, Properties.PropCity, Properties.PropState,"
          " Properties.PropZip, Units.UTenantID, Units.UAddress, Tenants.TenantID,"
          " Tenants.TCurrBal, Tenants.TStartDate, Tenants.TFirstName1, Tenants.TLastName1,"
          " Tenants.TACH"_qs
        + portfolioJoin(db) + entryOrder(db, "Tenants.rowid, Units.rowid");
    return run(db, sql, "reading the portfolio for the tenant upload");
}

QSqlQuery exportRows(HostDb &db)
{
    // Without regard to case, as the host engine compares text.
    const QString enrolled = db.isAccess() ? u" WHERE Trim(Tenants.TACH) = 'Y'"_qs
                                           : u" WHERE trim(Tenants.TACH) = 'Y' COLLATE NOCASE"_qs;
    const QString sql
        = u"SELECT Tenants.TenantID, Tenants.TFirstName1, Tenants.TLastName1, Properties.PropName,"
          " Units.UAddress, Tenants.TAddress, Tenants.TCity, Tenants.TState, Tenants.TZip,"
          " Tenants.TEmail1, Tenants.TEmail2, Tenants.TACH"_qs
        + portfolioJoin(db) + enrolled + entryOrder(db, "Tenants.rowid, Units.rowid");
    return run(db, sql, "reading the enrolled tenants");
}

QSqlQuery ownerRows(HostDb &db)
{
    const QString sql
        = u"SELECT OwnerID, OFirstName1, OLastName1, OAddress1, OAddress2, OCity, OState, OZip,"
          " OPhone1, OPhone2, OEmail1, OACH, OPercent2, OFirstName2, OLastName2 FROM Owners"_qs
        + entryOrder(db, "rowid");
    return run(db, sql, "reading the owners");
}

QSqlQuery vendorRows(HostDb &db)
{
    const QString sql
        = u"SELECT VenID, VenName, VenAddress1, VenAddress2, VenCity, VenState, VenZip, VenContact,"
          " VenPhone1, VenPhone2, VenEmail1, VACH FROM Vendors"_qs
        + entryOrder(db, "rowid");
    return run(db, sql, "reading the vendors");
}

CompanyContact firstCompany(HostDb &db)
{
    const QString sql = db.isAccess()
        ? u"SELECT TOP 1 CName1, CEmail1, CPhone1, CPhone2 FROM Company"_qs
        : u"SELECT CName1, CEmail1, CPhone1, CPhone2 FROM Company ORDER BY rowid LIMIT 1"_qs;
    QSqlQuery query = run(db, sql, "reading the company record");
    if (!query.next())
        throw RuntimeError::noCurrentRecord();
    return CompanyContact { query.value(0), query.value(1), query.value(2), query.value(3) };
}

} // namespace PortfolioQueries
