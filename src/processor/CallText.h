#pragma once

#include <QString>

// What one part of a processor call carries: a text held in memory, or a
// transfer file that the client reads from disk while it sends, so that a
// file of any size costs the program no memory. Either way the processor
// receives the same Windows-1252 bytes: a file's bytes as they stand, a
// text converted (TransferFile::toAnsi).
class CallText
{
public:
    CallText() = default;
    // A text held in memory (implicit: every text of a call may be given as
    // it stands).
    CallText(const QString &text)
        : m_text(text)
    {
    }

    // The transfer file at path, as readWholeFile takes it: a missing file
    // raises the file-not-found error (53); a file of size 0 is the empty
    // text and is not opened.
    static CallText file(const QString &path);

    bool isFile() const { return !m_path.isEmpty(); }
    const QString &path() const { return m_path; }
    // The text in memory (empty for a file).
    const QString &text() const { return m_text; }
    bool isEmpty() const { return !isFile() && m_text.isEmpty(); }

    // The whole content (a file is read now); for clients that need it all
    // at once. Raises the file's read errors as readWholeFile does.
    QString readAll() const;

    // The number of lines (a last line without its line break included);
    // with an ASCII character, of the lines that begin with it. A file is
    // read a block at a time.
    qsizetype lineCount(char startingWith = 0) const;

private:
    QString m_text;
    QString m_path;
};
