#include "hostdb/EngineSql.h"

// The forms for the host's Access database, reached through the ODBC Access
// driver. Rows have no handle that SQL can name, and the engine gives rows
// in its own order. The joins and the keyed row statements are plain SQL
// that the tests also run on SQLite; StrComp, @@IDENTITY, the bracket
// escapes of LIKE patterns and the driver's transactions are not tested,
// for want of the driver.

namespace {

class AccessSql final : public EngineSql
{
public:
    // The driver's own transaction calls.
    QString beginWrite() const override { return {}; }
    QString commit() const override { return {}; }
    QString rollback() const override { return {}; }
    QString beginRead() const override { return {}; }

    // The driver refuses to open a file that is not a database.
    QString probe() const override { return {}; }
    QString journalMode() const override { return {}; }
    // No online copy: the file itself is copied (the program is its only
    // writer while it runs).
    QString copyInto() const override { return {}; }

    // The engine wants every join but the last in parentheses.
    QString portfolioJoin() const override
    {
        return u" FROM ((Owners INNER JOIN Properties ON Owners.OwnerID = Properties.POwnerID)"
               " INNER JOIN Tenants ON Properties.PropID = Tenants.TPropID)"
               " INNER JOIN Units ON Tenants.TenantID = Units.UTenantID"_qs;
    }

    QString portfolioJoinFromUnits() const override { return portfolioJoin(); }

    QString entryOrder(const QStringList &) const override { return {}; }

    QString rowKey(const QString &, const QString &idColumn) const override { return idColumn; }

    QString likeClause() const override { return u" LIKE :pattern"_qs; }

    // A wildcard character stands for itself inside brackets.
    QString containsPattern(const QString &text) const override
    {
        QString escaped;
        for (QChar c : text) {
            if (c == u'[' || c == u'%' || c == u'_' || c == u'*' || c == u'?' || c == u'#')
                escaped += u'[' + QString(c) + u']';
            else
                escaped += c;
        }
        return u'%' + escaped + u'%';
    }

    // Compare mode 0 is binary: case counts.
    QString equalsExactly(const QString &field, char literal) const override
    {
        return u"StrComp("_qs + field + u", '"_qs + QChar::fromLatin1(literal) + u"', 0) = 0"_qs;
    }

    // The counter of the connection's last insert (the driver does not
    // report it).
    QString lastCounter() const override { return u"SELECT @@IDENTITY"_qs; }

    int handleColumns() const override { return 0; }

    QString rowsSql(
        const QString &table, const QString &key, const QStringList &fields) const override
    {
        return u"SELECT "_qs + fields.join(u", "_qs) + u" FROM "_qs + table + u" WHERE "_qs + key
            + u" = :key"_qs;
    }

    QString allRowsSql(const QString &table, const QStringList &columns) const override
    {
        return u"SELECT "_qs + columns.join(u", "_qs) + u" FROM "_qs + table;
    }

    QString keyedRowsSql(const QString &table, const QStringList &columns) const override
    {
        return u"SELECT "_qs + columns.join(u", "_qs) + u" FROM "_qs + table + u" WHERE "_qs
            + columns.first() + u" IN ("_qs;
    }

    QString setRowsByHandleSql(const QString &, const QString &) const override { return {}; }

    QString setRowSql(const QString &table, const QString &key, const QStringList &fields,
        const QString &field, const QList<bool> &nullFields) const override
    {
        QString sql = u"UPDATE "_qs + table + u" SET "_qs + field + u" = :value WHERE "_qs + key
            + u" = :key"_qs;
        for (qsizetype i = 0; i < fields.size(); ++i) {
            sql += u" AND "_qs + fields[i];
            sql += nullFields.value(i) ? u" IS NULL"_qs : u" = :v"_qs + QString::number(i);
        }
        return sql;
    }

    // No handles: WrittenRows finds a written row by its values.
    QString rowByHandleSql(const QString &, const QStringList &) const override { return {}; }
    QString deleteByHandleSql(const QString &) const override { return {}; }
};

} // namespace

const EngineSql &EngineSql::access()
{
    static const AccessSql engine;
    return engine;
}
