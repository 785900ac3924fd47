#pragma once

#include "processor/ProcessorClient.h"

#include <QList>
#include <QPair>

// The processor client over HTTPS (libcurl). Each call is one POST to the
// URL, sent exactly once: no retry and no redirect following, because a
// second POST of a payment batch could pay twice. The body is
// multipart/form-data with the texts in Windows-1252 (parts setup/tenant, or
// payee/payment/extra); the answer's status becomes ResultCode and its body
// ResponseText. A text given as its transfer file is read from disk a block
// at a time as it goes out, with the same part headers and bytes as the
// text itself would have; such a part cannot be rewound, so it can never go
// out twice either.
//
// The flag is true when an HTTP answer arrived, whatever its code. When none
// did (refused, unreachable, timed out, TLS failure, or the answer broke off
// before its end) the flag is false, ResultCode is 501 and ResponseText is
// empty: half an answer is never passed on as if it were whole. A URL that
// is not https (plain http is allowed to loopback hosts only) is refused
// before anything is sent: false and 404. An answer longer than
// MaxAnswerBytes counts as no answer as well (false, 501), and the transfer
// stops there, so memory stays bounded whatever the other end sends.
//
// The transfer runs on a worker thread while the calling thread waits in a
// local event loop, so the windows keep repainting. While the call is in
// flight, keyboard, mouse and close events of the whole application are
// discarded: the user cannot start a second command, and clicks made while
// waiting do not run afterwards either. The wait cursor is the caller's
// (ProcessorCall). Credentials go only into the Authorization header; they are
// never logged or put in an error text.
class HttpProcessorClient : public ProcessorClient
{
public:
    explicit HttpProcessorClient(int timeoutSeconds = 120);
    ~HttpProcessorClient() override;

    void setUrl(const QString &url) override { m_url = url; }
    void setUserName(const QString &userName) override { m_user = userName; }
    void setPassword(const QString &password) override { m_password = password; }

    qint32 resultCode() const override { return m_resultCode; }
    QString responseText() const override { return m_responseText; }

    bool transmit(const CallText &setupText, const CallText &tenantText) override;
    bool transmitPayees(
        const CallText &payeeText, const CallText &paymentText, const CallText &thirdText) override;

    bool mayHaveArrived() const override { return m_mayHaveArrived; }

    // True when the URL may be used: https, or http to a loopback host
    // (127.0.0.0/8, localhost, ::1).
    static bool isAllowedUrl(const QString &url);

    // The largest answer taken: 64 MB, far above any transfer file.
    static constexpr qint64 MaxAnswerBytes = qint64(64) << 20;

private:
    using Parts = QList<QPair<QByteArray, CallText>>;
    bool post(const Parts &parts);

    int m_timeoutSeconds;
    QString m_url;
    QString m_user;
    QString m_password;
    qint32 m_resultCode = 0;
    QString m_responseText;
    bool m_mayHaveArrived = true;
};
