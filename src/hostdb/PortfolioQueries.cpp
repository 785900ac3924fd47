#include "hostdb/PortfolioQueries.h"

#include "core/RuntimeError.h"
#include "hostdb/EngineSql.h"
#include "hostdb/HostDb.h"

namespace PortfolioQueries {

namespace {

QSqlQuery run(HostDb &db, HostFeature feature, const QString &sql, const char *operation)
{
    db.require(feature);
    QSqlQuery query = db.prepare(sql);
    HostDb::exec(query, operation);
    return query;
}

// Tenants in the order they were entered, each tenant's units likewise.
QString tenantOrder(const HostDb &db)
{
    return db.sql().entryOrder({ u"Tenants"_qs, u"Units"_qs });
}

} // namespace

QString portfolioJoin(const HostDb &db)
{
    return db.sql().portfolioJoin();
}

QSqlQuery setupRows(HostDb &db)
{
    const QString sql
        = u"SELECT Owners.OwnerID, Owners.OFirstName1, Owners.OLastName1, Properties.PropID,"
          " Properties.PropName, Properties.PropAddress1, Properties.PropAddress2,"
          " Properties.PropCity, Properties.PropState, Properties.PropZip, Units.UTenantID,"
          " Units.UAddress"_qs
        + portfolioJoin(db) + u" ORDER BY Owners.OwnerID, Properties.PropID, Units.UTenantID"_qs;
    return run(db, HostFeature::SetupFile, sql, "reading the portfolio for the setup file");
}

QString tenantUploadSql(HostDb &db)
{
    db.require(HostFeature::TenantUpload);
    return u"SELECT Owners.OwnerID, Properties.PropID, Properties.PropCity, Properties.PropState,"
           " Properties.PropZip, Units.UTenantID, Units.UAddress, Tenants.TenantID,"
           " Tenants.TCurrBal, Tenants.TStartDate, Tenants.TFirstName1, Tenants.TLastName1,"
           " Tenants.TACH"_qs
        + portfolioJoin(db) + tenantOrder(db);
}

QSqlQuery exportRows(HostDb &db)
{
    // The trimmed flag is "Y" without regard to case, as the host engine
    // compares text (LIKE with no wildcard in the pattern is that
    // comparison in both engines).
    const QString enrolled = u" WHERE Trim(Tenants.TACH) LIKE 'Y'"_qs;
    const QString sql
        = u"SELECT Tenants.TenantID, Tenants.TFirstName1, Tenants.TLastName1, Properties.PropName,"
          " Units.UAddress, Tenants.TAddress, Tenants.TCity, Tenants.TState, Tenants.TZip,"
          " Tenants.TEmail1, Tenants.TEmail2, Tenants.TACH"_qs
        + portfolioJoin(db) + enrolled + tenantOrder(db);
    return run(db, HostFeature::TenantExport, sql, "reading the enrolled tenants");
}

QSqlQuery ownerRows(HostDb &db)
{
    const QString sql
        = u"SELECT OwnerID, OFirstName1, OLastName1, OAddress1, OAddress2, OCity, OState, OZip,"
          " OPhone1, OPhone2, OEmail1, OACH, OPercent2, OFirstName2, OLastName2 FROM Owners"_qs
        + db.sql().entryOrder({ u"Owners"_qs });
    return run(db, HostFeature::OwnerFile, sql, "reading the owners");
}

QSqlQuery vendorRows(HostDb &db)
{
    const QString sql
        = u"SELECT VenID, VenName, VenAddress1, VenAddress2, VenCity, VenState, VenZip, VenContact,"
          " VenPhone1, VenPhone2, VenEmail1, VACH FROM Vendors"_qs
        + db.sql().entryOrder({ u"Vendors"_qs });
    return run(db, HostFeature::VendorFile, sql, "reading the vendors");
}

CompanyContact firstCompany(HostDb &db)
{
    // Only the first row is read.
    const QString sql = u"SELECT CName1, CEmail1, CPhone1, CPhone2 FROM Company"_qs
        + db.sql().entryOrder({ u"Company"_qs });
    QSqlQuery query = run(db, HostFeature::SetupFile, sql, "reading the company record");
    if (!query.next())
        throw RuntimeError::noCurrentRecord();
    const CompanyContact company { query.value(0), query.value(1), query.value(2), query.value(3) };
    query.finish();
    return company;
}

} // namespace PortfolioQueries
