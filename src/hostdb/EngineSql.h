#pragma once

#include <QList>
#include <QString>
#include <QStringList>

// The few statements and clauses that the two host engines read
// differently. Everything else the program sends is written once, in SQL
// that both engines accept (and is run by the tests on the embedded
// engine). Each engine's forms live in one file: EngineSqlite.cpp for the
// embedded SQLite database, EngineAccess.cpp for the host's Access database
// through ODBC. No Access driver exists on the platforms the tests run on:
// the Access forms that SQLite also reads (joins, keyed row updates) are run
// there against SQLite; the others (StrComp, @@IDENTITY, bracket escapes in
// LIKE patterns, the driver's own transactions) are not tested.
class EngineSql
{
public:
    static const EngineSql &sqlite();
    static const EngineSql &access();

    virtual ~EngineSql() = default;

    // Statements that begin a write transaction (taking the write lock at
    // once), commit and roll back, and begin a read snapshot; empty where
    // the driver's own transaction calls are used instead.
    virtual QString beginWrite() const = 0;
    virtual QString commit() const = 0;
    virtual QString rollback() const = 0;
    virtual QString beginRead() const = 0;

    // A read that fails when the open file is not a database of the engine
    // (its driver opens any file); empty where opening it already fails.
    virtual QString probe() const = 0;
    // The database's journal mode ("wal" when readers do not block
    // writers); empty where there is none to ask.
    virtual QString journalMode() const = 0;
    // Writes a consistent copy of the open database to the file :path;
    // empty where the engine has no such statement and the file is copied.
    virtual QString copyInto() const = 0;

    // The FROM clause of the portfolio join: owners, properties, tenants
    // and units, inner joins only.
    virtual QString portfolioJoin() const = 0;
    // The same rows, best entered from the units (reads picked by a unit's
    // row key).
    virtual QString portfolioJoinFromUnits() const = 0;

    // " ORDER BY ..." giving the order in which the rows of the tables (in
    // this order of precedence) were entered; empty where the engine
    // cannot name it and gives its own order.
    virtual QString entryOrder(const QStringList &tables) const = 0;
    // The column that names one row of a listing: the row's own handle
    // where the engine has one, else the given id column.
    virtual QString rowKey(const QString &table, const QString &idColumn) const = 0;

    // " LIKE :pattern ..." and the pattern that finds the text anywhere in
    // a field, as it stands (its own wildcards escaped), without regard to
    // case.
    virtual QString likeClause() const = 0;
    virtual QString containsPattern(const QString &text) const = 0;

    // A condition that holds when the field holds exactly the literal (one
    // capital letter here), case included; the engines' "=" ignores case.
    virtual QString equalsExactly(const QString &field, char literal) const = 0;

    // A statement whose one value is the counter the connection's last
    // insert gave; empty when the driver reports it itself.
    virtual QString lastCounter() const = 0;

    // Keyed rows (see KeyedRows). The number of leading columns that hold
    // the row's handle in rowsSql() (0 when the engine has none).
    virtual int handleColumns() const = 0;
    // The rows with key = :key, the handle first, then the fields; in the
    // order entered where the engine can name it.
    virtual QString rowsSql(
        const QString &table, const QString &key, const QStringList &fields) const = 0;
    // Every row of the table, the handle first, then the columns; in the
    // order entered where the engine can name it.
    virtual QString allRowsSql(const QString &table, const QStringList &columns) const = 0;
    // The same for the rows whose first column is among a batch of keys:
    // the text ends in "IN (" and the marks follow (BatchRead).
    virtual QString keyedRowsSql(const QString &table, const QStringList &columns) const = 0;
    // Sets `field` to :value in the row read by rowsSql: by its handle
    // (:row), or, without handles, in the rows whose key is :key and whose
    // fields still hold the values read (:v0, :v1, ...; a field whose value
    // was Null, as nullFields says, is matched with IS NULL).
    virtual QString setRowSql(const QString &table, const QString &key, const QStringList &fields,
        const QString &field, const QList<bool> &nullFields) const = 0;

    // A row the program wrote, found again by its handle (:row): its
    // fields, and its removal. Empty where the engine has no handles; there
    // a row is found by its values in plain SQL (see WrittenRows).
    virtual QString rowByHandleSql(const QString &table, const QStringList &fields) const = 0;
    virtual QString deleteByHandleSql(const QString &table) const = 0;

    // Sets `field` to the first bound value in the rows whose handles
    // follow, as a text ending in "IN (" (BatchRead); empty where the engine
    // has no handles.
    virtual QString setRowsByHandleSql(const QString &table, const QString &field) const = 0;
};
