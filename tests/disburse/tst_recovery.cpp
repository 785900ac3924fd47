#include "DisburseFixture.h"

#include "core/RuntimeError.h"
#include "disburse/DistributionFile.h"
#include "disburse/DistributionRun.h"
#include "disburse/PaymentListModel.h"
#include "disburse/PaymentSelectionWindow.h"
#include "disburse/UnfinishedRun.h"

#include <QDir>
#include <QTableView>
#include <QTest>

using namespace DisburseFixture;

namespace {

// A run whose posting fails on the database after the processor accepted
// checks 1 (owner 1) and 3 and rejected check 8.
void failedRun(TestSite &site)
{
    populate(site);
    addSplit(site, 1, u"O"_qs, 1, 100);
    answering(site, 200, u"O1,B1,0\nV8,B3,0\nO%4,B8,7,Closed\n"_qs);
    site.db().execText(u"CREATE TEMP TRIGGER broken BEFORE INSERT ON SplitPrintedChecks "
                       "BEGIN SELECT RAISE(ABORT, 'disk I/O error'); END"_qs,
        "test");
    bool stop = false;
    DistributionRun run(*site.state, stop);
    QVERIFY_THROWS_EXCEPTION(
        RuntimeError, run.makePaymentsNow(rowsFor(site, { { 1, -1 }, { 3, 8 }, { 8, -4 } }), {}));
    site.db().execText(u"DROP TRIGGER temp.broken"_qs, "test");
    site.prompter.clear();
    // Nothing of it was posted, and it is recognised from its files.
    QCOMPARE(
        dump(site,
            u"SELECT count(*) FROM CheckDepPrinted UNION ALL SELECT count(*) FROM Transactions"_qs),
        u"0;0"_qs);
    QVERIFY(UnfinishedRun::present(*site.state));
}

} // namespace

class TestRecovery : public QObject
{
    Q_OBJECT

private slots:
    // Opening the screen offers to post the accepted checks; the rejected
    // one stays to be sent again.
    void screenPostsAcceptedChecks()
    {
        TestSite site;
        failedRun(site);
        site.prompter.queueAnswer(Prompter::Answer::Yes);
        PaymentSelectionWindow form(*site.state);
        QVERIFY(site.prompter.texts().first().contains(
            u"accepted 2 payment(s) totalling $1,582.40"_qs));
        QCOMPARE(site.prompter.texts().last(), DistributionRun::completeText());
        QCOMPARE(dump(site,
                     u"SELECT group_concat(CkPayee || (CkInvoice IS NULL), '/') FROM "
                     "CheckDepPrinted UNION ALL SELECT group_concat(CkID) FROM CheckEntered "
                     "WHERE CkID IN (1, 3, 8) UNION ALL SELECT OCurrBal FROM Owners "
                     "WHERE OwnerID = 1"_qs),
            u"Ann Lee1/Acme Repairs1;8;-100"_qs);
        QVERIFY(!UnfinishedRun::present(*site.state));
        QCOMPARE(site.fileBytes(DistributionFile::LastUploadName),
            QByteArray(
                "B1|O1|March owner draw|1500\r\nB3|V8|Repairs unit 4|82.4\r\nB8|O%4||40\r\n"));
        auto *model = qobject_cast<PaymentListModel *>(
            child<QTableView>(form, "gridMakePayments")->model());
        QCOMPARE(model->find({ 1, -1 }), -1);
        QVERIFY(model->find({ 8, -4 }) >= 0);
    }

    // Declined, no new distribution is sent until the accepted checks are
    // posted; once they are, nothing is sent either, as the list changed.
    void declinedRunBlocksNewPayments()
    {
        TestSite site;
        failedRun(site);
        auto script = answering(site, 200, u"O%4,B8,0\n"_qs);
        bool stop = false;
        QCOMPARE(UnfinishedRun::settle(*site.state, stop), UnfinishedRun::Outcome::Declined);
        QVERIFY(
            !DistributionRun(*site.state, stop).makePaymentsNow(rowsFor(site, { { 8, -4 } }), {}));
        QCOMPARE(site.prompter.unansweredQuestions(), 2);
        QCOMPARE(dump(site, u"SELECT count(*) FROM CheckDepPrinted"_qs), u"0"_qs);

        site.prompter.queueAnswer(Prompter::Answer::Yes);
        QVERIFY(
            DistributionRun(*site.state, stop).makePaymentsNow(rowsFor(site, { { 8, -4 } }), {}));
        QVERIFY(script->calls.isEmpty());
        QCOMPARE(dump(site, u"SELECT count(*) FROM CheckDepPrinted"_qs), u"2"_qs);
    }

    // What the record makes of each outcome of the call, seen from the next
    // run that selects the same check: posted, sent again freely (nothing
    // can have been paid), or sent again only on the user's word.
    void eachOutcomeOfTheCall_data()
    {
        QTest::addColumn<bool>("flag");
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("response");
        QTest::addColumn<bool>("arrived");
        QTest::addColumn<QString>("next"); // posted, free, asked
        QTest::newRow("accepted") << true << 200 << u"O%4,B8,0\n"_qs << true << u"posted"_qs;
        QTest::newRow("rejected") << true << 200 << u"O%4,B8,7,Closed\n"_qs << true << u"free"_qs;
        QTest::newRow("error status") << true << 503 << QString() << true << u"free"_qs;
        QTest::newRow("never left") << false << 501 << QString() << false << u"free"_qs;
        QTest::newRow("no answer") << false << 501 << QString() << true << u"asked"_qs;
        QTest::newRow("empty answer") << true << 200 << QString() << true << u"asked"_qs;
    }
    void eachOutcomeOfTheCall()
    {
        QFETCH(bool, flag);
        QFETCH(int, code);
        QFETCH(QString, response);
        QFETCH(bool, arrived);
        QFETCH(QString, next);
        TestSite site;
        populate(site);
        auto script = std::make_shared<ScriptedProcessorClient::Script>();
        script->replies.append({ flag, code, response, arrived });
        site.state->clientFactory = ScriptedProcessorClient::factory(script);
        bool stop = true;
        DistributionRun(*site.state, stop).makePaymentsNow(rowsFor(site, { { 8, -4 } }), {});
        QCOMPARE(script->calls.size(), 1);
        QCOMPARE(dump(site, u"SELECT count(*) FROM CheckEntered WHERE CkID = 8"_qs),
            next == u"posted"_qs ? u"0"_qs : u"1"_qs);
        // A copy of the host database is taken before an answer is posted.
        QCOMPARE(QDir(site.path(u"backups"_qs)).entryList(QDir::Files).size(),
            code == 200 && !response.isEmpty() ? 1 : 0);
        if (next == u"posted"_qs) {
            QVERIFY(!UnfinishedRun::present(*site.state));
            return;
        }
        QCOMPARE(UnfinishedRun::present(*site.state), next == u"asked"_qs);

        // The next run: an unanswered check is named with the time it was
        // sent, and left out on No; sent on Yes.
        site.prompter.clear();
        script->replies = { { true, 200, u"O%4,B8,0\n"_qs } };
        if (next == u"asked"_qs) {
            site.prompter.queueAnswer(Prompter::Answer::No);
            QVERIFY(!DistributionRun(*site.state, stop)
                         .makePaymentsNow(rowsFor(site, { { 8, -4 } }), {}));
            QCOMPARE(script->calls.size(), 1);
            QVERIFY(site.prompter.texts().first().contains(u"Check 8 to EVE GRAY, $40.00, "_qs));
            QVERIFY(site.prompter.texts().first().contains(u"no record of an answer"_qs));
            site.prompter.clear();
            site.prompter.queueAnswer(Prompter::Answer::Yes);
        }
        QVERIFY(
            DistributionRun(*site.state, stop).makePaymentsNow(rowsFor(site, { { 8, -4 } }), {}));
        QCOMPARE(script->calls.size(), 2);
        QCOMPARE(site.prompter.texts().last(), DistributionRun::completeText());
        QCOMPARE(dump(site, u"SELECT count(*) FROM CheckEntered WHERE CkID = 8"_qs), u"0"_qs);
        QVERIFY(!UnfinishedRun::present(*site.state));
    }
};

QTEST_MAIN(TestRecovery)
#include "tst_recovery.moc"
