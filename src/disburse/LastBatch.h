#pragma once

#include <QList>
#include <QStringList>

class ProgramState;

// The lines of the last distribution sent ("DX_Quenta_Distribution_LastUpload.txt"),
// as the last-batch screen shows them: check, payee, remark and amount.
namespace LastBatch {

// Reads the file. The count of lines is the number of LF-separated pieces
// less two, so the file's last line is never shown; a piece that is blank
// within that range ends the reading, removes one row from the end, and the
// rows between stay empty. A count of none gives "No payments were found."
// and deletes the file. A missing file shows nothing; any other failure is
// reported as "Unexpected error in payment file: ...". Each row holds four
// cells.
QList<QStringList> load(ProgramState &state);

} // namespace LastBatch
