#include "DisburseFixture.h"

#include "disburse/DistributionFile.h"
#include "disburse/DistributionRun.h"
#include "disburse/ResponseMatcher.h"
#include "hostdb/DisburseList.h"

#include <QElapsedTimer>
#include <QTest>

// 5,000 checks to 1,000 owners, three split lines each (owner, property,
// unit), paid end to end through the scripted processor. Prints the time of
// each stage; asserts only the results.
class TestVolume : public QObject
{
    Q_OBJECT

private slots:
    void fiveThousandChecks()
    {
        TestSite site;
        HostDb &db = site.db();
        const QString series
            = u"WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < %1) "_qs;
        db.execText(series.arg(1000)
                + u"INSERT INTO Owners (OwnerID, OFirstName1, OLastName1, OACH, OCurrBal) "
                  "SELECT i, 'First' || i, 'Last' || i, 'Y', 0 FROM n"_qs,
            "test");
        db.execText(
            u"INSERT INTO Properties (PropID, POwnerID, PCurrBal) SELECT OwnerID, OwnerID, 0 FROM Owners"_qs,
            "test");
        db.execText(
            u"INSERT INTO Tenants (TenantID, TPropID, TCurrBal) SELECT PropID, PropID, 0 FROM Properties"_qs,
            "test");
        db.execText(
            u"INSERT INTO Units (UTenantID, UCurrBal) SELECT TenantID, 0 FROM Tenants"_qs, "test");
        db.execText(series.arg(5000)
                + u"INSERT INTO CheckEntered (CkPayee, CkDate, CkAmount, CkRemark, "
                  "CkVendorID, CkType) SELECT 'First' || (i % 1000 + 1) || ' Last' || "
                  "(i % 1000 + 1), '2024-05-01', i * 1.25, 'Draw ' || i, 0, 'C' FROM n"_qs,
            "test");
        db.execText(u"INSERT INTO SplitChecks (CkNumber, CkAmount, CkAccountID, CkPostToID, "
                    "CkType, CkPostTo) SELECT CkID, 10, 4000, CkID % 1000 + 1, 'C', code "
                    "FROM CheckEntered, "
                    "(SELECT 'O' AS code UNION ALL SELECT 'P' UNION ALL SELECT 'U')"_qs,
            "test");

        QElapsedTimer timer;
        timer.start();
        const QList<PaymentRow> rows = DisburseList::load(db, u"Payee"_qs);
        const qint64 listMs = timer.restart();
        DistributionFile::write(db, site.path(u"probe.txt"_qs), rows);
        const qint64 writeMs = timer.restart();
        QString response;
        for (const PaymentRow &r : rows)
            response += u"O%1,B%2,0,\n"_qs.arg(r.payeeId()).arg(r.CkID);
        timer.restart();
        const ResponseMatcher matcher(response + u"\r\n"_qs);
        int accepted = 0;
        for (const PaymentRow &r : rows)
            accepted += matcher.verdict(r.payeeId(), r.CkID).accepted ? 1 : 0;
        const qint64 matchMs = timer.restart();
        QCOMPARE(accepted, 5000);

        DisburseFixture::answering(site, 200, response);
        bool stop = false;
        timer.restart();
        QVERIFY(DistributionRun(*site.state, stop).MakePaymentsNow(rows, {}));
        const qint64 runMs = timer.elapsed();
        QCOMPARE(
            DisburseFixture::dump(site,
                u"SELECT (SELECT count(*) FROM CheckDepPrinted), "
                "(SELECT count(*) FROM SplitPrintedChecks), (SELECT count(*) FROM Transactions), "
                "(SELECT count(*) FROM CheckEntered), (SELECT count(*) FROM SplitChecks), "
                "(SELECT sum(OCurrBal) FROM Owners)"_qs),
            u"5000|15000|15000|0|0|-50000"_qs);
        qInfo("5000 checks x 3 splits: list %lld ms, file %lld ms, matching %lld ms; whole run "
              "(file, "
              "call, response file, matching, posting, clean-up) %lld ms",
            listMs, writeMs, matchMs, runMs);
    }
};

QTEST_GUILESS_MAIN(TestVolume)
#include "tst_volume.moc"
