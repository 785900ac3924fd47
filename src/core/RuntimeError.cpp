#include "core/RuntimeError.h"

RuntimeError::RuntimeError(int number, const QString &description)
    : std::runtime_error(description.toStdString()), m_number(number), m_description(description)
{
}

RuntimeError RuntimeError::invalidArgument()
{
    return {5, QStringLiteral("Invalid procedure call or argument")};
}

RuntimeError RuntimeError::overflow()
{
    return {6, QStringLiteral("Overflow")};
}

RuntimeError RuntimeError::subscriptOutOfRange()
{
    return {9, QStringLiteral("Subscript out of range")};
}

RuntimeError RuntimeError::typeMismatch()
{
    return {13, QStringLiteral("Type mismatch")};
}

RuntimeError RuntimeError::fileNotFound()
{
    return {53, QStringLiteral("File not found")};
}

RuntimeError RuntimeError::badFileName()
{
    return {52, QStringLiteral("Bad file name or number")};
}

RuntimeError RuntimeError::pathNotFound()
{
    return {76, QStringLiteral("Path not found")};
}

RuntimeError RuntimeError::permissionDenied()
{
    return {70, QStringLiteral("Permission denied")};
}

RuntimeError RuntimeError::deviceIo()
{
    return {57, QStringLiteral("Device I/O error")};
}

RuntimeError RuntimeError::databaseNotFound(const QString &path)
{
    return {3024, QStringLiteral("Could not find file '%1'.").arg(path)};
}

RuntimeError RuntimeError::itemNotFound(const QString &item)
{
    return {3265, QStringLiteral("Item not found in this collection (%1).").arg(item)};
}

RuntimeError RuntimeError::noCurrentRecord()
{
    return {3021, QStringLiteral("No current record.")};
}

RuntimeError RuntimeError::databaseBusy()
{
    return {3260,
            QStringLiteral("The Dwellix database is busy: another program (usually Dwellix itself) "
                           "is writing to it. Nothing was changed. Please wait a moment and try again.")};
}

RuntimeError RuntimeError::database(const QString &operation, const QString &driverText)
{
    return {3146, QStringLiteral("Database error while %1: %2").arg(operation, driverText)};
}
