#pragma once

#include "history/TextTable.h"

#include <QDateTime>
#include <QStringList>

// The printed form of a run's details, laid out as text like the review
// screen's print (see DownloadPrintLayout): a heading repeated on every
// page, then each part of the details in fixed-width, space-padded columns.
namespace HistoryPrintLayout {

inline const QString Title = u"Remitra History"_qs;

QStringList heading(const QString &runHeading, const QDateTime &printedAt);
// A titled part: the title, the column captions, a rule, the rows.
QStringList part(const QString &title, const TextTable &table, int widest = 60);

} // namespace HistoryPrintLayout
