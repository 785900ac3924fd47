#include "hostdb/HostDb.h"

#include "core/RuntimeError.h"

#include <QAtomicInt>
#include <QFile>
#include <QFileInfo>
#include <QSqlError>
#include <QSqlRecord>

namespace {

QAtomicInt g_connectionSerial;

bool isBusy(const QSqlError &error)
{
    // SQLITE_BUSY (5) and SQLITE_LOCKED (6); the driver also reports the
    // engine's text.
    const QString code = error.nativeErrorCode();
    return code == u"5"_qs || code == u"6"_qs || error.databaseText().contains(u"locked"_qs);
}

RuntimeError failure(const QSqlError &error, const char *operation)
{
    if (isBusy(error))
        return RuntimeError::databaseBusy();
    return RuntimeError::database(QString::fromLatin1(operation), error.text());
}

// Tables and fields that the program reads or writes.
struct RequiredTable
{
    const char *table;
    const char *fields;
};

constexpr RequiredTable kRequired[] = {
    {"Company", "CName1 CEmail1 CPhone1 CPhone2"},
    {"Owners", "OwnerID OFirstName1 OLastName1 OFirstName2 OLastName2 OAddress1 OAddress2 OCity "
               "OState OZip OPhone1 OPhone2 OEmail1 OACH OPercent2 OMgmtFee OCurrBal"},
    {"Properties", "PropID POwnerID PropName PropAddress1 PropAddress2 PropCity PropState PropZip "
                   "PCurrBal"},
    {"Units", "UTenantID UAddress UNumber UCurrBal"},
    {"Tenants", "TenantID TPropID TFirstName1 TLastName1 TAddress TCity TState TZip TEmail1 "
                "TEmail2 TACH TCurrBal TStartDate"},
    {"Vendors", "VenID VenName VenAddress1 VenAddress2 VenCity VenState VenZip VenContact "
                "VenPhone1 VenPhone2 VenEmail1 VACH"},
    {"Transactions", "TransAccountID TransPostToID TransAmount TransDate TransCheckNumber "
                     "TransRemark TransType TransStatus TransTax TransOID TransPID TransUID TransTID"},
    {"CheckEntered", "CkID CkPayee CkDate CkAmount CkInvoice CkRemark CkVendorID CkStatus CkSplit "
                     "CkAccountID CkPostToID CkPostTo CkNumber CkType"},
    {"CheckDepPrinted", "CkID CkPayee CkAccountID CkAmount CkDate CkInvoice CkRemark CkStatus "
                        "CkVendorID CkPostTo CkPostToText CkNumber CkType CkSplit"},
    {"SplitChecks", "CkNumber CkType CkAmount CkAccountID CkPostToID CkRemark CkStatus CkPostTo"},
    {"SplitPrintedChecks", "CkNumber CkCheckNumber CkAmount CkAccountID CkPostToID CkRemark "
                           "CkStatus CkType CkPostTo"},
};

} // namespace

HostDb::HostDb(QString connection, QString path, bool access)
    : m_connection(std::move(connection)), m_path(std::move(path)), m_access(access)
{
}

HostDb::~HostDb()
{
    {
        QSqlDatabase db = QSqlDatabase::database(m_connection, false);
        if (db.isValid())
            db.close();
    }
    QSqlDatabase::removeDatabase(m_connection);
}

std::unique_ptr<HostDb> HostDb::openFolder(const QString &folder)
{
    const QString sqlite = folder + u'/' + QString::fromLatin1(SqliteFileName);
    if (QFileInfo(sqlite).isFile())
        return openSqlite(sqlite);
    const QString access = folder + u'/' + QString::fromLatin1(AccessFileName);
    if (!QFileInfo(access).isFile())
        throw RuntimeError::databaseNotFound(access);

    const QString name = u"hostdb-"_qs + QString::number(g_connectionSerial.fetchAndAddRelaxed(1));
    QSqlDatabase db = QSqlDatabase::addDatabase(u"QODBC"_qs, name);
    db.setDatabaseName(u"DRIVER={Microsoft Access Driver (*.mdb, *.accdb)};DBQ="_qs
                       + QFileInfo(access).absoluteFilePath() + u';');
    std::unique_ptr<HostDb> host(new HostDb(name, access, true));
    if (!db.open()) {
        throw RuntimeError(3024,
                           u"The Dwellix Access database could not be opened: the Microsoft Access "
                           "ODBC driver is not installed on this computer. Convert the database "
                           "to dxdatafl.db or install the driver. ("_qs
                               + db.lastError().text() + u')');
    }
    return host;
}

std::unique_ptr<HostDb> HostDb::openSqlite(const QString &path, bool create)
{
    if (!create && !QFileInfo(path).isFile())
        throw RuntimeError::databaseNotFound(path);
    const QString name = u"hostdb-"_qs + QString::number(g_connectionSerial.fetchAndAddRelaxed(1));
    QSqlDatabase db = QSqlDatabase::addDatabase(u"QSQLITE"_qs, name);
    db.setDatabaseName(path);
    db.setConnectOptions(u"QSQLITE_BUSY_TIMEOUT="_qs + QString::number(BusyTimeoutMs));
    std::unique_ptr<HostDb> host(new HostDb(name, path, false));
    if (!db.open())
        throw RuntimeError::databaseNotFound(path);
    return host;
}

QSqlDatabase HostDb::database() const
{
    return QSqlDatabase::database(m_connection, false);
}

void HostDb::createSchema()
{
    QFile file(u":/hostdb/schema.sql"_qs);
    if (!file.open(QIODevice::ReadOnly))
        throw RuntimeError(53, u"The host schema resource is missing"_qs);
    const QString text = QString::fromUtf8(file.readAll());
    Transaction tx(*this);
    for (const QString &statement : text.split(u"\n;;\n"_qs)) {
        QString sql;
        for (const QString &line : statement.split(u'\n')) {
            if (!line.trimmed().startsWith(u"--"_qs))
                sql += line + u'\n';
        }
        if (!sql.trimmed().isEmpty())
            execText(sql, "creating the host tables");
    }
    tx.commit();
}

void HostDb::verifySchema() const
{
    QSqlDatabase db = database();
    for (const RequiredTable &t : kRequired) {
        const QString table = QString::fromLatin1(t.table);
        const QSqlRecord record = db.record(table);
        if (record.isEmpty())
            throw RuntimeError::itemNotFound(table);
        for (const QString &field : QString::fromLatin1(t.fields).split(u' ')) {
            if (record.indexOf(field) < 0)
                throw RuntimeError::itemNotFound(table + u'.' + field);
        }
    }
}

QSqlQuery HostDb::prepare(const QString &sql) const
{
    QSqlQuery query(database());
    query.setForwardOnly(true);
    if (!query.prepare(sql))
        throw failure(query.lastError(), "preparing a statement");
    return query;
}

void HostDb::exec(QSqlQuery &query, const char *operation)
{
    if (!query.exec())
        throw failure(query.lastError(), operation);
}

void HostDb::execText(const QString &sql, const char *operation) const
{
    QSqlQuery query(database());
    if (!query.exec(sql))
        throw failure(query.lastError(), operation);
}

HostDb::Transaction::Transaction(HostDb &db) : m_db(db)
{
    if (m_db.isAccess()) {
        if (!m_db.database().transaction())
            throw failure(m_db.database().lastError(), "starting a transaction");
    } else {
        m_db.execText(u"BEGIN IMMEDIATE"_qs, "starting a transaction");
    }
    m_open = true;
}

HostDb::Transaction::~Transaction()
{
    if (!m_open)
        return;
    if (m_db.isAccess()) {
        m_db.database().rollback();
    } else {
        QSqlQuery query(m_db.database());
        query.exec(u"ROLLBACK"_qs);
    }
}

void HostDb::Transaction::commit()
{
    if (!m_open)
        return;
    if (m_db.isAccess()) {
        if (!m_db.database().commit())
            throw failure(m_db.database().lastError(), "committing");
    } else {
        m_db.execText(u"COMMIT"_qs, "committing");
    }
    m_open = false;
}

void HostDb::Transaction::commitAndContinue()
{
    commit();
    if (m_db.isAccess()) {
        if (!m_db.database().transaction())
            throw failure(m_db.database().lastError(), "starting a transaction");
    } else {
        m_db.execText(u"BEGIN IMMEDIATE"_qs, "starting a transaction");
    }
    m_open = true;
}
