#pragma once

#include <QString>

class HostDb;

// A consistent copy of the host database, written before a posting run
// changes the ledgers, into the "backups" folder of the program's folder.
// The newest Kept copies are kept; older ones are removed.
namespace RentBackup {

inline constexpr int Kept = 10;
inline const QString FolderName = u"backups"_qs;

// Writes the copy and returns its path. Throws RuntimeError when the folder
// or the copy cannot be written.
QString write(const HostDb &db, const QString &programFolder);

// What the user is told when write() failed, before what was left undone:
// the copy could not be written, and why.
QString notWrittenText(const QString &reason);

} // namespace RentBackup
