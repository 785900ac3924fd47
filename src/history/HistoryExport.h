#pragma once

#include "history/TextTable.h"

#include <QString>

class Journal;

// CSV files of the History screen (RFC 4180: fields in double quotes where
// they hold a comma, a quote or a line break; CR LF line ends; UTF-8),
// written through QSaveFile. Throws RuntimeError when the file cannot be
// written.
namespace HistoryExport {

QString csvLine(const QStringList &fields);

// One table under its column captions.
void writeTable(const QString &path, const TextTable &table);

// Everything the journal holds about a run: its heading, then its lines,
// the host rows it wrote, its messages and its files, each part under a
// line naming it. The rows are read one at a time, however many there are.
void writeRun(const QString &path, Journal &journal, qint64 runId);

} // namespace HistoryExport
