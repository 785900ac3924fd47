#include "hostdb/KeyedRows.h"

#include "core/RuntimeError.h"
#include "hostdb/BatchRead.h"
#include "hostdb/EngineSql.h"
#include "hostdb/HostDb.h"

#include <algorithm>
#include <utility>

KeyedRows::KeyedRows(
    const HostDb &db, const EngineSql &engine, QString table, QString key, QStringList fields)
    : m_db(db)
    , m_engine(engine)
    , m_table(std::move(table))
    , m_key(std::move(key))
    , m_fields(std::move(fields))
    , m_rows(db.prepare(engine.rowsSql(m_table, m_key, m_fields)))
{
}

KeyedRows::KeyedRows(const HostDb &db, QString table, QString key, QStringList fields)
    : KeyedRows(db, db.sql(), std::move(table), std::move(key), std::move(fields))
{
}

void KeyedRows::readAll()
{
    QSqlQuery all = m_db.prepare(m_engine.allRowsSql(m_table, QStringList { m_key } + m_fields));
    HostDb::exec(all, "reading a table");
    const int handles = m_engine.handleColumns();
    m_all.clear();
    while (all.next()) {
        const QVariant key = all.value(handles);
        m_all[key.toLongLong()].append(rowAt(BatchRead::QueryRow(all), key, handles + 1));
    }
    m_readAll = true;
}

void KeyedRows::readKeys(const QList<qint64> &keys)
{
    QList<qint64> wanted;
    for (qint64 key : keys) {
        if (!m_readAll && !m_keysRead.contains(key)) {
            m_keysRead.insert(key);
            wanted.append(key);
        }
    }
    const int handles = m_engine.handleColumns();
    BatchRead::run(m_db, m_engine.keyedRowsSql(m_table, QStringList { m_key } + m_fields), wanted,
        "reading records", [&](const BatchRead::Row &q) {
            const QVariant key = q.value(handles);
            m_all[key.toLongLong()].append(rowAt(q, key, handles + 1));
        });
    if (handles == 0)
        return;
    // A key's rows in the order a seek on the key meets them (see rowsSql).
    for (const qint64 key : std::as_const(wanted)) {
        const auto it = m_all.find(key);
        if (it != m_all.end() && it->size() > 1) {
            std::sort(it->begin(), it->end(), [](const Row &a, const Row &b) {
                return a.handle.toLongLong() < b.handle.toLongLong();
            });
        }
    }
}

bool KeyedRows::isRead(const QVariant &key) const
{
    if (m_readAll)
        return true;
    if (m_keysRead.isEmpty() || key.typeId() != QMetaType::LongLong)
        return false;
    return m_keysRead.contains(key.toLongLong());
}

QList<KeyedRows::Row> KeyedRows::rows(const QVariant &key)
{
    if (isRead(key))
        return m_all.value(key.toLongLong());
    return read(key, -1);
}

std::optional<KeyedRows::Row> KeyedRows::first(const QVariant &key)
{
    QList<Row> found = isRead(key) ? m_all.value(key.toLongLong()) : read(key, 1);
    if (found.isEmpty())
        return std::nullopt;
    return found.takeFirst();
}

KeyedRows::Row KeyedRows::rowAt(
    const BatchRead::Row &query, const QVariant &key, int firstField) const
{
    Row row;
    row.key = key;
    if (m_engine.handleColumns() > 0)
        row.handle = query.value(0);
    for (qsizetype i = 0; i < m_fields.size(); ++i)
        row.values.append(query.value(firstField + int(i)));
    return row;
}

QList<KeyedRows::Row> KeyedRows::read(const QVariant &key, int limit)
{
    m_rows.bindValue(u":key"_qs, key);
    HostDb::exec(m_rows, "finding a record");
    QList<Row> found;
    while ((limit < 0 || found.size() < limit) && m_rows.next())
        found.append(rowAt(BatchRead::QueryRow(m_rows), key, m_engine.handleColumns()));
    m_rows.finish();
    return found;
}

// What the statement just run changed, in the rows read before.
void KeyedRows::remember(const Row &changed, int index, const QVariant &value)
{
    auto it = m_all.find(changed.key.toLongLong());
    if (it == m_all.end())
        return;
    for (Row &row : it.value()) {
        const bool same = changed.handle.isValid() ? row.handle == changed.handle
                                                   : row.values == changed.values;
        if (same)
            row.values[index] = value;
    }
}

int KeyedRows::set(const Row &row, int index, const QVariant &value)
{
    if (row.handle.isValid()) {
        // The posting's balance writes: one statement per field, by handle.
        auto it = m_handleSetters.find(index);
        if (it == m_handleSetters.end()) {
            it = m_handleSetters
                     .try_emplace(index, m_db,
                         m_engine.setRowSql(m_table, m_key, m_fields, m_fields.at(index), {}))
                     .first;
        }
        HostStatement &q = it->second;
        q.bind(0, value); // :value, then :row
        q.bind(1, row.handle);
        q.exec("changing a record");
        const int changed = q.changes();
        if (changed > 0)
            remember(row, index, value);
        return changed;
    }
    // Without handles: the row where its key and every field read still
    // hold the values read, a statement per field and pattern of Nulls.
    QList<bool> nulls;
    QString pattern = QString::number(index) + u':';
    for (const QVariant &v : row.values) {
        nulls.append(v.isNull());
        pattern += v.isNull() ? u'0' : u'1';
    }
    auto it = m_setters.find(pattern);
    if (it == m_setters.end()) {
        it = m_setters.insert(pattern,
            m_db.prepare(m_engine.setRowSql(m_table, m_key, m_fields, m_fields.at(index), nulls)));
    }
    QSqlQuery &q = it.value();
    q.bindValue(u":value"_qs, value);
    q.bindValue(u":key"_qs, row.key);
    for (qsizetype i = 0; i < row.values.size(); ++i) {
        if (!row.values[i].isNull())
            q.bindValue(u":v"_qs + QString::number(i), row.values[i]);
    }
    HostDb::exec(q, "changing a record");
    const int changed = q.numRowsAffected();
    if (changed > 0)
        remember(row, index, value);
    return changed;
}

bool KeyedRows::addToFirst(const QVariant &key, int index, Currency delta, Change *change)
{
    const std::optional<Row> row = first(key);
    if (!row)
        return false;
    const Currency before = Currency::fromVariant(row->values.at(index)).value_or(Currency());
    const Currency balance = before + delta;
    const int changed = set(*row, index, balance.toDatabaseValue());
    if (changed != 1) {
        throw RuntimeError(3197,
            u"The "_qs + m_table + u" record "_qs + key.toString()
                + (changed == 0
                        ? u" was changed by someone else while Remitra was posting to it."_qs
                        : u" cannot be told apart from another record with the same values."_qs)
                + u" Nothing was posted; try again."_qs);
    }
    if (change)
        *change = { *row, before, balance };
    return true;
}

void KeyedRows::setLater(const Row &row, int index, const QVariant &value)
{
    if (!row.handle.isValid()
        || m_engine.setRowsByHandleSql(m_table, m_fields.at(index)).isEmpty()) {
        set(row, index, value);
        return;
    }
    auto same = std::find_if(m_pendingSets.begin(), m_pendingSets.end(),
        [&](const PendingSet &p) { return p.index == index && p.value == value; });
    if (same == m_pendingSets.end())
        same = m_pendingSets.insert(m_pendingSets.end(), PendingSet { index, value, {} });
    same->handles.append(row.handle.toLongLong());
    // What the batch will write, in the rows read before.
    remember(row, index, value);
}

void KeyedRows::flush()
{
    for (const PendingSet &p : std::exchange(m_pendingSets, {})) {
        BatchRead::run(m_db, m_engine.setRowsByHandleSql(m_table, m_fields.at(p.index)), p.handles,
            "changing records", [](const BatchRead::Row &) {}, { p.value });
    }
}
