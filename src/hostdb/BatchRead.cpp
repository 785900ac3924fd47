#include "hostdb/BatchRead.h"

#include "core/RuntimeError.h"
#include "hostdb/HostDb.h"

#include <QDate>
#include <QDateTime>
#include <QTime>

#include <sqlite3.h>

#include <algorithm>
#include <memory>

namespace BatchRead {

QVariant QueryRow::value(int column) const
{
    return m_query.value(column);
}

namespace {

// A row of a statement run on the engine directly.
class StatementRow final : public Row
{
public:
    explicit StatementRow(sqlite3_stmt *statement)
        : m_statement(statement)
    {
    }
    QVariant value(int column) const override
    {
        switch (sqlite3_column_type(m_statement, column)) {
        case SQLITE_INTEGER:
            return QVariant(qint64(sqlite3_column_int64(m_statement, column)));
        case SQLITE_FLOAT:
            return QVariant(sqlite3_column_double(m_statement, column));
        case SQLITE_TEXT: {
            const void *text = sqlite3_column_text16(m_statement, column);
            const int bytes = sqlite3_column_bytes16(m_statement, column);
            return QVariant(QString(static_cast<const QChar *>(text), bytes / 2));
        }
        case SQLITE_BLOB: {
            const void *blob = sqlite3_column_blob(m_statement, column);
            const int bytes = sqlite3_column_bytes(m_statement, column);
            return QVariant(QByteArray(static_cast<const char *>(blob), bytes));
        }
        default:
            return QVariant(QMetaType::fromType<QString>());
        }
    }

private:
    sqlite3_stmt *m_statement;
};

void runOnEngine(sqlite3 *handle, const QString &sql, const QList<qint64> &keys,
    const char *operation, const std::function<void(const Row &)> &row, const QVariantList &leading)
{
    const EngineStatement statement = prepareOnEngine(handle, sql, operation);
    sqlite3_stmt *raw = statement.get();
    const int lead = int(leading.size());
    for (qsizetype first = 0; first < keys.size(); first += BatchKeys) {
        sqlite3_reset(raw);
        int rc = SQLITE_OK;
        for (int i = 0; i < lead && rc == SQLITE_OK; ++i)
            rc = bindOnEngine(raw, i + 1, leading.at(i));
        // The last batch repeats its last key to fill the statement.
        for (int i = 0; i < BatchKeys && rc == SQLITE_OK; ++i)
            rc = sqlite3_bind_int64(
                raw, lead + i + 1, keys.at(std::min(first + i, keys.size() - 1)));
        if (rc != SQLITE_OK)
            throw engineFailure(handle, rc, operation);
        const StatementRow current(raw);
        while ((rc = sqlite3_step(raw)) == SQLITE_ROW)
            row(current);
        if (rc != SQLITE_DONE)
            throw engineFailure(handle, rc, operation);
    }
}

} // namespace

void forEachRow(const HostDb &db, const QString &sql, const char *operation,
    const std::function<void(const Row &)> &row)
{
    if (sqlite3 *handle = db.sqliteHandle()) {
        const EngineStatement statement = prepareOnEngine(handle, sql, operation);
        sqlite3_stmt *raw = statement.get();
        const StatementRow current(raw);
        int rc = SQLITE_OK;
        while ((rc = sqlite3_step(raw)) == SQLITE_ROW)
            row(current);
        if (rc != SQLITE_DONE)
            throw engineFailure(handle, rc, operation);
        return;
    }
    QSqlQuery query = db.prepare(sql);
    HostDb::exec(query, operation);
    const QueryRow current(query);
    while (query.next())
        row(current);
}

EngineStatement prepareOnEngine(
    sqlite3 *handle, const QString &sql, const char *operation, bool persistent)
{
    sqlite3_stmt *raw = nullptr;
    const int prepared
        = sqlite3_prepare16_v3(handle, sql.utf16(), int(sql.size() * sizeof(char16_t)),
            persistent ? SQLITE_PREPARE_PERSISTENT : 0, &raw, nullptr);
    EngineStatement statement(raw, sqlite3_finalize);
    if (prepared != SQLITE_OK)
        throw engineFailure(handle, prepared, operation);
    return statement;
}

bool isNullValue(const QVariant &value)
{
    // As the driver tells a Null: a null text, date or time is one too.
    switch (value.typeId()) {
    case QMetaType::QString:
        return static_cast<const QString *>(value.constData())->isNull();
    case QMetaType::QByteArray:
        return static_cast<const QByteArray *>(value.constData())->isNull();
    case QMetaType::QDate:
        return static_cast<const QDate *>(value.constData())->isNull();
    case QMetaType::QTime:
        return static_cast<const QTime *>(value.constData())->isNull();
    case QMetaType::QDateTime:
        return static_cast<const QDateTime *>(value.constData())->isNull();
    default:
        return value.isNull();
    }
}

int bindOnEngine(sqlite3_stmt *statement, int position, const QVariant &value)
{
    if (isNullValue(value))
        return sqlite3_bind_null(statement, position);
    switch (value.typeId()) {
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::UInt:
    case QMetaType::Bool:
        return sqlite3_bind_int64(statement, position, value.toLongLong());
    case QMetaType::Double:
        return sqlite3_bind_double(statement, position, value.toDouble());
    default: {
        // As UTF-8, the host's own encoding: the engine copies it as it is.
        const QByteArray text = value.toString().toUtf8();
        return sqlite3_bind_text(
            statement, position, text.constData(), int(text.size()), SQLITE_TRANSIENT);
    }
    }
}

RuntimeError engineFailure(sqlite3 *handle, int rc, const char *operation)
{
    if (rc == SQLITE_BUSY || rc == SQLITE_LOCKED)
        return RuntimeError::databaseBusy();
    return RuntimeError::database(
        QString::fromLatin1(operation), QString::fromUtf8(sqlite3_errmsg(handle)));
}

void run(const HostDb &db, const QString &sqlPrefix, QList<qint64> keys, const char *operation,
    const std::function<void(const Row &)> &row, const QVariantList &leading)
{
    std::sort(keys.begin(), keys.end());
    keys.erase(std::unique(keys.begin(), keys.end()), keys.end());
    if (keys.isEmpty())
        return;
    QString marks;
    for (int i = 0; i < BatchKeys; ++i)
        marks += i ? u",?"_qs : u"?"_qs;
    const QString sql = sqlPrefix + marks + u')';
    if (sqlite3 *handle = db.sqliteHandle()) {
        runOnEngine(handle, sql, keys, operation, row, leading);
        return;
    }
    QSqlQuery batch = db.prepare(sql);
    const QueryRow current(batch);
    for (qsizetype first = 0; first < keys.size(); first += BatchKeys) {
        // The last batch repeats its last key to fill the statement.
        const int lead = int(leading.size());
        for (int i = 0; i < lead; ++i)
            batch.bindValue(i, leading.at(i));
        for (int i = 0; i < BatchKeys; ++i)
            batch.bindValue(lead + i, keys.at(std::min(first + i, keys.size() - 1)));
        HostDb::exec(batch, operation);
        while (batch.next())
            row(current);
        batch.finish();
    }
}

} // namespace BatchRead
