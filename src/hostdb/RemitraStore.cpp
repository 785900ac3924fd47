#include "hostdb/RemitraStore.h"

#include "core/RuntimeError.h"
#include "hostdb/HostDb.h"

#include <QAtomicInt>
#include <QDateTime>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlError>

namespace {

QAtomicInt g_serial;

constexpr auto kSchema = "remitra";

// The store's tables. "%1" is the schema prefix ("remitra." or "").
const char *const kTables[] = {
    // Rent payment files: one row per payment line that reached the ledgers
    // or a deposit, by the file's SHA-256 and the line's number in it.
    "CREATE TABLE IF NOT EXISTS %1rent_lines (file_sha256 TEXT NOT NULL, line INTEGER NOT NULL, "
    "posted_at TEXT, missing TEXT, deposited_at TEXT, PRIMARY KEY (file_sha256, line))",
    // Rent payment files whose every payment on screen was posted: such a
    // file is moved aside and never offered for posting again.
    "CREATE TABLE IF NOT EXISTS %1rent_files (file_sha256 TEXT PRIMARY KEY, "
    "complete_at TEXT NOT NULL)",
    // Distribution runs, recorded before anything is sent: state "sending"
    // until the processor's answer is on disk ("answered"), "refused" when it
    // was not taken, "posted" once its accepted checks are posted.
    "CREATE TABLE IF NOT EXISTS %1distribution_runs (run_id INTEGER PRIMARY KEY, "
    "sent_at TEXT NOT NULL, state TEXT NOT NULL, payment_text TEXT NOT NULL, "
    "response_text TEXT, answered_at TEXT, finished_at TEXT)",
    // The checks of a run as they were sent.
    "CREATE TABLE IF NOT EXISTS %1distribution_checks (run_id INTEGER NOT NULL, "
    "position INTEGER NOT NULL, CkID INTEGER NOT NULL, IDField INTEGER NOT NULL, CkPayee TEXT, "
    "CkDate TEXT, CkAmount TEXT NOT NULL, CkRemark TEXT, CkInvoice TEXT, CkType TEXT, "
    "CkVendorID INTEGER, CkNumber INTEGER, released_at TEXT, PRIMARY KEY (run_id, position))",
    "CREATE INDEX IF NOT EXISTS %1distribution_checks_ck ON distribution_checks (CkID)",
    // Enrolment uploads owed to the processor: a flag was saved in the host
    // database and the roster has not been sent since.
    "CREATE TABLE IF NOT EXISTS %1pending_uploads (roster TEXT PRIMARY KEY, "
    "since TEXT NOT NULL)",
    // The journal (see Journal): every exchange with the processor and every
    // posting run, kept as written. A run's outcome is a result added later
    // (the latest one counts), never a change to the run.
    "CREATE TABLE IF NOT EXISTS %1journal_runs (run_id INTEGER PRIMARY KEY, at TEXT NOT NULL, "
    "kind TEXT NOT NULL, title TEXT, file_sha256 TEXT, reverses INTEGER, count INTEGER, "
    "total TEXT)",
    "CREATE INDEX IF NOT EXISTS %1journal_runs_sha ON journal_runs (file_sha256)",
    "CREATE INDEX IF NOT EXISTS %1journal_runs_reverses ON journal_runs (reverses)",
    "CREATE TABLE IF NOT EXISTS %1journal_results (result_id INTEGER PRIMARY KEY, "
    "run_id INTEGER NOT NULL, at TEXT NOT NULL, state TEXT NOT NULL, code INTEGER, flag TEXT, "
    "count INTEGER, total TEXT, note TEXT)",
    "CREATE INDEX IF NOT EXISTS %1journal_results_run ON journal_results (run_id)",
    // Files sent, received or posted, with the copy kept in archive/.
    "CREATE TABLE IF NOT EXISTS %1journal_files (run_id INTEGER NOT NULL, role TEXT NOT NULL, "
    "name TEXT NOT NULL, size INTEGER, sha256 TEXT, archive TEXT)",
    "CREATE INDEX IF NOT EXISTS %1journal_files_run ON journal_files (run_id)",
    "CREATE INDEX IF NOT EXISTS %1journal_files_sha ON journal_files (sha256)",
    // The lines of a run: payments posted (or left out), checks sent or
    // posted. Posted payments are found by date for the duplicate check.
    "CREATE TABLE IF NOT EXISTS %1journal_lines (run_id INTEGER NOT NULL, "
    "position INTEGER NOT NULL, line INTEGER, tenant_id INTEGER, amount TEXT, date TEXT, "
    "check_number TEXT, trans_type TEXT, text TEXT, outcome TEXT, missing TEXT, "
    "deposited INTEGER, PRIMARY KEY (run_id, position))",
    "CREATE INDEX IF NOT EXISTS %1journal_lines_date ON journal_lines (date)",
    // The host rows a posting run wrote: their handle (rowid) where the
    // engine has one, every field as written, balances before and after.
    "CREATE TABLE IF NOT EXISTS %1journal_rows (run_id INTEGER NOT NULL, "
    "position INTEGER NOT NULL, line INTEGER, tbl TEXT NOT NULL, handle INTEGER, "
    "change TEXT NOT NULL, fields TEXT, field TEXT, before TEXT, after TEXT, "
    "PRIMARY KEY (run_id, position))",
    // More of those rows, packed a block to an entry (HostWriteLog::Block):
    // the rows of a block as a JSON array, from `position` on.
    "CREATE TABLE IF NOT EXISTS %1journal_row_blocks (run_id INTEGER NOT NULL, "
    "position INTEGER NOT NULL, count INTEGER NOT NULL, rows TEXT NOT NULL, "
    "PRIMARY KEY (run_id, position))",
    // What the user was told and asked during a run, with the answer.
    "CREATE TABLE IF NOT EXISTS %1journal_messages (message_id INTEGER PRIMARY KEY, "
    "run_id INTEGER NOT NULL, at TEXT NOT NULL, title TEXT, text TEXT, answer TEXT)",
    "CREATE INDEX IF NOT EXISTS %1journal_messages_run ON journal_messages (run_id)",
};

// The journal is append-only: the store itself refuses to change or remove
// what it holds.
const char *const kJournalTables[] = { "journal_runs", "journal_results", "journal_files",
    "journal_lines", "journal_rows", "journal_row_blocks", "journal_messages" };
constexpr auto kKeepTrigger = "CREATE TRIGGER IF NOT EXISTS %1%2_kept_%3 BEFORE %4 ON %2 "
                              "BEGIN SELECT RAISE(ABORT, 'the journal keeps what it holds'); END";

bool isAttached(const HostDb &host)
{
    QSqlQuery list(host.database());
    if (!list.exec(u"PRAGMA database_list"_qs))
        return false;
    while (list.next()) {
        if (list.value(1).toString() == QLatin1String(kSchema))
            return true;
    }
    return false;
}

} // namespace

RemitraStore::RemitraStore(HostDb &host, Connection connection)
    : m_host(host)
    , m_path(QFileInfo(host.path()).absolutePath() + u'/' + QLatin1String(FileName))
{
    if (!host.isAccess() && connection == Connection::Attached) {
        if (!isAttached(host)) {
            QSqlQuery attach = host.prepare(u"ATTACH DATABASE :path AS remitra"_qs);
            attach.bindValue(u":path"_qs, m_path);
            HostDb::exec(attach, "opening Remitra's own data (remitra.db)");
        }
        m_attached = true;
    } else {
        m_connection = u"remitra-store-"_qs + QString::number(g_serial.fetchAndAddRelaxed(1));
        QSqlDatabase db = QSqlDatabase::addDatabase(u"QSQLITE"_qs, m_connection);
        db.setDatabaseName(m_path);
        db.setConnectOptions(u"QSQLITE_BUSY_TIMEOUT="_qs + QString::number(HostDb::BusyTimeoutMs));
        if (!db.open())
            throw RuntimeError::database(
                u"opening Remitra's own data (remitra.db)"_qs, db.lastError().text());
    }
    createTables();
}

RemitraStore::~RemitraStore()
{
    if (m_attached) {
        QSqlQuery detach(m_host.database());
        detach.exec(u"DETACH DATABASE remitra"_qs);
        return;
    }
    {
        QSqlDatabase db = QSqlDatabase::database(m_connection, false);
        if (db.isValid())
            db.close();
    }
    QSqlDatabase::removeDatabase(m_connection);
}

QString RemitraStore::table(const char *name) const
{
    const QString plain = QLatin1String(name);
    return m_attached ? QLatin1String(kSchema) + u'.' + plain : plain;
}

QSqlQuery RemitraStore::prepare(const QString &sql) const
{
    if (m_attached)
        return m_host.prepare(sql);
    QSqlQuery query(QSqlDatabase::database(m_connection, false));
    query.setForwardOnly(true);
    if (!query.prepare(sql))
        throw RuntimeError::database(
            u"preparing a statement of Remitra's own data"_qs, query.lastError().text());
    return query;
}

void RemitraStore::execText(const QString &sql, const char *operation) const
{
    QSqlQuery query = prepare(sql);
    HostDb::exec(query, operation);
}

RemitraStore::Transaction::Transaction(const RemitraStore &store)
    : m_store(store)
{
    // Deferred: only the files written to get locked, so the store can be
    // written while Dwellix holds its own database.
    store.execText(u"BEGIN"_qs, "starting a transaction");
    m_open = true;
}

RemitraStore::Transaction::~Transaction()
{
    if (!m_open)
        return;
    QSqlQuery rollback = m_store.prepare(u"ROLLBACK"_qs);
    rollback.exec();
}

void RemitraStore::Transaction::commit()
{
    if (!m_open)
        return;
    m_store.execText(u"COMMIT"_qs, "committing");
    m_open = false;
}

QString RemitraStore::now()
{
    return QDateTime::currentDateTime().toString(Qt::ISODateWithMs);
}

void RemitraStore::createTables()
{
    const QString prefix = m_attached ? QLatin1String(kSchema) + u'.' : QString();
    for (const char *sql : kTables)
        execText(QString::fromLatin1(sql).arg(prefix), "creating Remitra's own tables");
    for (const char *table : kJournalTables) {
        for (const char *change : { "UPDATE", "DELETE" }) {
            execText(QString::fromLatin1(kKeepTrigger)
                         .arg(prefix, QLatin1String(table), QString::fromLatin1(change).toLower(),
                             QLatin1String(change)),
                "creating Remitra's own tables");
        }
    }
}

void RemitraStore::checkpoint(const char *where) const
{
    if (m_checkpoint)
        m_checkpoint(where);
}
