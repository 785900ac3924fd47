#pragma once

#include "core/Currency.h"
#include "hostdb/Journal.h"
#include "hostdb/KeyedRows.h"

#include <QHash>
#include <QSqlQuery>

#include <memory>
#include <optional>

class HostDb;

// The host rows a journal entry says a run wrote, as the host holds them
// now, and their undoing. A row is found by its handle where the engine has
// one (SQLite's rowid); on the Access host, which has none, a ledger or
// split line is found by all its field values, so rows alike in every field
// are counted together (`alike`: how many of them the run wrote). The
// caller holds the write transaction.
class WrittenRows
{
public:
    explicit WrittenRows(const HostDb &db);
    ~WrittenRows();

    enum class State {
        Same, // holds the values written
        Changed, // there, with another value in `field`
        Gone, // not there (or, without handles, changed: it cannot be told)
        Alike, // without handles: more rows hold these values than the run wrote
    };
    struct Now
    {
        State state = State::Same;
        QString field; // the first field that differs (Changed)
        QVariant value; // its value now, as the journal keeps values
    };
    // A row the run added.
    Now added(const Journal::Row &row, int alike = 1);
    // Removes a row the run added; throws RuntimeError 3197 unless exactly
    // the row (or its `alike` rows) went.
    void remove(const Journal::Row &row, int alike = 1);

    // A balance the run changed: its value now; nullopt when its row is
    // gone, belongs to another key now, or holds no amount.
    std::optional<Currency> balance(const Journal::Row &row);
    // Sets it; throws RuntimeError 3197 when the row is not changed.
    void setBalance(const Journal::Row &row, Currency value);

    // True when the host holds what the run wrote: a row it added, a
    // balance at the value it left. For a run whose commit is not known.
    bool holdsWrites(Journal &journal, qint64 runId);

    // The key of a row with values, for grouping rows alike.
    static QString valuesKey(const Journal::Row &row);

private:
    KeyedRows &balanceRows(const Journal::Row &row);
    std::optional<KeyedRows::Row> balanceRow(const Journal::Row &row);
    QSqlQuery &statement(const QString &sql);
    QString whereValues(const Journal::Row &row, QStringList *names) const;

    const HostDb &m_db;
    QHash<QString, QSqlQuery> m_statements;
    QHash<QString, std::shared_ptr<KeyedRows>> m_balances;
};
