#include "core/TransferFile.h"

#include "core/RuntimeError.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <cstdio>

namespace TransferFile {

QString path(const QString &folder, const QString &name)
{
    return folder + u'/' + name;
}

bool exists(const QString &p)
{
    QFileInfo info(p);
    return info.exists() && info.isFile();
}

namespace {

// Windows-1252 differs from Latin-1 only in 0x80-0x9F; the five bytes the
// code page leaves undefined map to the C1 controls, as Windows does.
constexpr char16_t kHighTable[32]
    = { 0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
          0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
          0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178 };

char ansiByte(char16_t ch)
{
    if (ch < 0x80 || (ch >= 0xA0 && ch <= 0xFF))
        return static_cast<char>(ch);
    for (int i = 0; i < 32; ++i) {
        if (kHighTable[i] == ch)
            return static_cast<char>(0x80 + i);
    }
    return '?';
}

} // namespace

QByteArray toAnsi(const QString &text)
{
    QByteArray out;
    out.resize(text.size());
    char *dst = out.data();
    for (QChar ch : text)
        *dst++ = ansiByte(ch.unicode());
    return out;
}

void appendAnsi(QByteArray &out, const QString &text)
{
    const qsizetype start = out.size();
    out.resize(start + text.size());
    char *dst = out.data() + start;
    for (QChar ch : text)
        *dst++ = ansiByte(ch.unicode());
}

QString fromAnsi(const QByteArray &bytes)
{
    QString out(bytes.size(), Qt::Uninitialized);
    QChar *dst = out.data();
    for (char b : bytes) {
        const auto u = static_cast<unsigned char>(b);
        *dst++ = QChar(u >= 0x80 && u < 0xA0 ? kHighTable[u - 0x80] : char16_t(u));
    }
    return out;
}

namespace {

RuntimeError writeError(const QFileDevice &file, const QString &target)
{
    switch (file.error()) {
    case QFileDevice::OpenError:
        if (!QFileInfo(QFileInfo(target).absolutePath()).isDir())
            return RuntimeError::pathNotFound();
        return RuntimeError::permissionDenied();
    case QFileDevice::PermissionsError:
        return RuntimeError::permissionDenied();
    default:
        return RuntimeError::deviceIo();
    }
}

} // namespace

void writeAtomicBytes(const QString &p, const QByteArray &bytes)
{
    QSaveFile file(p);
    if (!file.open(QIODevice::WriteOnly))
        throw writeError(file, p);
    if (file.write(bytes) != bytes.size()) {
        file.cancelWriting();
        throw writeError(file, p);
    }
    if (!file.commit())
        throw writeError(file, p);
}

void copyAtomic(const QString &from, const QString &p)
{
    QFile in(from);
    if (!in.open(QIODevice::ReadOnly))
        throw in.exists() ? RuntimeError::permissionDenied() : RuntimeError::fileNotFound();
    QSaveFile file(p);
    if (!file.open(QIODevice::WriteOnly))
        throw writeError(file, p);
    // A block at a time: a copy of a large upload never sits in memory.
    while (!in.atEnd()) {
        const QByteArray block = in.read(1 << 20);
        if (block.isEmpty() && in.error() != QFileDevice::NoError) {
            file.cancelWriting();
            throw RuntimeError::deviceIo();
        }
        if (file.write(block) != block.size()) {
            file.cancelWriting();
            throw writeError(file, p);
        }
    }
    if (!file.commit())
        throw writeError(file, p);
}

void writeAtomic(const QString &p, const QString &text)
{
    writeAtomicBytes(p, toAnsi(text));
}

struct LineWriter::Impl
{
    explicit Impl(const QString &p)
        : file(p)
        , target(p)
    {
    }
    QSaveFile file;
    QString target;
    QByteArray buffer;
};

LineWriter::LineWriter(const QString &p)
    : d(new Impl(p))
{
    if (!d->file.open(QIODevice::WriteOnly)) {
        RuntimeError e = writeError(d->file, p);
        delete d;
        d = nullptr;
        throw e;
    }
    d->buffer.reserve(1 << 16);
}

LineWriter::~LineWriter()
{
    if (d) {
        d->file.cancelWriting();
        delete d;
    }
}

void LineWriter::writeLine(const QString &line)
{
    appendAnsi(d->buffer, line);
    d->buffer += "\r\n";
    ++m_lines;
    if (d->buffer.size() >= (1 << 16)) {
        if (d->file.write(d->buffer) != d->buffer.size())
            throw writeError(d->file, d->target);
        d->buffer.clear();
    }
}

void LineWriter::commit()
{
    if (!d->buffer.isEmpty() && d->file.write(d->buffer) != d->buffer.size())
        throw writeError(d->file, d->target);
    d->buffer.clear();
    if (!d->file.commit())
        throw writeError(d->file, d->target);
    delete d;
    d = nullptr;
}

QString readWhole(const QString &p)
{
    QFileInfo info(p);
    if (!info.exists() || !info.isFile())
        throw RuntimeError::fileNotFound();
    if (info.size() <= 0)
        return QStringLiteral("");
    QFile file(p);
    if (!file.open(QIODevice::ReadOnly))
        throw RuntimeError::permissionDenied();
    return fromAnsi(file.readAll());
}

bool remove(const QString &p)
{
    if (!QFileInfo::exists(p))
        return true;
    return QFile::remove(p);
}

void renameReplacing(const QString &from, const QString &to)
{
    if (!QFileInfo::exists(from))
        throw RuntimeError::fileNotFound();
    // rename(2) replaces the target atomically; QFile::rename refuses to.
    if (::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) != 0)
        throw RuntimeError::permissionDenied();
}

} // namespace TransferFile
