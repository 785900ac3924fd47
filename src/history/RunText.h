#pragma once

#include "history/TextTable.h"
#include "hostdb/Journal.h"

// The journal as the History screen shows, exports and prints it: the list
// of runs and the parts of a run's details, as text.
namespace RunText {

// "3/1/2026 9:15 AM" from a stored time.
QString when(const QString &iso);

// The run list: run number, date, kind, count, total, result (newest first,
// as given).
TextTable runList(const QList<Journal::Run> &runs);

// One line about the run: its kind, when, result, count and total.
QString heading(const Journal::Run &run);

TextTable lines(const QList<Journal::Line> &lines);
TextTable rows(const QList<Journal::Row> &rows);
TextTable messages(const QList<Journal::Message> &messages);
TextTable files(const QList<Journal::File> &files);
QStringList rowCells(const Journal::Row &row);

} // namespace RunText
