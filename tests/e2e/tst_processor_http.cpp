// The HTTP processor client against a real quenta-sandbox on loopback.

#include "SandboxProcess.h"
#include "TestSupport.h"

#include "core/TransferFile.h"
#include "processor/HttpProcessorClient.h"
#include "processor/ProcessorCall.h"
#include "processor/ReportResult.h"

#include <QElapsedTimer>
#include <QPushButton>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>
#include <QTimer>

class TestProcessorHttp : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<SandboxProcess> sandbox;

    std::unique_ptr<HttpProcessorClient> client(const QString &url, int timeout = 20)
    {
        auto c = std::make_unique<HttpProcessorClient>(timeout);
        c->setUrl(url);
        c->setUserName(sandbox->user());
        c->setPassword(sandbox->password());
        return c;
    }

    static QString lastText(const TestSite &site) { return site.prompter.shown().last().text; }

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
        const QString tenant = u"DXRM|O1|P2|U3|T3|125.5|1/2/2020|Rent|T3|Ann|Lee|1 Main|Town|ST|12345|activate|\r\n"_qs;
        auto c = client(sandbox->url());
        QVERIFY(c->Transmit(setup, tenant));
        QCOMPARE(c->ResultCode(), 200);
        QCOMPARE(c->ResponseText(), u"Received 2 setup and 1 tenant records"_qs);

        const auto got = sandbox->received();
        QCOMPARE(got.size(), 1);
        QVERIFY(got[0].authorized);
        QCOMPARE(got[0].parts.keys(), (QStringList{u"setup"_qs, u"tenant"_qs}));
        QCOMPARE(got[0].parts[u"setup"_qs], TransferFile::toAnsi(setup));
        QVERIFY(got[0].parts[u"setup"_qs].contains('\x80')); // the euro sign in Windows-1252
        QCOMPARE(got[0].parts[u"tenant"_qs], TransferFile::toAnsi(tenant));
    }

    void transmitPayeesCarriesTheExactBytesAndAnswersEachPayment()
    {
        const QString payees = u"O7|Owner|Ann Lee|1 Main|Town|ST|1||||p1|p2|e|activate\r\n"
                               "V8|Vendor|Fix Co|2 Side|Town|ST|1|||Bo|p|p|e|deactivate\r\n"_qs;
        auto c = client(sandbox->payeeUrl());
        QVERIFY(c->TransmitPayees(payees, QString(), QString()));
        QCOMPARE(c->ResultCode(), 200);

        const QString payments = u"B1043|O7|March | draw|1500\r\nB1045|V8|Repairs|82.4\r\nB1046|O%9|x|1\r\n"_qs;
        auto p = client(sandbox->payeeUrl());
        QVERIFY(p->TransmitPayees(QString(), payments, QString()));
        QCOMPARE(p->ResponseText(), u"O7,B1043,0,Accepted\r\n"
                                    "V8,B1045,4,Payee is not set up for electronic payment\r\n"
                                    "O%9,B1046,4,Payee is not set up for electronic payment\r\n"_qs);

        const auto got = sandbox->received();
        QCOMPARE(got.size(), 2);
        QCOMPARE(got[0].path, u"/qps/evendorpay.php"_qs);
        QCOMPARE(got[0].parts.keys(), (QStringList{u"extra"_qs, u"payee"_qs, u"payment"_qs}));
        QCOMPARE(got[0].parts[u"payee"_qs], TransferFile::toAnsi(payees));
        QCOMPARE(got[0].parts[u"payment"_qs], QByteArray(""));
        QCOMPARE(got[1].parts[u"payment"_qs], TransferFile::toAnsi(payments));
    }

    void eachStatusReachesTheReport_data()
    {
        QTest::addColumn<int>("status");
        for (int status : {401, 403, 404, 501, 503, 302, 500})
            QTest::addRow("%d", status) << status;
    }
    void eachStatusReachesTheReport()
    {
        // The messages themselves are checked with ReportResult's own tests.
        QFETCH(int, status);
        TestSite site;
        sandbox->useFor(*site.state);
        sandbox->forceStatus(status, "body of the answer");
        const auto outcome = ProcessorCall::transmit(*site.state, u"S"_qs, u"T"_qs);
        QVERIFY(outcome.flag); // an answer came, whatever its code
        QCOMPARE(outcome.code, qint16(status));
        QCOMPARE(site.state->ResultText, u"True"_qs);
        // The body is kept whatever the code (a 302 is not followed).
        QCOMPARE(outcome.response, u"body of the answer"_qs);
        QCOMPARE(site.prompter.titles(), QStringList{u"Remitra error"_qs});
        TestSite reference;
        reference.state->ResultText = u"True"_qs;
        ReportResult(*reference.state, qint16(status));
        QCOMPARE(site.prompter.texts(), reference.prompter.texts());
        QCOMPARE(sandbox->requestCount(), 1);
    }

    void credentialsAndPathAreCheckedByTheProcessor()
    {
        auto wrong = client(sandbox->url());
        wrong->setPassword(u"nope"_qs);
        QVERIFY(wrong->Transmit(u"a"_qs, u"b"_qs));
        QCOMPARE(wrong->ResultCode(), 401);
        QCOMPARE(wrong->ResponseText(), QString());

        auto unknown = client(sandbox->baseUrl() + u"/qps/nothere.php"_qs);
        QVERIFY(unknown->Transmit(u"a"_qs, u"b"_qs));
        QCOMPARE(unknown->ResultCode(), 404);
    }

    void noAnswerGivesFalseAnd501()
    {
        // A port that nobody listens on: connection refused.
        QTcpServer probe;
        QVERIFY(probe.listen(QHostAddress::LocalHost));
        const quint16 closedPort = probe.serverPort();
        probe.close();

        TestSite site;
        sandbox->useFor(*site.state);
        site.state->ProcessorUrl = u"http://127.0.0.1:%1/qps/upload.php"_qs.arg(closedPort);
        const auto outcome = ProcessorCall::transmit(*site.state, QString(), QString());
        QVERIFY(!outcome.flag);
        QCOMPARE(outcome.code, qint16(501));
        QCOMPARE(site.state->ResultText, u"False"_qs);
        QCOMPARE(lastText(site), u"The action could not be performed because the server is unavailable or busy. Please try again later."_qs);

        // https to a server that speaks plain http: the TLS handshake fails.
        auto tls = client(u"https://127.0.0.1:%1/qps/upload.php"_qs.arg(sandbox->port()));
        QVERIFY(!tls->Transmit(u"a"_qs, u"b"_qs));
        QCOMPARE(tls->ResultCode(), 501);
    }

    void aTimeOutIsNoAnswerAndSendsOnce()
    {
        TestSite site;
        sandbox->useFor(*site.state, 1);
        sandbox->forceDelay(2500);
        const auto outcome = ProcessorCall::transmit(*site.state, u"S"_qs, u"T"_qs);
        QVERIFY(!outcome.flag);
        QCOMPARE(outcome.code, qint16(501));
        QCOMPARE(lastText(site), u"The action could not be performed because the server is unavailable or busy. Please try again later."_qs);
        QTest::qWait(2000); // past the delayed answer
        QCOMPARE(sandbox->requestCount(), 1);
    }

    void aBrokenConnectionIsNoAnswerAndSendsOnce()
    {
        auto dropped = client(sandbox->url());
        sandbox->forceDrop();
        QVERIFY(!dropped->Transmit(u"S"_qs, u"T"_qs));
        QCOMPARE(dropped->ResultCode(), 501);
        QCOMPARE(sandbox->requestCount(), 1);

        // Half a payment file is not passed on as a whole one.
        sandbox->queueLines({u"P1,U2,T3,100,1/1/2026,123,1/1/2026,ACH,Rent"_qs});
        auto truncated = client(sandbox->url());
        sandbox->forceTruncatedBody();
        QVERIFY(!truncated->Transmit(QString(), QString()));
        QCOMPARE(truncated->ResultCode(), 501);
        QCOMPARE(truncated->ResponseText(), QString());
        QCOMPARE(sandbox->requestCount(), 2);
    }

    void aConnectionClosedWhileSendingIsNotRetried()
    {
        // A server that hangs up once the upload has started to arrive.
        QTcpServer server;
        QVERIFY(server.listen(QHostAddress::LocalHost));
        int connections = 0;
        connect(&server, &QTcpServer::newConnection, this, [&] {
            while (QTcpSocket *socket = server.nextPendingConnection()) {
                ++connections;
                connect(socket, &QTcpSocket::readyRead, socket, [socket] {
                    if (socket->bytesAvailable() > 0)
                        socket->abort();
                });
            }
        });
        auto c = client(u"http://127.0.0.1:%1/qps/upload.php"_qs.arg(server.serverPort()), 10);
        QVERIFY(!c->Transmit(QString(), QString(4 * 1024 * 1024, u'x')));
        QCOMPARE(c->ResultCode(), 501);
        QTest::qWait(200);
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
        site.state->ProcessorUrl = url;
        const auto outcome = ProcessorCall::transmit(*site.state, u"S"_qs, u"T"_qs);
        QVERIFY(!outcome.flag);
        QCOMPARE(outcome.code, qint16(404));
        QCOMPARE(lastText(site), u"The action could not be performed because the URL was not found. Please reset your URL, User Name and Password from the main Remitra screen"_qs);
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
        QVERIFY(c->Transmit(u"S"_qs, u"T"_qs));
        ticker.stop();
        QVERIFY(ticks >= 3);   // the event loop kept running
        QCOMPARE(clicks, 0);   // but no click got through
        QTest::mouseClick(&button, Qt::LeftButton);
        QCOMPARE(clicks, 1);   // and input works again afterwards
    }

    void aLargeUploadArrivesWhole()
    {
        QString big;
        const QString line = u"DXRM|O1|P2|U3|T3|125.5|1/2/2020|Rent|T3|Ann|Lee|1 Main|Town|ST|12345|activate|\r\n"_qs;
        while (big.size() < 10 * 1024 * 1024)
            big += line;
        auto c = client(sandbox->url(), 120);
        QElapsedTimer clock;
        clock.start();
        QVERIFY(c->Transmit(QString(), big));
        const qint64 ms = clock.elapsed();
        QCOMPARE(c->ResultCode(), 200);
        const auto got = sandbox->received();
        QCOMPARE(got.size(), 1);
        QCOMPARE(got[0].parts[u"tenant"_qs].size(), big.size());
        qInfo("round trip of a %lld-byte upload: %lld ms", qint64(big.size()), ms);
    }
};

QTEST_MAIN(TestProcessorHttp)
#include "tst_processor_http.moc"
