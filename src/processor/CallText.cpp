#include "processor/CallText.h"

#include "core/RuntimeError.h"
#include "core/TransferFile.h"

#include <QFile>
#include <QFileInfo>

#include <cstring>

CallText CallText::file(const QString &path)
{
    const QFileInfo info(path);
    if (!info.exists() || !info.isFile())
        throw RuntimeError::fileNotFound();
    CallText text;
    if (info.size() > 0)
        text.m_path = path;
    else
        text.m_text = QStringLiteral("");
    return text;
}

QString CallText::readAll() const
{
    return isFile() ? TransferFile::readWhole(m_path) : m_text;
}

qsizetype CallText::lineCount(char startingWith) const
{
    qsizetype lines = 0;
    bool atStart = true; // the next character begins a line
    auto take = [&](char first) {
        if (startingWith == 0 || first == startingWith)
            ++lines;
    };
    if (!isFile()) {
        for (QChar c : m_text) {
            if (atStart)
                take(c.unicode() < 0x80 ? char(c.unicode()) : '\x80');
            atStart = c == u'\n';
        }
        return lines;
    }
    QFile in(m_path);
    if (!in.open(QIODevice::ReadOnly))
        throw RuntimeError::permissionDenied();
    QByteArray block(1 << 16, Qt::Uninitialized);
    for (;;) {
        const qint64 got = in.read(block.data(), block.size());
        if (got < 0)
            throw RuntimeError::deviceIo();
        if (got == 0)
            break;
        const char *p = block.constData();
        const char *end = p + got;
        while (p < end) {
            if (atStart)
                take(*p);
            const void *lf = std::memchr(p, '\n', std::size_t(end - p));
            if (!lf) {
                atStart = false;
                break;
            }
            p = static_cast<const char *>(lf) + 1;
            atStart = true;
        }
    }
    return lines;
}
