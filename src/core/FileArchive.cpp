#include "core/FileArchive.h"

#include "core/RuntimeError.h"
#include "core/TransferFile.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace FileArchive {

QString sha256(const QByteArray &bytes)
{
    return QString::fromLatin1(QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex());
}

Facts factsOf(const QString &path)
{
    QFile file(path);
    if (!file.exists())
        throw RuntimeError::fileNotFound();
    if (!file.open(QIODevice::ReadOnly))
        throw RuntimeError::permissionDenied();
    QCryptographicHash hash(QCryptographicHash::Sha256);
    Facts facts;
    while (!file.atEnd()) {
        const QByteArray block = file.read(1 << 20);
        hash.addData(block);
        facts.lines += block.count('\n');
        facts.size += block.size();
    }
    facts.sha256 = QString::fromLatin1(hash.result().toHex());
    return facts;
}

QString keep(const QString &programFolder, const QString &path)
{
    const QString folder = TransferFile::path(programFolder, FolderName);
    if (!QDir().mkpath(folder))
        throw RuntimeError::pathNotFound();
    const QFileInfo source(path);
    const QString base = source.completeBaseName() + u'_'
        + QDateTime::currentDateTime().toString(u"yyyyMMdd-HHmmss-zzz"_qs);
    const QString suffix = source.suffix().isEmpty() ? QString() : u'.' + source.suffix();
    QString name = base + suffix;
    for (int n = 2; QFileInfo::exists(TransferFile::path(folder, name)); ++n)
        name = base + u'-' + QString::number(n) + suffix;
    TransferFile::copyAtomic(path, TransferFile::path(folder, name));
    return FolderName + u'/' + name;
}

} // namespace FileArchive
