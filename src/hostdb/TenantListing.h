#pragma once

#include "hostdb/EnrolmentQueries.h"

#include <QList>

#include <optional>

class HostDb;

// The tenant enrolment list on the SQLite host, worked out in the program
// instead of by the database's join and sort of the whole portfolio, which
// takes over a second for a million units. The four tables are each read
// once, straight through the engine's own interface, joined in memory by
// their ids and sorted as the database sorts: each column by its own
// collation, Null first, then by the unit's row. The rows and their order
// are those of the SQL listing (EnrolmentQueries::listedKeys).
//
// Where that cannot be assured, it declines and the caller lists through
// SQL: another engine, a search text, a sort it does not know, an id that
// is not a whole number, a sorted value that is not text, a collation other
// than BINARY or NOCASE, a database not in UTF-8, or any engine error.
namespace TenantListing {

// Row keys (the units' rowids) in the listing's order; nullopt when it
// declines.
std::optional<QList<qint64>> keys(const HostDb &db, const EnrolmentQueries::Listing &listing);

} // namespace TenantListing
