#pragma once

#include "core/Currency.h"
#include "hostdb/BatchRead.h"
#include "hostdb/HostStatement.h"

#include <QHash>
#include <QList>
#include <QSet>
#include <QSqlQuery>
#include <QStringList>
#include <QVariant>

#include <map>
#include <optional>

class EngineSql;
class HostDb;

// The rows of one host table that share a key, read and changed one at a
// time: the program's form of the host's seek on an index and edit in
// place. Where the engine has row handles (SQLite's rowid), a row is
// changed through its handle. Where it has none (Access), a row is changed
// where its key and every field read still hold the values read: a row that
// someone else changed in between is left alone, and rows that hold the
// very same values cannot be told apart and change together. Statements are
// prepared once per object; the caller holds the transaction.
class KeyedRows
{
public:
    KeyedRows(
        const HostDb &db, const EngineSql &engine, QString table, QString key, QStringList fields);
    // With the database's own engine.
    KeyedRows(const HostDb &db, QString table, QString key, QStringList fields);

    struct Row
    {
        QVariant key;
        QVariant handle; // invalid where the engine has none
        QList<QVariant> values; // the fields, in the order given
    };

    // Reads every row of the table at once; later look-ups are answered
    // from what was read and from the changes made through this object
    // (for a small table looked up by a key it has no index on). Keys are
    // numbers.
    void readAll();

    // Reads the rows of these keys at once, a batch of keys per statement
    // (BatchRead); look-ups of them are then answered from what was read
    // and from the changes made through this object.
    void readKeys(const QList<qint64> &keys);

    // The rows with the key, in the order a seek on the key's index meets
    // them (the order entered, where the engine can name it).
    QList<Row> rows(const QVariant &key);
    // The first of them; nullopt when there is none.
    std::optional<Row> first(const QVariant &key);

    // Sets field number `index` of the row to value; returns the number of
    // rows changed (0 when the row no longer holds the values read).
    int set(const Row &row, int index, const QVariant &value);

    // What addToFirst changed: the row as it was read, the balance before
    // and after.
    struct Change
    {
        Row row;
        Currency before;
        Currency after;
    };

    // Adds delta to the currency field number `index` of the first row with
    // the key. False when there is none (nothing changed). A row that no
    // longer holds the values read, or that shares them with another row
    // (engines without handles), raises RuntimeError 3197 so that the
    // caller's transaction is rolled back rather than a balance left wrong.
    // The change goes to *change when asked for.
    bool addToFirst(const QVariant &key, int index, Currency delta, Change *change = nullptr);

    const QString &table() const { return m_table; }
    const QString &keyField() const { return m_key; }
    const QStringList &fields() const { return m_fields; }

    // Sets the field of the row as set() does; rows with a handle are
    // written by flush(), a batch of rows per statement.
    void setLater(const Row &row, int index, const QVariant &value);
    // Writes what setLater() left. The caller's transaction must not end
    // before it.
    void flush();

private:
    QList<Row> read(const QVariant &key, int limit);
    Row rowAt(const BatchRead::Row &query, const QVariant &key, int firstField) const;
    void remember(const Row &changed, int index, const QVariant &value);

    const HostDb &m_db;
    const EngineSql &m_engine;
    QString m_table;
    QString m_key;
    QStringList m_fields;
    QSqlQuery m_rows;
    QHash<QString, QSqlQuery> m_setters; // by field index and Null pattern
    std::map<int, HostStatement> m_handleSetters; // by field index
    bool isRead(const QVariant &key) const;

    bool m_readAll = false;
    QSet<qint64> m_keysRead; // by readKeys()
    QHash<qint64, QList<Row>> m_all; // by key, after readAll() or readKeys()
    // setLater(): the handles of the rows to set, by field and value.
    struct PendingSet
    {
        int index;
        QVariant value;
        QList<qint64> handles;
    };
    QList<PendingSet> m_pendingSets;
};
