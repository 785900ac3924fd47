#pragma once

#include <QString>

class HostDb;

// Builds demo Dwellix folders: a portfolio of owners, properties, units and
// tenants (with VACANT placeholders and every enrolment flag), vendors, the
// company record, entered checks to enrolled owners and vendors with their
// split lines, and an IDFILE.DAT with the account settings.
namespace DemoSite {

struct Counts
{
    int owners = 0;
    int properties = 0;
    int tenants = 0;
    int vendors = 0;
    int checks = 0;
    int splits = 0;
};

// How many tenants (and units) a site gets unless told otherwise.
constexpr int DefaultTenants = 60;

// Fills an empty host database (tables created, no rows) with a portfolio of
// the given number of tenants, in one transaction.
Counts fillPortfolio(HostDb &db, int tenants);

// The IDFILE.DAT text: comma-separated quoted items, CR LF line ends; items
// 9, 10, 15-18 (counting from 0) are the rent income category, its default
// remark, the management fee category, its remark, the late fee category and
// its default remark. Categories read "category text;account id;posting code".
QString idFileText();

// Writes DIR/dxdatafl.db (replacing one that is there) and DIR/IDFILE.DAT.
Counts writeSite(const QString &folder, int tenants);

// Writes the processor credentials, encoded, into an INI settings file the
// way the program keeps them.
void writeSettings(
    const QString &iniFile, const QString &url, const QString &user, const QString &password);

} // namespace DemoSite
