// The HTTP processor client against a real quenta-sandbox on loopback.

#include "SandboxProcess.h"
#include "TestSupport.h"

#include "core/TransferFile.h"
#include "processor/HttpProcessorClient.h"
#include "processor/ProcessorCall.h"
#include "processor/ReportResult.h"

#include <QPushButton>
#include <QRegularExpression>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <memory>
#include <utility>

namespace {

const QString kNoAnswer = u"The action could not be performed because the server is unavailable "
                          "or busy. Please try again later."_qs;

} // namespace

class TestProcessorHttp : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<SandboxProcess> sandbox;

    std::unique_ptr<HttpProcessorClient> client(const QString &url)
    {
        auto c = std::make_unique<HttpProcessorClient>(20);
        c->setUrl(url);
        c->setUserName(sandbox->user());
        c->setPassword(sandbox->password());
        return c;
    }

private slots:
    void initTestCase()
    {
        sandbox = std::make_unique<SandboxProcess>(u"user é"_qs, u"pa:ss€"_qs);
        QVERIFY(sandbox->isRunning());
    }
    void init() { sandbox->clearReceived(); }
    void cleanupTestCase() { sandbox.reset(); }

    void transmitCarriesTheExactBytes()
    {
        const QString setup = u"DXRM|O1|Zoë Brontë|P2|Café € 5|x\r\nDXRM|O1|a|b\r\n"_qs;
        const QString tenant
            = u"DXRM|O1|P2|U3|T3|125.5|1/2/2020|Rent|T3|Ann|Lee|1 Main|Town|ST|12345|activate|\r\n"_qs;
        auto c = client(sandbox->url());
        QVERIFY(c->transmit(setup, tenant));
        QCOMPARE(c->resultCode(), 200);
        QCOMPARE(c->responseText(), u"Received 2 setup and 1 tenant records"_qs);

        const auto got = sandbox->received();
        QCOMPARE(got.size(), 1);
        QVERIFY(got[0].authorized);
        QCOMPARE(got[0].parts.keys(), (QStringList { u"setup"_qs, u"tenant"_qs }));
        QCOMPARE(got[0].parts[u"setup"_qs], TransferFile::toAnsi(setup));
        QVERIFY(got[0].parts[u"setup"_qs].contains('\x80')); // the euro sign in Windows-1252
        QCOMPARE(got[0].parts[u"tenant"_qs], TransferFile::toAnsi(tenant));
    }

    void transmitPayeesCarriesTheExactBytesAndAnswersEachPayment()
    {
        const QString payees = u"O7|Owner|Ann Lee|1 Main|Town|ST|1||||p1|p2|e|activate\r\n"
                               "V8|Vendor|Fix Co|2 Side|Town|ST|1|||Bo|p|p|e|deactivate\r\n"_qs;
        QVERIFY(client(sandbox->payeeUrl())->transmitPayees(payees, QString(), QString()));
        const QString payments = u"B1043|O7|March | draw|1500\r\nB1045|V8|Repairs|82.4\r\n"_qs;
        auto p = client(sandbox->payeeUrl());
        QVERIFY(p->transmitPayees(QString(), payments, QString()));
        QCOMPARE(p->responseText(),
            u"O7,B1043,0,Accepted\r\n"
            "V8,B1045,4,Payee is not set up for electronic payment\r\n"_qs);

        const auto got = sandbox->received();
        QCOMPARE(got.size(), 2);
        QCOMPARE(got[0].path, u"/qps/evendorpay.php"_qs);
        QCOMPARE(got[0].parts.keys(), (QStringList { u"extra"_qs, u"payee"_qs, u"payment"_qs }));
        QCOMPARE(got[0].parts[u"payee"_qs], TransferFile::toAnsi(payees));
        QCOMPARE(got[0].parts[u"payment"_qs], QByteArray(""));
        QCOMPARE(got[1].parts[u"payment"_qs], TransferFile::toAnsi(payments));
    }

    // A text given as its transfer file is read from disk as it goes out;
    // the request is the one its text in memory makes, part headers
    // included (no file name, no type), but for curl's random boundary.
    void aFileGoesOutAsItsTextWould()
    {
        QTemporaryDir dir;
        const QString tenant = u"DXRM|O1|P2|U3|T3|125.5|Zoë € \x81|activate|\r\n"_qs.repeated(5000);
        const QString path = dir.filePath(u"tenants.txt"_qs);
        TransferFile::writeAtomic(path, tenant);

        QTcpServer server;
        QVERIFY(server.listen(QHostAddress::LocalHost));
        QList<QByteArray> requests;
        connect(&server, &QTcpServer::newConnection, this, [&] {
            QTcpSocket *socket = server.nextPendingConnection();
            // The request so far; ends with the socket's connection.
            auto got = std::make_shared<QByteArray>();
            connect(socket, &QTcpSocket::readyRead, socket, [&requests, socket, got] {
                *got += socket->readAll();
                const qsizetype end = got->indexOf("\r\n\r\n");
                const QRegularExpression length(u"Content-Length: (\\d+)"_qs);
                const auto m = length.match(QString::fromLatin1(got->left(end)));
                if (end < 0 || !m.hasMatch() || got->size() < end + 4 + m.captured(1).toLongLong())
                    return;
                requests.append(std::exchange(*got, {}));
                socket->write(
                    "HTTP/1.1 200 OK\r\nContent-Length: 2\r\nConnection: close\r\n\r\nok");
                socket->disconnectFromHost();
            });
        });
        const QString url = u"http://127.0.0.1:%1/qps/upload.php"_qs.arg(server.serverPort());
        QVERIFY(client(url)->transmit(u"S"_qs, tenant));
        QVERIFY(client(url)->transmit(u"S"_qs, CallText::file(path)));
        QCOMPARE(requests.size(), 2);
        auto normalised = [](QByteArray request) {
            const QRegularExpression boundary(u"boundary=([-\\w]+)"_qs);
            const QString b = boundary.match(QString::fromLatin1(request)).captured(1);
            return request.replace(b.toLatin1(), "BOUNDARY");
        };
        QCOMPARE(normalised(requests[1]), normalised(requests[0]));
        QVERIFY(requests[0].contains(TransferFile::toAnsi(tenant)));
    }

    void eachStatusReachesTheReport_data()
    {
        QTest::addColumn<int>("status");
        for (int status : { 401, 403, 404, 501, 503, 302, 500 })
            QTest::addRow("%d", status) << status;
    }
    void eachStatusReachesTheReport()
    {
        QFETCH(int, status);
        TestSite site;
        sandbox->useFor(*site.state);
        sandbox->forceStatus(status, "body of the answer");
        const auto outcome = ProcessorCall::transmit(*site.state, u"S"_qs, u"T"_qs);
        QVERIFY(outcome.flag); // an answer came, whatever its code
        QCOMPARE(outcome.code, qint16(status));
        // The body is kept whatever the code (a 302 is not followed).
        QCOMPARE(outcome.response, u"body of the answer"_qs);
        TestSite reference;
        reportResult(reference.prompter, { qint16(status), u"True"_qs });
        QCOMPARE(site.prompter.texts(), reference.prompter.texts());
        QCOMPARE(sandbox->requestCount(), 1);
    }

    void credentialsAndPathAreCheckedByTheProcessor()
    {
        auto wrong = client(sandbox->url());
        wrong->setPassword(u"nope"_qs);
        QVERIFY(wrong->transmit(u"a"_qs, u"b"_qs));
        QCOMPARE(wrong->resultCode(), 401);
        QCOMPARE(wrong->responseText(), QString());

        auto unknown = client(sandbox->baseUrl() + u"/qps/nothere.php"_qs);
        QVERIFY(unknown->transmit(u"a"_qs, u"b"_qs));
        QCOMPARE(unknown->resultCode(), 404);
    }

    void noAnswerIsFalse501AndIsSentOnce_data()
    {
        QTest::addColumn<QString>("how");
        QTest::addColumn<int>("sandboxRequests"); // -1: not asked
        QTest::newRow("connection refused") << u"refused"_qs << 0;
        QTest::newRow("TLS to a plain server") << u"tls"_qs << -1;
        QTest::newRow("time-out") << u"timeout"_qs << 1;
        QTest::newRow("dropped") << u"dropped"_qs << 1;
        // Half a payment file is not passed on as a whole one.
        QTest::newRow("truncated body") << u"truncated"_qs << 1;
        QTest::newRow("closed while sending") << u"closed"_qs << 0;
    }
    void noAnswerIsFalse501AndIsSentOnce()
    {
        QFETCH(QString, how);
        QFETCH(int, sandboxRequests);
        TestSite site;
        sandbox->useFor(*site.state, how == u"timeout"_qs ? 1 : 10);
        QString tenant = u"T"_qs;
        QTcpServer server;
        int connections = 0;
        if (how == u"refused"_qs || how == u"closed"_qs)
            QVERIFY(server.listen(QHostAddress::LocalHost));
        const QString local = u"http://127.0.0.1:%1/qps/upload.php"_qs.arg(server.serverPort());
        if (how == u"refused"_qs) {
            site.state->login.url = local;
            server.close();
        } else if (how == u"tls"_qs) {
            site.state->login.url = u"https://127.0.0.1:%1/qps/upload.php"_qs.arg(sandbox->port());
        } else if (how == u"timeout"_qs) {
            sandbox->forceDelay(2500);
        } else if (how == u"dropped"_qs) {
            sandbox->forceDrop();
        } else if (how == u"truncated"_qs) {
            sandbox->queueLines({ u"P1,U2,T3,100,1/1/2026,123,1/1/2026,ACH,Rent"_qs });
            sandbox->forceTruncatedBody();
        } else {
            // A server that hangs up once the upload has started to arrive.
            site.state->login.url = local;
            tenant = QString(4 * 1024 * 1024, u'x');
            connect(&server, &QTcpServer::newConnection, this, [&] {
                while (QTcpSocket *socket = server.nextPendingConnection()) {
                    ++connections;
                    connect(socket, &QTcpSocket::readyRead, socket, [socket] { socket->abort(); });
                }
            });
        }
        const auto outcome = ProcessorCall::transmit(*site.state, u"S"_qs, tenant);
        QVERIFY(!outcome.flag);
        QCOMPARE(outcome.code, qint16(501));
        QCOMPARE(outcome.response, QString());
        QCOMPARE(site.state->lastResult.text, u"False"_qs);
        QCOMPARE(site.prompter.texts(), QStringList { kNoAnswer });
        QTest::qWait(how == u"timeout"_qs ? 2000 : 200); // past any late answer or retry
        if (sandboxRequests >= 0)
            QCOMPARE(sandbox->requestCount(), sandboxRequests);
        if (how == u"closed"_qs)
            QCOMPARE(connections, 1);
    }

    void refusedUrlsSendNothing_data()
    {
        QTest::addColumn<QString>("url");
        QTest::newRow("plain http to a remote host") << u"http://192.0.2.1/qps/upload.php"_qs;
        QTest::newRow("another scheme") << u"ftp://127.0.0.1/qps/upload.php"_qs;
    }
    void refusedUrlsSendNothing()
    {
        QFETCH(QString, url);
        TestSite site;
        sandbox->useFor(*site.state);
        site.state->login.url = url;
        const auto outcome = ProcessorCall::transmit(*site.state, u"S"_qs, u"T"_qs);
        QVERIFY(!outcome.flag);
        QCOMPARE(outcome.code, qint16(404));
        QCOMPARE(site.prompter.titles(), QStringList { u"Remitra error"_qs });
        QCOMPARE(sandbox->requestCount(), 0);
    }

    void theWindowsRepaintButIgnoreInputDuringACall()
    {
        QPushButton button(u"Other command"_qs);
        button.show();
        int clicks = 0;
        connect(&button, &QPushButton::clicked, this, [&] { ++clicks; });
        int ticks = 0;
        QTimer ticker;
        connect(&ticker, &QTimer::timeout, this, [&] {
            ++ticks;
            QTest::mouseClick(&button, Qt::LeftButton);
        });
        ticker.start(50);

        auto c = client(sandbox->url());
        sandbox->forceDelay(600);
        QVERIFY(c->transmit(u"S"_qs, u"T"_qs));
        ticker.stop();
        QVERIFY(ticks >= 3); // the event loop kept running
        QCOMPARE(clicks, 0); // but no click got through
        QTest::mouseClick(&button, Qt::LeftButton);
        QCOMPARE(clicks, 1); // and input works again afterwards
    }

    void aLongCallShowsHowLongItHasWaited()
    {
        TestSite site;
        sandbox->useFor(*site.state);
        sandbox->forceDelay(1600);
        ProcessorCall::transmit(*site.state, QString(), QString());
        const QStringList statuses = site.prompter.statuses();
        QVERIFY(statuses.size() >= 3);
        QCOMPARE(statuses.first(), u"Asking the processor for rent payments…"_qs);
        QCOMPARE(statuses[1],
            u"Asking the processor for rent payments… | Waiting for the processor… 1 s"_qs);
        QCOMPARE(statuses.last(), QString());
    }
};

QTEST_MAIN(TestProcessorHttp)
#include "tst_processor_http.moc"
