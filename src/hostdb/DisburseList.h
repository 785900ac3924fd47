#pragma once

#include "hostdb/BatchRead.h"
#include "hostdb/HostDb.h"
#include "hostdb/PaymentRow.h"

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
// Owner rows come first, then vendor rows, each in the order the checks were
// entered, unless a sort is chosen.
//
// The three tables are read with plain statements that both engines accept,
// and the names are matched here through a hash of the enrolled payees'
// name keys: one look-up per check, never every check paired with every
// payee, and no text functions that the engines spell differently.
class DisburseList
{
public:
    // The sort choices of the payment screen, in their order.
    static QStringList sortItems();

    // Checks the host's fields for the list (error 3265).
    static QList<PaymentRow> load(const HostDb &db, const QString &sortItem);

    // The columns of CheckEntered that a PaymentRow holds, as a SELECT list.
    static QString checkColumns();
    // Reads the remaining rows of an executed query over checkColumns().
    static QList<PaymentRow> readRows(QSqlQuery &query);
    // The current row of such a query.
    static PaymentRow readRow(const BatchRead::Row &query);
};
