#include "DisburseFixture.h"

#include "core/VbText.h"
#include "disburse/DistributionFile.h"
#include "disburse/DistributionRun.h"
#include "disburse/ResponseMatcher.h"

#include <QFile>
#include <QTest>

using namespace DisburseFixture;

namespace {
const QString kDistribution = u"DX_Quenta_DisbursementPayment.txt"_qs;
} // namespace

class TestDistribution : public QObject
{
    Q_OBJECT

private slots:
    // "%" for the owner's second pair (also when both pairs are one name),
    // the vendor id for vendors, trimmed unescaped remarks, plain absolute
    // amounts.
    void distributionFileBytes()
    {
        TestSite site;
        populate(site);
        DistributionFile::write(site.db(), site.path(u"out.txt"_qs),
            rowsFor(site, { { 11, -6 }, { 1, -1 }, { 2, -1 }, { 2, 10 }, { 3, 8 }, { 8, -4 } }));
        QFile golden(testData(u"disburse/distribution.txt"_qs));
        QVERIFY(golden.open(QIODevice::ReadOnly));
        QCOMPARE(site.fileBytes(u"out.txt"_qs), golden.readAll());
    }

    void responseMatching_data()
    {
        QTest::addColumn<QString>("received");
        QTest::addColumn<QString>("expected"); // "accepted", or payee field + " / " + reason
        const QString general = u"O%17 / Reason for Rejection: (Error 04) Closed"_qs;
        const QString notSetUp
            = u"V17 / Reason for Rejection: (Error 4) "_qs + ResponseMatcher::notSetUpReason();
        QTest::newRow("accepted") << u"O17,B1043,0,\r\n"_qs << u"accepted"_qs;
        QTest::newRow("second pair, letters not compared")
            << u"O%17,X1043,0\n"_qs << u"accepted"_qs;
        QTest::newRow("other payee") << u"O18,B1043,0\n"_qs << u" / "_qs;
        QTest::newRow("only line, no line break") << u"O17,B1043,0"_qs << u" / "_qs;
        QTest::newRow("empty result") << u"O17,B1043,,\n"_qs << u"accepted"_qs;
        QTest::newRow("text result") << u"O17,B1043,ok\n"_qs << u"accepted"_qs;
        QTest::newRow("no result field") << u"O17,B1043\n"_qs << u" / "_qs;
        QTest::newRow("04 is general") << u"O%17,B1043,04,Closed\n"_qs << general;
        QTest::newRow("4 is not set up")
            << u"O%17,B1043,04,Closed\nV17,B1043,4,x\nO1,B1,0\n"_qs << notSetUp;
        QTest::newRow("rejected then accepted")
            << u"O17,B1043,7,Bad\nO17,B1043,0\n"_qs << u"accepted"_qs;
        QTest::newRow("accepted then rejected")
            << u"O17,B1043,0\nO17,B1043,7,Bad\n"_qs << u"accepted"_qs;
        // A blank piece shortens the range at its end: the line behind it is
        // still read, the last counted one is not.
        QTest::newRow("blank line") << u"O1,B1,5,x\n\nO17,B1043,0\nO2,B2,0\n"_qs << u"accepted"_qs;
        QTest::newRow("blank line, end lost")
            << u"O1,B1,5,x\n\nO2,B2,0\nO17,B1043,0\n"_qs << u" / "_qs;
    }

    void responseMatching()
    {
        QFETCH(QString, received);
        // The response file holds what was received and a line break.
        const ResponseMatcher::Verdict v = ResponseMatcher(received + u"\r\n"_qs).verdict(17, 1043);
        QTEST(v.accepted ? u"accepted"_qs : v.payeeField + u" / "_qs + v.reason, "expected");
    }

    // Every post-to code, a missing ledger record, an unknown code and a
    // split of another type, on one accepted check.
    void postsAcceptedCheck()
    {
        TestSite site;
        populate(site);
        site.db().execText(u"UPDATE Owners SET OCurrBal = 1000 WHERE OwnerID = 1"_qs, "test");
        site.insert(u"Properties"_qs,
            { { u"PropID"_qs, 20 }, { u"POwnerID"_qs, 1 }, { u"PCurrBal"_qs, 500 } });
        site.insert(u"Tenants"_qs,
            { { u"TenantID"_qs, 300 }, { u"TPropID"_qs, 20 }, { u"TCurrBal"_qs, 100 } });
        site.insert(u"Units"_qs, { { u"UTenantID"_qs, 300 }, { u"UCurrBal"_qs, 50 } });
        site.insert(u"Units"_qs, { { u"UTenantID"_qs, 300 }, { u"UCurrBal"_qs, 7 } });
        addSplit(site, 11, u"O"_qs, 1, 100, u"C"_qs, { { u"CkRemark"_qs, u"draw"_qs } });
        addSplit(site, 11, u"P"_qs, 20, -30, u"C"_qs, { { u"CkRemark"_qs, QVariant() } });
        addSplit(site, 11, u"U"_qs, 300, 20);
        addSplit(site, 11, u"T"_qs, 300, 5);
        addSplit(site, 11, u"B"_qs, 300, 1.25);
        addSplit(site, 11, u"A"_qs, 1, 9);
        addSplit(site, 11, u"O"_qs, 1, 77, u"D"_qs);
        addSplit(site, 11, u"O"_qs, 999, 3);
        addSplit(site, 3, u"O"_qs, 1, 1); // an unpaid check keeps its split

        auto script = answering(site, 200, u"O%6,B11,0,\r\n"_qs);
        bool stop = false;
        int emptied = 0;
        QVERIFY(
            DistributionRun(*site.state, stop).makePaymentsNow(rowsFor(site, { { 11, -6 } }), [&] {
                ++emptied;
            }));
        QCOMPARE(emptied, 1);
        QCOMPARE(script->calls.size(), 1);
        QCOMPARE(script->calls[0].operation + u' ' + script->calls[0].url,
            u"TransmitPayees http://127.0.0.1:9/qps/evendorpay.php"_qs);
        QCOMPARE(script->calls[0].texts,
            (QStringList { u""_qs, u"B11|O%6|Refund |x|12.5\r\n"_qs, u""_qs }));
        QCOMPARE(site.fileBytes(DistributionFile::ResponseName), QByteArray("O%6,B11,0,\r\n\r\n"));
        QVERIFY(site.fileBytes(kDistribution).isNull());
        QCOMPARE(site.fileBytes(DistributionFile::LastUploadName),
            QByteArray("B11|O%6|Refund |x|12.5\r\n"));
        QCOMPARE(site.prompter.texts(),
            (QStringList { ProductTexts::success,
                u"Not able to post check # 512 - post manually"_qs,
                DistributionRun::completeText() }));
        QCOMPARE(site.prompter.titles()[1], u"Post Transaction"_qs);

        QCOMPARE(dump(site,
                     u"SELECT CkID, CkPayee, CkAmount, CkDate, CkInvoice, CkRemark, CkVendorID, "
                     "CkStatus, CkSplit, CkType, CkAccountID IS NULL, "
                     "CkNumber IS NULL, CkPostTo FROM CheckDepPrinted"_qs),
            u"1|Hal Solo|-12.5|2024-01-15|INV-7|  Refund |x |0|P|Y|C|1|1|"_qs);
        QCOMPARE(
            dump(site, u"SELECT CkNumber, CkAmount, CkPostTo, CkType FROM SplitPrintedChecks"_qs),
            u"1|-100|O|C;1|-30|P|C;1|-20|U|C;1|-5|T|C;1|-1.25|B|C;1|-9|A|C;1|-3|O|C"_qs);
        QCOMPARE(dump(site,
                     u"SELECT (SELECT OCurrBal FROM Owners WHERE OwnerID = 1), PCurrBal, TCurrBal "
                     "FROM Properties, Tenants"_qs),
            u"900|470|93.75"_qs);
        QCOMPARE(dump(site, u"SELECT UCurrBal FROM Units"_qs), u"28.75;7"_qs);
        QCOMPARE(
            dump(site,
                u"SELECT TransStatus, TransAmount, TransPostToID, TransRemark, TransOID, TransPID, "
                "TransUID, TransTID FROM Transactions ORDER BY rowid"_qs),
            u"O|-100|1|draw|1|0|0|0;P|-30|20||1|20|0|0;U|-20|300|split|1|20|300|300;"
            "T|-5|300|split|1|20|300|300;B|-1.25|300|split|0|0|0|0"_qs);
        QCOMPARE(dump(site,
                     u"SELECT DISTINCT TransType, TransTax, TransDate, TransAccountID, "
                     "TransCheckNumber IS NULL FROM Transactions"_qs),
            u"C|N|2024-01-15|4000|1"_qs);
        QCOMPARE(dump(site, u"SELECT count(*), sum(CkID = 11) FROM CheckEntered"_qs), u"10|0"_qs);
        QCOMPARE(dump(site, u"SELECT CkNumber, CkType FROM SplitChecks"_qs), u"11|D;3|C"_qs);
    }

    // Nothing is posted on an empty answer without a response file (an
    // error status: tests/reliability/tst_faults); an empty answer reads
    // the response file left by the previous run.
    void runsThatPostNothing()
    {
        bool stop = false;
        {
            TestSite site;
            populate(site);
            answering(site, 200, QString());
            QVERIFY(!DistributionRun(*site.state, stop)
                         .makePaymentsNow(rowsFor(site, { { 1, -1 } }), {}));
            QCOMPARE(site.prompter.titles().last(), u"Payment Distribution Notice"_qs);
            QCOMPARE(site.fileBytes(kDistribution), QByteArray("B1|O1|March owner draw|1500\r\n"));
            QCOMPARE(dump(site, u"SELECT count(*) FROM CheckDepPrinted"_qs), u"0"_qs);
        }
        TestSite site;
        populate(site);
        site.writeFile(DistributionFile::ResponseName, "O1,B1,0\r\n\r\n");
        answering(site, 200, QString());
        QVERIFY(
            DistributionRun(*site.state, stop).makePaymentsNow(rowsFor(site, { { 1, -1 } }), {}));
        QCOMPARE(dump(site, u"SELECT count(*) FROM CheckDepPrinted"_qs), u"1"_qs);

        auto script = answering(site, 200, QString());
        QVERIFY(!DistributionRun(*site.state, stop).makePaymentsNow({}, {}));
        QCOMPARE(site.prompter.texts().last(), u"There are no payments selected"_qs);
        QVERIFY(script->calls.isEmpty());
    }

    // "No" to a rejection silences the rest of this run and later runs on
    // the same screen.
    void rejectionsAndStopFlag()
    {
        TestSite site;
        populate(site);
        answering(site, 200, u"O1,B1,4\nO1,B2,04,Closed account\nV8,B3,0\n"_qs);
        site.prompter.queueAnswers({ Prompter::Answer::Yes, Prompter::Answer::No });
        bool stop = false;
        QVERIFY(
            DistributionRun(*site.state, stop)
                .makePaymentsNow(rowsFor(site, { { 1, -1 }, { 2, -1 }, { 3, 8 }, { 8, -4 } }), {}));
        QVERIFY(stop);
        QCOMPARE(site.state->msgAnswer, u"7"_qs);
        QCOMPARE(site.prompter.unansweredQuestions() + site.prompter.pendingAnswers(), 0);
        QCOMPARE(site.prompter.titles(),
            (QStringList { u"Dwellix Remitra"_qs, u"Dwellix Remitra"_qs, u"Dwellix Remitra"_qs,
                u"Payment Distribution Notice"_qs }));
        QVERIFY(site.prompter.texts()[1].contains(u"Payee ID: O1\rPayee Name: Ann Lee\r"_qs));
        QVERIFY(site.prompter.texts()[1].contains(
            u"\r\rReason for Rejection: (Error 4) This Vendor"_qs));
        QCOMPARE(dump(site,
                     u"SELECT group_concat(CkID) FROM CheckEntered WHERE CkID IN (1, 2, 3, 8)"_qs),
            u"1,2,8"_qs);

        // The check's own fields, as entered, and the processor's reason.
        QVERIFY(site.prompter.texts()[2].contains(u"Payee ID: O1\rPayee Name:  Bob Lee  \r"
                                                  "Transaction Date: "_qs
            + VbText::shortDate(QDate(2024, 3, 1))
            + u"\rTransaction Amount: 250.5\rTransaction Invoice: \rTransaction Remark: March "
              "draw\r\rReason for Rejection: (Error 04) Closed account\r\r"_qs));

        site.prompter.clear();
        answering(site, 200, u"O1,B1,9,Later\n"_qs);
        QVERIFY(
            DistributionRun(*site.state, stop).makePaymentsNow(rowsFor(site, { { 1, -1 } }), {}));
        QCOMPARE(site.prompter.texts(),
            (QStringList { ProductTexts::success, DistributionRun::completeText() }));
    }
};

QTEST_GUILESS_MAIN(TestDistribution)
#include "tst_distribution.moc"
