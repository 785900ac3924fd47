#pragma once

#include "hostdb/BatchRead.h"

#include <QSqlQuery>
#include <QString>
#include <QVariant>

class HostDb;
struct sqlite3;

// A statement of the host database prepared once and run for every row of
// a posting. On the SQLite host it goes straight through the engine's own
// interface, where a posting's hundreds of thousands of single-row writes
// no longer pay the driver's cost per value; elsewhere it is the driver's
// prepared query. Values are bound by position, in the order the SQL names
// its parameters (each named once), and converted as the driver would
// (BatchRead::bindOnEngine). The caller holds the transaction.
class HostStatement
{
public:
    HostStatement(const HostDb &db, const QString &sql);

    void bind(int position, const QVariant &value);
    // Runs the statement with the values bound; raises the host's error.
    void exec(const char *operation);

    // The new row's rowid after an insert; invalid where the engine gives
    // none (HostDb::newCounter finds it then).
    QVariant lastInsertId() const;
    // The handle of the row an insert added, as the journal names rows: the
    // rowid on SQLite, null where the engine has no handles.
    QVariant insertedHandle() const { return m_handle ? lastInsertId() : QVariant(); }
    // Rows the last run changed.
    int changes() const;
    // The driver's query, where the statement runs through the driver.
    QSqlQuery *query() { return m_handle ? nullptr : &m_query; }

private:
    sqlite3 *m_handle = nullptr;
    BatchRead::EngineStatement m_statement;
    QSqlQuery m_query;
};
