#pragma once

#include "rent/RentPayment.h"

#include <QHash>

class ProgramState;

// Payments of a payment file that the journal shows as posted already by an
// earlier rent posting still in the ledgers (not reversed): the same tenant,
// amount, date, check number and transaction type. A processor that hands
// the same payment over twice (a second download, a file put back by hand)
// would otherwise have it posted twice. The same line of the same file is
// not a duplicate: the posting record takes that up (see UpdateLedgers).
//
// The look-up is one indexed query over the journal for the file's dates,
// matched in memory, so a file of 100,000 payments is checked at once.
namespace DuplicateGuard {

struct Earlier
{
    qint64 runId = 0;
    QString runAt; // ISO
    int line = 0; // the line of its payment file
};

// The earlier posting of each matching row, by index in rows.
QHash<int, Earlier> find(ProgramState &state, const RentPayments &rows, const QString &fileSha256);

// The review screen: gives matching rows a note naming the earlier run (the
// screen tints rows with a note).
void mark(ProgramState &state, const QString &fileSha256, RentPayments &rows);

struct Choice
{
    // The rows to post when some are left out; every row when none is.
    RentPayments toPost;
    RentPayments leftOut;
    QHash<int, Earlier> earlier; // by line of the payment file, for the left out

    const RentPayments &rowsToPost(const RentPayments &all) const
    {
        return leftOut.empty() ? all : toPost;
    }
};
// On "Update": with matching rows, one question (how many, their total)
// whether to leave them out; without, every row is posted and nothing is
// asked.
Choice confirm(ProgramState &state, const RentPayments &rows, const QString &fileSha256);

QString noteFor(const Earlier &earlier);
QString questionText(qsizetype count, Currency total);

} // namespace DuplicateGuard
