#pragma once

#include "core/Currency.h"
#include "hostdb/KeyedRows.h"

class HostDb;
class QJsonDocument;
class QJsonValue;

#include <QList>
#include <QString>
#include <QVariant>
#include <QVariantMap>

#include <deque>
#include <vector>

// The host rows a posting run wrote, in the order written, as the journal
// keeps them: rows added (every field as written), balances changed (the
// value before and after), rows changed in place and rows removed. A row is
// named by its handle where the engine has one (SQLite's rowid; a check's
// CkID is that rowid) and, everywhere, by its fields: on the Access host a
// ledger line or a split line has no key of its own, so its field values are
// what tells it apart. Values are kept as text in the forms normal() gives,
// so a value read back from either engine compares equal to what was written.
class HostWriteLog
{
public:
    enum class Change : quint8 { Added, Balance, Changed, Removed };

    struct Entry
    {
        int position = 0; // in the order written
        Change change = Change::Added;
        QString table;
        QVariant handle; // rowid; null where the engine has none
        // Added/Removed: every field written. Balance: the row's key field
        // and the fields that identify it on an engine without handles.
        QVariantMap fields;
        QString field; // Balance/Changed: the field changed
        QVariant before;
        QVariant after;
        int line = 0; // the payment file line it belongs to (0: none)
    };

    // A row named by its handle, kept in a few numbers: the fields of an
    // added row or of a balance's row are read from the host when the
    // journal takes the log (Journal::addRun), inside the same transaction,
    // so they are what was written. A removed row's fields are kept as JSON.
    struct Slim
    {
        qint64 handle = 0;
        int position = 0;
        int line = 0;
        int balance = -1; // in slimBalances(), for a balance
        quint8 table = 0; // in slimTables()
        quint8 field = 0; // in slimFields(); 0: none
        Change change = Change::Added;
    };
    struct SlimBalance
    {
        Currency before, after;
    };
    // Slim rows whose every value the log holds are kept packed instead: a
    // balance whose row's identifying fields were read with it, and a row
    // named by its handle alone (keepKeysOnly). Each is a JSON array of
    // [position, line, table, handle, change, fields, field, before, after],
    // a block of up to blockRows of them (`rows` without its brackets), in
    // the order written; the journal stores a block as one entry. blocks()
    // are those still in memory, after any that moved out (keepSlim).
    struct Block
    {
        int position = 0; // of its first row
        int count = 0;
        QByteArray rows;
        // The rows as the journal stores them: one JSON array.
        QString json() const { return u'[' + QString::fromUtf8(rows) + u']'; }
    };
    static inline int blockRows = 1024;
    const std::vector<Block> &blocks() const { return m_blocks; }
    // The tables and balance fields a slim row can name.
    static const QStringList &slimTables();
    static const QStringList &slimFields();

    // Keeps rows with handles slim (see Slim), given the host where the
    // journal can read them from it in the posting's transaction (SQLite,
    // with the store attached; nullptr elsewhere): a large posting then keeps
    // a few bytes a row. Full blocks of packed rows move out of memory into
    // a table of the host connection's own (temp.remitra_row_blocks), which
    // goes with the posting's transaction, until the journal takes them.
    void keepSlim(const HostDb *host)
    {
        m_host = host;
        m_slimRows = host != nullptr;
    }
    bool keepsSlim() const { return m_slimRows; }
    // Whether blocks moved out of memory (see keepSlim).
    bool movedBlocks() const { return m_movedBlocks; }
    // The SQL of that table, for the journal.
    static const QString MovedBlocksTable;
    // Slim rows added or removed are named by their handles alone, without
    // their fields (a posting that is never undone: the paid checks, whose
    // printed copies hold what the entered ones held).
    void keepKeysOnly(bool on) { m_keysOnly = on; }
    bool keepsKeysOnly() const { return m_keysOnly; }

    // The payment file line the following entries belong to.
    void setLine(int line) { m_line = line; }

    void added(const QString &table, const QVariant &handle, const QVariantMap &fields);
    // The same, with the fields made only when they are kept.
    template <typename MakeFields>
    void addedRow(const QString &table, const QVariant &handle, MakeFields &&fields)
    {
        if (m_slimRows && !handle.isNull() && m_keysOnly)
            pack(Change::Added, table, handle.toLongLong(), {});
        else if (m_slimRows && !handle.isNull())
            addSlim(Change::Added, table, handle, {}, {}, {});
        else
            added(table, handle, fields());
    }
    // A row whose fields stay as written (nothing amends them later): kept
    // packed where rows are slim, from the values given, so the journal need
    // not read it back. `values` makes the values of hostFields(table,
    // Added), in that order, as they were bound.
    template <typename MakeValues>
    void addedAsWritten(const QString &table, const QVariant &handle, MakeValues &&values)
    {
        if (m_slimRows && !handle.isNull())
            pack(Change::Added, table, handle.toLongLong(),
                m_keysOnly ? QByteArray() : jsonArray(values()));
        else
            added(table, handle, named(table, values()));
    }
    void balance(const QString &table, const QVariant &handle, const QVariantMap &keyFields,
        const QString &field, Currency before, Currency after);
    // A balance changed through KeyedRows::addToFirst (field `index`).
    void balance(const KeyedRows &rows, const KeyedRows::Change &change, int index);
    void changed(const QString &table, const QVariant &handle, const QVariantMap &keyFields,
        const QString &field, const QVariant &before, const QVariant &after);
    void removed(const QString &table, const QVariant &handle, const QVariantMap &fields);
    // Slim only: rows about to be removed, named by their handles. Their
    // fields are read from the host now, in one statement, into a table of
    // the connection's own (temp.remitra_removed) that the journal takes
    // them from.
    void removing(const HostDb &db, const QString &table, const QList<qint64> &handles);
    // Sets a field of the last added row of the table whose keyField holds
    // key (a deposit's amount, stored once its splits are written).
    void amendAdded(const QString &table, const QString &keyField, const QVariant &key,
        const QString &field, const QVariant &value);

    const QList<Entry> &entries() const { return m_entries; }
    const std::deque<Slim> &slimEntries() const { return m_slim; }
    const std::deque<SlimBalance> &slimBalances() const { return m_slimBalances; }
    bool isEmpty() const
    {
        return m_entries.isEmpty() && m_slim.empty() && m_blocks.empty() && !m_movedBlocks;
    }

    // The fields the journal reads from the host for a slim row of the
    // table: every field written for an added row, the identifying fields
    // for a balance's row.
    static QStringList hostFields(const QString &table, Change change);

    // A host value as the journal keeps it: Null stays null; money fields as
    // Currency's plain text; date fields as ISO dates; id and number fields
    // as whole numbers; anything else as text.
    static QVariant normal(const QString &field, const QVariant &value);
    static QVariantMap normal(const QVariantMap &fields);
    // The value to bind for a field whose journal form is `kept`.
    static QVariant bindable(const QString &field, const QVariant &kept);

    static QString changeName(Change change);
    static Change changeOf(const QString &name);

    // The SQL expression of a slim row's fields, read from the host row
    // named `alias` (SQLite): a JSON array of the values of hostFields().
    static QString jsonFieldsSql(const QString &table, Change change, const QString &alias);
    // A row's fields as the journal kept them: a JSON object of fields, or
    // the array of a slim row's values.
    static QVariantMap fieldsFromJson(
        const QString &table, Change change, const QJsonDocument &json);
    static QVariantMap fieldsFromJson(const QString &table, Change change, const QJsonValue &json);

    // Fields as JSON text, the journal's form.
    static QString json(const QVariantMap &fields);

private:
    void addSlim(Change change, const QString &table, const QVariant &handle, const QString &field,
        Currency before, Currency after);
    void pack(Change change, const QString &table, qint64 handle, const QByteArray &fields,
        const QString &field = {}, const QByteArray &before = {}, const QByteArray &after = {});
    // The JSON array of hostFields() of a balance's row, from what the
    // posting read with the balance; empty when it did not read them all.
    static QByteArray identity(const KeyedRows &rows, const KeyedRows::Change &change, int index);
    // Values as a JSON array, as the engine's json_array() writes the host
    // values they were bound as.
    static QByteArray jsonArray(const QVariantList &values);
    // The values of hostFields(table, Added) by name.
    static QVariantMap named(const QString &table, const QVariantList &values);

    QList<Entry> m_entries;
    std::deque<Slim> m_slim;
    std::deque<SlimBalance> m_slimBalances;
    std::vector<Block> m_blocks;
    const HostDb *m_host = nullptr;
    bool m_movedBlocks = false;
    bool m_slimRows = false;
    bool m_keysOnly = false;
    int m_line = 0;
    int m_position = 0;
};
