#pragma once

#include <QSqlQuery>
#include <QString>

#include <functional>

class HostDb;

// What Remitra keeps for itself, never in Dwellix's tables: "remitra.db" in
// the program's folder, an SQLite database of Remitra's own, created with
// its tables on first use.
//
// With an SQLite host database the store is attached to the host's own
// connection (as the schema "remitra"): a record written here inside a
// HostDb::Transaction commits or rolls back together with the host writes of
// that transaction, in one atomic commit across both files. With the Access
// host (ODBC) it has a connection of its own; there the callers write their
// record right after the host commit, and every reader treats a missing
// record as "not done yet" (see the callers for what that means for each).
class RemitraStore
{
public:
    static constexpr auto FileName = "remitra.db";

    // Attached: on the host's connection where the host is SQLite.
    // OwnConnection: always a connection of its own, as with the Access
    // host (the tests use it to run the Access order of writes on SQLite).
    enum class Connection { Attached, OwnConnection };

    // Opens the store beside the host database, attaching it when the host
    // is SQLite. Throws RuntimeError when it cannot be opened or created.
    explicit RemitraStore(HostDb &host, Connection connection = Connection::Attached);
    ~RemitraStore();

    RemitraStore(const RemitraStore &) = delete;
    RemitraStore &operator=(const RemitraStore &) = delete;

    // True when the store's writes share the host's transactions.
    bool attached() const { return m_attached; }
    HostDb &host() const { return m_host; }
    const QString &path() const { return m_path; }

    // A table of the store as statements name it: "remitra.<name>" when
    // attached, "<name>" on the store's own connection.
    QString table(const char *name) const;

    // A prepared statement on the connection that holds the store's tables.
    QSqlQuery prepare(const QString &sql) const;
    void execText(const QString &sql, const char *operation) const;

    // Groups writes to the store alone (never inside a host transaction).
    // Deferred, so attached it locks remitra.db only, not the host's file.
    // Rolls back unless committed.
    class Transaction
    {
    public:
        explicit Transaction(const RemitraStore &store);
        ~Transaction();
        void commit();
        Transaction(const Transaction &) = delete;
        Transaction &operator=(const Transaction &) = delete;

    private:
        const RemitraStore &m_store;
        bool m_open = false;
    };

    // The current time as the store keeps it (ISO 8601, local, with
    // milliseconds), so that texts sort in time order.
    static QString now();

    // Called at the named points of a commit that spans the host and the
    // store on two connections ("journal pending", "host committed"); the
    // crash tests end the program there. Nothing is called by default.
    using Checkpoint = std::function<void(const char *where)>;
    void setCheckpoint(Checkpoint checkpoint) { m_checkpoint = std::move(checkpoint); }
    void checkpoint(const char *where) const;

private:
    void createTables();

    HostDb &m_host;
    QString m_path;
    QString m_connection; // empty when attached
    bool m_attached = false;
    Checkpoint m_checkpoint;
};
