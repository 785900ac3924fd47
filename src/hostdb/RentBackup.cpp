#include "hostdb/RentBackup.h"

#include "core/RuntimeError.h"
#include "hostdb/HostDb.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace RentBackup {

namespace {

// The embedded engine writes a transactionally consistent copy of the open
// database, even while another connection reads it.
const QString kVacuumIntoSql = u"VACUUM INTO :path"_qs;
const QString kPrefix = u"dxdatafl-"_qs;

void prune(QDir &folder, const QString &suffix)
{
    // Names carry the time stamp, so name order is age order.
    const QStringList copies
        = folder.entryList({ kPrefix + u'*' + suffix }, QDir::Files, QDir::Name | QDir::Reversed);
    for (qsizetype i = Kept; i < copies.size(); ++i)
        folder.remove(copies.at(i));
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

    if (db.isAccess()) {
        // The Access engine has no online copy; the program is the file's
        // only writer while it runs.
        if (!QFile::copy(db.path(), target))
            throw RuntimeError::permissionDenied();
    } else {
        QSqlQuery vacuum = db.prepare(kVacuumIntoSql);
        vacuum.bindValue(u":path"_qs, target);
        HostDb::exec(vacuum, "writing a backup copy of the host database");
    }
    prune(folder, suffix);
    return target;
}

} // namespace RentBackup
