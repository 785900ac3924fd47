#include "hostdb/HostDb.h"

#include "core/RuntimeError.h"
#include "hostdb/EngineSql.h"

#include <QAtomicInt>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlDriver>
#include <QSqlError>
#include <QSqlRecord>

#include <initializer_list>

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

// The tables and fields each feature reads or writes.
struct Need
{
    const char *table;
    const char *fields;
};

struct FeatureNeeds
{
    HostFeature feature;
    std::initializer_list<Need> needs;
};

const FeatureNeeds kNeeds[] = {
    { HostFeature::SetupFile,
        { { "Company", "CName1 CEmail1 CPhone1 CPhone2" },
            { "Owners", "OwnerID OFirstName1 OLastName1" },
            { "Properties",
                "PropID POwnerID PropName PropAddress1 PropAddress2 PropCity PropState PropZip" },
            { "Tenants", "TenantID TPropID" }, { "Units", "UTenantID UAddress" } } },
    { HostFeature::TenantUpload,
        { { "Owners", "OwnerID" }, { "Properties", "PropID POwnerID PropCity PropState PropZip" },
            { "Tenants", "TenantID TPropID TCurrBal TStartDate TFirstName1 TLastName1 TACH" },
            { "Units", "UTenantID UAddress" } } },
    { HostFeature::OwnerFile,
        { { "Owners",
            "OwnerID OFirstName1 OLastName1 OAddress1 OAddress2 OCity OState OZip OPhone1 "
            "OPhone2 OEmail1 OACH OPercent2 OFirstName2 OLastName2" } } },
    { HostFeature::VendorFile,
        { { "Vendors",
            "VenID VenName VenAddress1 VenAddress2 VenCity VenState VenZip VenContact VenPhone1 "
            "VenPhone2 VenEmail1 VACH" } } },
    { HostFeature::TenantExport,
        { { "Owners", "OwnerID" }, { "Properties", "PropID POwnerID PropName" },
            { "Tenants",
                "TenantID TPropID TFirstName1 TLastName1 TAddress TCity TState TZip TEmail1 "
                "TEmail2 TACH" },
            { "Units", "UTenantID UAddress" } } },
    { HostFeature::TenantEnrolment,
        { { "Owners", "OwnerID OFirstName1 OLastName1" },
            { "Properties", "PropID POwnerID PropName" },
            { "Tenants", "TenantID TPropID TFirstName1 TLastName1 TACH" },
            { "Units", "UTenantID UAddress UNumber" } } },
    { HostFeature::OwnerEnrolment,
        { { "Owners",
            "OwnerID OFirstName1 OLastName1 OFirstName2 OLastName2 OCity OPhone1 OACH" } } },
    { HostFeature::VendorEnrolment,
        { { "Vendors", "VenID VenName VenContact VenCity VenPhone1 VACH" } } },
    { HostFeature::RentReview,
        { { "Properties", "PropID POwnerID" }, { "Tenants", "TenantID TFirstName1 TLastName1" },
            { "Units", "UTenantID UAddress" },
            { "Transactions", "TransTID TransType TransAmount TransDate TransCheckNumber" } } },
    { HostFeature::RentPosting,
        { { "Transactions",
              "TransAccountID TransPostToID TransAmount TransDate TransCheckNumber TransRemark "
              "TransType TransStatus TransTax TransOID TransPID TransUID TransTID" },
            { "Units", "UTenantID UCurrBal UAddress UNumber" }, { "Tenants", "TenantID TCurrBal" },
            { "Owners", "OwnerID OMgmtFee" } } },
    { HostFeature::Deposit,
        { { "CheckDepPrinted",
              "CkID CkPayee CkAccountID CkAmount CkDate CkInvoice CkRemark CkStatus CkVendorID "
              "CkPostTo CkNumber CkType CkSplit CkPostToText" },
            { "SplitPrintedChecks",
                "CkNumber CkCheckNumber CkAmount CkAccountID CkPostToID CkRemark CkStatus CkType "
                "CkPostTo" } } },
    { HostFeature::PaymentList,
        { { "CheckEntered",
              "CkID CkPayee CkDate CkAmount CkRemark CkInvoice CkType CkVendorID CkNumber" },
            { "Owners", "OwnerID OFirstName1 OLastName1 OFirstName2 OLastName2 OACH" },
            { "Vendors", "VenID VenName VenContact VACH" } } },
    { HostFeature::CheckPosting,
        { { "CheckDepPrinted",
              "CkID CkPayee CkVendorID CkAmount CkDate CkInvoice CkRemark CkStatus CkSplit "
              "CkType CkAccountID CkNumber CkPostTo" },
            { "CheckEntered", "CkID CkType" },
            { "SplitChecks",
                "CkNumber CkAmount CkAccountID CkPostToID CkRemark CkStatus CkType CkPostTo" },
            { "SplitPrintedChecks",
                "CkNumber CkAmount CkAccountID CkPostToID CkRemark CkStatus CkType CkPostTo" },
            { "Transactions",
                "TransAmount TransDate TransAccountID TransPostToID TransStatus TransType "
                "TransTax TransRemark TransCheckNumber TransOID TransPID TransTID TransUID" },
            { "Owners", "OwnerID OCurrBal" }, { "Properties", "PropID POwnerID PCurrBal" },
            { "Tenants", "TenantID TPropID TCurrBal" },
            { "Units", "UTenantID UCurrBal UAddress UNumber" } } },
};

} // namespace

HostDb::HostDb(QString connection, QString path, bool access)
    : m_connection(std::move(connection))
    , m_path(std::move(path))
    , m_access(access)
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
        // Either the driver is missing or the file is not an Access
        // database; the driver's own words tell which.
        throw RuntimeError(3024,
            u"The Dwellix data file "_qs
                + QDir::toNativeSeparators(QFileInfo(access).absoluteFilePath())
                + u" could not be opened: the Microsoft Access ODBC driver is not installed on "
                  "this computer, or the file is not an Access database. Install the driver or "
                  "convert the database to dxdatafl.db. ("_qs
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

sqlite3 *HostDb::sqliteHandle() const
{
    if (m_access)
        return nullptr;
    const QSqlDatabase db = database();
    const QVariant handle = db.driver() ? db.driver()->handle() : QVariant();
    // The driver hands it out by this type name (Qt's documented way).
    if (!handle.isValid() || qstrcmp(handle.typeName(), "sqlite3*") != 0)
        return nullptr;
    return *static_cast<sqlite3 *const *>(handle.constData());
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

const EngineSql &HostDb::sql() const
{
    return m_access ? EngineSql::access() : EngineSql::sqlite();
}

void HostDb::checkHoldsTables() const
{
    const QString file = QDir::toNativeSeparators(QFileInfo(m_path).absoluteFilePath());
    QSqlDatabase db = database();
    const QString statement = sql().probe();
    if (!statement.isEmpty()) {
        QSqlQuery probe(db);
        if (!probe.exec(statement) || !probe.next()) {
            if (isBusy(probe.lastError()))
                throw RuntimeError::databaseBusy();
            throw RuntimeError(3343,
                u"The Dwellix data file "_qs + file + u" is not a database ("_qs
                    + probe.lastError().databaseText() + u"). Remitra cannot work with it."_qs);
        }
    }
    if (db.tables(QSql::Tables).isEmpty()) {
        throw RuntimeError(3343,
            u"The Dwellix data file "_qs + file
                + u" is empty: it holds no tables. Remitra cannot work with it."_qs);
    }
}

void HostDb::require(HostFeature feature) const
{
    const quint32 bit = 1u << static_cast<int>(feature);
    if (m_complete & bit)
        return;
    const QSqlDatabase db = database();
    for (const FeatureNeeds &f : kNeeds) {
        if (f.feature != feature)
            continue;
        for (const Need &need : f.needs) {
            // The columns of a statement that reads no row: a table that is
            // not there fails it, and so does a database held locked, which
            // is told apart (busy, not missing).
            const QString table = QString::fromLatin1(need.table);
            QSqlQuery probe(db);
            if (!probe.exec(u"SELECT * FROM "_qs + table + u" WHERE 1 = 0"_qs)) {
                if (isBusy(probe.lastError()))
                    throw RuntimeError::databaseBusy();
                throw RuntimeError::itemNotFound(table);
            }
            const QSqlRecord record = probe.record();
            for (const QString &field : QString::fromLatin1(need.fields).split(u' ')) {
                if (record.indexOf(field) < 0)
                    throw RuntimeError::itemNotFound(table + u'.' + field);
            }
        }
    }
    m_complete |= bit;
}

void HostDb::verifySchema() const
{
    for (const FeatureNeeds &f : kNeeds)
        require(f.feature);
}

qint64 HostDb::newCounter(QSqlQuery &insert) const
{
    return newCounter(insert.lastInsertId());
}

qint64 HostDb::newCounter(const QVariant &reported) const
{
    if (reported.isValid())
        return reported.toLongLong();
    const QString statement = sql().lastCounter();
    if (statement.isEmpty())
        throw RuntimeError::database(u"reading the new record's number"_qs, QString());
    QSqlQuery counter(database());
    if (!counter.exec(statement) || !counter.next())
        throw failure(counter.lastError(), "reading the new record's number");
    return counter.value(0).toLongLong();
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

namespace {

// Begins a write transaction: the engine's statement, or the driver's call.
void beginWrite(HostDb &db)
{
    const QString begin = db.sql().beginWrite();
    if (!begin.isEmpty())
        db.execText(begin, "starting a transaction");
    else if (!db.database().transaction())
        throw failure(db.database().lastError(), "starting a transaction");
}

} // namespace

HostDb::Transaction::Transaction(HostDb &db)
    : m_db(db)
{
    beginWrite(m_db);
    m_open = true;
}

HostDb::Transaction::~Transaction()
{
    if (!m_open)
        return;
    const QString rollback = m_db.sql().rollback();
    if (rollback.isEmpty()) {
        m_db.database().rollback();
    } else {
        QSqlQuery query(m_db.database());
        query.exec(rollback);
    }
}

void HostDb::Transaction::commit()
{
    if (!m_open)
        return;
    const QString commit = m_db.sql().commit();
    if (!commit.isEmpty())
        m_db.execText(commit, "committing");
    else if (!m_db.database().commit())
        throw failure(m_db.database().lastError(), "committing");
    m_open = false;
}

void HostDb::Transaction::commitAndContinue()
{
    commit();
    beginWrite(m_db);
    m_open = true;
}
