#pragma once

#include <QByteArray>
#include <QString>

// Copies of the files exchanged with the processor and posted, kept in the
// "archive" folder of the program's folder under names of their own
// (<name>_<yyyyMMdd-HHmmss-zzz>.txt), never replaced. The journal names
// them; a reversal puts a payment file back from here.
namespace FileArchive {

inline const QString FolderName = u"archive"_qs;

struct Facts
{
    qint64 size = 0;
    QString sha256;
    qint64 lines = 0; // line feeds in it
};

// Size, SHA-256 and line count of a file; throws the file-not-found error
// when it is missing.
Facts factsOf(const QString &path);
QString sha256(const QByteArray &bytes);

// Copies the file into the archive under a new name and returns that name
// relative to the program's folder ("archive/..."). Throws RuntimeError
// when the folder or the copy cannot be written.
QString keep(const QString &programFolder, const QString &path);

} // namespace FileArchive
