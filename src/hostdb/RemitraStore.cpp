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
};

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

RemitraStore::RemitraStore(HostDb &host)
    : m_host(host)
    , m_path(QFileInfo(host.path()).absolutePath() + u'/' + QLatin1String(FileName))
{
    if (!host.isAccess()) {
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
}
