#pragma once

#include "core/Currency.h"
#include "hostdb/HostDb.h"
#include "hostdb/HostWriteLog.h"

#include <QDate>
#include <QHash>
#include <QList>
#include <QString>
#include <QVariant>

#include <functional>
#include <optional>

class RemitraStore;

// Remitra's journal: every exchange with the processor and every posting
// run, in Remitra's own store (never in a host table) and append-only (the
// store refuses to change or remove a journal row). A run is written once;
// what became of it is a result added later, and the latest result is the
// run's state. Credentials never reach it: files are recorded by name, size
// and SHA-256 with their copy in archive/, and the processor's address is
// not recorded at all.
//
// A posting run's entry commits with the posting (commitPosting): in the
// host's own transaction where the store is attached (SQLite); with the
// store on a connection of its own (Access host) the entry is written first
// with the result "pending", the host commits, and then the final result
// follows. JournalRecovery settles a pending entry at the next start, from
// what the host holds.
class Journal
{
public:
    enum class Kind {
        UploadAll,
        TenantUpload,
        OwnerUpload,
        VendorUpload,
        RentDownload,
        Distribution,
        RentPosting,
        CheckPosting,
        Reversal,
    };
    static QList<Kind> kinds();
    // The kind as stored ("rent posting") and as shown ("Rent posting").
    static QString kindName(Kind kind);
    static QString kindCaption(Kind kind);
    static std::optional<Kind> kindOf(const QString &name);
    static bool isExchange(Kind kind);

    // Result states.
    static inline const QString Sent = u"sent"_qs; // request made, no answer recorded
    static inline const QString Answered = u"answered"_qs;
    static inline const QString Pending = u"pending"_qs; // host commit not yet confirmed
    static inline const QString Posted = u"posted"_qs;
    static inline const QString Stopped = u"stopped"_qs; // posting stopped part-way
    static inline const QString RolledBack = u"rolled back"_qs;
    static inline const QString Reversed = u"reversed"_qs;
    static inline const QString Refused = u"refused"_qs;

    struct File
    {
        QString role; // "sent", "received", "posted", "put back"
        QString name; // as in the program's folder
        qint64 size = 0;
        QString sha256;
        QString archive; // path of the archived copy, relative to the folder
    };

    struct Line
    {
        int line = 0; // line of the payment file; position for checks
        QVariant tenantId;
        QString amount; // plain currency text
        QString date; // ISO
        QString checkNumber;
        QString transType;
        QString text; // what the line is, for the reader
        QString outcome; // "posted", "part posted", "left out", "accepted", ...
        QString missing; // what a part-posted payment still lacks
        bool deposited = false;
    };

    struct Result
    {
        QString state;
        QVariant code; // processor result code
        QString flag; // "True"/"False"
        std::optional<qint64> count;
        std::optional<Currency> total;
        QString note;
    };

    struct Entry
    {
        Kind kind = Kind::UploadAll;
        QString title;
        QString fileSha256; // rent posting: the payment file posted
        qint64 reverses = 0; // reversal: the run it undoes
        std::optional<qint64> count;
        std::optional<Currency> total;
        QList<File> files;
        QList<Line> lines;
        const HostWriteLog *rows = nullptr;
    };

    struct Row
    {
        int position = 0;
        int line = 0;
        QString table;
        QVariant handle;
        HostWriteLog::Change change = HostWriteLog::Change::Added;
        QVariantMap fields;
        QString field;
        QVariant before;
        QVariant after;
    };

    struct Message
    {
        QString at;
        QString title;
        QString text;
        QString answer; // "Yes"/"No" for a question, "" for a notice
    };

    // A run with its latest result, as the History list shows it.
    struct Run
    {
        qint64 id = 0;
        QString at;
        Kind kind = Kind::UploadAll;
        QString title;
        QString fileSha256;
        qint64 reverses = 0;
        std::optional<qint64> count;
        std::optional<Currency> total;
        Result result; // the latest; state "" when there is none
        QString resultAt;
        qint64 reversedBy = 0; // the reversal that undid it
    };

    struct Filter
    {
        std::optional<Kind> kind;
        QDate from; // invalid: no bound
        QDate to;
    };

    explicit Journal(const RemitraStore &store);

    // Writing. Each call writes on the store's connection and joins the
    // transaction open there (the host's, attached); else it commits alone.
    qint64 addRun(const Entry &entry);
    // Whether a posting's log may keep its rows slim (HostWriteLog::keepSlim):
    // the store is attached to the host, whose rows have handles.
    static bool readsRowsFromHost(const HostDb &db, const RemitraStore &store);
    void addResult(qint64 runId, const Result &result);
    void addFile(qint64 runId, const File &file);
    void addLines(qint64 runId, const QList<Line> &lines, int firstPosition = 0);
    void addMessage(qint64 runId, const Message &message);

    // Commits the host transaction `host` with the entry and its result, and
    // with what `records` writes to the store (the posting record, the
    // distribution record). Returns the run's id. See the class comment for
    // the order on a store of its own.
    qint64 commitPosting(HostDb::Transaction &host, const Entry &entry, const Result &result,
        const std::function<void()> &records);

    // Reading.
    QList<Run> runs(const Filter &filter = {});
    std::optional<Run> run(qint64 runId);
    QList<File> files(qint64 runId);
    // At most `limit` lines or rows (-1: all), in order; the counts of all.
    QList<Line> lines(qint64 runId, int limit = -1);
    QList<Row> rows(qint64 runId, int limit = -1);
    qint64 lineCount(qint64 runId);
    qint64 rowCount(qint64 runId);
    // Every row of a run in order, one at a time (a large run's rows are
    // never all in memory); stops when visit returns false.
    void forEachRow(qint64 runId, const std::function<bool(const Row &)> &visit);
    QList<Message> messages(qint64 runId);
    // Runs whose latest result is "pending", oldest first.
    QList<Run> pending();
    // The archived copy of a file with this SHA-256 that is still in the
    // folder; "" when none.
    QString archiveOf(const QString &sha256, const QString &folder);
    // Rent posting runs of a payment file, oldest first.
    QList<Run> postingsOf(const QString &fileSha256);

    // Payments that rent posting runs still in the ledgers (not reversed or
    // rolled back) posted with a date between from and to (ISO): each by
    // its key (paymentKey()), run, line, and whether it came from the file
    // with the SHA-256 given. One indexed query; the key is put together by
    // the store, so a large file costs one short text per payment.
    struct PostedPayment
    {
        QString key;
        qint64 runId = 0;
        int line = 0;
        bool sameFile = false;
    };
    QList<PostedPayment> postedBetween(
        const QString &from, const QString &to, const QString &fileSha256);
    // What makes two payments the same, as postedBetween() gives it: tenant
    // id, amount as posted, ISO date, check number ("" for none) and
    // transaction type, joined by "|".
    static QString paymentKey(qint64 tenantId, const QString &amount, const QString &isoDate,
        const QString &checkNumber, const QString &transType);
    // When each rent posting run was made.
    QHash<qint64, QString> postingTimes();

    static QString resultText(const Run &run);

private:
    // The slim rows of a posting's log (SQLite, store attached), their
    // fields read from the host rows in the same transaction.
    void addSlimRows(qint64 runId, const HostWriteLog &log);

    Run runAt(QSqlQuery &query) const;

    const RemitraStore &m_store;
};
