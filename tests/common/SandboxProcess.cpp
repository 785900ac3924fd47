#include "SandboxProcess.h"

#include "app/ProgramState.h"
#include "core/TransferFile.h"
#include "processor/HttpProcessorClient.h"

#include <QDeadlineTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QUrl>

#include <curl/curl.h>

#ifdef Q_OS_LINUX
#include <csignal>
#include <sys/prctl.h>
#endif

#include <memory>

#ifndef QUENTA_SANDBOX_PATH
#define QUENTA_SANDBOX_PATH ""
#endif

namespace {

size_t collect(char *data, size_t size, size_t count, void *target)
{
    static_cast<QByteArray *>(target)->append(data, qsizetype(size * count));
    return size * count;
}

} // namespace

SandboxProcess::SandboxProcess(
    const QString &user, const QString &password, const QStringList &extraArguments)
    : m_user(user)
    , m_password(password)
{
    const QString program = QString::fromUtf8(QUENTA_SANDBOX_PATH);
    if (program.isEmpty()) {
        qWarning("SandboxProcess: QUENTA_SANDBOX_PATH is not defined");
        return;
    }
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
#ifdef Q_OS_LINUX
    // A test that aborts must not leave the sandbox holding the test's output
    // open: the runner would wait for it until its time-out.
    m_process.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
#endif
    m_process.start(program,
        QStringList { u"--port"_qs, u"0"_qs, u"--user"_qs, user, u"--password"_qs, password }
            + extraArguments);
    if (!m_process.waitForStarted(10000)) {
        qWarning("SandboxProcess: cannot start %s", qPrintable(program));
        return;
    }
    // The first line printed is the upload URL with the port it listens on.
    QDeadlineTimer deadline(15000);
    while (!m_process.canReadLine() && !deadline.hasExpired()) {
        if (!m_process.waitForReadyRead(int(deadline.remainingTime())))
            break;
    }
    const QUrl url(QString::fromUtf8(m_process.readLine().trimmed()));
    if (!url.isValid() || url.port() <= 0) {
        qWarning("SandboxProcess: the sandbox did not report its URL");
        return;
    }
    m_port = quint16(url.port());
    QByteArray pong;
    if (control(u"/control/ping"_qs, {}, &pong) != 200) {
        qWarning("SandboxProcess: the sandbox does not answer");
        m_port = 0;
    }
}

SandboxProcess::~SandboxProcess()
{
    if (m_process.state() != QProcess::NotRunning) {
        m_process.kill();
        m_process.waitForFinished(5000);
    }
}

QString SandboxProcess::baseUrl() const
{
    return u"http://127.0.0.1:%1"_qs.arg(m_port);
}

QString SandboxProcess::url() const
{
    return baseUrl() + u"/qps/upload.php"_qs;
}

QString SandboxProcess::payeeUrl() const
{
    return baseUrl() + u"/qps/evendorpay.php"_qs;
}

void SandboxProcess::useFor(ProgramState &state, int timeoutSeconds) const
{
    state.login.url = url();
    state.login.user = m_user;
    state.login.password = m_password;
    state.login.missing = false;
    state.clientFactory
        = [timeoutSeconds] { return std::make_unique<HttpProcessorClient>(timeoutSeconds); };
}

int SandboxProcess::control(const QString &pathAndQuery, const QByteArray &body, QByteArray *answer)
{
    std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> curl(curl_easy_init(), curl_easy_cleanup);
    const QByteArray target = (baseUrl() + pathAndQuery).toUtf8();
    const QByteArray credentials = TransferFile::toAnsi(m_user + u':' + m_password);
    QByteArray received;
    curl_slist *headers = curl_slist_append(nullptr, "Expect:");
    CURL *h = curl.get();
    curl_easy_setopt(h, CURLOPT_URL, target.constData());
    curl_easy_setopt(h, CURLOPT_USERPWD, credentials.constData());
    curl_easy_setopt(h, CURLOPT_POST, 1L);
    curl_easy_setopt(h, CURLOPT_POSTFIELDS, body.constData());
    curl_easy_setopt(h, CURLOPT_POSTFIELDSIZE, long(body.size()));
    curl_easy_setopt(h, CURLOPT_HTTPHEADER, headers);
    curl_easy_setopt(h, CURLOPT_NOPROXY, "*");
    curl_easy_setopt(h, CURLOPT_TIMEOUT, 30L);
    curl_easy_setopt(h, CURLOPT_WRITEFUNCTION, collect);
    curl_easy_setopt(h, CURLOPT_WRITEDATA, &received);
    long status = 0;
    if (curl_easy_perform(h) == CURLE_OK)
        curl_easy_getinfo(h, CURLINFO_RESPONSE_CODE, &status);
    curl_slist_free_all(headers);
    if (answer)
        *answer = received;
    return int(status);
}

QStringList SandboxProcess::queueRent(
    const QString &amount, const QString &type, const QString &date)
{
    QString query
        = u"/control/queue-rent?type="_qs + QString::fromUtf8(QUrl::toPercentEncoding(type));
    if (!amount.isEmpty())
        query += u"&amount="_qs + QString::fromUtf8(QUrl::toPercentEncoding(amount));
    if (!date.isEmpty())
        query += u"&date="_qs + QString::fromUtf8(QUrl::toPercentEncoding(date));
    QByteArray answer;
    control(query, {}, &answer);
    QStringList lines;
    for (const QJsonValue &v :
        QJsonDocument::fromJson(answer).object().value(u"queued"_qs).toArray())
        lines << v.toString();
    return lines;
}

void SandboxProcess::queueLines(const QStringList &lines)
{
    control(u"/control/queue-lines"_qs, lines.join(u"\r\n"_qs).toUtf8());
}

void SandboxProcess::forceStatus(int status, const QByteArray &body)
{
    control(u"/control/next?status=%1"_qs.arg(status), body);
}

void SandboxProcess::forceDelay(int milliseconds)
{
    control(u"/control/next?delay=%1"_qs.arg(milliseconds), {});
}

void SandboxProcess::forceDrop()
{
    control(u"/control/next?drop=1"_qs, {});
}

void SandboxProcess::forceTruncatedBody()
{
    control(u"/control/next?truncate=1"_qs, {});
}

QList<SandboxProcess::Request> SandboxProcess::received()
{
    QByteArray answer;
    control(u"/control/received"_qs, {}, &answer);
    QList<Request> out;
    for (const QJsonValue &v :
        QJsonDocument::fromJson(answer).object().value(u"requests"_qs).toArray()) {
        const QJsonObject o = v.toObject();
        Request r;
        r.path = o.value(u"path"_qs).toString();
        r.authorized = o.value(u"authorized"_qs).toBool();
        r.status = o.value(u"status"_qs).toInt();
        r.outcome = o.value(u"outcome"_qs).toString();
        r.bodySize = qint64(o.value(u"bodySize"_qs).toDouble());
        const QJsonObject parts = o.value(u"parts"_qs).toObject();
        for (auto it = parts.begin(); it != parts.end(); ++it)
            r.parts.insert(it.key(), QByteArray::fromBase64(it.value().toString().toLatin1()));
        out << r;
    }
    return out;
}

int SandboxProcess::requestCount(const QString &path)
{
    int n = 0;
    for (const Request &r : received()) {
        if (path.isEmpty() || r.path == path)
            ++n;
    }
    return n;
}

QJsonObject SandboxProcess::records()
{
    QByteArray answer;
    control(u"/control/records"_qs, {}, &answer);
    return QJsonDocument::fromJson(answer).object();
}

void SandboxProcess::clearReceived()
{
    control(u"/control/clear"_qs, {});
}
