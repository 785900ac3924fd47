#include "DisburseFixture.h"
#include "ScriptedProcessorClient.h"
#include "TestSupport.h"

#include "core/VbText.h"
#include "disburse/DistributionFile.h"
#include "disburse/DistributionRun.h"
#include "disburse/PaidCheckPosting.h"
#include "disburse/ResponseMatcher.h"
#include "hostdb/DisburseList.h"

#include <QFile>
#include <QTest>

namespace {

using Key = PaymentRow::Key;
using Script = ScriptedProcessorClient::Script;

QList<PaymentRow> rowsFor(TestSite &site, const QList<Key> &keys)
{
    const QList<PaymentRow> all = DisburseList::load(site.db(), u"Entry Order"_qs);
    QList<PaymentRow> rows;
    for (const Key &key : keys) {
        auto it = std::find_if(
            all.cbegin(), all.cend(), [&](const PaymentRow &r) { return r.key() == key; });
        if (it == all.cend())
            qFatal("no list row for check %lld", key.first);
        rows.append(*it);
    }
    return rows;
}

std::shared_ptr<Script> answering(TestSite &site, qint32 code, const QString &response)
{
    auto script = std::make_shared<Script>();
    script->replies.append({ true, code, response });
    site.state->ClientFactory = ScriptedProcessorClient::factory(script);
    return script;
}

QString completeNotice()
{
    return DistributionRun::completeText();
}

} // namespace

class TestDistribution : public QObject
{
    Q_OBJECT

private slots:
    // Owner lines carry "%" when the payee is the owner's second pair (also
    // when both pairs are the same name); vendor lines carry the vendor id;
    // remarks are trimmed and not escaped; amounts are absolute and plain.
    void distributionFileBytes()
    {
        TestSite site;
        DisburseFixture::populate(site);
        const QList<PaymentRow> rows
            = rowsFor(site, { { 11, -6 }, { 1, -1 }, { 2, -1 }, { 2, 10 }, { 3, 8 }, { 8, -4 } });
        DistributionFile::write(site.db(), site.path(u"out.txt"_qs), rows);
        QFile golden(testData(u"disburse/distribution.txt"_qs));
        QVERIFY(golden.open(QIODevice::ReadOnly));
        QCOMPARE(site.fileBytes(u"out.txt"_qs), golden.readAll());
    }

    void responseMatching_data()
    {
        QTest::addColumn<QString>("received");
        QTest::addColumn<qint64>("payee");
        QTest::addColumn<qint64>("check");
        QTest::addColumn<bool>("accepted");
        QTest::addColumn<QString>("payeeField");
        QTest::addColumn<QString>("reason");
        const QString notSetUp
            = u"Reason for Rejection: (Error 4) "_qs + ResponseMatcher::notSetUpReason();

        QTest::newRow("accepted") << u"O17,B1043,0,\r\n"_qs << 17ll << 1043ll << true << QString()
                                  << QString();
        QTest::newRow("second pair")
            << u"O%17,B1044,0\n"_qs << 17ll << 1044ll << true << QString() << QString();
        QTest::newRow("letters not compared")
            << u"V17,X1043,0\n"_qs << 17ll << 1043ll << true << QString() << QString();
        QTest::newRow("other payee")
            << u"O18,B1043,0\n"_qs << 17ll << 1043ll << false << QString() << QString();
        QTest::newRow("only line, no line break")
            << u"O17,B1043,0"_qs << 17ll << 1043ll << false << QString() << QString();
        QTest::newRow("empty result accepts")
            << u"O17,B1043,,\n"_qs << 17ll << 1043ll << true << QString() << QString();
        QTest::newRow("text result accepts")
            << u"O17,B1043,ok\n"_qs << 17ll << 1043ll << true << QString() << QString();
        QTest::newRow("no result field")
            << u"O17,B1043\n"_qs << 17ll << 1043ll << false << QString() << QString();
        QTest::newRow("4 is not set up")
            << u"O17,B1043,4,ignored\n"_qs << 17ll << 1043ll << false << u"O17"_qs << notSetUp;
        QTest::newRow("04 is general")
            << u"O%17,B1043,04,Closed account\n"_qs << 17ll << 1043ll << false << u"O%17"_qs
            << u"Reason for Rejection: (Error 04) Closed account"_qs;
        QTest::newRow("rejected then accepted") << u"O17,B1043,7,Bad\nO17,B1043,0\n"_qs << 17ll
                                                << 1043ll << true << QString() << QString();
        QTest::newRow("accepted then rejected") << u"O17,B1043,0\nO17,B1043,7,Bad\n"_qs << 17ll
                                                << 1043ll << true << QString() << QString();
        QTest::newRow("last rejection kept") << u"O17,B1043,7,Bad\nV17,B1043,4\nO1,B1,0\n"_qs
                                             << 17ll << 1043ll << false << u"V17"_qs << notSetUp;
        // The blank piece shortens the range at its end: the line behind it
        // is still read, the last counted one is not.
        QTest::newRow("blank line, later line read")
            << u"O1,B1,5,x\n\nO17,B1043,0\nO2,B2,0\n"_qs << 17ll << 1043ll << true << QString()
            << QString();
        QTest::newRow("blank line, end lost") << u"O1,B1,5,x\n\nO17,B1043,0\nO2,B2,0\n"_qs << 2ll
                                              << 2ll << false << QString() << QString();
        QTest::newRow("nothing received")
            << QString() << 17ll << 1043ll << false << QString() << QString();
    }

    void responseMatching()
    {
        QFETCH(QString, received);
        QFETCH(qint64, payee);
        QFETCH(qint64, check);
        // The response file holds what was received and a line break.
        const ResponseMatcher response(received.isEmpty() ? QString() : received + u"\r\n"_qs);
        const ResponseMatcher::Verdict v = response.verdict(payee, check);
        QTEST(v.accepted, "accepted");
        if (!v.accepted) {
            QTEST(v.payeeField, "payeeField");
            QTEST(v.reason, "reason");
        }
    }

    void messageTexts()
    {
        TestSite site;
        DisburseFixture::populate(site);
        const PaymentRow row = rowsFor(site, { { 2, -1 } }).first();
        const QString date = VbText::shortDate(QDate(2024, 3, 1));
        QCOMPARE(PaidCheckPosting::rejectionText(
                     row, u"O1"_qs, u"Reason for Rejection: (Error 04) x"_qs),
            u"This transaction was NOT successfully posted to Quenta Property Pay and will still "
            "remain in your 'Entered Check File' so you can process it later:\r\rPayee ID: O1\r"
            "Payee Name:  Bob Lee  \rTransaction Date: "_qs
                + date
                + u"\rTransaction Amount: 250.5\rTransaction Invoice: \rTransaction Remark: "
                  "March draw\r\rReason for Rejection: (Error 04) x\r\rTo see details of all "
                  "rejected payments, visit your account at the Quenta Payment website after "
                  "the rest of the transactions are processed.\r\rDo you want to continue "
                  "receiving these messages stopping at each unprocessed transaction?"_qs);
        QCOMPARE(PaidCheckPosting::notPostedText(512),
            u"Not able to post check # 512 - post manually"_qs);
        QCOMPARE(
            PaidCheckPosting::notPostedText(-5), u"Not able to post check #-5 - post manually"_qs);
    }

    void noSelection()
    {
        TestSite site;
        auto script = answering(site, 200, QString());
        bool stop = false;
        QVERIFY(!DistributionRun(*site.state, stop).MakePaymentsNow({}, {}));
        QCOMPARE(site.prompter.texts(), QStringList { u"There are no payments selected"_qs });
        QCOMPARE(site.prompter.titles(), QStringList { u"Make Payments"_qs });
        QVERIFY(script->calls.isEmpty());
    }

    // Every post-to code, a missing ledger record, an unknown code and a
    // split of another type, on one accepted check.
    void postsAcceptedCheck()
    {
        TestSite site;
        DisburseFixture::populate(site);
        site.db().execText(u"UPDATE Owners SET OCurrBal = 1000 WHERE OwnerID = 1"_qs, "test");
        site.insert(u"Properties"_qs,
            { { u"PropID"_qs, 20 }, { u"POwnerID"_qs, 1 }, { u"PCurrBal"_qs, 500 } });
        site.insert(u"Tenants"_qs,
            { { u"TenantID"_qs, 300 }, { u"TPropID"_qs, 20 }, { u"TCurrBal"_qs, 100 } });
        site.insert(u"Units"_qs, { { u"UTenantID"_qs, 300 }, { u"UCurrBal"_qs, 50 } });
        site.insert(u"Units"_qs, { { u"UTenantID"_qs, 300 }, { u"UCurrBal"_qs, 7 } });
        using DisburseFixture::addSplit;
        addSplit(site, 11, u"O"_qs, 1, u"100"_qs, u"C"_qs, { { u"CkRemark"_qs, u"draw"_qs } });
        addSplit(site, 11, u"P"_qs, 20, u"-30"_qs, u"C"_qs, { { u"CkRemark"_qs, QVariant() } });
        addSplit(site, 11, u"U"_qs, 300, u"20"_qs);
        addSplit(site, 11, u"T"_qs, 300, u"5"_qs);
        addSplit(site, 11, u"B"_qs, 300, u"1.25"_qs);
        addSplit(site, 11, u"A"_qs, 1, u"9"_qs);
        addSplit(site, 11, u"O"_qs, 1, u"77"_qs, u"D"_qs);
        addSplit(site, 11, u"O"_qs, 999, u"3"_qs);
        addSplit(site, 3, u"O"_qs, 1, u"1"_qs); // a check that is not paid keeps its split

        auto script = answering(site, 200, u"O%6,B11,0,\r\n"_qs);
        bool stop = false;
        int emptied = 0;
        QVERIFY(
            DistributionRun(*site.state, stop).MakePaymentsNow(rowsFor(site, { { 11, -6 } }), [&] {
                ++emptied;
            }));
        QCOMPARE(emptied, 1);

        QCOMPARE(script->calls.size(), 1);
        const ScriptedProcessorClient::Call &call = script->calls.first();
        QCOMPARE(call.operation, u"TransmitPayees"_qs);
        QCOMPARE(call.url, u"http://127.0.0.1:9/qps/evendorpay.php"_qs);
        QCOMPARE(call.texts, (QStringList { u""_qs, u"B11|O%6|Refund |x|12.5\r\n"_qs, u""_qs }));

        QCOMPARE(site.fileBytes(DistributionFile::ResponseName), QByteArray("O%6,B11,0,\r\n\r\n"));
        QVERIFY(site.fileBytes(u"DX_Quenta_DisbursementPayment.txt"_qs).isNull());
        QCOMPARE(site.fileBytes(DistributionFile::LastUploadName),
            QByteArray("B11|O%6|Refund |x|12.5\r\n"));

        QCOMPARE(site.prompter.texts(),
            (QStringList { u"Successful connection to Quenta Payment Services!"_qs,
                u"Not able to post check # 512 - post manually"_qs, completeNotice() }));
        QCOMPARE(site.prompter.titles()[1], u"Post Transaction"_qs);
        QCOMPARE(site.prompter.titles()[2], u"Payment Distribution Notice"_qs);

        const QList<QVariantMap> printed = site.rows(u"SELECT * FROM CheckDepPrinted"_qs);
        QCOMPARE(printed.size(), 1);
        const QVariantMap &p = printed.first();
        QCOMPARE(p[u"CkPayee"_qs].toString(), u"Hal Solo"_qs);
        QCOMPARE(p[u"CkAmount"_qs].toDouble(), -12.5);
        QCOMPARE(p[u"CkDate"_qs].toString(), u"2024-01-15"_qs);
        QCOMPARE(p[u"CkInvoice"_qs].toString(), u"INV-7"_qs);
        QCOMPARE(p[u"CkRemark"_qs].toString(), u"  Refund |x "_qs);
        QCOMPARE(p[u"CkVendorID"_qs].toInt(), 0);
        QCOMPARE(
            p[u"CkStatus"_qs].toString() + p[u"CkSplit"_qs].toString() + p[u"CkType"_qs].toString(),
            u"PYC"_qs);
        QVERIFY(p[u"CkAccountID"_qs].isNull() && p[u"CkPostToID"_qs].isNull()
            && p[u"CkNumber"_qs].isNull());
        QCOMPARE(p[u"CkPostTo"_qs].toString(), u""_qs);
        const qint64 printedId = p[u"CkID"_qs].toLongLong();

        const QList<QVariantMap> splits = site.rows(
            u"SELECT CkNumber, CkAmount, CkPostTo, CkType FROM SplitPrintedChecks ORDER BY SplitID"_qs);
        QList<double> amounts;
        for (const QVariantMap &s : splits) {
            QCOMPARE(s[u"CkNumber"_qs].toLongLong(), printedId);
            QCOMPARE(s[u"CkType"_qs].toString(), u"C"_qs);
            amounts.append(s[u"CkAmount"_qs].toDouble());
        }
        QCOMPARE(amounts, (QList<double> { -100, -30, -20, -5, -1.25, -9, -3 }));

        QCOMPARE(
            site.scalar(u"SELECT OCurrBal FROM Owners WHERE OwnerID = 1"_qs).toDouble(), 900.0);
        QCOMPARE(site.scalar(u"SELECT PCurrBal FROM Properties"_qs).toDouble(), 470.0);
        QCOMPARE(site.scalar(u"SELECT TCurrBal FROM Tenants"_qs).toDouble(), 93.75);
        QCOMPARE(site.scalar(u"SELECT group_concat(UCurrBal, ' ') FROM Units"_qs).toString(),
            u"28.75 7.0"_qs);

        const QList<QVariantMap> trans
            = site.rows(u"SELECT * FROM Transactions ORDER BY TransID"_qs);
        QStringList got;
        for (const QVariantMap &t : trans) {
            QCOMPARE(t[u"TransType"_qs].toString(), u"C"_qs);
            QCOMPARE(t[u"TransTax"_qs].toString(), u"N"_qs);
            QCOMPARE(t[u"TransDate"_qs].toString(), u"2024-01-15"_qs);
            QCOMPARE(t[u"TransAccountID"_qs].toInt(), 4000);
            QVERIFY(t[u"TransCheckNumber"_qs].isNull());
            got.append(
                QStringList { t[u"TransStatus"_qs].toString(), t[u"TransAmount"_qs].toString(),
                    t[u"TransPostToID"_qs].toString(), t[u"TransRemark"_qs].toString(),
                    t[u"TransOID"_qs].toString(), t[u"TransPID"_qs].toString(),
                    t[u"TransUID"_qs].toString(), t[u"TransTID"_qs].toString() }
                    .join(u' '));
        }
        QCOMPARE(got,
            (QStringList { u"O -100 1 draw 1 0 0 0"_qs, u"P -30 20  1 20 0 0"_qs,
                u"U -20 300 split 1 20 300 300"_qs, u"T -5 300 split 1 20 300 300"_qs,
                u"B -1.25 300 split 0 0 0 0"_qs }));

        // The paid check and its "C" splits are gone; the other split types
        // and other checks stay.
        QCOMPARE(site.scalar(u"SELECT count(*) FROM CheckEntered WHERE CkID = 11"_qs).toInt(), 0);
        QCOMPARE(site.scalar(u"SELECT count(*) FROM CheckEntered"_qs).toInt(), 10);
        QCOMPARE(
            site.scalar(u"SELECT group_concat(CkNumber || CkType) FROM SplitChecks"_qs).toString(),
            u"11D,3C"_qs);
    }

    void stopsUnless200()
    {
        TestSite site;
        DisburseFixture::populate(site);
        answering(site, 404, u"O1,B1,0\n"_qs);
        bool stop = false;
        QVERIFY(
            !DistributionRun(*site.state, stop).MakePaymentsNow(rowsFor(site, { { 1, -1 } }), {}));
        QCOMPARE(site.prompter.titles(), QStringList { u"Remitra error"_qs });
        QCOMPARE(site.fileBytes(u"DX_Quenta_DisbursementPayment.txt"_qs),
            QByteArray("B1|O1|March owner draw|1500\r\n"));
        QVERIFY(site.fileBytes(DistributionFile::ResponseName).isNull());
        QCOMPARE(site.scalar(u"SELECT count(*) FROM CheckDepPrinted"_qs).toInt(), 0);
    }

    // An empty answer makes the run read the response file left by the
    // previous run; with none there, nothing is posted.
    void emptyResponse()
    {
        bool stop = false;
        {
            TestSite site;
            DisburseFixture::populate(site);
            answering(site, 200, QString());
            QVERIFY(!DistributionRun(*site.state, stop)
                         .MakePaymentsNow(rowsFor(site, { { 1, -1 } }), {}));
            QCOMPARE(site.prompter.texts().size(), 2);
            QCOMPARE(site.prompter.titles().last(), u"Payment Distribution Notice"_qs);
            QCOMPARE(site.scalar(u"SELECT count(*) FROM CheckDepPrinted"_qs).toInt(), 0);
            QVERIFY(!site.fileBytes(u"DX_Quenta_DisbursementPayment.txt"_qs).isNull());
        }
        TestSite site;
        DisburseFixture::populate(site);
        site.writeFile(DistributionFile::ResponseName, "O1,B1,0\r\n\r\n");
        answering(site, 200, QString());
        QVERIFY(
            DistributionRun(*site.state, stop).MakePaymentsNow(rowsFor(site, { { 1, -1 } }), {}));
        QCOMPARE(site.prompter.texts().last(), completeNotice());
        QCOMPARE(site.scalar(u"SELECT count(*) FROM CheckDepPrinted"_qs).toInt(), 1);
        QCOMPARE(site.fileBytes(DistributionFile::ResponseName), QByteArray("O1,B1,0\r\n\r\n"));
    }

    // Each check that is not accepted asks whether to go on being told; "No"
    // silences the rest of this run and later runs on the same screen.
    void rejectionsAndStopFlag()
    {
        TestSite site;
        DisburseFixture::populate(site);
        answering(site, 200, u"O1,B1,4\nO1,B2,04,Closed account\nV8,B3,0\n"_qs);
        site.prompter.queueAnswers({ Prompter::Answer::Yes, Prompter::Answer::No });
        bool stop = false;
        QVERIFY(
            DistributionRun(*site.state, stop)
                .MakePaymentsNow(rowsFor(site, { { 1, -1 }, { 2, -1 }, { 3, 8 }, { 8, -4 } }), {}));
        QVERIFY(stop);
        QCOMPARE(site.state->MsgAnswer, u"7"_qs);
        QList<ScriptedPrompter::Shown> questions;
        for (const ScriptedPrompter::Shown &s : site.prompter.shown()) {
            if (s.kind == ScriptedPrompter::Shown::Question)
                questions.append(s);
        }
        QCOMPARE(questions.size(), 2);
        QCOMPARE(questions[0].title, u"Dwellix Remitra"_qs);
        QVERIFY(questions[0].text.contains(u"Payee ID: O1\rPayee Name: Ann Lee\r"_qs));
        QVERIFY(questions[0].text.contains(u"\r\rReason for Rejection: (Error 4) "_qs
            + ResponseMatcher::notSetUpReason() + u"\r\r"_qs));
        QVERIFY(questions[1].text.contains(
            u"\r\rReason for Rejection: (Error 04) Closed account\r\r"_qs));
        QCOMPARE(site.prompter.texts().last(), completeNotice());
        QCOMPARE(
            site.scalar(
                    u"SELECT group_concat(CkID) FROM CheckEntered WHERE CkID IN (1, 2, 3, 8)"_qs)
                .toString(),
            u"1,2,8"_qs);

        site.prompter.clear();
        answering(site, 200, u"O1,B1,9,Later\n"_qs);
        QVERIFY(
            DistributionRun(*site.state, stop).MakePaymentsNow(rowsFor(site, { { 1, -1 } }), {}));
        for (const ScriptedPrompter::Shown &s : site.prompter.shown())
            QCOMPARE(s.kind, ScriptedPrompter::Shown::Notice);
    }
};

QTEST_GUILESS_MAIN(TestDistribution)
#include "tst_distribution.moc"
