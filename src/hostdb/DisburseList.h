#pragma once

#include "disburse/PaymentRow.h"
#include "hostdb/HostDb.h"

#include <QList>
#include <QSqlQuery>

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
    // Reads the remaining rows of an executed query over CheckEntered
    // (with IDField and the two name columns last, when present).
    static QList<PaymentRow> readRows(QSqlQuery &query);
};
