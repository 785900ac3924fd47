#pragma once

#include "hostdb/PaymentRow.h"

#include <QList>
#include <QString>

class HostDb;

// The distribution file sent to the processor: one line per check to pay,
//   "B" + CkID | payee | remark | amount
// where the payee is "O" + owner id ("O%" + id when the check is payable to
// the owner's second name pair) or "V" + vendor id, the remark is trimmed
// and written as it stands (a "|" in it is not escaped), and the amount is
// the absolute value in plain form (150, 12.5). Lines end in CR LF.
namespace DistributionFile {

// The last upload kept after a finished run, and the processor's answer.
inline const QString LastUploadName = QStringLiteral("DX_Quenta_Distribution_LastUpload.txt");
inline const QString ResponseName = QStringLiteral("DX_Quenta_Distribution_Response.txt");

QString line(const PaymentRow &row, bool secondPair);

// Writes the file for the rows in their order (atomically, replacing any
// earlier one). Owners are looked up by id to tell the name pair.
void write(const HostDb &db, const QString &path, const QList<PaymentRow> &rows);

// A line of a sent file read back: the check and the payee it was sent to
// (IDField: negative for owners, positive for vendors).
struct SentLine
{
    qint64 CkID = 0;
    qint64 IDField = 0;
};
// Reads the lines of a sent file's text; lines that do not name a check and
// an "O" or "V" payee are skipped.
QList<SentLine> parse(const QString &text);

} // namespace DistributionFile
