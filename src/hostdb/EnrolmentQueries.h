#pragma once

#include <QHash>
#include <QList>
#include <QString>
#include <QVariant>

class HostDb;

// The lists behind the enrolment screens and the writes of their flag
// column. Tenants are listed through the portfolio join (one row per unit
// of a tenant), owners and vendors from their own table. A listed row is
// known by a row key (on SQLite the unit's or the table's rowid; on Access,
// which has none, the tenant's, owner's or vendor's id), so that its values
// can be fetched later, a screenful at a time.
namespace EnrolmentQueries {

enum class Roster { Tenants, Owners, Vendors };

// What the screen lists: enrolled rows only (flag's first character, blanks
// removed, "Y" in any case) or all; one of the screen's sort texts (an
// unknown text leaves the order to the database); and an optional search
// text matched against the names (anywhere, any case) and the key ("T12",
// "O7", "V3" or the bare number).
struct Listing
{
    bool enrolledOnly = false;
    QString sortText;
    QString search;
};

// The sort texts offered for the roster, in the order they are offered.
QStringList sortTexts(Roster roster);

// Row keys of the listed rows, in the listing's order.
QList<qint64> listedKeys(HostDb &db, Roster roster, const Listing &listing);
// The same, always by the database's own join and sort (listedKeys works a
// long tenant list out in the program where it can: TenantListing).
QList<qint64> listedKeysBySql(HostDb &db, Roster roster, const Listing &listing);

// The values of the given rows, by row key, in the column order of
// columnCount(): tenants OwnerID, PropID, TenantID, OLastName1, OFirstName1,
// PropName, UAddress, TLastName1, TFirstName1, UNumber, TACH; owners
// OwnerID, OLastName1, OFirstName1, OCity, OPhone1, OACH; vendors VenID,
// VenName, VenContact, VenCity, VenPhone1, VACH. Keys no longer present are
// left out.
QHash<qint64, QList<QVariant>> rowsFor(HostDb &db, Roster roster, const QList<qint64> &keys);

int columnCount(Roster roster);
// Column of the enrolment flag and of the id it is written by.
int flagColumn(Roster roster);
int idColumn(Roster roster);

// Writes the flag of one tenant (by TenantID), owner (OwnerID) or vendor
// (VenID), committed at once.
void setFlag(HostDb &db, Roster roster, const QVariant &id, const QString &flag);

// Sets the flag of every listed row, in one transaction; returns the number
// of rows written.
int setFlagForListed(HostDb &db, Roster roster, const Listing &listing, const QString &flag);

} // namespace EnrolmentQueries
