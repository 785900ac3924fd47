#pragma once

#include <QList>
#include <QString>
#include <QVariantList>

#include <functional>

class HostDb;
class QSqlQuery;

// Reads (or deletes) the rows of many keys with a few statements:
// `sqlPrefix` ends in "IN (" and the marks of a batch of keys follow it. The
// keys go in ascending order, so each batch reaches neighbouring rows and
// every page of the table is read once at most, however small the engine's
// page cache. Duplicate keys are taken once. Keys are bound, never written
// into the text.
namespace BatchRead {

// Keys per statement.
constexpr int BatchKeys = 200;

// Calls row(query) for every row that the statements return. `leading`
// values are bound before the keys (the new value of an UPDATE).
void run(const HostDb &db, const QString &sqlPrefix, QList<qint64> keys, const char *operation,
    const std::function<void(const QSqlQuery &)> &row, const QVariantList &leading = {});

} // namespace BatchRead
