#include "hostdb/EngineSql.h"

// The embedded SQLite forms. Rows have a handle (rowid), which is also the
// order they were entered in.

namespace {

class SqliteSql final : public EngineSql
{
public:
    QString beginWrite() const override { return u"BEGIN IMMEDIATE"_qs; }
    QString commit() const override { return u"COMMIT"_qs; }
    QString rollback() const override { return u"ROLLBACK"_qs; }
    // A deferred transaction: the shared lock comes with the first read, and
    // no writer of the host is kept out until then.
    QString beginRead() const override { return u"BEGIN DEFERRED"_qs; }

    QString probe() const override { return u"SELECT count(*) FROM sqlite_master"_qs; }
    QString journalMode() const override { return u"PRAGMA journal_mode"_qs; }
    // A transactionally consistent copy, even while another connection
    // reads the database.
    QString copyInto() const override { return u"VACUUM INTO :path"_qs; }

    QString portfolioJoin() const override
    {
        // The unary "+" on the two tenant columns only steers the planner:
        // it walks Tenants in table order and finds each tenant's property,
        // owner and unit through their indexes, instead of walking the units'
        // index and jumping to every tenant, which reads far more pages on a
        // large site.
        return u" FROM Owners"
               " INNER JOIN Properties ON Owners.OwnerID = Properties.POwnerID"
               " INNER JOIN Tenants ON Properties.PropID = +Tenants.TPropID"
               " INNER JOIN Units ON +Tenants.TenantID = Units.UTenantID"_qs;
    }

    QString portfolioJoinFromUnits() const override
    {
        return u" FROM Units INNER JOIN Tenants ON Tenants.TenantID = Units.UTenantID"
               " INNER JOIN Properties ON Properties.PropID = Tenants.TPropID"
               " INNER JOIN Owners ON Owners.OwnerID = Properties.POwnerID"_qs;
    }

    QString entryOrder(const QStringList &tables) const override
    {
        QStringList keys;
        for (const QString &table : tables)
            keys << table + u".rowid"_qs;
        return u" ORDER BY "_qs + keys.join(u", "_qs);
    }

    QString rowKey(const QString &table, const QString &) const override
    {
        return table + u".rowid"_qs;
    }

    QString likeClause() const override { return u" LIKE :pattern ESCAPE '\\'"_qs; }

    QString containsPattern(const QString &text) const override
    {
        QString escaped;
        for (QChar c : text) {
            if (c == u'\\' || c == u'%' || c == u'_')
                escaped += u'\\';
            escaped += c;
        }
        return u'%' + escaped + u'%';
    }

    QString equalsExactly(const QString &field, char literal) const override
    {
        return field + u" = '"_qs + QChar::fromLatin1(literal) + u"' COLLATE BINARY"_qs;
    }

    // The driver reports the new rowid itself.
    QString lastCounter() const override { return {}; }

    int handleColumns() const override { return 1; }

    QString rowsSql(
        const QString &table, const QString &key, const QStringList &fields) const override
    {
        return u"SELECT rowid, "_qs + fields.join(u", "_qs) + u" FROM "_qs + table + u" WHERE "_qs
            + key + u" = :key ORDER BY rowid"_qs;
    }

    QString allRowsSql(const QString &table, const QStringList &columns) const override
    {
        return u"SELECT rowid, "_qs + columns.join(u", "_qs) + u" FROM "_qs + table
            + u" ORDER BY rowid"_qs;
    }

    QString keyedRowsSql(const QString &table, const QStringList &columns) const override
    {
        return u"SELECT rowid, "_qs + columns.join(u", "_qs) + u" FROM "_qs + table + u" WHERE "_qs
            + columns.first() + u" IN ("_qs;
    }

    QString setRowsByHandleSql(const QString &table, const QString &field) const override
    {
        return u"UPDATE "_qs + table + u" SET "_qs + field + u" = ? WHERE rowid IN ("_qs;
    }

    QString setRowSql(const QString &table, const QString &, const QStringList &,
        const QString &field, const QList<bool> &) const override
    {
        return u"UPDATE "_qs + table + u" SET "_qs + field + u" = :value WHERE rowid = :row"_qs;
    }

    QString rowByHandleSql(const QString &table, const QStringList &fields) const override
    {
        return u"SELECT "_qs + fields.join(u", "_qs) + u" FROM "_qs + table
            + u" WHERE rowid = :row"_qs;
    }

    QString deleteByHandleSql(const QString &table) const override
    {
        return u"DELETE FROM "_qs + table + u" WHERE rowid = :row"_qs;
    }
};

} // namespace

const EngineSql &EngineSql::sqlite()
{
    static const SqliteSql engine;
    return engine;
}
