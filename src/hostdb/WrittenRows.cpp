#include "hostdb/WrittenRows.h"

#include "core/RuntimeError.h"
#include "hostdb/EngineSql.h"
#include "hostdb/HostDb.h"

namespace {

// The key of each table whose balance a posting changes, and the fields
// that tell its rows apart where there are no handles.
struct BalanceTable
{
    const char *table;
    const char *key;
    QStringList fields; // the balance first
};

const BalanceTable kBalanceTables[] = {
    { "Units", "UTenantID", { u"UCurrBal"_qs, u"UAddress"_qs, u"UNumber"_qs } },
    { "Tenants", "TenantID", { u"TCurrBal"_qs } },
    { "Owners", "OwnerID", { u"OCurrBal"_qs } },
    { "Properties", "PropID", { u"PCurrBal"_qs } },
};

const BalanceTable &balanceTable(const QString &table)
{
    for (const BalanceTable &t : kBalanceTables) {
        if (table == QLatin1String(t.table))
            return t;
    }
    throw RuntimeError(3265, u"Remitra cannot reverse a balance of "_qs + table);
}

RuntimeError changedMeanwhile(const Journal::Row &row)
{
    return RuntimeError(3197,
        u"The "_qs + row.table
            + u" record was changed by someone else while Remitra was working on it. Nothing "
              "was changed; try again."_qs);
}

} // namespace

WrittenRows::WrittenRows(const HostDb &db)
    : m_db(db)
{
}

WrittenRows::~WrittenRows() = default;

QSqlQuery &WrittenRows::statement(const QString &sql)
{
    auto it = m_statements.find(sql);
    if (it == m_statements.end())
        it = m_statements.insert(sql, m_db.prepare(sql));
    return it.value();
}

QString WrittenRows::whereValues(const Journal::Row &row, QStringList *names) const
{
    QStringList conditions;
    int i = 0;
    for (auto it = row.fields.cbegin(); it != row.fields.cend(); ++it, ++i) {
        if (it.value().isNull()) {
            conditions << it.key() + u" IS NULL"_qs;
        } else {
            conditions << it.key() + u" = :v"_qs + QString::number(i);
        }
        names->append(it.key());
    }
    return conditions.join(u" AND "_qs);
}

QString WrittenRows::valuesKey(const Journal::Row &row)
{
    QString key = row.table;
    for (auto it = row.fields.cbegin(); it != row.fields.cend(); ++it)
        key += u'\x1f' + it.key() + u'='
            + (it.value().isNull() ? u"\x1e"_qs : it.value().toString());
    return key;
}

WrittenRows::Now WrittenRows::added(const Journal::Row &row, int alike)
{
    const QStringList fields = row.fields.keys();
    if (!row.handle.isNull()) {
        QSqlQuery &q = statement(m_db.sql().rowByHandleSql(row.table, fields));
        q.bindValue(u":row"_qs, row.handle);
        HostDb::exec(q, "reading a posted record");
        if (!q.next()) {
            q.finish();
            return { State::Gone, {}, {} };
        }
        for (int i = 0; i < fields.size(); ++i) {
            const QVariant now = HostWriteLog::normal(fields[i], q.value(i));
            if (now != row.fields.value(fields[i])) {
                q.finish();
                return { State::Changed, fields[i], now };
            }
        }
        q.finish();
        return { State::Same, {}, {} };
    }
    // Without handles: the rows that hold every value written.
    QStringList names;
    const QString where = whereValues(row, &names);
    QSqlQuery &q = statement(u"SELECT count(*) FROM "_qs + row.table + u" WHERE "_qs + where);
    for (int i = 0; i < names.size(); ++i) {
        const QVariant kept = row.fields.value(names[i]);
        if (!kept.isNull())
            q.bindValue(u":v"_qs + QString::number(i), HostWriteLog::bindable(names[i], kept));
    }
    HostDb::exec(q, "reading a posted record");
    const qint64 count = q.next() ? q.value(0).toLongLong() : 0;
    q.finish();
    if (count == alike)
        return { State::Same, {}, {} };
    return { count > alike ? State::Alike : State::Gone, {}, {} };
}

void WrittenRows::remove(const Journal::Row &row, int alike)
{
    QSqlQuery *q = nullptr;
    if (!row.handle.isNull()) {
        q = &statement(m_db.sql().deleteByHandleSql(row.table));
        q->bindValue(u":row"_qs, row.handle);
        alike = 1;
    } else {
        QStringList names;
        const QString where = whereValues(row, &names);
        q = &statement(u"DELETE FROM "_qs + row.table + u" WHERE "_qs + where);
        for (int i = 0; i < names.size(); ++i) {
            const QVariant kept = row.fields.value(names[i]);
            if (!kept.isNull())
                q->bindValue(u":v"_qs + QString::number(i), HostWriteLog::bindable(names[i], kept));
        }
    }
    HostDb::exec(*q, "removing a posted record");
    if (q->numRowsAffected() != alike)
        throw changedMeanwhile(row);
}

KeyedRows &WrittenRows::balanceRows(const Journal::Row &row)
{
    auto it = m_balances.find(row.table);
    if (it == m_balances.end()) {
        const BalanceTable &t = balanceTable(row.table);
        it = m_balances.insert(row.table,
            std::make_shared<KeyedRows>(m_db, row.table, QLatin1String(t.key), t.fields));
    }
    return *it.value();
}

std::optional<KeyedRows::Row> WrittenRows::balanceRow(const Journal::Row &row)
{
    const BalanceTable &t = balanceTable(row.table);
    KeyedRows &rows = balanceRows(row);
    const QVariant key
        = HostWriteLog::bindable(QLatin1String(t.key), row.fields.value(QLatin1String(t.key)));
    for (const KeyedRows::Row &candidate : rows.rows(key)) {
        if (!row.handle.isNull()) {
            if (candidate.handle == row.handle)
                return candidate;
            continue;
        }
        // Without handles: the row whose other fields still hold the values
        // they had (a unit's address and number).
        bool same = true;
        for (qsizetype i = 1; i < t.fields.size(); ++i) {
            if (HostWriteLog::normal(t.fields[i], candidate.values.value(i))
                != row.fields.value(t.fields[i]))
                same = false;
        }
        if (same)
            return candidate;
    }
    return std::nullopt;
}

std::optional<Currency> WrittenRows::balance(const Journal::Row &row)
{
    const std::optional<KeyedRows::Row> found = balanceRow(row);
    if (!found)
        return std::nullopt;
    return Currency::fromVariant(found->values.value(0));
}

void WrittenRows::setBalance(const Journal::Row &row, Currency value)
{
    const std::optional<KeyedRows::Row> found = balanceRow(row);
    if (!found || balanceRows(row).set(*found, 0, value.toDatabaseValue()) != 1)
        throw changedMeanwhile(row);
}

bool WrittenRows::holdsWrites(Journal &journal, qint64 runId)
{
    // The run committed all or nothing: the first row that tells is enough.
    std::optional<bool> holds;
    journal.forEachRow(runId, [&](const Journal::Row &row) {
        switch (row.change) {
        case HostWriteLog::Change::Added: {
            const State state = added(row, 1).state;
            holds = state == State::Same || state == State::Alike;
            break;
        }
        case HostWriteLog::Change::Removed:
            holds = added(row, 1).state == State::Gone;
            break;
        case HostWriteLog::Change::Balance: {
            const std::optional<Currency> now = balance(row);
            holds = now && now->toPlainText() == row.after.toString();
            break;
        }
        case HostWriteLog::Change::Changed:
            return true;
        }
        return false;
    });
    // A run that wrote nothing has nothing to lose either way.
    return holds.value_or(true);
}
