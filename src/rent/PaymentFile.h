#pragma once

#include "rent/RentPayment.h"

#include <QStringList>

class ProgramState;
class RentLookup;

// The rent payment file left by the download: one payment per line, lines
// split at line feeds (a carriage return stays on the last field), fields
// split at ",". Reading it matches every payment to its owner, unit and
// tenant by keyed look-ups.
namespace PaymentFile {

// Where the payment file goes once its payments are posted or deleted.
inline const QString LastDownloadName = u"DX_Quenta_PaymentFile_LastDownload.txt"_qs;

inline const QString OwnerNotFound = u"(Owner not found - cannot post!)"_qs;
inline const QString NotFound = u"(not found - cannot post!)"_qs;

enum class LoadStatus {
    Loaded, // rows read (possibly none before a line not starting with "P")
    NoPayments, // no candidate line: told, file deleted; the commands are off
    FileMissing, // no payment file: the commands are off, nothing said
    Malformed, // a line with too few fields: told, no rows
    Failed, // any other error: told; when only the total failed, the rows are kept
};

struct LoadResult
{
    LoadStatus status = LoadStatus::Loaded;
    RentPayments rows;
    std::optional<Currency> total; // transactionTotal; nullopt when it failed
    QString fileSha256; // of the file the rows were read from
};

// The review screen's load: reads the payment file of the program's folder,
// matches it, computes the total and reports problems through the prompter.
LoadResult load(ProgramState &state);

// Number of candidate lines: pieces minus two, and 0 unless the first line
// begins with "P" and a digit. Negative counts mean none.
qsizetype candidateCount(const QStringList &pieces);

// Reads and matches the lines of a payment file's text. A line with fewer
// than nine fields raises the subscript error (9).
RentPayments parse(const QString &text, RentLookup &lookup);

// Sum of the absolute amounts; an amount that cannot be read raises the
// type-mismatch error (13).
Currency transactionTotal(const RentPayments &rows);

// Sets postedNote on the rows whose payment the tenant's ledger seems to
// hold already (same tenant, amount, date and check number); clears it on
// the others.
void markPosted(RentLookup &lookup, RentPayments &rows);

// Moves the payment file aside to LastDownloadName, replacing an older one.
void moveAside(const ProgramState &state);

// The SHA-256 of the payment file as it is on disk (file-not-found error
// when there is none).
QString fileSha256(const ProgramState &state);

// Finishes what a posting run may have left undone when the program ended
// between posting the payments and moving their file aside: a waiting
// payment file whose payments are all recorded as posted is moved aside now.
// True when it was.
bool settlePosted(ProgramState &state);

// Marks the rows that the posting record shows as posted (or half-posted by
// a run that stopped), with a note saying so.
void markRecorded(ProgramState &state, const QString &fileSha256, RentPayments &rows);

} // namespace PaymentFile
