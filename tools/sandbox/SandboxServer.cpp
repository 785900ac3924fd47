#include "SandboxServer.h"

#include "Multipart.h"
#include "core/TransferFile.h"

#include <QDate>
#include <QFile>
#include <QHttpServerRequest>
#include <QHttpServerResponder>
#include <QJsonDocument>
#include <QPointer>
#include <QSaveFile>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>
#include <QUrlQuery>

namespace {

const QString kUpload = u"/qps/upload.php"_qs;
const QString kPayee = u"/qps/evendorpay.php"_qs;

QByteArray header(const QHttpServerRequest &request, const QByteArray &name)
{
    for (const auto &h : request.headers()) {
        if (h.first.compare(name, Qt::CaseInsensitive) == 0)
            return h.second;
    }
    return {};
}

QByteArray reasonPhrase(int status)
{
    switch (status) {
    case 200:
        return "OK";
    case 302:
        return "Found";
    case 400:
        return "Bad Request";
    case 401:
        return "Unauthorized";
    case 403:
        return "Forbidden";
    case 404:
        return "Not Found";
    case 405:
        return "Method Not Allowed";
    case 500:
        return "Internal Server Error";
    case 501:
        return "Not Implemented";
    case 503:
        return "Service Unavailable";
    default:
        return "Status";
    }
}

QByteArray json(const QJsonObject &object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

} // namespace

SandboxServer::SandboxServer(Options options, SandboxRecords records, QObject *parent)
    : QObject(parent)
    , m_options(std::move(options))
    , m_records(std::move(records))
{
    // Every request comes here: the processor's two scripts and the control
    // paths are told apart by hand, so that unknown paths, bad credentials
    // and forced answers are all handled in one place.
    m_server.setMissingHandler(
        [this](const QHttpServerRequest &request, QHttpServerResponder &&responder) {
            handle(request, responder.socket());
        });
}

bool SandboxServer::start(QString *error)
{
    if (!m_options.host.isLoopback()) {
        *error = u"the sandbox binds to loopback addresses only"_qs;
        return false;
    }
    m_port = m_server.listen(m_options.host, m_options.port);
    if (m_port == 0) {
        *error = u"cannot listen on %1:%2"_qs.arg(m_options.host.toString()).arg(m_options.port);
        return false;
    }
    return true;
}

QString SandboxServer::baseUrl() const
{
    QString host = m_options.host.toString();
    if (m_options.host.protocol() == QAbstractSocket::IPv6Protocol)
        host = u'[' + host + u']';
    return u"http://%1:%2"_qs.arg(host).arg(m_port);
}

bool SandboxServer::loadRecords(const QString &path, SandboxRecords &records, QString *error)
{
    QFile file(path);
    if (!file.exists())
        return true;
    if (!file.open(QIODevice::ReadOnly)) {
        *error = u"cannot read %1"_qs.arg(path);
        return false;
    }
    QJsonParseError parseError;
    const QJsonDocument doc = QJsonDocument::fromJson(file.readAll(), &parseError);
    if (!doc.isObject()) {
        *error = u"%1 is not a sandbox state file: %2"_qs.arg(path, parseError.errorString());
        return false;
    }
    records.fromJson(doc.object());
    return true;
}

void SandboxServer::saveRecords()
{
    if (m_options.stateFile.isEmpty())
        return;
    QSaveFile file(m_options.stateFile);
    if (!file.open(QIODevice::WriteOnly) || file.write(json(m_records.toJson())) < 0
        || !file.commit())
        qWarning("quenta-sandbox: cannot write the state file");
}

bool SandboxServer::authorized(const QHttpServerRequest &request) const
{
    const QByteArray expected
        = "Basic " + TransferFile::toAnsi(m_options.user + u':' + m_options.password).toBase64();
    return header(request, "Authorization") == expected;
}

void SandboxServer::handle(const QHttpServerRequest &request, QTcpSocket *socket)
{
    const QString path = request.url().path();
    const bool isControl = path.startsWith(u"/control/"_qs);
    const bool isAuthorized = authorized(request);

    if (isControl) {
        Answer answer;
        if (!isAuthorized)
            answer.status = 401;
        else
            answer = control(path, request);
        send(socket, answer);
        return;
    }

    bool wellFormed = false;
    const QMap<QByteArray, QByteArray> parts = Multipart::parse(
        request.body(), Multipart::boundary(header(request, "Content-Type")), &wellFormed);
    Received entry { path, request.method() == QHttpServerRequest::Method::Post, isAuthorized,
        request.body().size(), parts, 0, {} };

    Force force;
    if (!m_forces.isEmpty())
        force = m_forces.dequeue();

    Answer answer;
    if (force.status != 0) {
        answer.status = force.status;
        answer.body = force.body;
    } else if (!isAuthorized) {
        answer.status = 401;
    } else if (path != kUpload && path != kPayee) {
        answer.status = 404;
    } else if (request.method() != QHttpServerRequest::Method::Post || !wellFormed) {
        answer.status = 400;
        answer.body = "Expected a multipart/form-data POST";
    } else {
        answer = processorAnswer(path, parts);
    }
    entry.status = force.drop ? -1 : answer.status;
    entry.outcome = force.drop ? u"dropped"_qs
        : force.truncate       ? u"truncated"_qs
        : force.delayMs > 0    ? u"delayed"_qs
                               : u"answered"_qs;
    m_received.append(std::move(entry));

    if (force.drop) {
        socket->abort();
        return;
    }
    if (force.delayMs > 0) {
        QPointer<QTcpSocket> guarded(socket);
        QTimer::singleShot(force.delayMs, this, [guarded, answer, force] {
            if (guarded && guarded->state() == QAbstractSocket::ConnectedState)
                send(guarded, answer, force.truncate);
        });
        return;
    }
    send(socket, answer, force.truncate);
}

SandboxServer::Answer SandboxServer::processorAnswer(
    const QString &path, const QMap<QByteArray, QByteArray> &parts)
{
    Answer answer;
    if (path == kUpload) {
        const QString setup = TransferFile::fromAnsi(parts.value("setup"));
        const QString tenant = TransferFile::fromAnsi(parts.value("tenant"));
        if (setup.isEmpty() && tenant.isEmpty()) {
            answer.body = TransferFile::toAnsi(m_records.deliverPayments());
        } else {
            const int setupLines = m_records.recordSetup(setup);
            const int tenantLines = m_records.recordTenants(tenant);
            if (m_options.autoRent && tenantLines > 0)
                m_records.queueRent(QString(), u"Rent"_qs, QDate::currentDate());
            answer.body = QByteArray("Received ") + QByteArray::number(setupLines) + " setup and "
                + QByteArray::number(tenantLines) + " tenant records";
        }
    } else {
        const QString payee = TransferFile::fromAnsi(parts.value("payee"));
        const QString payment = TransferFile::fromAnsi(parts.value("payment"));
        QString body;
        if (!payee.isEmpty())
            body += u"Received %1 payee records"_qs.arg(m_records.recordPayees(payee));
        if (!payment.isEmpty())
            body = m_records.answerPayments(payment);
        answer.body = TransferFile::toAnsi(body);
    }
    saveRecords();
    return answer;
}

SandboxServer::Answer SandboxServer::control(const QString &path, const QHttpServerRequest &request)
{
    const QUrlQuery query(request.url());
    Answer answer;
    answer.contentType = "application/json";
    if (path == u"/control/ping"_qs) {
        answer.body = json({ { u"ok"_qs, true } });
    } else if (path == u"/control/queue-rent"_qs) {
        QString type = query.queryItemValue(u"type"_qs, QUrl::FullyDecoded);
        if (type.isEmpty())
            type = u"Rent"_qs;
        QDate date = QDate::fromString(
            query.queryItemValue(u"date"_qs, QUrl::FullyDecoded), u"M/d/yyyy"_qs);
        if (!date.isValid())
            date = QDate::currentDate();
        const QString amount = query.queryItemValue(u"amount"_qs, QUrl::FullyDecoded);
        if (!amount.isEmpty() && !Currency::parse(amount)) {
            answer.status = 400;
            answer.body = json({ { u"error"_qs, u"amount is not a number"_qs } });
            return answer;
        }
        const QStringList lines = m_records.queueRent(amount, type, date);
        saveRecords();
        answer.body = json({ { u"queued"_qs, QJsonArray::fromStringList(lines) } });
    } else if (path == u"/control/queue-lines"_qs) {
        QStringList lines;
        for (QString line : TransferFile::fromAnsi(request.body()).split(u'\n')) {
            if (line.endsWith(u'\r'))
                line.chop(1);
            if (!line.isEmpty())
                lines << line;
        }
        m_records.queueLines(lines);
        saveRecords();
        answer.body = json({ { u"queued"_qs, QJsonArray::fromStringList(lines) } });
    } else if (path == u"/control/next"_qs) {
        Force force;
        force.status = query.queryItemValue(u"status"_qs).toInt();
        force.delayMs = query.queryItemValue(u"delay"_qs).toInt();
        force.drop = query.queryItemValue(u"drop"_qs) == u"1"_qs;
        force.truncate = query.queryItemValue(u"truncate"_qs) == u"1"_qs;
        force.body = request.body();
        m_forces.enqueue(force);
        answer.body = json({ { u"forced"_qs, int(m_forces.size()) } });
    } else if (path == u"/control/received"_qs) {
        QJsonObject counts;
        for (const Received &r : std::as_const(m_received))
            counts.insert(r.path, counts.value(r.path).toInt() + 1);
        answer.body = json({ { u"total"_qs, int(m_received.size()) }, { u"counts"_qs, counts },
            { u"requests"_qs, receivedJson() } });
    } else if (path == u"/control/records"_qs) {
        answer.body = json(m_records.toJson());
    } else if (path == u"/control/clear"_qs) {
        m_received.clear();
        m_forces.clear();
        answer.body = json({ { u"ok"_qs, true } });
    } else {
        answer.status = 404;
        answer.body.clear();
    }
    return answer;
}

QJsonArray SandboxServer::receivedJson() const
{
    QJsonArray out;
    for (const Received &r : m_received) {
        QJsonObject parts;
        for (auto it = r.parts.cbegin(); it != r.parts.cend(); ++it)
            parts.insert(QString::fromLatin1(it.key()), QString::fromLatin1(it.value().toBase64()));
        out.append(QJsonObject { { u"path"_qs, r.path },
            { u"method"_qs, r.post ? u"POST"_qs : u"other"_qs }, { u"authorized"_qs, r.authorized },
            { u"bodySize"_qs, double(r.bodySize) }, { u"parts"_qs, parts },
            { u"status"_qs, r.status }, { u"outcome"_qs, r.outcome } });
    }
    return out;
}

void SandboxServer::send(QTcpSocket *socket, const Answer &answer, bool truncate)
{
    QByteArray head = "HTTP/1.1 " + QByteArray::number(answer.status) + ' '
        + reasonPhrase(answer.status) + "\r\nContent-Type: " + answer.contentType
        + "\r\nContent-Length: " + QByteArray::number(answer.body.size())
        + "\r\nConnection: close\r\n";
    if (answer.status == 302)
        head += "Location: /qps/moved.php\r\n";
    head += "\r\n";
    socket->write(head);
    socket->write(truncate ? answer.body.left(answer.body.size() / 2) : answer.body);
    socket->disconnectFromHost();
}
