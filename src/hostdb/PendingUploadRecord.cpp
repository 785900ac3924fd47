#include "hostdb/PendingUploadRecord.h"

#include "hostdb/HostDb.h"
#include "hostdb/RemitraStore.h"

namespace PendingUploadRecord {

namespace {

QString rosterName(Roster roster)
{
    switch (roster) {
    case Roster::Tenants:
        return u"tenants"_qs;
    case Roster::Owners:
        return u"owners"_qs;
    case Roster::Vendors:
        break;
    }
    return u"vendors"_qs;
}

} // namespace

void mark(const RemitraStore &store, Roster roster)
{
    QSqlQuery query = store.prepare(u"INSERT OR IGNORE INTO "_qs + store.table("pending_uploads")
        + u" (roster, since) VALUES (:roster, :at)"_qs);
    query.bindValue(u":roster"_qs, rosterName(roster));
    query.bindValue(u":at"_qs, RemitraStore::now());
    HostDb::exec(query, "noting an enrolment change to send");
}

bool isPending(const RemitraStore &store, Roster roster)
{
    QSqlQuery query = store.prepare(
        u"SELECT 1 FROM "_qs + store.table("pending_uploads") + u" WHERE roster = :roster"_qs);
    query.bindValue(u":roster"_qs, rosterName(roster));
    HostDb::exec(query, "reading the enrolment changes to send");
    return query.next();
}

void clear(const RemitraStore &store, Roster roster)
{
    QSqlQuery query = store.prepare(
        u"DELETE FROM "_qs + store.table("pending_uploads") + u" WHERE roster = :roster"_qs);
    query.bindValue(u":roster"_qs, rosterName(roster));
    HostDb::exec(query, "noting an enrolment change as sent");
}

} // namespace PendingUploadRecord
