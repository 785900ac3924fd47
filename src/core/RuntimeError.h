#pragma once

#include <QString>

#include <stdexcept>

// An error that the program does not handle where it happens. It carries the
// runtime's number and description (53 "File not found", 6 "Overflow", ...)
// so that the routines which trap particular numbers can tell them apart, and
// the top-level handler can report it as the user expects.
class RuntimeError : public std::runtime_error
{
public:
    RuntimeError(int number, const QString &description);

    int number() const { return m_number; }
    const QString &description() const { return m_description; }

    // The runtime's own errors used across the program.
    static RuntimeError invalidArgument();        // 5
    static RuntimeError overflow();               // 6
    static RuntimeError subscriptOutOfRange();    // 9
    static RuntimeError typeMismatch();           // 13
    static RuntimeError fileNotFound();           // 53
    static RuntimeError badFileName();            // 52
    static RuntimeError pathNotFound();           // 76
    static RuntimeError permissionDenied();       // 70
    static RuntimeError deviceIo();               // 57
    // Database engine errors.
    static RuntimeError databaseNotFound(const QString &path); // 3024
    static RuntimeError itemNotFound(const QString &item);     // 3265
    static RuntimeError noCurrentRecord();                     // 3021
    // The host database is locked by another writer and stayed locked
    // past the wait (the host application is writing).
    static RuntimeError databaseBusy();                        // 3260
    // Any other database failure; the text names the operation, never a
    // value or credential.
    static RuntimeError database(const QString &operation, const QString &driverText); // 3146

private:
    int m_number;
    QString m_description;
};
