// The rent cycle against a quenta-sandbox: the processor holds payments, the
// download at start-up or from the menu stores them, the review screen posts
// them into the ledgers, and History reverses the posting.

#include "RentSupport.h"
#include "SandboxProcess.h"

#include "core/RuntimeError.h"
#include "history/HistoryWindow.h"
#include "hostdb/Journal.h"
#include "processor/HttpProcessorClient.h"
#include "processor/RentDownload.h"
#include "rent/PaymentFile.h"
#include "rent/RentReviewDialog.h"

#include <QCheckBox>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <QTest>

class TestRentE2e : public QObject
{
    Q_OBJECT

    std::unique_ptr<SandboxProcess> sandbox;

    std::unique_ptr<TestSite> newSite(int timeoutSeconds = 10)
    {
        auto s = std::make_unique<TestSite>();
        RentSupport::seedPortfolio(*s);
        sandbox->useFor(*s->state, timeoutSeconds);
        return s;
    }
    QStringList archive(const TestSite &s) const
    {
        return QDir(s.path(u"archive"_qs)).entryList(QDir::Files);
    }

private slots:
    // The processor knows three enrolled tenants of the portfolio and one
    // that was switched off.
    void initTestCase()
    {
        sandbox = std::make_unique<SandboxProcess>();
        QVERIFY(sandbox->isRunning());
        HttpProcessorClient client;
        client.setUrl(sandbox->url());
        client.setUserName(sandbox->user());
        client.setPassword(sandbox->password());
        QVERIFY(client.transmit(QString(),
            u"DXRM|O1|P10|U100|T100|1250|1/2/2020|Rent|T100|Ann|Avery|1 "
            u"Main|Town|ST|1|activate|\r\n"
            "DXRM|O1|P10|U101|T101|640.25|1/2/2020|Rent|T101||Baker|1 Main|Town|ST|1|activate|\r\n"
            "DXRM|O2|P20|U200|T200|800|1/2/2020|Rent|T200|Carl|Cole|2 Oak|Town|ST|1|activate|\r\n"
            "DXRM|O3|P30|U300|T300|99|1/2/2020|Rent|T300||Dunn|3 Elm|Town|ST|1|deactivate|\r\n"_qs));
        QCOMPARE(client.resultCode(), 200);
    }
    void init() { sandbox->clearReceived(); }
    void cleanupTestCase() { sandbox.reset(); }

    // Without a login, or while a payment file waits, the processor is asked
    // nothing: it hands payments over only once, and one file at a time.
    void downloadAtStartAndFromTheMenu()
    {
        auto s = newSite(2);
        s->state->login.missing = true;
        checkForPaymentFile(*s->state);
        downloadPaymentFile(*s->state);
        QCOMPARE(s->prompter.titles(), QStringList(2, u"Login Message"_qs));
        s->state->login.missing = false;
        s->prompter.clear();

        const QStringList lines = sandbox->queueRent(QString(), u"Rent"_qs, u"3/1/2026"_qs);
        QCOMPARE(lines.size(), 3);
        s->state->account.idItems = {};
        checkForPaymentFile(*s->state);
        QCOMPARE(s->prompter.texts(), QStringList { ProductTexts::success });
        QCOMPARE(
            s->state->account.idItems[5], u"Late fee;2"_qs); // the account settings are read first
        // The processor's text, then the line end the download adds.
        const QByteArray expected = (lines.join(u"\r\n"_qs) + u"\r\n\r\n"_qs).toLatin1();
        const QString file = s->state->files.paymentDownload;
        QCOMPARE(s->fileBytes(file), expected);
        QCOMPARE(archive(*s).size(), 1);
        QCOMPARE(s->fileBytes(u"archive/"_qs + archive(*s).first()), expected);

        s->prompter.clear();
        sandbox->queueRent(u"25"_qs, u"Late Fee"_qs);
        checkForPaymentFile(*s->state);
        downloadPaymentFile(*s->state);
        QCOMPARE(s->prompter.titles(), QStringList(2, u"Remitra Notice"_qs));
        QVERIFY(s->prompter.texts()[1].contains(u"from a previous download"_qs));
        QCOMPARE(sandbox->requestCount(), 1);
        QCOMPARE(s->fileBytes(file), expected);

        // Once it is dealt with, the menu fetches the late fees.
        QFile::remove(s->path(file));
        s->prompter.clear();
        downloadPaymentFile(*s->state);
        QCOMPARE(s->prompter.texts(), QStringList { ProductTexts::success });
        const QByteArray fees = s->fileBytes(file);
        QCOMPARE(fees.count("\r\n"), 4);
        QVERIFY(fees.startsWith("P10,U100,T100,25,"));
        QVERIFY(fees.contains(",ACH,Late Fee\r\n"));
        QCOMPARE(archive(*s).size(), 2);
    }

    void callsThatBringNoPayments_data()
    {
        QTest::addColumn<QString>("how");
        QTest::addColumn<QStringList>("notices");
        QTest::addColumn<QByteArray>("file");
        QTest::newRow("nothing waiting")
            << QString() << QStringList { ProductTexts::success, ProductTexts::noneFound }
            << QByteArray();
        QTest::newRow("lost answer")
            << u"drop"_qs << QStringList { ProductTexts::forStatus(501), ProductTexts::noneFound }
            << QByteArray();
        // A failed call with a body still writes it.
        QTest::newRow("503 with a body")
            << u"503"_qs << QStringList { ProductTexts::forStatus(503) }
            << QByteArray("P9,U9,T9,1,1/1/2026,1,1/1/2026,ACH,Rent\r\n");
    }
    void callsThatBringNoPayments()
    {
        QFETCH(QString, how);
        QFETCH(QByteArray, file);
        auto s = newSite(2);
        if (how == u"drop"_qs)
            sandbox->forceDrop();
        else if (how == u"503"_qs)
            sandbox->forceStatus(503, "P9,U9,T9,1,1/1/2026,1,1/1/2026,ACH,Rent");
        downloadPaymentFile(*s->state);
        QTEST(s->prompter.texts(), "notices");
        QCOMPARE(s->fileBytes(s->state->files.paymentDownload), file);
        QCOMPARE(s->fileBytes(s->state->files.paymentDownload).isNull(), file.isNull());
        QCOMPARE(sandbox->requestCount(u"/qps/upload.php"_qs), 1);
    }

    // The archive copy is written before the payment file: a payment file
    // that cannot be written (its name is taken by a folder) leaves the
    // download in the archive, and an archive that cannot be written does
    // not cost the payment file.
    void theArchiveIsWrittenBeforeThePaymentFile()
    {
        const QString line = RentSupport::line(10, 100, u"1"_qs);
        auto s = newSite();
        QVERIFY(QDir(s->folder()).mkdir(s->state->files.paymentDownload));
        sandbox->queueLines({ line });
        QVERIFY_THROWS_EXCEPTION(RuntimeError, downloadPaymentFile(*s->state));
        QCOMPARE(archive(*s).size(), 1);

        auto blocked = newSite();
        blocked->writeFile(u"archive"_qs, "not a folder");
        sandbox->queueLines({ line });
        QVERIFY_THROWS_EXCEPTION(RuntimeError, downloadPaymentFile(*blocked->state));
        QVERIFY(
            blocked->fileBytes(blocked->state->files.paymentDownload).startsWith(line.toLatin1()));
    }

    void downloadReviewPostAndReverse()
    {
        auto s = newSite();
        TestSite &site = *s;
        QCOMPARE(sandbox->queueRent(QString(), u"Rent"_qs, u"11/2/2026"_qs).size(), 3);
        QCOMPARE(sandbox->queueRent(u"15"_qs, u"Late Fee"_qs, u"11/3/2026"_qs).size(), 3);
        checkForPaymentFile(*site.state);
        QCOMPARE(site.prompter.titles(), QStringList { u"Dwellix Remitra"_qs });
        const QByteArray downloaded = site.fileBytes(site.state->files.paymentDownload);
        QVERIFY(!downloaded.isNull());
        site.prompter.clear();

        RentReviewDialog screen(*site.state, nullptr);
        screen.show();
        QCOMPARE(screen.rowCount(), 6);
        QCOMPARE(child<QLabel>(screen, "labTransTotal")->text(), u"$2,735.25"_qs);
        click(screen, "chkPostMgmtFees");
        child<QLineEdit>(screen, "txtCreateDeposit")->setText(u"3001"_qs);
        click(screen, "optRemark2");
        QTest::keyClicks(child<QLineEdit>(screen, "txtRemark"), u"Remitra November"_qs);
        click(screen, "cmdUpdate");
        QCOMPARE(site.prompter.texts(), QStringList { ProductTexts::ledgersUpdated });
        QVERIFY(screen.posted() && !screen.isVisible());
        QCOMPARE(screen.result(), int(QDialog::Accepted));

        // Ledgers: rent raises tenant and unit ("B"), late fees the tenant
        // only ("T"); the fees (8% for owner 1, flat 25 for owner 2) lower
        // the units. Tenant 300 was not enrolled.
        const QString balancesSql
            = u"SELECT group_concat(b, ' ') FROM (SELECT TCurrBal || '/' || UCurrBal AS b "
              "FROM Tenants JOIN Units ON UTenantID = TenantID ORDER BY TenantID)"_qs;
        const QString balances = site.scalar(balancesSql).toString();
        QCOMPARE(balances, u"1265.0/1150.0 655.25/589.03 815.0/775.0 0.0/0.0"_qs);
        // Six payments carry the typed remark; the three fees their own.
        QCOMPARE(site.scalar(u"SELECT group_concat(n) FROM (SELECT count(*) AS n FROM "
                             "Transactions GROUP BY TransRemark = 'Remitra November')"_qs)
                     .toString(),
            u"3,6"_qs);
        QCOMPARE(site.scalar(u"SELECT CkAmount FROM CheckDepPrinted WHERE CkNumber = 3001"_qs)
                     .toDouble(),
            2735.25);

        // The payment file is now the last download, and the ledgers were
        // backed up before the posting.
        QVERIFY(site.fileBytes(site.state->files.paymentDownload).isNull());
        QCOMPARE(site.fileBytes(PaymentFile::LastDownloadName), downloaded);
        QCOMPARE(QDir(site.path(u"backups"_qs)).entryList(QDir::Files).size(), 1);

        // History shows both runs; the posting is reversed from there, its
        // payments come back for review and are posted again as before.
        HistoryWindow history(*site.state);
        auto *runs = child<QTableView>(history, "gridRuns");
        QCOMPARE(runs->model()->index(0, 2).data().toString(), u"Rent posting"_qs);
        QCOMPARE(runs->model()->index(1, 2).data().toString(), u"Rent download"_qs);
        QCOMPARE(runs->model()->index(1, 3).data().toString(), u"6"_qs);
        site.prompter.clear();
        site.prompter.queueAnswer(Prompter::Answer::Yes);
        click(history, "cmdReverse");
        QCOMPARE(history.currentRun()->result.state, Journal::Reversed);
        QCOMPARE(runs->model()->index(0, 2).data().toString(), u"Reversal of a rent posting"_qs);
        // Reversed once only; its file is waiting again, nothing to put back.
        QVERIFY(!child<QPushButton>(history, "cmdReverse")->isEnabled());
        QVERIFY(!child<QPushButton>(history, "cmdPutBack")->isEnabled());
        QCOMPARE(site.scalar(u"SELECT count(*) FROM Transactions"_qs).toInt(), 0);
        QCOMPARE(site.fileBytes(site.state->files.paymentDownload), downloaded);

        RentReviewDialog again(*site.state, nullptr);
        QCOMPARE(again.rowCount(), 6);
        child<QCheckBox>(again, "chkPostMgmtFees")->setChecked(true);
        child<QLineEdit>(again, "txtCreateDeposit")->setText(u"3002"_qs);
        site.prompter.clear();
        click(again, "cmdUpdate");
        QCOMPARE(site.prompter.texts(), QStringList { ProductTexts::ledgersUpdated });
        QCOMPARE(site.scalar(balancesSql).toString(), balances);
    }
};

QTEST_MAIN(TestRentE2e)
#include "tst_rent_e2e.moc"
