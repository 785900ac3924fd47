#pragma once

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>

#include <memory>

class EngineSql;

// The parts of the program, each with the host tables and fields it needs.
// A part checks its own list where it starts, so a field that the host
// lacks stops that part only, before it writes or sends anything.
enum class HostFeature {
    SetupFile,
    TenantUpload,
    OwnerFile,
    VendorFile,
    TenantExport,
    TenantEnrolment,
    OwnerEnrolment,
    VendorEnrolment,
    RentReview,
    RentPosting,
    Deposit,
    PaymentList,
    CheckPosting,
};

// The one open host database of a run, shared by every screen and job.
// SQLite "dxdatafl.db" in the program's folder; where only the host's Access
// file "dxdatafl.mdb" is there, it is opened through the ODBC Access driver.
// Failures throw RuntimeError; a database held locked by another writer past
// the busy wait throws RuntimeError::databaseBusy().
struct sqlite3;

class HostDb
{
public:
    static constexpr auto SqliteFileName = "dxdatafl.db";
    static constexpr auto AccessFileName = "dxdatafl.mdb";

    // Opens the host database of the folder. Neither file present: throws
    // RuntimeError::databaseNotFound (3024).
    static std::unique_ptr<HostDb> openFolder(const QString &folder);
    // Opens (and with create=true creates) an SQLite host database file.
    static std::unique_ptr<HostDb> openSqlite(const QString &path, bool create = false);
    ~HostDb();

    HostDb(const HostDb &) = delete;
    HostDb &operator=(const HostDb &) = delete;

    QSqlDatabase database() const;
    const QString &path() const { return m_path; }
    bool isAccess() const { return m_access; }
    // The SQLite engine's own handle of the connection, for the few reads
    // in bulk where the driver's cost per value would dominate; nullptr on
    // another engine. Owned by the connection.
    sqlite3 *sqliteHandle() const;
    // The statements that differ between the engines, for this one.
    const EngineSql &sql() const;

    // Creates the host tables and indexes the program uses, with exactly
    // the fields it uses (demo site and test fixtures; the real host
    // database already has them).
    void createSchema();
    // Start-up: throws RuntimeError 3343 (unrecognized database format),
    // naming the file, when it is not a database or holds no tables at all.
    void checkHoldsTables() const;
    // Throws RuntimeError::itemNotFound (3265) naming the first table or
    // field that the feature needs and the database lacks. A feature found
    // complete is not looked at again.
    void require(HostFeature feature) const;
    // The same for every feature.
    void verifySchema() const;

    // The counter (CkID) that the insert just run gave its row.
    qint64 newCounter(QSqlQuery &insert) const;
    // The same, from the id the insert reported (invalid: none).
    qint64 newCounter(const QVariant &reported) const;

    // A prepared statement (forward-only); throws on a syntax error.
    QSqlQuery prepare(const QString &sql) const;
    // Runs a prepared statement; throws with the operation's name on failure.
    static void exec(QSqlQuery &query, const char *operation);
    // Runs a statement without parameters.
    void execText(const QString &sql, const char *operation) const;

    // Groups writes that belong together. Begins at once with the write lock
    // taken (so a busy database is found before anything is written); rolls
    // back on destruction unless committed.
    class Transaction
    {
    public:
        explicit Transaction(HostDb &db);
        ~Transaction();
        void commit();
        // Commits what was written so far and begins again (where the
        // product keeps earlier rows after a stop).
        void commitAndContinue();
        Transaction(const Transaction &) = delete;
        Transaction &operator=(const Transaction &) = delete;

    private:
        HostDb &m_db;
        bool m_open = false;
    };

    // How long a locked database is waited for before databaseBusy().
    static constexpr int BusyTimeoutMs = 4000;

private:
    HostDb(QString connection, QString path, bool access);
    QString m_connection;
    QString m_path;
    bool m_access;
    mutable quint32 m_complete = 0; // features found complete, one bit each
};
