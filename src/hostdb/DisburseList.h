#pragma once

#include "disburse/PaymentRow.h"
#include "hostdb/HostDb.h"

#include <QList>
#include <QSqlQuery>

#include <optional>

// The entered checks payable to enrolled owners and vendors.
//
// A check is listed for an owner whose OACH is "Y" when its payee, trimmed of
// blanks at both ends, equals the owner's first or second name pair ("first
// last", trimmed; a missing part drops the pair), and for a vendor whose VACH
// is "Y" when it equals the trimmed vendor name and the check's CkVendorID is
// -1. Text compares without regard to case, as the host does. One row per
// matching payee: a check matching both pairs of one owner is listed once.
//
// The names are joined through keys computed once per query and looked up by
// index, never by pairing every check with every payee.
class DisburseList
{
public:
    // The sort choices of the payment screen, in their order.
    static QStringList sortItems();
    // " ORDER BY ..." for "Payee", "Date" and "Amount"; "" for "Entry Order"
    // (the order the database returns) and anything else.
    static QString sortClause(const QString &sortItem);
    // The whole list statement for a sort choice.
    static QString listSql(const QString &sortItem);

    static QList<PaymentRow> load(const HostDb &db, const QString &sortItem);
};

// Keyed look-ups made while a distribution is written or finished. The
// statements are prepared once and reused for every row.
class DisburseLookup
{
public:
    explicit DisburseLookup(const HostDb &db);

    // True when the trimmed payee equals the owner's second name pair (the
    // payment goes to that pair's account). False when the owner is missing
    // or the pair is incomplete.
    bool paysSecondPair(qint64 ownerId, const QString &payee);
    // The entered check with this CkID (IDField and names left empty), or
    // nullopt when it is no longer there.
    std::optional<PaymentRow> enteredCheck(qint64 ckId);

private:
    QSqlQuery m_owner;
    QSqlQuery m_check;
};
