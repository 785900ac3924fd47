#pragma once

#include "rent/RentPayment.h"

#include <QDateTime>
#include <QStringList>

// The printed form of the review screen: the rows in fixed-width,
// space-padded columns under the title "Remitra Download Transactions",
// then the total. Text only, so the printer just draws lines in a
// fixed-pitch font; the heading is repeated on every page.
namespace DownloadPrintLayout {

inline const QString Title = u"Remitra Download Transactions"_qs;

// Title, the time of printing, the column headings and a rule.
QStringList heading(const QDateTime &printedAt);
// One line per row.
QStringList body(const RentPayments &rows);
// A blank line and "Total Amount: " with the total ("$##,##0.00"); the
// amount is left out when the total is not known.
QStringList footer(const std::optional<Currency> &total);
// Everything on one sheet of endless paper: heading, body, footer.
QStringList lines(
    const RentPayments &rows, const std::optional<Currency> &total, const QDateTime &printedAt);

} // namespace DownloadPrintLayout
