#include "DisburseFixture.h"
#include "RentSupport.h"
#include "SandboxProcess.h"

#include "disburse/DistributionFile.h"
#include "disburse/DistributionRun.h"
#include "hostdb/DisburseList.h"
#include "processor/HttpProcessorClient.h"
#include "processor/RentDownload.h"

#include <QDir>
#include <QTcpServer>
#include <QTest>

// A failing processor, end to end through the HTTP client and the sandbox:
// every status code of the result table, no answer in time, a refused
// connection, a body cut short, a very large body and a body of binary bytes.
// For each: the message the user sees, the files left in the program's
// folder, and the ledgers and entered checks, which only an accepted answer
// may change.
class TestFaults : public QObject
{
    Q_OBJECT

    std::unique_ptr<SandboxProcess> sandbox;

    // The program's client, with the time-out the program is given.
    static void useProgramClient(ProgramState &state)
    {
        state.ClientFactory = [&state] {
            return std::make_unique<HttpProcessorClient>(state.ProcessorTimeoutSeconds);
        };
    }

    void pointAtSandbox(TestSite &site)
    {
        sandbox->useFor(*site.state);
        useProgramClient(*site.state);
    }

    // Files of the folder, recursively, apart from the database and its journal.
    static QStringList filesOf(const TestSite &site)
    {
        QStringList out;
        QDir dir(site.folder());
        for (const QString &name : dir.entryList(
                 QDir::Files | QDir::Hidden | QDir::System | QDir::Dirs | QDir::NoDotAndDotDot)) {
            if (!name.startsWith(u"dxdatafl"_qs) && !name.startsWith(u"remitra.db"_qs))
                out << name;
        }
        out.sort();
        return out;
    }

private slots:
    void initTestCase()
    {
        sandbox = std::make_unique<SandboxProcess>();
        QVERIFY(sandbox->isRunning());
    }
    void init() { sandbox->clearReceived(); }
    void cleanupTestCase() { sandbox.reset(); }

    void rentDownloadOnEachStatus_data()
    {
        QTest::addColumn<int>("status");
        for (const int status : { 401, 403, 404, 501, 503, 302, 500, 204 })
            QTest::newRow(qPrintable(QString::number(status))) << status;
    }

    // An error with an empty body: the error, then "none found"; no file.
    void rentDownloadOnEachStatus()
    {
        QFETCH(int, status);
        TestSite site;
        RentSupport::seedPortfolio(site);
        pointAtSandbox(site);
        const QString before = ledgerSummary(site.db());
        sandbox->forceStatus(status);
        DownloadPaymentFile(*site.state);
        QCOMPARE(site.state->ResultCode, qint16(status));
        QCOMPARE(site.prompter.texts(),
            QStringList({ ProductTexts::forStatus(status), ProductTexts::noneFound }));
        QCOMPARE(site.prompter.titles().first(), u"Remitra error"_qs);
        QCOMPARE(filesOf(site), QStringList({ u"IDFILE.DAT"_qs }));
        QCOMPARE(ledgerSummary(site.db()), before);
        QCOMPARE(site.prompter.busyDepth(), 0);
    }

    // A distribution answered with anything but 200: reported, nothing posted,
    // no entered check removed, the distribution file kept as written and no
    // response file.
    void distributionOnEachStatus_data() { rentDownloadOnEachStatus_data(); }
    void distributionOnEachStatus()
    {
        QFETCH(int, status);
        TestSite site;
        DisburseFixture::populate(site);
        pointAtSandbox(site);
        const QList<PaymentRow> rows = DisburseList::load(site.db(), u"Payee"_qs);
        QVERIFY(!rows.isEmpty());
        const QString before = ledgerSummary(site.db());
        sandbox->forceStatus(status, "O1,B1,0,Accepted\r\n");
        bool stop = false;
        bool emptied = false;
        QVERIFY(!DistributionRun(*site.state, stop).MakePaymentsNow(rows, [&] { emptied = true; }));
        QVERIFY(!emptied);
        QCOMPARE(site.prompter.texts(), QStringList({ ProductTexts::forStatus(status) }));
        QCOMPARE(ledgerSummary(site.db()), before);
        // The archive holds the copy of the file sent.
        QCOMPARE(filesOf(site), QStringList({ site.state->DisbursementUploadName, u"archive"_qs }));
        QCOMPARE(sandbox->requestCount(u"/qps/evendorpay.php"_qs), 1);
    }

    // No answer: a delay past the time-out, a refused connection, a body cut
    // short. Each is the "unavailable" report (501), sent once, and leaves
    // nothing behind.
    void noAnswer_data()
    {
        QTest::addColumn<QString>("fault");
        QTest::newRow("delay past the time-out") << u"delay"_qs;
        QTest::newRow("refused connection") << u"refused"_qs;
        QTest::newRow("truncated body") << u"truncated"_qs;
        QTest::newRow("dropped connection") << u"drop"_qs;
    }
    void noAnswer()
    {
        QFETCH(QString, fault);
        const QString unavailable = ProductTexts::forStatus(501);
        for (const bool rent : { true, false }) {
            TestSite site;
            if (rent) {
                RentSupport::seedPortfolio(site);
                if (fault != u"refused"_qs)
                    sandbox->queueLines({ RentSupport::line(10, 100, u"100.00"_qs) });
            } else {
                DisburseFixture::populate(site);
            }
            pointAtSandbox(site);
            site.state->ProcessorTimeoutSeconds = 1;
            sandbox->clearReceived();
            if (fault == u"delay"_qs) {
                sandbox->forceDelay(3000);
            } else if (fault == u"truncated"_qs) {
                sandbox->forceTruncatedBody();
            } else if (fault == u"drop"_qs) {
                sandbox->forceDrop();
            } else {
                QTcpServer closed;
                QVERIFY(closed.listen(QHostAddress::LocalHost));
                const quint16 port = closed.serverPort();
                closed.close();
                site.state->ProcessorUrl = u"http://127.0.0.1:%1/qps/upload.php"_qs.arg(port);
            }
            const QString before = ledgerSummary(site.db());
            QElapsedTimer timer;
            timer.start();
            if (rent) {
                DownloadPaymentFile(*site.state);
                QCOMPARE(
                    site.prompter.texts(), QStringList({ unavailable, ProductTexts::noneFound }));
                QCOMPARE(filesOf(site), QStringList({ u"IDFILE.DAT"_qs }));
            } else {
                const QList<PaymentRow> rows = DisburseList::load(site.db(), u"Payee"_qs);
                bool stop = false;
                QVERIFY(!DistributionRun(*site.state, stop).MakePaymentsNow(rows, {}));
                QCOMPARE(site.prompter.texts(), QStringList({ unavailable }));
                // The archive holds the copy of the file sent.
                QCOMPARE(filesOf(site),
                    QStringList({ site.state->DisbursementUploadName, u"archive"_qs }));
            }
            QVERIFY2(timer.elapsed() < 10000, "the time-out was not kept");
            QCOMPARE(site.state->ResultCode, qint16(501));
            QCOMPARE(site.state->ResultText, u"False"_qs);
            QCOMPARE(ledgerSummary(site.db()), before);
            if (fault != u"refused"_qs)
                QCOMPARE(sandbox->requestCount(), 1);
        }
        sandbox->clearReceived();
    }

    // 50 MB of payments arrive whole: the payment file is the body and its
    // line end, written in one piece, and the archive copy matches it. An
    // answer above the 64 MB cap counts as none: nothing is written.
    void aLargeResponse_data()
    {
        QTest::addColumn<int>("megabytes");
        QTest::addColumn<bool>("taken");
        QTest::newRow("50 MB") << 50 << true;
        QTest::newRow("65 MB") << 65 << false;
    }
    void aLargeResponse()
    {
        QFETCH(int, megabytes);
        QFETCH(bool, taken);
        TestSite site;
        RentSupport::seedPortfolio(site);
        pointAtSandbox(site);
        const QByteArray line = RentSupport::line(10, 100, u"12.50"_qs).toLatin1() + "\r\n";
        QByteArray body;
        body.reserve(qsizetype(megabytes) * 1024 * 1024 + line.size());
        while (body.size() < qsizetype(megabytes) * 1024 * 1024)
            body += line;
        sandbox->forceStatus(200, body);
        DownloadPaymentFile(*site.state);
        if (!taken) {
            QCOMPARE(site.state->ResultCode, qint16(501));
            QCOMPARE(site.prompter.texts().last(), ProductTexts::noneFound);
            QCOMPARE(filesOf(site), QStringList({ u"IDFILE.DAT"_qs }));
            return;
        }
        QCOMPARE(site.prompter.texts(), QStringList({ ProductTexts::success }));
        const QByteArray written = site.fileBytes(site.state->PaymentDownloadName);
        QCOMPARE(written.size(), body.size() + 2);
        QVERIFY(written == body + "\r\n");
        const QStringList archive = QDir(site.path(u"archive"_qs)).entryList(QDir::Files);
        QCOMPARE(archive.size(), 1);
        QVERIFY(site.fileBytes(u"archive/"_qs + archive.first()) == written);
        QCOMPARE(filesOf(site),
            QStringList({ site.state->PaymentDownloadName, u"IDFILE.DAT"_qs, u"archive"_qs }));
    }

    // Every byte value: the payment file holds the body as sent (Windows-1252
    // text both ways), and the review reads it without posting anything.
    void aBinaryResponse()
    {
        TestSite site;
        RentSupport::seedPortfolio(site);
        pointAtSandbox(site);
        QByteArray body;
        for (int i = 0; i < 4; ++i)
            for (int b = 0; b < 256; ++b)
                body += char(b);
        sandbox->forceStatus(200, body);
        DownloadPaymentFile(*site.state);
        QCOMPARE(site.prompter.texts(), QStringList({ ProductTexts::success }));
        QCOMPARE(site.fileBytes(site.state->PaymentDownloadName), body + "\r\n");
        QCOMPARE(ledgerSummary(site.db()), u"0|0|0|0|0|0|0|0"_qs);
    }
};

QTEST_MAIN(TestFaults)
#include "tst_faults.moc"
