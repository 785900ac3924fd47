#pragma once

#include <QByteArray>
#include <QMap>

// Reading of a multipart/form-data body: part name -> raw bytes.
namespace Multipart {

// The boundary named in a Content-Type header value; empty when there is none.
QByteArray boundary(const QByteArray &contentType);

// The parts of body, keyed by their form-data name. ok is false when the body
// is not a well-formed multipart body for that boundary.
QMap<QByteArray, QByteArray> parse(const QByteArray &body, const QByteArray &boundary, bool *ok);

} // namespace Multipart
