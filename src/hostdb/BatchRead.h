#pragma once

#include <QList>
#include <QString>
#include <QVariant>
#include <QVariantList>

#include <functional>
#include <memory>

class HostDb;
class QSqlQuery;
class RuntimeError;
struct sqlite3;
struct sqlite3_stmt;

// Reads (or deletes) the rows of many keys with a few statements:
// `sqlPrefix` ends in "IN (" and the marks of a batch of keys follow it. The
// keys go in ascending order, so each batch reaches neighbouring rows and
// every page of the table is read once at most, however small the engine's
// page cache. Duplicate keys are taken once. Keys are bound, never written
// into the text. On the SQLite host the statements run straight through the
// engine's own interface on the same connection (inside the caller's
// transaction), so a long batch does not pay the driver's cost per value;
// the values come out as the driver gives them.
namespace BatchRead {

// Keys per statement.
constexpr int BatchKeys = 200;

// One row a statement returned.
class Row
{
public:
    virtual ~Row() = default;
    // The value of a column, of the type the Qt driver gives (a Null as a
    // null QString).
    virtual QVariant value(int column) const = 0;
};

// A row of a Qt query, for code that reads rows of both kinds.
class QueryRow final : public Row
{
public:
    explicit QueryRow(const QSqlQuery &query)
        : m_query(query)
    {
    }
    QVariant value(int column) const override;

private:
    const QSqlQuery &m_query;
};

// Calls row() for every row that the statements return. `leading` values
// are bound before the keys (the new value of an UPDATE).
void run(const HostDb &db, const QString &sqlPrefix, QList<qint64> keys, const char *operation,
    const std::function<void(const Row &)> &row, const QVariantList &leading = {});

// Calls row() for every row of one statement without keys: on the SQLite
// host straight through the engine's own interface, elsewhere through the
// driver.
void forEachRow(const HostDb &db, const QString &sql, const char *operation,
    const std::function<void(const Row &)> &row);

// A statement of the engine's own interface, finalized when it goes.
using EngineStatement = std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt *)>;
// Prepares sql on the connection; raises engineFailure() when it cannot.
// A statement kept for many steps is prepared as such (`persistent`).
EngineStatement prepareOnEngine(
    sqlite3 *handle, const QString &sql, const char *operation, bool persistent = false);
// Binds a value as the Qt driver would: Null (isNullValue), a whole
// number, a double, or text.
int bindOnEngine(sqlite3_stmt *statement, int position, const QVariant &value);
// Whether the driver binds the value as Null.
bool isNullValue(const QVariant &value);

// The error to raise when a call of the engine's own interface failed with
// rc: the busy error for a lock, else the database error with the engine's
// message.
RuntimeError engineFailure(sqlite3 *handle, int rc, const char *operation);

} // namespace BatchRead
