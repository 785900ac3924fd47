// The processor simulator itself: what the end-to-end tests and the demo
// rely on beyond the client's own tests.

#include "SandboxProcess.h"

#include "processor/HttpProcessorClient.h"

#include <QJsonArray>
#include <QTemporaryDir>
#include <QTest>

class TestSandbox : public QObject
{
    Q_OBJECT

private:
    static std::unique_ptr<HttpProcessorClient> client(const SandboxProcess &sandbox, const QString &url)
    {
        auto c = std::make_unique<HttpProcessorClient>(20);
        c->setUrl(url);
        c->setUserName(sandbox.user());
        c->setPassword(sandbox.password());
        return c;
    }

private slots:
    void demoModeQueuesRentOnEveryTenantUpload()
    {
        SandboxProcess sandbox(u"u"_qs, u"p"_qs, {u"--auto-rent"_qs});
        QVERIFY(sandbox.isRunning());
        const QString tenants =
            u"DXRM|O1|P2|U3|T3|700|1/2/2020|Rent|T3|Ann|Lee|1 Main|Town|ST|1|activate|\r\n"
            "DXRM|O1|P2|U4|T4|50|1/2/2020|Rent|T4|Bo|Ray|2 Main|Town|ST|1|deactivate|\r\n"_qs;
        QVERIFY(client(sandbox, sandbox.url())->Transmit(QString(), tenants));
        auto download = client(sandbox, sandbox.url());
        QVERIFY(download->Transmit(QString(), QString()));
        // Only the active tenant pays, its balance.
        const QStringList lines = download->ResponseText().split(u"\r\n"_qs, Qt::SkipEmptyParts);
        QCOMPARE(lines.size(), 1);
        QVERIFY(lines[0].startsWith(u"P2,U3,T3,700,"_qs));
    }

    void recordsSurviveARestart()
    {
        QTemporaryDir dir;
        const QString stateFile = dir.filePath(u"sandbox.json"_qs);
        QStringList queued;
        {
            SandboxProcess sandbox(u"u"_qs, u"p"_qs, {u"--state"_qs, stateFile});
            QVERIFY(sandbox.isRunning());
            QVERIFY(client(sandbox, sandbox.url())
                        ->Transmit(u"DXRM|O1|Ann Lee|P2|Elm Court|c|e|e|p|p|1 Elm|Town|ST|1|U3|Flat 3|Town|ST|1\r\n"_qs,
                                   u"DXRM|O1|P2|U3|T3|700|1/2/2020|Rent|T3|Ann|Lee|1 Main|Town|ST|1|activate|\r\n"
                                   "DXRM|O1|P2|U4|T4|0|1/2/2020|Rent|T4|Bo|Ray|2 Main|Town|ST|1|activate|\r\n"_qs));
            QVERIFY(client(sandbox, sandbox.payeeUrl())
                        ->TransmitPayees(u"O1|Owner|Ann Lee|1 Elm|Town|ST|1||||p|p|e|activate\r\n"_qs, QString(), QString()));
            // A tenant with nothing owing gets no payment unless an amount is given.
            queued = sandbox.queueRent();
            QCOMPARE(queued.size(), 1);
            QVERIFY(queued[0].startsWith(u"P2,U3,T3,700,"_qs));
        }
        SandboxProcess again(u"u"_qs, u"p"_qs, {u"--state"_qs, stateFile});
        QVERIFY(again.isRunning());
        const QJsonObject records = again.records();
        QCOMPARE(records.value(u"owners"_qs).toObject().value(u"O1"_qs).toString(), u"Ann Lee"_qs);
        QCOMPARE(records.value(u"units"_qs).toObject().value(u"U3"_qs).toString(), u"Flat 3"_qs);
        QCOMPARE(records.value(u"tenants"_qs).toObject().keys(), (QStringList{u"T3"_qs, u"T4"_qs}));
        QCOMPARE(records.value(u"payees"_qs).toObject().keys(), QStringList{u"O1"_qs});

        auto download = client(again, again.url());
        QVERIFY(download->Transmit(QString(), QString()));
        QCOMPARE(download->ResponseText(), queued[0] + u"\r\n"_qs);
        // Delivered payments are not handed out twice.
        auto second = client(again, again.url());
        QVERIFY(second->Transmit(QString(), QString()));
        QCOMPARE(second->ResponseText(), QString());

        // A deleted tenant gets no further payments.
        QVERIFY(client(again, again.url())
                    ->Transmit(QString(), u"DXRM|O1|P2|U3|T3|700|1/2/2020|Rent|T3|Ann|Lee|1 Main|Town|ST|1|delete|\r\n"_qs));
        QCOMPARE(again.queueRent(u"5"_qs, u"Late Fee"_qs).size(), 1); // T4 only
    }

    void paymentsAboveTheLimitAreRejected()
    {
        SandboxProcess sandbox(u"u"_qs, u"p"_qs, {u"--payment-limit"_qs, u"1000"_qs, u"--limit-code"_qs, u"12"_qs});
        QVERIFY(sandbox.isRunning());
        QVERIFY(client(sandbox, sandbox.payeeUrl())
                    ->TransmitPayees(u"O1|Owner|A|s|c|s|z||||p|p|e|activate\r\n"
                                     "O%1|Owner|B|s|c|s|z||||||activate\r\n"
                                     "V2|Vendor|C|s|c|s|z|||x|p|p|e|deactivate\r\n"_qs,
                                     QString(), QString()));
        auto pay = client(sandbox, sandbox.payeeUrl());
        QVERIFY(pay->TransmitPayees(QString(), u"B1|O1|r|1000\r\nB2|O%1|r|1000.01\r\nB3|V2|r|5\r\nB4|V9|r|5"_qs, QString()));
        QCOMPARE(pay->ResponseText(), u"O1,B1,0,Accepted\r\n"
                                      "O%1,B2,12,Amount exceeds the payment limit\r\n"
                                      "V2,B3,4,Payee is not set up for electronic payment\r\n"
                                      "V9,B4,4,Payee is not set up for electronic payment\r\n"_qs);
    }

    void verbatimLinesAndForcedAnswersQueueUp()
    {
        SandboxProcess sandbox(u"u"_qs, u"p"_qs);
        QVERIFY(sandbox.isRunning());
        sandbox.queueLines({u"P1,U2,T3,10,1/1/2026,1,1/1/2026,ACH,Rent"_qs, u"garbage line"_qs});
        sandbox.forceStatus(403);
        sandbox.forceStatus(200, "forced");
        auto first = client(sandbox, sandbox.url());
        QVERIFY(first->Transmit(QString(), QString()));
        QCOMPARE(first->ResultCode(), 403);
        auto second = client(sandbox, sandbox.url());
        QVERIFY(second->Transmit(QString(), QString()));
        QCOMPARE(second->ResponseText(), u"forced"_qs);
        auto third = client(sandbox, sandbox.url());
        QVERIFY(third->Transmit(QString(), QString()));
        QCOMPARE(third->ResponseText(), u"P1,U2,T3,10,1/1/2026,1,1/1/2026,ACH,Rent\r\ngarbage line\r\n"_qs);

        // Control paths want the credentials too.
        auto intruder = client(sandbox, sandbox.baseUrl() + u"/control/received"_qs);
        intruder->setPassword(u"guess"_qs);
        QVERIFY(intruder->Transmit(QString(), QString()));
        QCOMPARE(intruder->ResultCode(), 401);
        QCOMPARE(intruder->ResponseText(), QString());
        QCOMPARE(sandbox.received().size(), 3);
    }
};

QTEST_MAIN(TestSandbox)
#include "tst_sandbox.moc"
