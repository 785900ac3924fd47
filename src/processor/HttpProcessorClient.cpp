#include "processor/HttpProcessorClient.h"

#include "core/RuntimeError.h"
#include "core/TransferFile.h"

#include <QCoreApplication>
#include <QEvent>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QThread>
#include <QUrl>

#include <curl/curl.h>

#include <algorithm>
#include <memory>
#include <vector>

namespace {

constexpr qint32 kNoAnswer = 501;
constexpr qint32 kRefusedUrl = 404;

// libcurl's global set-up must happen once, before any thread uses it.
void initCurlOnce()
{
    static const bool done = [] {
        curl_global_init(CURL_GLOBAL_DEFAULT);
        return true;
    }();
    Q_UNUSED(done);
}

size_t collect(char *data, size_t size, size_t count, void *target)
{
    auto *body = static_cast<QByteArray *>(target);
    const size_t bytes = size * count;
    // Returning less than was given stops the transfer (CURLE_WRITE_ERROR).
    if (qint64(body->size()) + qint64(bytes) > HttpProcessorClient::MaxAnswerBytes)
        return 0;
    body->append(data, qsizetype(bytes));
    return bytes;
}

// One part of the body: bytes in memory, or a transfer file read as it is
// sent. A file part announces the size the file had when it was opened; a
// file that is shorter by the time it is read stops the transfer rather
// than send a body shorter than announced.
struct Part
{
    QByteArray name;
    QByteArray bytes;
    std::unique_ptr<QFile> file;
    qint64 left = 0; // bytes of the file still to be sent

    static size_t read(char *buffer, size_t size, size_t count, void *arg)
    {
        auto *part = static_cast<Part *>(arg);
        const qint64 want = std::min(qint64(size * count), part->left);
        if (want == 0)
            return 0;
        const qint64 got = part->file->read(buffer, want);
        if (got <= 0)
            return CURL_READFUNC_ABORT;
        part->left -= got;
        return size_t(got);
    }
};

struct Transfer
{
    // Inputs, filled on the calling thread.
    QByteArray url;
    QByteArray authorization;
    std::vector<Part> parts;
    long timeoutSeconds = 120;
    // Outputs, filled on the worker thread.
    bool answered = false;
    bool connected = false; // a connection was made, so the request may have gone out
    long status = 0;
    QByteArray body;

    void run()
    {
        std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> curl(
            curl_easy_init(), curl_easy_cleanup);
        if (!curl)
            return;
        CURL *h = curl.get();
        curl_mime *mime = curl_mime_init(h);
        for (Part &p : parts) {
            curl_mimepart *part = curl_mime_addpart(mime);
            curl_mime_name(part, p.name.constData());
            if (p.file) {
                // No file name and no type: the part's headers are those of
                // the same bytes given in memory. No seek function: the part
                // is read once, so the request is never sent again.
                curl_mime_data_cb(part, curl_off_t(p.left), Part::read, nullptr, nullptr, &p);
            } else {
                curl_mime_data(part, p.bytes.constData(), size_t(p.bytes.size()));
            }
        }
        curl_slist *headers = nullptr;
        headers = curl_slist_append(headers, authorization.constData());
        // No "Expect: 100-continue": the body goes with the request at once.
        headers = curl_slist_append(headers, "Expect:");

        curl_easy_setopt(h, CURLOPT_URL, url.constData());
        curl_easy_setopt(h, CURLOPT_PROTOCOLS_STR, "http,https");
        curl_easy_setopt(h, CURLOPT_MIMEPOST, mime);
        curl_easy_setopt(h, CURLOPT_HTTPHEADER, headers);
        curl_easy_setopt(h, CURLOPT_FOLLOWLOCATION, 0L);
        curl_easy_setopt(h, CURLOPT_SSL_VERIFYPEER, 1L);
        curl_easy_setopt(h, CURLOPT_SSL_VERIFYHOST, 2L);
        curl_easy_setopt(h, CURLOPT_TIMEOUT, timeoutSeconds);
        curl_easy_setopt(h, CURLOPT_NOSIGNAL, 1L);
        curl_easy_setopt(h, CURLOPT_FORBID_REUSE, 1L);
        curl_easy_setopt(h, CURLOPT_NOPROXY, "localhost,127.0.0.1,::1");
        curl_easy_setopt(h, CURLOPT_WRITEFUNCTION, collect);
        curl_easy_setopt(h, CURLOPT_WRITEDATA, &body);
        // A length announced above the limit is refused before the body comes.
        curl_easy_setopt(h, CURLOPT_MAXFILESIZE_LARGE,
            static_cast<curl_off_t>(HttpProcessorClient::MaxAnswerBytes));

        const CURLcode rc = curl_easy_perform(h);
        if (rc == CURLE_OK) {
            answered = true;
            curl_easy_getinfo(h, CURLINFO_RESPONSE_CODE, &status);
        } else {
            body.clear();
            body.squeeze();
        }
        // Failures that come before any byte of the request can have left:
        // no name, no connection, or no secure channel.
        switch (rc) {
        case CURLE_COULDNT_RESOLVE_HOST:
        case CURLE_COULDNT_RESOLVE_PROXY:
        case CURLE_COULDNT_CONNECT:
        case CURLE_UNSUPPORTED_PROTOCOL:
        case CURLE_URL_MALFORMAT:
        case CURLE_SSL_CONNECT_ERROR:
        case CURLE_PEER_FAILED_VERIFICATION:
            connected = false;
            break;
        default:
            connected = true;
            break;
        }
        curl_slist_free_all(headers);
        curl_mime_free(mime);
        // The authorization header is not needed any more.
        authorization.fill('\0');
    }
};

// Discards the user's input while a call is in flight (see the header).
class InputBlocker : public QObject
{
public:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        switch (event->type()) {
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonRelease:
        case QEvent::MouseButtonDblClick:
        case QEvent::KeyPress:
        case QEvent::KeyRelease:
        case QEvent::ShortcutOverride:
        case QEvent::Shortcut:
        case QEvent::Wheel:
        case QEvent::TouchBegin:
        case QEvent::TouchUpdate:
        case QEvent::TouchEnd:
        case QEvent::Close:
            return true;
        default:
            return QObject::eventFilter(watched, event);
        }
    }
};

// Runs the transfer off the calling thread and waits for it in a local event
// loop; without an application object it runs in place.
void runWaiting(Transfer &transfer)
{
    QCoreApplication *app = QCoreApplication::instance();
    if (!app || QThread::currentThread() != app->thread()) {
        transfer.run();
        return;
    }
    InputBlocker blocker;
    app->installEventFilter(&blocker);
    QEventLoop loop;
    std::unique_ptr<QThread> worker(QThread::create([&transfer] { transfer.run(); }));
    QObject::connect(
        worker.get(), &QThread::finished, &loop, &QEventLoop::quit, Qt::QueuedConnection);
    worker->start();
    loop.exec();
    worker->wait();
    app->removeEventFilter(&blocker);
}

} // namespace

HttpProcessorClient::HttpProcessorClient(int timeoutSeconds)
    : m_timeoutSeconds(timeoutSeconds)
{
    initCurlOnce();
}

HttpProcessorClient::~HttpProcessorClient()
{
    m_password.fill(u'\0');
}

bool HttpProcessorClient::isAllowedUrl(const QString &url)
{
    const QUrl parsed(url, QUrl::StrictMode);
    if (!parsed.isValid() || parsed.host().isEmpty())
        return false;
    const QString scheme = parsed.scheme().toLower();
    if (scheme == u"https"_qs)
        return true;
    if (scheme != u"http"_qs)
        return false;
    // QUrl gives IPv6 addresses in their canonical form, without brackets.
    const QString host = parsed.host().toLower();
    if (host == u"localhost"_qs || host == u"::1"_qs)
        return true;
    const QStringList octets = host.split(u'.');
    if (octets.size() != 4 || octets.first() != u"127"_qs)
        return false;
    for (const QString &octet : octets) {
        bool ok = false;
        const uint value = octet.toUInt(&ok);
        if (!ok || value > 255 || octet.size() > 3)
            return false;
    }
    return true;
}

bool HttpProcessorClient::transmit(const CallText &setupText, const CallText &tenantText)
{
    return post({ { "setup", setupText }, { "tenant", tenantText } });
}

bool HttpProcessorClient::transmitPayees(
    const CallText &payeeText, const CallText &paymentText, const CallText &thirdText)
{
    return post({ { "payee", payeeText }, { "payment", paymentText }, { "extra", thirdText } });
}

bool HttpProcessorClient::post(const Parts &parts)
{
    m_responseText.clear();
    m_mayHaveArrived = true;
    if (!isAllowedUrl(m_url)) {
        m_resultCode = kRefusedUrl;
        m_mayHaveArrived = false;
        return false;
    }
    Transfer transfer;
    for (const auto &[name, text] : parts) {
        Part part;
        part.name = name;
        if (text.isFile()) {
            part.file = std::make_unique<QFile>(text.path());
            if (!part.file->open(QIODevice::ReadOnly))
                throw QFileInfo::exists(text.path()) ? RuntimeError::permissionDenied()
                                                     : RuntimeError::fileNotFound();
            part.left = part.file->size();
        } else {
            part.bytes = TransferFile::toAnsi(text.text());
        }
        transfer.parts.push_back(std::move(part));
    }
    transfer.url = QUrl(m_url).toEncoded();
    transfer.authorization
        = "Authorization: Basic " + TransferFile::toAnsi(m_user + u':' + m_password).toBase64();
    transfer.timeoutSeconds = m_timeoutSeconds > 0 ? m_timeoutSeconds : 120;
    runWaiting(transfer);
    transfer.authorization.fill('\0');
    if (!transfer.answered) {
        m_resultCode = kNoAnswer;
        m_mayHaveArrived = transfer.connected;
        return false;
    }
    m_resultCode = qint32(transfer.status);
    m_responseText = TransferFile::fromAnsi(transfer.body);
    return true;
}
