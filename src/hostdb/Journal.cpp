#include "hostdb/Journal.h"

#include "core/RuntimeError.h"
#include "hostdb/BatchRead.h"
#include "hostdb/EngineSql.h"
#include "hostdb/RemitraStore.h"

#include <QFileInfo>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>

#include <sqlite3.h>

#include <algorithm>
#include <memory>
#include <vector>

namespace {

struct KindName
{
    Journal::Kind kind;
    const char *name;
    const char *caption;
};

const KindName kKinds[] = {
    { Journal::Kind::UploadAll, "upload all", "Upload All" },
    { Journal::Kind::TenantUpload, "tenant upload", "Tenant upload" },
    { Journal::Kind::OwnerUpload, "owner upload", "Owner upload" },
    { Journal::Kind::VendorUpload, "vendor upload", "Vendor upload" },
    { Journal::Kind::RentDownload, "rent download", "Rent download" },
    { Journal::Kind::Distribution, "distribution", "Payment distribution" },
    { Journal::Kind::RentPosting, "rent posting", "Rent posting" },
    { Journal::Kind::CheckPosting, "check posting", "Paid checks posting" },
    { Journal::Kind::Reversal, "reversal", "Reversal of a rent posting" },
};

QVariant orNull(const std::optional<qint64> &n)
{
    return n ? QVariant(*n) : QVariant();
}

QVariant orNull(const std::optional<Currency> &c)
{
    return c ? QVariant(c->toPlainText()) : QVariant();
}

QVariant orNull(const QString &text)
{
    return text.isNull() ? QVariant() : QVariant(text);
}

std::optional<qint64> countOf(const QVariant &v)
{
    return v.isNull() ? std::nullopt : std::optional<qint64>(v.toLongLong());
}

std::optional<Currency> totalOf(const QVariant &v)
{
    return v.isNull() ? std::nullopt : Currency::parse(v.toString());
}

// The columns of a run with its latest result (see runAt()).
const QString kRunColumns
    = u"SELECT r.run_id, r.at, r.kind, r.title, r.file_sha256, r.reverses, "
      "coalesce((SELECT c.count FROM %1 c WHERE c.run_id = r.run_id AND c.count IS NOT NULL "
      "ORDER BY c.result_id DESC LIMIT 1), r.count), "
      "coalesce((SELECT c.total FROM %1 c WHERE c.run_id = r.run_id AND c.total IS NOT NULL "
      "ORDER BY c.result_id DESC LIMIT 1), r.total), "
      "x.state, x.code, x.flag, x.count, x.total, x.note, x.at, "
      "(SELECT v.run_id FROM %2 v WHERE v.reverses = r.run_id AND (SELECT y.state FROM %1 y "
      "WHERE y.run_id = v.run_id ORDER BY y.result_id DESC LIMIT 1) = 'posted' "
      "ORDER BY v.run_id DESC LIMIT 1) "
      "FROM %2 r LEFT JOIN %1 x ON x.result_id = "
      "(SELECT max(m.result_id) FROM %1 m WHERE m.run_id = r.run_id)"_qs;

} // namespace

QList<Journal::Kind> Journal::kinds()
{
    QList<Kind> all;
    for (const KindName &k : kKinds)
        all << k.kind;
    return all;
}

QString Journal::kindName(Kind kind)
{
    for (const KindName &k : kKinds) {
        if (k.kind == kind)
            return QString::fromLatin1(k.name);
    }
    return {};
}

QString Journal::kindCaption(Kind kind)
{
    for (const KindName &k : kKinds) {
        if (k.kind == kind)
            return QString::fromLatin1(k.caption);
    }
    return {};
}

std::optional<Journal::Kind> Journal::kindOf(const QString &name)
{
    for (const KindName &k : kKinds) {
        if (name == QLatin1String(k.name))
            return k.kind;
    }
    return std::nullopt;
}

bool Journal::isExchange(Kind kind)
{
    return kind != Kind::RentPosting && kind != Kind::CheckPosting && kind != Kind::Reversal;
}

Journal::Journal(const RemitraStore &store)
    : m_store(store)
{
}

qint64 Journal::addRun(const Entry &entry)
{
    QSqlQuery run = m_store.prepare(u"INSERT INTO "_qs + m_store.table("journal_runs")
        + u" (at, kind, title, file_sha256, reverses, count, total) "
          "VALUES (:at, :kind, :title, :sha, :reverses, :count, :total)"_qs);
    run.bindValue(u":at"_qs, RemitraStore::now());
    run.bindValue(u":kind"_qs, kindName(entry.kind));
    run.bindValue(u":title"_qs, entry.title);
    run.bindValue(u":sha"_qs, orNull(entry.fileSha256));
    run.bindValue(u":reverses"_qs, entry.reverses ? QVariant(entry.reverses) : QVariant());
    run.bindValue(u":count"_qs, orNull(entry.count));
    run.bindValue(u":total"_qs, orNull(entry.total));
    HostDb::exec(run, "adding a run to the journal");
    const qint64 id = run.lastInsertId().toLongLong();

    for (const File &file : entry.files)
        addFile(id, file);
    addLines(id, entry.lines);
    if (entry.rows && !entry.rows->isEmpty()) {
        QSqlQuery row = m_store.prepare(u"INSERT INTO "_qs + m_store.table("journal_rows")
            + u" (run_id, position, line, tbl, handle, change, fields, field, before, after) "
              "VALUES (:run, :position, :line, :tbl, :handle, :change, :fields, :field, "
              ":before, :after)"_qs);
        for (const HostWriteLog::Entry &e : entry.rows->entries()) {
            row.bindValue(u":run"_qs, id);
            row.bindValue(u":position"_qs, e.position);
            row.bindValue(u":line"_qs, e.line ? QVariant(e.line) : QVariant());
            row.bindValue(u":tbl"_qs, e.table);
            row.bindValue(u":handle"_qs, e.handle);
            row.bindValue(u":change"_qs, HostWriteLog::changeName(e.change));
            row.bindValue(u":fields"_qs, HostWriteLog::json(e.fields));
            row.bindValue(u":field"_qs, orNull(e.field));
            row.bindValue(u":before"_qs, e.before);
            row.bindValue(u":after"_qs, e.after);
            HostDb::exec(row, "adding a posted row to the journal");
        }
        addSlimRows(id, *entry.rows);
        if (entry.rows->movedBlocks()) {
            // The store shares the host's connection wherever blocks move.
            QSqlQuery moved = m_store.prepare(u"INSERT INTO "_qs
                + m_store.table("journal_row_blocks")
                + u" (run_id, position, count, rows) SELECT :run, position, count, rows FROM "_qs
                + HostWriteLog::MovedBlocksTable + u" ORDER BY position"_qs);
            moved.bindValue(u":run"_qs, id);
            HostDb::exec(moved, "adding the posted rows to the journal");
            m_store.host().execText(u"DELETE FROM "_qs + HostWriteLog::MovedBlocksTable,
                "adding the posted rows to the journal");
        }
        QSqlQuery block = m_store.prepare(u"INSERT INTO "_qs + m_store.table("journal_row_blocks")
            + u" (run_id, position, count, rows) VALUES (:run, :position, :count, :rows)"_qs);
        for (const HostWriteLog::Block &b : entry.rows->blocks()) {
            block.bindValue(u":run"_qs, id);
            block.bindValue(u":position"_qs, b.position);
            block.bindValue(u":count"_qs, b.count);
            block.bindValue(u":rows"_qs, b.json());
            HostDb::exec(block, "adding the posted rows to the journal");
        }
    }
    return id;
}

bool Journal::readsRowsFromHost(const HostDb &db, const RemitraStore &store)
{
    return store.attached() && db.sql().handleColumns() > 0;
}

void Journal::addSlimRows(qint64 runId, const HostWriteLog &log)
{
    // Slim rows are kept only where the store shares the SQLite host's
    // connection (readsRowsFromHost), so they go straight through the
    // engine's own interface, in the order written, in the posting's own
    // transaction: a statement per table, kind and balance field, each row
    // bound as numbers. Its fields are read from the host row by the same
    // statement (a removed row's from the copy made before it was removed,
    // see HostWriteLog::removing).
    constexpr auto operation = "adding the posted rows to the journal";
    sqlite3 *handle = m_store.host().sqliteHandle();
    if (!handle)
        throw RuntimeError::database(QString::fromLatin1(operation),
            u"the journal's rows need the SQLite host's own connection"_qs);
    const auto groupOf
        = [](const HostWriteLog::Slim &s) { return s.table << 16 | int(s.change) << 8 | s.field; };
    QHash<int, sqlite3_stmt *> statements;
    std::vector<BatchRead::EngineStatement> owned;
    QSet<int> removedTables;
    // ?1 run, ?2 position, ?3 line, ?4 handle, ?5 before, ?6 after; the
    // table, kind and field of the group are bound once.
    const auto statement = [&](int group) -> sqlite3_stmt * {
        if (sqlite3_stmt *known = statements.value(group))
            return known;
        const QString table = HostWriteLog::slimTables().at(group >> 16);
        const auto change = HostWriteLog::Change((group >> 8) & 0xff);
        const QString field = HostWriteLog::slimFields().at(group & 0xff);
        QString fields;
        if (log.keepsKeysOnly() && change != HostWriteLog::Change::Balance) {
            fields = u"NULL"_qs;
        } else if (change == HostWriteLog::Change::Removed) {
            fields = u"(SELECT r.fields FROM temp.remitra_removed r WHERE r.tbl = ?7 AND "
                     "r.handle = ?4)"_qs;
            removedTables.insert(group >> 16);
        } else {
            fields = u"(SELECT "_qs + HostWriteLog::jsonFieldsSql(table, change, u"h"_qs)
                + u" FROM (SELECT 1) LEFT JOIN main."_qs + table + u" h ON h.rowid = ?4)"_qs;
        }
        const QString sql = u"INSERT INTO "_qs + m_store.table("journal_rows")
            + u" (run_id, position, line, tbl, handle, change, fields, field, before, after) "
              "VALUES (?1, ?2, ?3, ?7, ?4, ?8, "_qs
            + fields + u", ?9, ?5, ?6)"_qs;
        owned.push_back(BatchRead::prepareOnEngine(handle, sql, operation, true));
        sqlite3_stmt *raw = owned.back().get();
        int rc = sqlite3_bind_int64(raw, 1, runId);
        if (rc == SQLITE_OK)
            rc = BatchRead::bindOnEngine(raw, 7, table);
        if (rc == SQLITE_OK)
            rc = BatchRead::bindOnEngine(raw, 8, HostWriteLog::changeName(change));
        if (rc == SQLITE_OK)
            rc = BatchRead::bindOnEngine(raw, 9, field.isEmpty() ? QVariant() : QVariant(field));
        if (rc != SQLITE_OK)
            throw BatchRead::engineFailure(handle, rc, operation);
        statements.insert(group, raw);
        return raw;
    };
    for (const HostWriteLog::Slim &s : log.slimEntries()) {
        sqlite3_stmt *row = statement(groupOf(s));
        sqlite3_reset(row);
        int rc = sqlite3_bind_int64(row, 2, s.position);
        if (rc == SQLITE_OK)
            rc = s.line ? sqlite3_bind_int64(row, 3, s.line) : sqlite3_bind_null(row, 3);
        if (rc == SQLITE_OK)
            rc = sqlite3_bind_int64(row, 4, s.handle);
        if (s.change == HostWriteLog::Change::Balance) {
            const HostWriteLog::SlimBalance &b = log.slimBalances().at(size_t(s.balance));
            if (rc == SQLITE_OK)
                rc = BatchRead::bindOnEngine(row, 5, b.before.toPlainText());
            if (rc == SQLITE_OK)
                rc = BatchRead::bindOnEngine(row, 6, b.after.toPlainText());
        } else {
            if (rc == SQLITE_OK)
                rc = sqlite3_bind_null(row, 5);
            if (rc == SQLITE_OK)
                rc = sqlite3_bind_null(row, 6);
        }
        if (rc == SQLITE_OK)
            rc = sqlite3_step(row);
        if (rc != SQLITE_DONE)
            throw BatchRead::engineFailure(handle, rc, operation);
    }
    for (const int table : std::as_const(removedTables)) {
        QSqlQuery taken = m_store.prepare(u"DELETE FROM temp.remitra_removed WHERE tbl = :tbl"_qs);
        taken.bindValue(u":tbl"_qs, HostWriteLog::slimTables().at(table));
        HostDb::exec(taken, operation);
    }
}

void Journal::addResult(qint64 runId, const Result &result)
{
    QSqlQuery q = m_store.prepare(u"INSERT INTO "_qs + m_store.table("journal_results")
        + u" (run_id, at, state, code, flag, count, total, note) "
          "VALUES (:run, :at, :state, :code, :flag, :count, :total, :note)"_qs);
    q.bindValue(u":run"_qs, runId);
    q.bindValue(u":at"_qs, RemitraStore::now());
    q.bindValue(u":state"_qs, result.state);
    q.bindValue(u":code"_qs, result.code);
    q.bindValue(u":flag"_qs, orNull(result.flag));
    q.bindValue(u":count"_qs, orNull(result.count));
    q.bindValue(u":total"_qs, orNull(result.total));
    q.bindValue(u":note"_qs, orNull(result.note));
    HostDb::exec(q, "adding a result to the journal");
}

void Journal::addFile(qint64 runId, const File &file)
{
    QSqlQuery q = m_store.prepare(u"INSERT INTO "_qs + m_store.table("journal_files")
        + u" (run_id, role, name, size, sha256, archive) "
          "VALUES (:run, :role, :name, :size, :sha, :archive)"_qs);
    q.bindValue(u":run"_qs, runId);
    q.bindValue(u":role"_qs, file.role);
    q.bindValue(u":name"_qs, file.name);
    q.bindValue(u":size"_qs, file.size);
    q.bindValue(u":sha"_qs, orNull(file.sha256));
    q.bindValue(u":archive"_qs, orNull(file.archive));
    HostDb::exec(q, "adding a file to the journal");
}

void Journal::addLines(qint64 runId, const QList<Line> &lines, int firstPosition)
{
    if (lines.isEmpty())
        return;
    QSqlQuery q = m_store.prepare(u"INSERT INTO "_qs + m_store.table("journal_lines")
        + u" (run_id, position, line, tenant_id, amount, date, check_number, trans_type, text, "
          "outcome, missing, deposited) VALUES (:run, :position, :line, :tenant, :amount, "
          ":date, :check, :type, :text, :outcome, :missing, :deposited)"_qs);
    int position = firstPosition;
    for (const Line &line : lines) {
        q.bindValue(u":run"_qs, runId);
        q.bindValue(u":position"_qs, ++position);
        q.bindValue(u":line"_qs, line.line);
        q.bindValue(u":tenant"_qs, line.tenantId);
        q.bindValue(u":amount"_qs, orNull(line.amount));
        q.bindValue(u":date"_qs, orNull(line.date));
        q.bindValue(u":check"_qs, orNull(line.checkNumber));
        q.bindValue(u":type"_qs, orNull(line.transType));
        q.bindValue(u":text"_qs, orNull(line.text));
        q.bindValue(u":outcome"_qs, orNull(line.outcome));
        q.bindValue(u":missing"_qs, orNull(line.missing));
        q.bindValue(u":deposited"_qs, line.deposited ? 1 : 0);
        HostDb::exec(q, "adding a line to the journal");
    }
}

void Journal::addMessage(qint64 runId, const Message &message)
{
    QSqlQuery q = m_store.prepare(u"INSERT INTO "_qs + m_store.table("journal_messages")
        + u" (run_id, at, title, text, answer) VALUES (:run, :at, :title, :text, :answer)"_qs);
    q.bindValue(u":run"_qs, runId);
    q.bindValue(u":at"_qs, message.at.isEmpty() ? RemitraStore::now() : message.at);
    q.bindValue(u":title"_qs, message.title);
    q.bindValue(u":text"_qs, message.text);
    q.bindValue(u":answer"_qs, orNull(message.answer));
    HostDb::exec(q, "adding a message to the journal");
}

qint64 Journal::commitPosting(HostDb::Transaction &host, const Entry &entry, const Result &result,
    const std::function<void()> &records)
{
    if (m_store.attached()) {
        // One atomic commit over the host and the store.
        const qint64 id = addRun(entry);
        addResult(id, result);
        if (records)
            records();
        host.commit();
        m_store.checkpoint("host committed");
        return id;
    }
    // Two connections: the entry first, marked pending (with the result it
    // is to have in `flag`), so that a program that dies after the host's
    // commit leaves a trace that JournalRecovery settles from the host.
    qint64 id = 0;
    {
        RemitraStore::Transaction own(m_store);
        id = addRun(entry);
        Result pending = result;
        pending.flag = result.state;
        pending.state = Pending;
        addResult(id, pending);
        own.commit();
    }
    m_store.checkpoint("journal pending");
    try {
        host.commit();
    } catch (const RuntimeError &) {
        RemitraStore::Transaction own(m_store);
        addResult(id, { RolledBack, {}, {}, {}, {}, {} });
        own.commit();
        throw;
    }
    m_store.checkpoint("host committed");
    RemitraStore::Transaction own(m_store);
    if (records)
        records();
    addResult(id, result);
    own.commit();
    return id;
}

Journal::Run Journal::runAt(QSqlQuery &q) const
{
    Run run;
    run.id = q.value(0).toLongLong();
    run.at = q.value(1).toString();
    run.kind = kindOf(q.value(2).toString()).value_or(Kind::UploadAll);
    run.title = q.value(3).toString();
    run.fileSha256 = q.value(4).toString();
    run.reverses = q.value(5).toLongLong();
    run.count = countOf(q.value(6));
    run.total = totalOf(q.value(7));
    run.result.state = q.value(8).toString();
    run.result.code = q.value(9);
    run.result.flag = q.value(10).toString();
    run.result.count = countOf(q.value(11));
    run.result.total = totalOf(q.value(12));
    run.result.note = q.value(13).toString();
    run.resultAt = q.value(14).toString();
    run.reversedBy = q.value(15).toLongLong();
    return run;
}

QList<Journal::Run> Journal::runs(const Filter &filter)
{
    QStringList conditions;
    if (filter.kind)
        conditions << u"r.kind = :kind"_qs;
    if (filter.from.isValid())
        conditions << u"r.at >= :from"_qs;
    if (filter.to.isValid())
        conditions << u"r.at < :to"_qs;
    QString sql = kRunColumns.arg(m_store.table("journal_results"), m_store.table("journal_runs"));
    if (!conditions.isEmpty())
        sql += u" WHERE "_qs + conditions.join(u" AND "_qs);
    sql += u" ORDER BY r.run_id DESC"_qs;
    QSqlQuery q = m_store.prepare(sql);
    if (filter.kind)
        q.bindValue(u":kind"_qs, kindName(*filter.kind));
    if (filter.from.isValid())
        q.bindValue(u":from"_qs, filter.from.toString(Qt::ISODate));
    if (filter.to.isValid())
        q.bindValue(u":to"_qs, filter.to.addDays(1).toString(Qt::ISODate));
    HostDb::exec(q, "reading the journal");
    QList<Run> found;
    while (q.next())
        found.append(runAt(q));
    return found;
}

std::optional<Journal::Run> Journal::run(qint64 runId)
{
    QSqlQuery q = m_store.prepare(
        kRunColumns.arg(m_store.table("journal_results"), m_store.table("journal_runs"))
        + u" WHERE r.run_id = :run"_qs);
    q.bindValue(u":run"_qs, runId);
    HostDb::exec(q, "reading the journal");
    if (!q.next())
        return std::nullopt;
    return runAt(q);
}

QList<Journal::Run> Journal::pending()
{
    QList<Run> found;
    QSqlQuery q = m_store.prepare(
        kRunColumns.arg(m_store.table("journal_results"), m_store.table("journal_runs"))
        + u" WHERE x.state = 'pending' ORDER BY r.run_id"_qs);
    HostDb::exec(q, "reading the journal");
    while (q.next())
        found.append(runAt(q));
    return found;
}

QList<Journal::Run> Journal::postingsOf(const QString &fileSha256)
{
    QList<Run> found;
    QSqlQuery q = m_store.prepare(
        kRunColumns.arg(m_store.table("journal_results"), m_store.table("journal_runs"))
        + u" WHERE r.file_sha256 = :sha AND r.kind = 'rent posting' ORDER BY r.run_id"_qs);
    q.bindValue(u":sha"_qs, fileSha256);
    HostDb::exec(q, "reading the journal");
    while (q.next())
        found.append(runAt(q));
    return found;
}

QList<Journal::File> Journal::files(qint64 runId)
{
    QSqlQuery q = m_store.prepare(u"SELECT role, name, size, sha256, archive FROM "_qs
        + m_store.table("journal_files") + u" WHERE run_id = :run ORDER BY rowid"_qs);
    q.bindValue(u":run"_qs, runId);
    HostDb::exec(q, "reading the journal");
    QList<File> found;
    while (q.next()) {
        found.append({ q.value(0).toString(), q.value(1).toString(), q.value(2).toLongLong(),
            q.value(3).toString(), q.value(4).toString() });
    }
    return found;
}

QString Journal::archiveOf(const QString &sha256, const QString &folder)
{
    QSqlQuery q
        = m_store.prepare(u"SELECT DISTINCT archive FROM "_qs + m_store.table("journal_files")
            + u" WHERE sha256 = :sha AND archive IS NOT NULL ORDER BY rowid DESC"_qs);
    q.bindValue(u":sha"_qs, sha256);
    HostDb::exec(q, "reading the journal");
    while (q.next()) {
        const QString archive = q.value(0).toString();
        if (QFileInfo(folder + u'/' + archive).isFile())
            return archive;
    }
    return {};
}

QList<Journal::Line> Journal::lines(qint64 runId, int limit)
{
    QSqlQuery q = m_store.prepare(u"SELECT line, tenant_id, amount, date, check_number, "
                                  "trans_type, text, outcome, missing, deposited FROM "_qs
        + m_store.table("journal_lines")
        + u" WHERE run_id = :run ORDER BY position LIMIT :limit"_qs);
    q.bindValue(u":run"_qs, runId);
    q.bindValue(u":limit"_qs, limit);
    HostDb::exec(q, "reading the journal");
    QList<Line> found;
    while (q.next()) {
        Line line;
        line.line = q.value(0).toInt();
        line.tenantId = q.value(1);
        line.amount = q.value(2).toString();
        line.date = q.value(3).toString();
        line.checkNumber = q.value(4).toString();
        line.transType = q.value(5).toString();
        line.text = q.value(6).toString();
        line.outcome = q.value(7).toString();
        line.missing = q.value(8).toString();
        line.deposited = q.value(9).toInt() != 0;
        found.append(line);
    }
    return found;
}

void Journal::forEachRow(qint64 runId, const std::function<bool(const Row &)> &visit)
{
    QSqlQuery q = m_store.prepare(
        u"SELECT position, line, tbl, handle, change, fields, field, before, after FROM "_qs
        + m_store.table("journal_rows") + u" WHERE run_id = :run ORDER BY position"_qs);
    q.bindValue(u":run"_qs, runId);
    HostDb::exec(q, "reading the journal");
    // Packed rows come a block at a time and are merged with the others by
    // position: each kind is in position order, and blocks do not overlap.
    QSqlQuery blocks = m_store.prepare(u"SELECT rows, count FROM "_qs
        + m_store.table("journal_row_blocks") + u" WHERE run_id = :run ORDER BY position"_qs);
    blocks.bindValue(u":run"_qs, runId);
    HostDb::exec(blocks, "reading the journal");
    QJsonArray packed;
    qsizetype next = 0;
    const auto nextPacked = [&]() -> bool {
        while (next == packed.size()) {
            if (!blocks.next())
                return false;
            QJsonParseError error;
            const QJsonDocument json
                = QJsonDocument::fromJson(blocks.value(0).toString().toUtf8(), &error);
            packed = json.array();
            next = 0;
            // A block that does not read back whole is never taken as fewer rows.
            if (error.error != QJsonParseError::NoError || packed.size() != blocks.value(1).toInt())
                throw RuntimeError::database(u"reading the journal"_qs,
                    u"a block of the rows of run "_qs + QString::number(runId)
                        + u" cannot be read"_qs);
        }
        return true;
    };
    const auto text = [](const QJsonValue &v) { return v.isString() ? QVariant(v.toString()) : QVariant(); };
    bool stored = q.next();
    for (;;) {
        const bool morePacked = nextPacked();
        const QJsonArray p = morePacked ? packed.at(next).toArray() : QJsonArray();
        Row row;
        if (stored && (!morePacked || q.value(0).toInt() < p.at(0).toInt())) {
            row.position = q.value(0).toInt();
            row.line = q.value(1).toInt();
            row.table = q.value(2).toString();
            row.handle = q.value(3);
            row.change = HostWriteLog::changeOf(q.value(4).toString());
            row.fields = HostWriteLog::fieldsFromJson(
                row.table, row.change, QJsonDocument::fromJson(q.value(5).toString().toUtf8()));
            row.field = q.value(6).toString();
            row.before = q.value(7);
            row.after = q.value(8);
            stored = q.next();
        } else if (morePacked) {
            row.position = p.at(0).toInt();
            row.line = p.at(1).toInt();
            row.table = p.at(2).toString();
            row.handle = p.at(3).toInteger();
            row.change = HostWriteLog::changeOf(p.at(4).toString());
            row.fields = HostWriteLog::fieldsFromJson(row.table, row.change, p.at(5));
            row.field = p.at(6).toString();
            row.before = text(p.at(7));
            row.after = text(p.at(8));
            ++next;
        } else {
            return;
        }
        if (!visit(row))
            return;
    }
}

QList<Journal::Row> Journal::rows(qint64 runId, int limit)
{
    QList<Row> found;
    forEachRow(runId, [&](const Row &row) {
        found.append(row);
        return limit < 0 || found.size() < limit;
    });
    return found;
}

qint64 Journal::lineCount(qint64 runId)
{
    QSqlQuery q = m_store.prepare(
        u"SELECT count(*) FROM "_qs + m_store.table("journal_lines") + u" WHERE run_id = :run"_qs);
    q.bindValue(u":run"_qs, runId);
    HostDb::exec(q, "reading the journal");
    return q.next() ? q.value(0).toLongLong() : 0;
}

qint64 Journal::rowCount(qint64 runId)
{
    QSqlQuery q = m_store.prepare(u"SELECT (SELECT count(*) FROM "_qs
        + m_store.table("journal_rows") + u" WHERE run_id = :run) + (SELECT coalesce(sum(count), 0) FROM "_qs
        + m_store.table("journal_row_blocks") + u" WHERE run_id = :run2)"_qs);
    q.bindValue(u":run2"_qs, runId);
    q.bindValue(u":run"_qs, runId);
    HostDb::exec(q, "reading the journal");
    return q.next() ? q.value(0).toLongLong() : 0;
}

QList<Journal::Message> Journal::messages(qint64 runId)
{
    QSqlQuery q = m_store.prepare(u"SELECT at, title, text, answer FROM "_qs
        + m_store.table("journal_messages") + u" WHERE run_id = :run ORDER BY message_id"_qs);
    q.bindValue(u":run"_qs, runId);
    HostDb::exec(q, "reading the journal");
    QList<Message> found;
    while (q.next()) {
        found.append({ q.value(0).toString(), q.value(1).toString(), q.value(2).toString(),
            q.value(3).toString() });
    }
    return found;
}

QList<Journal::PostedPayment> Journal::postedBetween(
    const QString &from, const QString &to, const QString &fileSha256)
{
    // The key as paymentKey() writes it.
    QSqlQuery q = m_store.prepare(
        u"SELECT l.tenant_id || '|' || l.amount || '|' || l.date || '|' || "
        "coalesce(l.check_number, '') || '|' || coalesce(l.trans_type, ''), l.run_id, l.line, "
        "r.file_sha256 = :sha FROM "_qs
        + m_store.table("journal_lines") + u" l JOIN "_qs + m_store.table("journal_runs")
        + u" r ON r.run_id = l.run_id WHERE l.date BETWEEN :from AND :to "
          "AND l.outcome IN ('posted', 'part posted') AND r.kind = 'rent posting' "
          "AND l.run_id NOT IN (SELECT run_id FROM "_qs
        + m_store.table("journal_results") + u" WHERE state IN ('reversed', 'rolled back'))"_qs);
    q.bindValue(u":sha"_qs, fileSha256);
    q.bindValue(u":from"_qs, from);
    q.bindValue(u":to"_qs, to);
    HostDb::exec(q, "reading the journal");
    QList<PostedPayment> found;
    while (q.next()) {
        found.append({ q.value(0).toString(), q.value(1).toLongLong(), q.value(2).toInt(),
            q.value(3).toInt() != 0 });
    }
    return found;
}

QString Journal::paymentKey(qint64 tenantId, const QString &amount, const QString &isoDate,
    const QString &checkNumber, const QString &transType)
{
    // Appended in place: a file of 100,000 payments makes as many keys.
    QString key;
    key.reserve(24 + amount.size() + isoDate.size() + checkNumber.size() + transType.size());
    key += QString::number(tenantId);
    key += u'|';
    key += amount;
    key += u'|';
    key += isoDate;
    key += u'|';
    key += checkNumber;
    key += u'|';
    key += transType;
    return key;
}

QHash<qint64, QString> Journal::postingTimes()
{
    QSqlQuery q = m_store.prepare(u"SELECT run_id, at FROM "_qs + m_store.table("journal_runs")
        + u" WHERE kind = 'rent posting'"_qs);
    HostDb::exec(q, "reading the journal");
    QHash<qint64, QString> times;
    while (q.next())
        times.insert(q.value(0).toLongLong(), q.value(1).toString());
    return times;
}

QString Journal::resultText(const Run &run)
{
    const Result &r = run.result;
    if (r.state == Sent)
        return u"No answer recorded"_qs;
    if (r.state == Answered) {
        const int code = r.code.toInt();
        if (r.flag == u"True"_qs && code == 200)
            return u"Successful (200)"_qs;
        if (r.flag != u"True"_qs)
            return u"No answer (%1)"_qs.arg(code);
        return u"Error %1"_qs.arg(code);
    }
    if (r.state == Posted)
        return run.kind == Kind::Reversal ? u"Reversed the posting"_qs : u"Posted"_qs;
    if (r.state == Stopped)
        return u"Stopped part-way"_qs;
    if (r.state == Pending)
        return u"Not yet confirmed"_qs;
    if (r.state == RolledBack)
        return u"Not posted (rolled back)"_qs;
    if (r.state == Reversed)
        return run.reversedBy ? u"Reversed (run %1)"_qs.arg(run.reversedBy) : u"Reversed"_qs;
    if (r.state == Refused)
        return u"Refused"_qs;
    return r.state.isEmpty() ? u"No result recorded"_qs : r.state;
}
