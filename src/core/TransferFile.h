#pragma once

#include <QByteArray>
#include <QString>

// The transfer files exchanged with the processor: plain text in the ANSI
// code page (Windows-1252), lines ended by CR LF, all in the program's folder.
namespace TransferFile {

// folder + "/" + name (the platform's rendering of folder + "\" + name).
QString path(const QString &folder, const QString &name);

// True when the file exists (a directory look-up of the full path).
bool exists(const QString &path);

// Windows-1252 conversion. Characters outside the code page become "?".
QByteArray toAnsi(const QString &text);
QString fromAnsi(const QByteArray &bytes);
// Appends the Windows-1252 bytes of text to out.
void appendAnsi(QByteArray &out, const QString &text);

// Writes the text as it stands (no line ends added) atomically: a temporary
// file in the same folder is written, flushed and renamed over the target, so
// the target is either the old file or the whole new one. Throws
// RuntimeError (path not found / permission denied / device I/O) on failure.
void writeAtomic(const QString &path, const QString &text);
void writeAtomicBytes(const QString &path, const QByteArray &bytes);
// Copies the file at `from` to `path` atomically, a block at a time.
void copyAtomic(const QString &from, const QString &path);

// Streams lines into a file atomically: each line is written followed by
// CR LF; commit() renames it into place. Destroyed without commit(), the
// target is left untouched.
class LineWriter
{
public:
    explicit LineWriter(const QString &path);
    ~LineWriter();
    void writeLine(const QString &line);
    void commit();
    qint64 lineCount() const { return m_lines; }

    LineWriter(const LineWriter &) = delete;
    LineWriter &operator=(const LineWriter &) = delete;

private:
    struct Impl;
    Impl *d;
    qint64 m_lines = 0;
};

// The whole content of a file, unchanged (line ends included). A file of
// size 0 gives "" without being opened; a missing file throws
// RuntimeError::fileNotFound().
QString readWhole(const QString &path);

// Deletes the file if present; false when it exists and cannot be removed.
bool remove(const QString &path);

// Renames from -> to, replacing `to` if it exists. Throws RuntimeError on
// failure (fileNotFound when `from` is missing).
void renameReplacing(const QString &from, const QString &to);

} // namespace TransferFile
