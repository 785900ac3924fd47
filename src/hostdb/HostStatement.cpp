#include "hostdb/HostStatement.h"

#include "core/RuntimeError.h"
#include "hostdb/HostDb.h"

#include <sqlite3.h>

HostStatement::HostStatement(const HostDb &db, const QString &sql)
    : m_handle(db.sqliteHandle())
    , m_statement(nullptr, sqlite3_finalize)
{
    if (m_handle)
        m_statement = BatchRead::prepareOnEngine(m_handle, sql, "preparing a statement", true);
    else
        m_query = db.prepare(sql);
}

void HostStatement::bind(int position, const QVariant &value)
{
    if (!m_handle) {
        m_query.bindValue(position, value);
        return;
    }
    const int rc = BatchRead::bindOnEngine(m_statement.get(), position + 1, value);
    if (rc != SQLITE_OK)
        throw BatchRead::engineFailure(m_handle, rc, "binding a value");
}

void HostStatement::exec(const char *operation)
{
    if (!m_handle) {
        HostDb::exec(m_query, operation);
        return;
    }
    const int rc = sqlite3_step(m_statement.get());
    // Reset at once, so that a failed or finished step holds no lock.
    sqlite3_reset(m_statement.get());
    if (rc != SQLITE_DONE && rc != SQLITE_ROW)
        throw BatchRead::engineFailure(m_handle, rc, operation);
}

QVariant HostStatement::lastInsertId() const
{
    if (!m_handle)
        return m_query.lastInsertId();
    return QVariant(qint64(sqlite3_last_insert_rowid(m_handle)));
}

int HostStatement::changes() const
{
    if (!m_handle)
        return m_query.numRowsAffected();
    return sqlite3_changes(m_handle);
}
