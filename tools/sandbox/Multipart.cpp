#include "Multipart.h"

#include <QList>

namespace Multipart {

QByteArray boundary(const QByteArray &contentType)
{
    if (!contentType.trimmed().toLower().startsWith("multipart/form-data"))
        return {};
    for (const QByteArray &param : contentType.split(';')) {
        const QByteArray p = param.trimmed();
        if (p.toLower().startsWith("boundary=")) {
            QByteArray value = p.mid(9);
            if (value.size() >= 2 && value.startsWith('"') && value.endsWith('"'))
                value = value.mid(1, value.size() - 2);
            return value;
        }
    }
    return {};
}

namespace {

QByteArray partName(const QByteArray &headers)
{
    for (const QByteArray &line : headers.split('\n')) {
        const QByteArray l = line.trimmed();
        if (!l.toLower().startsWith("content-disposition:"))
            continue;
        const qsizetype at = l.indexOf("name=\"");
        if (at < 0)
            return {};
        const qsizetype end = l.indexOf('"', at + 6);
        return end < 0 ? QByteArray() : l.mid(at + 6, end - at - 6);
    }
    return {};
}

} // namespace

QMap<QByteArray, QByteArray> parse(const QByteArray &body, const QByteArray &boundary, bool *ok)
{
    QMap<QByteArray, QByteArray> parts;
    *ok = false;
    if (boundary.isEmpty())
        return parts;
    const QByteArray dash = "--" + boundary;
    const QByteArray delimiter = "\r\n" + dash;
    qsizetype pos = body.indexOf(dash);
    if (pos < 0)
        return parts;
    pos += dash.size();
    for (;;) {
        if (body.mid(pos, 2) == "--") { // closing delimiter
            *ok = true;
            return parts;
        }
        if (body.mid(pos, 2) != "\r\n")
            return parts;
        pos += 2;
        const qsizetype headersEnd = body.indexOf("\r\n\r\n", pos);
        if (headersEnd < 0)
            return parts;
        const QByteArray name = partName(body.mid(pos, headersEnd - pos));
        const qsizetype dataStart = headersEnd + 4;
        const qsizetype next = body.indexOf(delimiter, dataStart);
        if (next < 0)
            return parts;
        parts.insert(name, body.mid(dataStart, next - dataStart));
        pos = next + delimiter.size();
    }
}

} // namespace Multipart
