#pragma once

#include "SandboxRecords.h"

#include <QHostAddress>
#include <QHttpServer>
#include <QJsonArray>
#include <QObject>
#include <QQueue>

#include <optional>

class QTcpSocket;

// The simulated processor: POST /qps/upload.php and /qps/evendorpay.php as
// the processor answers them, plus /control/... endpoints with which tests and
// the demo queue payments, force the next answer and read what was received.
// Every path needs the Basic credentials given on the command line.
class SandboxServer : public QObject
{
    Q_OBJECT

public:
    struct Options
    {
        QString user;
        QString password;
        QString stateFile;
        QHostAddress host = QHostAddress::LocalHost;
        quint16 port = 0;
        // Demo mode: every tenant upload queues one rent payment per active
        // tenant (the tenant's balance), as if the tenants had paid at once.
        bool autoRent = false;
    };

    SandboxServer(Options options, SandboxRecords records, QObject *parent = nullptr);

    // Listens on the host and port; false with a reason on failure.
    bool start(QString *error);
    quint16 port() const { return m_port; }
    QString baseUrl() const;

    // Loads a state file written by an earlier run; a missing file is an
    // empty state.
    static bool loadRecords(const QString &path, SandboxRecords &records, QString *error);

private:
    // How the next processor request is to be answered instead of normally.
    struct Force
    {
        int status = 0; // answer with this code, without processing
        QByteArray body; // body for that answer
        int delayMs = 0; // process, then answer after this long
        bool drop = false; // process, then close without answering
        bool truncate = false; // process, then send half the body and close
    };
    struct Answer
    {
        int status = 200;
        QByteArray body;
        QByteArray contentType = "text/plain; charset=windows-1252";
    };

    void handle(const QHttpServerRequest &request, QTcpSocket *socket);
    bool authorized(const QHttpServerRequest &request) const;
    Answer processorAnswer(const QString &path, const QMap<QByteArray, QByteArray> &parts);
    Answer control(const QString &path, const QHttpServerRequest &request);
    void saveRecords();
    static void send(QTcpSocket *socket, const Answer &answer, bool truncate = false);

    Options m_options;
    SandboxRecords m_records;
    QHttpServer m_server;
    quint16 m_port = 0;
    // What came in, kept raw; turned into JSON only when asked for.
    struct Received
    {
        QString path;
        bool post = false;
        bool authorized = false;
        qint64 bodySize = 0;
        QMap<QByteArray, QByteArray> parts;
        int status = 0;
        QString outcome;
    };
    QJsonArray receivedJson() const;

    QQueue<Force> m_forces;
    QList<Received> m_received;
};
