#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QMap>
#include <QProcess>
#include <QString>
#include <QStringList>

class ProgramState;

// A quenta-sandbox run for one test: started on a free loopback port with the
// given credentials, ready when the constructor returns (check isRunning()),
// killed when destroyed. The control helpers talk to it over HTTP.
class SandboxProcess
{
public:
    explicit SandboxProcess(const QString &user = QStringLiteral("sandbox-user"),
        const QString &password = QStringLiteral("sandbox-pass"),
        const QStringList &extraArguments = {});
    ~SandboxProcess();

    bool isRunning() const { return m_port != 0; }
    // The upload URL to give Remitra: http://127.0.0.1:P/qps/upload.php.
    QString url() const;
    // http://127.0.0.1:P/qps/evendorpay.php
    QString payeeUrl() const;
    QString baseUrl() const;
    quint16 port() const { return m_port; }
    const QString &user() const { return m_user; }
    const QString &password() const { return m_password; }

    // Points the state at this sandbox: URL and credentials, and a client
    // factory that creates HttpProcessorClient with the given time-out.
    void useFor(ProgramState &state, int timeoutSeconds = 30) const;

    // One rent payment per active tenant (amount: the given one, or the
    // tenant's balance); type "Rent" or "Late Fee"; date M/D/YYYY or today.
    // Returns the queued payment lines.
    QStringList queueRent(const QString &amount = {}, const QString &type = QStringLiteral("Rent"),
        const QString &date = {});
    // Queues payment lines to be downloaded exactly as given.
    void queueLines(const QStringList &lines);

    // How the next processor request is answered instead of normally.
    // forceStatus answers with that code and body without processing the
    // request; the others process it, then delay the answer, drop the
    // connection without answering, or send half the body and close.
    void forceStatus(int status, const QByteArray &body = {});
    void forceDelay(int milliseconds);
    void forceDrop();
    void forceTruncatedBody();

    struct Request
    {
        QString path;
        bool authorized = false;
        int status = 0; // -1 when the connection was dropped
        QString outcome; // answered, delayed, dropped, truncated
        qint64 bodySize = 0;
        QMap<QString, QByteArray> parts; // raw bytes of each form part
    };
    // Every processor request received so far (control requests excluded).
    QList<Request> received();
    // How many requests came for a path ("" = all).
    int requestCount(const QString &path = {});
    // The processor's records: tenants, payees, queued, delivered, payments.
    QJsonObject records();
    // Forgets the received requests and any forced answers.
    void clearReceived();

    // A control call; returns the HTTP status (0 when no answer) and body.
    int control(const QString &pathAndQuery, const QByteArray &body, QByteArray *answer = nullptr);

private:
    QProcess m_process;
    QString m_user;
    QString m_password;
    quint16 m_port = 0;
};
