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
// error statuses, no answer in time, a refused connection, a body cut short,
// a very large body and a body of binary bytes.
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
        state.clientFactory = [&state] {
            return std::make_unique<HttpProcessorClient>(state.processorTimeoutSeconds);
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

    void failedCalls_data()
    {
        QTest::addColumn<bool>("rent");
        QTest::addColumn<QString>("fault"); // a status code, or how no answer came
        for (const bool rent : { true, false })
            for (const char *fault : { "401", "403", "404", "501", "503", "302", "500", "204",
                     "delay", "refused", "truncated", "drop" })
                QTest::addRow("%s %s", rent ? "rent download" : "distribution", fault)
                    << rent << QString::fromLatin1(fault);
    }
    // An error status with an empty body, or no answer: a delay past the
    // time-out, a refused connection, a body cut short, a dropped
    // connection (each the "unavailable" report, 501). Sent once, reported,
    // nothing posted or removed; the rent download then says none were
    // found and writes no file; a distribution keeps the file it sent and
    // its archived copy, and has no response file.
    void failedCalls()
    {
        QFETCH(bool, rent);
        QFETCH(QString, fault);
        bool isStatus = false;
        const int status = fault.toInt(&isStatus);
        TestSite site;
        if (rent)
            RentSupport::seedPortfolio(site);
        else
            DisburseFixture::populate(site);
        pointAtSandbox(site);
        site.state->processorTimeoutSeconds = 1;
        if (rent && !isStatus && fault != u"refused"_qs)
            sandbox->queueLines({ RentSupport::line(10, 100, u"100.00"_qs) });
        if (isStatus) {
            sandbox->forceStatus(status, rent ? "" : "O1,B1,0,Accepted\r\n");
        } else if (fault == u"delay"_qs) {
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
            site.state->login.url = u"http://127.0.0.1:%1/qps/upload.php"_qs.arg(port);
        }
        const QString message = ProductTexts::forStatus(isStatus ? status : 501);
        const QString before = ledgerSummary(site.db());
        QElapsedTimer timer;
        timer.start();
        if (rent) {
            downloadPaymentFile(*site.state);
            QCOMPARE(site.prompter.texts(), QStringList({ message, ProductTexts::noneFound }));
            QCOMPARE(filesOf(site), QStringList({ u"IDFILE.DAT"_qs }));
        } else {
            const QList<PaymentRow> rows = DisburseList::load(site.db(), u"Payee"_qs);
            bool stop = false;
            bool emptied = false;
            QVERIFY(
                !DistributionRun(*site.state, stop).makePaymentsNow(rows, [&] { emptied = true; }));
            QVERIFY(!emptied);
            QCOMPARE(site.prompter.texts(), QStringList({ message }));
            QCOMPARE(filesOf(site),
                QStringList({ site.state->files.disbursementUpload, u"archive"_qs }));
        }
        QVERIFY2(timer.elapsed() < 10000, "the time-out was not kept");
        QCOMPARE(site.prompter.titles().first(), u"Remitra error"_qs);
        QCOMPARE(site.state->lastResult.code, qint16(isStatus ? status : 501));
        QVERIFY(isStatus || site.state->lastResult.text == u"False"_qs);
        QCOMPARE(ledgerSummary(site.db()), before);
        QCOMPARE(site.prompter.busyDepth(), 0);
        if (fault != u"refused"_qs)
            QCOMPARE(sandbox->requestCount(), 1);
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
        downloadPaymentFile(*site.state);
        if (!taken) {
            QCOMPARE(site.state->lastResult.code, qint16(501));
            QCOMPARE(site.prompter.texts().last(), ProductTexts::noneFound);
            QCOMPARE(filesOf(site), QStringList({ u"IDFILE.DAT"_qs }));
            return;
        }
        QCOMPARE(site.prompter.texts(), QStringList({ ProductTexts::success }));
        const QByteArray written = site.fileBytes(site.state->files.paymentDownload);
        QCOMPARE(written.size(), body.size() + 2);
        QVERIFY(written == body + "\r\n");
        const QStringList archive = QDir(site.path(u"archive"_qs)).entryList(QDir::Files);
        QCOMPARE(archive.size(), 1);
        QVERIFY(site.fileBytes(u"archive/"_qs + archive.first()) == written);
        QCOMPARE(filesOf(site),
            QStringList({ site.state->files.paymentDownload, u"IDFILE.DAT"_qs, u"archive"_qs }));
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
        downloadPaymentFile(*site.state);
        QCOMPARE(site.prompter.texts(), QStringList({ ProductTexts::success }));
        QCOMPARE(site.fileBytes(site.state->files.paymentDownload), body + "\r\n");
        QCOMPARE(ledgerSummary(site.db()), u"0|0|0|0|0|0|0|0"_qs);
    }
};

QTEST_MAIN(TestFaults)
#include "tst_faults.moc"
