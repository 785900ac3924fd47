#include "hostdb/RentBackup.h"

#include "core/RuntimeError.h"
#include "hostdb/EngineSql.h"
#include "hostdb/HostDb.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace RentBackup {

namespace {

const QString kPrefix = u"dxdatafl-"_qs;

void prune(QDir &folder, const QString &suffix)
{
    // Names carry the time stamp, so name order is age order.
    const QStringList copies
        = folder.entryList({ kPrefix + u'*' + suffix }, QDir::Files, QDir::Name | QDir::Reversed);
    for (qsizetype i = Kept; i < copies.size(); ++i)
        folder.remove(copies.at(i));
}

// With a rollback journal, a reader's shared lock keeps every writer from
// changing the database file, so a copy of the file taken under it is a
// consistent snapshot, written at the speed of a file copy rather than
// rebuilt row by row. False when that does not hold (a write-ahead log, or a
// transaction already open on this connection): the caller copies through
// the engine then.
bool copyUnderReadLock(const HostDb &db, const QString &target)
{
    const EngineSql &sql = db.sql();
    QSqlQuery mode(db.database());
    if (!mode.exec(sql.journalMode()) || !mode.next()
        || mode.value(0).toString().compare(u"wal"_qs, Qt::CaseInsensitive) == 0)
        return false;
    mode.finish();
    QSqlQuery lock(db.database());
    if (!lock.exec(sql.beginRead()))
        return false;
    // The first read takes the shared lock (and rolls back a journal left
    // behind by a writer that crashed).
    const bool locked = lock.exec(sql.probe()) && lock.next();
    lock.finish();
    const bool copied = locked && QFile::copy(db.path(), target);
    lock.exec(sql.commit());
    if (locked && !copied)
        throw RuntimeError::permissionDenied();
    return locked;
}

} // namespace

QString write(const HostDb &db, const QString &programFolder)
{
    QDir folder(programFolder);
    if (!folder.mkpath(FolderName) || !folder.cd(FolderName))
        throw RuntimeError::pathNotFound();

    const QString suffix = u'.' + QFileInfo(db.path()).suffix();
    const QString stamp = QDateTime::currentDateTime().toString(u"yyyyMMdd-HHmmss-zzz"_qs);
    QString target = folder.filePath(kPrefix + stamp + suffix);
    for (int n = 2; QFileInfo::exists(target); ++n)
        target = folder.filePath(kPrefix + stamp + u'-' + QString::number(n) + suffix);

    if (db.sql().copyInto().isEmpty()) {
        // An engine without an online copy: the program is the file's only
        // writer while it runs.
        if (!QFile::copy(db.path(), target))
            throw RuntimeError::permissionDenied();
    } else if (!copyUnderReadLock(db, target)) {
        QSqlQuery vacuum = db.prepare(db.sql().copyInto());
        vacuum.bindValue(u":path"_qs, target);
        HostDb::exec(vacuum, "writing a backup copy of the host database");
    }
    prune(folder, suffix);
    return target;
}

QString notWrittenText(const QString &reason)
{
    return u"A backup copy of the Dwellix data could not be written to the \"backups\" folder ("_qs
        + reason + u')';
}

} // namespace RentBackup
