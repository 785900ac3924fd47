#pragma once

#include <QSqlQuery>
#include <QVariant>

class HostDb;

// The reads behind the transfer files: the portfolio join (owner, property,
// tenant and unit of every tenant that has an owner-linked property and a
// unit row), the Owners and Vendors tables, and the company contact. Each
// function returns an executed forward-only query whose columns are in the
// order of its enum, so callers stream rows without holding them. "The
// database's order" is the order rows were entered in (SQLite's rowid); the
// Access engine gives its own order.
namespace PortfolioQueries {

// Columns of setupRows(), ordered by owner, property and unit.
enum SetupColumn {
    SetupOwnerID,
    SetupOFirstName1,
    SetupOLastName1,
    SetupPropID,
    SetupPropName,
    SetupPropAddress1,
    SetupPropAddress2,
    SetupPropCity,
    SetupPropState,
    SetupPropZip,
    SetupUTenantID,
    SetupUAddress,
};
QSqlQuery setupRows(HostDb &db);

// Columns of tenantUploadSql(), in the database's order of tenants.
enum TenantColumn {
    TenantOwnerID,
    TenantPropID,
    TenantPropCity,
    TenantPropState,
    TenantPropZip,
    TenantUTenantID,
    TenantUAddress,
    TenantTenantID,
    TenantTCurrBal,
    TenantTStartDate,
    TenantTFirstName1,
    TenantTLastName1,
    TenantTACH,
};
// The statement of the tenant upload's rows (the host must hold its fields).
QString tenantUploadSql(HostDb &db);

// Columns of exportRows(): the tenants whose trimmed flag reads "Y" without
// regard to case, in the database's order.
enum ExportColumn {
    ExportTenantID,
    ExportTFirstName1,
    ExportTLastName1,
    ExportPropName,
    ExportUAddress,
    ExportTAddress,
    ExportTCity,
    ExportTState,
    ExportTZip,
    ExportTEmail1,
    ExportTEmail2,
    ExportTACH,
};
QSqlQuery exportRows(HostDb &db);

// Columns of ownerRows(), every owner in the database's order.
enum OwnerColumn {
    OwnerOwnerID,
    OwnerOFirstName1,
    OwnerOLastName1,
    OwnerOAddress1,
    OwnerOAddress2,
    OwnerOCity,
    OwnerOState,
    OwnerOZip,
    OwnerOPhone1,
    OwnerOPhone2,
    OwnerOEmail1,
    OwnerOACH,
    OwnerOPercent2,
    OwnerOFirstName2,
    OwnerOLastName2,
};
QSqlQuery ownerRows(HostDb &db);

// Columns of vendorRows(), every vendor in the database's order.
enum VendorColumn {
    VendorVenID,
    VendorVenName,
    VendorVenAddress1,
    VendorVenAddress2,
    VendorVenCity,
    VendorVenState,
    VendorVenZip,
    VendorVenContact,
    VendorVenPhone1,
    VendorVenPhone2,
    VendorVenEmail1,
    VendorVACH,
};
QSqlQuery vendorRows(HostDb &db);

// The contact fields of the first Company row. An empty Company table
// raises the no-current-record error.
struct CompanyContact
{
    QVariant name, email, phone1, phone2;
};
CompanyContact firstCompany(HostDb &db);

// The FROM clause of the portfolio join (inner joins only), written for the
// database's engine (Access wants nested parentheses).
QString portfolioJoin(const HostDb &db);

} // namespace PortfolioQueries
