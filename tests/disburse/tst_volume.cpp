#include "ScriptedProcessorClient.h"
#include "TestSupport.h"

#include "disburse/DistributionFile.h"
#include "disburse/DistributionRun.h"
#include "disburse/ResponseMatcher.h"
#include "hostdb/DisburseList.h"

#include <QElapsedTimer>
#include <QTest>

// A distribution of 5,000 checks with three split lines each, end to end
// through the scripted processor. Prints the time of each stage; asserts
// only the results.
class TestVolume : public QObject
{
    Q_OBJECT

private slots:
    void fiveThousandChecks()
    {
        constexpr int kOwners = 1000;
        constexpr int kChecks = 5000;
        TestSite site;
        HostDb &db = site.db();
        db.execText(
            QStringLiteral(
                "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < %1) "
                "INSERT INTO Owners (OwnerID, OFirstName1, OLastName1, OACH, OCurrBal) "
                "SELECT i, 'First' || i, 'Last' || i, 'Y', 0 FROM n")
                .arg(kOwners),
            "test");
        db.execText(
            u"INSERT INTO Properties (PropID, POwnerID, PCurrBal) SELECT OwnerID, OwnerID, 0 FROM Owners"_qs,
            "test");
        db.execText(
            u"INSERT INTO Tenants (TenantID, TPropID, TCurrBal) SELECT PropID, PropID, 0 FROM Properties"_qs,
            "test");
        db.execText(
            u"INSERT INTO Units (UTenantID, UCurrBal) SELECT TenantID, 0 FROM Tenants"_qs, "test");
        db.execText(
            QStringLiteral(
                "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < %1) "
                "INSERT INTO CheckEntered (CkID, CkPayee, CkDate, CkAmount, CkRemark, CkVendorID, "
                "CkType) "
                "SELECT i, 'First' || (i % %2 + 1) || ' Last' || (i % %2 + 1), '2024-05-01', "
                "i * 1.25, 'Draw ' || i, 0, 'C' FROM n")
                .arg(kChecks)
                .arg(kOwners),
            "test");
        for (const char *code : { "O", "P", "U" }) {
            db.execText(QStringLiteral("INSERT INTO SplitChecks (CkNumber, CkAmount, CkAccountID, "
                                       "CkPostToID, CkType, CkPostTo) SELECT CkID, 10, 4000, "
                                       "CkID % %1 + 1, 'C', '%2' FROM CheckEntered")
                            .arg(kOwners)
                            .arg(QString::fromLatin1(code)),
                "test");
        }

        QElapsedTimer timer;
        timer.start();
        const QList<PaymentRow> rows = DisburseList::load(db, u"Payee"_qs);
        const qint64 listMs = timer.restart();
        QCOMPARE(rows.size(), kChecks);

        DistributionFile::write(db, site.path(u"probe.txt"_qs), rows);
        const qint64 writeMs = timer.restart();

        QString response;
        for (const PaymentRow &r : rows)
            response += u"O"_qs + QString::number(r.payeeId()) + u",B"_qs + QString::number(r.CkID)
                + u",0,\n"_qs;
        timer.restart();
        const ResponseMatcher matcher(response + u"\r\n"_qs);
        int accepted = 0;
        for (const PaymentRow &r : rows)
            accepted += matcher.verdict(r.payeeId(), r.CkID).accepted ? 1 : 0;
        const qint64 matchMs = timer.restart();
        QCOMPARE(accepted, kChecks);

        auto script = std::make_shared<ScriptedProcessorClient::Script>();
        script->replies.append({ true, 200, response });
        site.state->ClientFactory = ScriptedProcessorClient::factory(script);
        bool stop = false;
        timer.restart();
        QVERIFY(DistributionRun(*site.state, stop).MakePaymentsNow(rows, {}));
        const qint64 runMs = timer.elapsed();

        QCOMPARE(site.scalar(u"SELECT count(*) FROM CheckDepPrinted"_qs).toInt(), kChecks);
        QCOMPARE(site.scalar(u"SELECT count(*) FROM SplitPrintedChecks"_qs).toInt(), 3 * kChecks);
        QCOMPARE(site.scalar(u"SELECT count(*) FROM Transactions"_qs).toInt(), 3 * kChecks);
        QCOMPARE(site.scalar(u"SELECT count(*) FROM CheckEntered"_qs).toInt(), 0);
        QCOMPARE(site.scalar(u"SELECT count(*) FROM SplitChecks"_qs).toInt(), 0);
        QCOMPARE(site.scalar(u"SELECT sum(OCurrBal) FROM Owners"_qs).toDouble(), -10.0 * kChecks);

        qInfo("5000 checks x 3 splits: list %lld ms, file %lld ms, matching %lld ms; "
              "whole run (file, call, response file, matching, posting, clean-up) %lld ms",
            listMs, writeMs, matchMs, runMs);
    }
};

QTEST_GUILESS_MAIN(TestVolume)
#include "tst_volume.moc"
