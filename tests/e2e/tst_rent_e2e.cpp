// A whole rent cycle against a quenta-sandbox: the processor holds payments,
// start-up downloads them, the review screen posts them into the ledgers.

#include "RentSupport.h"
#include "SandboxProcess.h"

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
#include <QRadioButton>
#include <QTableView>
#include <QTest>

class TestRentE2e : public QObject
{
    Q_OBJECT

private slots:
    void downloadReviewAndPost()
    {
        SandboxProcess sandbox;
        QVERIFY(sandbox.isRunning());
        TestSite site;
        RentSupport::seedPortfolio(site);
        sandbox.useFor(*site.state, 10);

        // The processor knows three enrolled tenants of the portfolio and one
        // that was switched off.
        HttpProcessorClient client;
        client.setUrl(sandbox.url());
        client.setUserName(sandbox.user());
        client.setPassword(sandbox.password());
        QVERIFY(client.Transmit(QString(),
            u"DXRM|O1|P10|U100|T100|1250|1/2/2020|Rent|T100|Ann|Avery|1 "
            u"Main|Town|ST|1|activate|\r\n"
            "DXRM|O1|P10|U101|T101|640.25|1/2/2020|Rent|T101||Baker|1 Main|Town|ST|1|activate|\r\n"
            "DXRM|O2|P20|U200|T200|800|1/2/2020|Rent|T200|Carl|Cole|2 Oak|Town|ST|1|activate|\r\n"
            "DXRM|O3|P30|U300|T300|99|1/2/2020|Rent|T300||Dunn|3 Elm|Town|ST|1|deactivate|\r\n"_qs));
        QCOMPARE(client.ResultCode(), 200);
        QCOMPARE(sandbox.queueRent(QString(), u"Rent"_qs, u"11/2/2026"_qs).size(), 3);
        QCOMPARE(sandbox.queueRent(u"15"_qs, u"Late Fee"_qs, u"11/3/2026"_qs).size(), 3);

        // Start-up fetches them.
        CheckForPaymentFile(*site.state);
        QCOMPARE(site.prompter.titles(), QStringList { u"Dwellix Remitra"_qs });
        const QByteArray downloaded = site.fileBytes(site.state->PaymentDownloadName);
        QVERIFY(!downloaded.isNull());
        site.prompter.clear();

        RentReviewDialog screen(*site.state, nullptr);
        screen.show();
        QCOMPARE(screen.rowCount(), 6);
        QCOMPARE(screen.findChild<QLabel *>(u"labTransTotal"_qs)->text(), u"$2,735.25"_qs);
        QTest::mouseClick(screen.findChild<QCheckBox *>(u"chkPostMgmtFees"_qs), Qt::LeftButton);
        screen.findChild<QLineEdit *>(u"txtCreateDeposit"_qs)->setText(u"3001"_qs);
        QTest::mouseClick(screen.findChild<QRadioButton *>(u"optRemark2"_qs), Qt::LeftButton);
        QTest::keyClicks(screen.findChild<QLineEdit *>(u"txtRemark"_qs), u"Remitra November"_qs);
        QTest::mouseClick(screen.findChild<QPushButton *>(u"cmdUpdate"_qs), Qt::LeftButton);
        QCOMPARE(
            site.prompter.texts(), QStringList { u"Your Dwellix Ledgers are now updated."_qs });
        QVERIFY(screen.posted() && !screen.isVisible());
        QCOMPARE(screen.result(), int(QDialog::Accepted));

        // Ledgers: rent raises tenant and unit ("B"), late fees the tenant
        // only ("T"); the fees (8% for owner 1, flat 25 for owner 2) lower
        // the units. Tenant 300 was not enrolled.
        QCOMPARE(site.scalar(u"SELECT group_concat(b, ' ') FROM (SELECT TCurrBal || '/' || "
                             "UCurrBal AS b FROM Tenants JOIN Units ON UTenantID = TenantID "
                             "ORDER BY TenantID)"_qs)
                     .toString(),
            u"1265.0/1150.0 655.25/589.03 815.0/775.0 0.0/0.0"_qs);
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
        QVERIFY(site.fileBytes(site.state->PaymentDownloadName).isNull());
        QCOMPARE(site.fileBytes(PaymentFile::LastDownloadName), downloaded);
        QCOMPARE(QDir(site.path(u"backups"_qs)).entryList(QDir::Files).size(), 1);

        // History shows both runs; the posting is reversed from there, its
        // payments come back for review and are posted again as before.
        const QString balances = site.scalar(u"SELECT group_concat(TCurrBal || '/' || UCurrBal, "
                                             "' ') FROM Tenants JOIN Units ON UTenantID = "
                                             "TenantID"_qs)
                                     .toString();
        HistoryWindow history(*site.state);
        auto *runs = history.findChild<QTableView *>(u"gridRuns"_qs);
        QCOMPARE(runs->model()->index(0, 2).data().toString(), u"Rent posting"_qs);
        QCOMPARE(runs->model()->index(1, 2).data().toString(), u"Rent download"_qs);
        QCOMPARE(runs->model()->index(1, 3).data().toString(), u"6"_qs);
        site.prompter.clear();
        site.prompter.queueAnswer(Prompter::Answer::Yes);
        QTest::mouseClick(history.findChild<QPushButton *>(u"cmdReverse"_qs), Qt::LeftButton);
        QCOMPARE(history.currentRun()->result.state, Journal::Reversed);
        QCOMPARE(runs->model()->index(0, 2).data().toString(), u"Reversal of a rent posting"_qs);
        // Reversed once only; its file is waiting again, nothing to put back.
        QVERIFY(!history.findChild<QPushButton *>(u"cmdReverse"_qs)->isEnabled());
        QVERIFY(!history.findChild<QPushButton *>(u"cmdPutBack"_qs)->isEnabled());
        QCOMPARE(site.scalar(u"SELECT count(*) FROM Transactions"_qs).toInt(), 0);
        QCOMPARE(site.fileBytes(site.state->PaymentDownloadName), downloaded);

        RentReviewDialog again(*site.state, nullptr);
        QCOMPARE(again.rowCount(), 6);
        again.findChild<QCheckBox *>(u"chkPostMgmtFees"_qs)->setChecked(true);
        again.findChild<QLineEdit *>(u"txtCreateDeposit"_qs)->setText(u"3002"_qs);
        site.prompter.clear();
        QTest::mouseClick(again.findChild<QPushButton *>(u"cmdUpdate"_qs), Qt::LeftButton);
        QCOMPARE(
            site.prompter.texts(), QStringList { u"Your Dwellix Ledgers are now updated."_qs });
        QCOMPARE(site.scalar(u"SELECT group_concat(TCurrBal || '/' || UCurrBal, ' ') FROM "
                             "Tenants JOIN Units ON UTenantID = TenantID"_qs)
                     .toString(),
            balances);
    }
};

QTEST_MAIN(TestRentE2e)
#include "tst_rent_e2e.moc"
