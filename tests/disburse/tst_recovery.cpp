#include "DisburseFixture.h"
#include "ScriptedProcessorClient.h"
#include "TestSupport.h"

#include "core/RuntimeError.h"
#include "disburse/DistributionFile.h"
#include "disburse/DistributionRun.h"
#include "disburse/PaymentListModel.h"
#include "disburse/UnfinishedRun.h"
#include "disburse/frmMakePayments.h"
#include "hostdb/DisburseList.h"

#include <QTableView>
#include <QTest>

namespace {

using Key = PaymentRow::Key;
using Script = ScriptedProcessorClient::Script;

QList<PaymentRow> rowsFor(TestSite &site, const QList<Key> &keys)
{
    QList<PaymentRow> rows;
    for (const PaymentRow &r : DisburseList::load(site.db(), u"Entry Order"_qs)) {
        if (keys.contains(r.key()))
            rows.append(r);
    }
    return rows;
}

std::shared_ptr<Script> answering(TestSite &site, const QString &response)
{
    auto script = std::make_shared<Script>();
    script->replies.append({ true, 200, response });
    site.state->ClientFactory = ScriptedProcessorClient::factory(script);
    return script;
}

int count(TestSite &site, const QString &sql)
{
    return site.scalar(sql).toInt();
}

// A run whose posting fails on the database after the processor accepted
// checks 1 (owner 1) and 3 and rejected check 8.
void failedRun(TestSite &site)
{
    DisburseFixture::populate(site);
    DisburseFixture::addSplit(site, 1, u"O"_qs, 1, u"100"_qs);
    DisburseFixture::addSplit(site, 3, u"A"_qs, 1, u"82.4"_qs);
    answering(site, u"O1,B1,0\nV8,B3,0\nO%4,B8,7,Closed\n"_qs);
    site.db().execText(u"CREATE TEMP TRIGGER broken BEFORE INSERT ON SplitPrintedChecks "
                       "BEGIN SELECT RAISE(ABORT, 'disk I/O error'); END"_qs,
        "test");
    bool stop = false;
    DistributionRun run(*site.state, stop);
    QVERIFY_THROWS_EXCEPTION(
        RuntimeError, run.MakePaymentsNow(rowsFor(site, { { 1, -1 }, { 3, 8 }, { 8, -4 } }), {}));
    site.db().execText(u"DROP TRIGGER temp.broken"_qs, "test");
    site.prompter.clear();
}

} // namespace

class TestRecovery : public QObject
{
    Q_OBJECT

private slots:
    // Nothing of a failed run is posted, and the run is recognised from its
    // files.
    void failedRunLeavesNothingPosted()
    {
        TestSite site;
        failedRun(site);
        QCOMPARE(count(site, u"SELECT count(*) FROM CheckDepPrinted"_qs), 0);
        QCOMPARE(count(site, u"SELECT count(*) FROM CheckEntered WHERE CkType = 'X'"_qs), 0);
        QCOMPARE(count(site, u"SELECT count(*) FROM Transactions"_qs), 0);
        QVERIFY(!site.fileBytes(DistributionFile::ResponseName).isNull());
        QVERIFY(site.fileBytes(DistributionFile::LastUploadName).isNull());
        QVERIFY(UnfinishedRun::present(*site.state));
    }

    // Opening the screen offers to post the accepted checks; the rejected
    // one stays to be sent again.
    void screenOffersToPostAcceptedChecks()
    {
        TestSite site;
        failedRun(site);
        site.prompter.queueAnswer(Prompter::Answer::Yes);
        frmMakePayments form(*site.state);
        QCOMPARE(site.prompter.shown().first().kind, ScriptedPrompter::Shown::Question);
        QVERIFY(site.prompter.texts().first().contains(
            u"accepted 2 payment(s) totalling $1,582.40"_qs));
        QCOMPARE(site.prompter.texts().last(), DistributionRun::completeText());

        QCOMPARE(count(site, u"SELECT count(*) FROM CheckDepPrinted"_qs), 2);
        QCOMPARE(count(site, u"SELECT count(*) FROM CheckEntered WHERE CkID IN (1, 3)"_qs), 0);
        QCOMPARE(count(site, u"SELECT count(*) FROM CheckEntered WHERE CkID = 8"_qs), 1);
        QCOMPARE(
            site.scalar(u"SELECT OCurrBal FROM Owners WHERE OwnerID = 1"_qs).toDouble(), -100.0);
        QCOMPARE(count(site, u"SELECT count(*) FROM SplitChecks"_qs), 0);
        QVERIFY(!UnfinishedRun::present(*site.state));
        QCOMPARE(site.fileBytes(DistributionFile::LastUploadName),
            QByteArray(
                "B1|O1|March owner draw|1500\r\nB8|O%4||40\r\nB3|V8|Repairs unit 4|82.4\r\n"));

        auto *model = qobject_cast<PaymentListModel *>(
            form.findChild<QTableView *>(u"gridMakePayments"_qs)->model());
        QCOMPARE(model->find({ 1, -1 }), -1);
        QCOMPARE(model->find({ 1, -5 }), -1);
        QVERIFY(model->find({ 8, -4 }) >= 0);
    }

    // Declined, the checks stay, and no new distribution is sent until the
    // accepted ones are posted.
    void declinedRunBlocksNewPayments()
    {
        TestSite site;
        failedRun(site);
        auto script = answering(site, u"O%4,B8,0\n"_qs);
        bool stop = false;
        QCOMPARE(UnfinishedRun::settle(*site.state, stop), UnfinishedRun::Outcome::Declined);
        QCOMPARE(count(site, u"SELECT count(*) FROM CheckDepPrinted"_qs), 0);
        QVERIFY(UnfinishedRun::present(*site.state));

        site.prompter.clear();
        QVERIFY(
            !DistributionRun(*site.state, stop).MakePaymentsNow(rowsFor(site, { { 8, -4 } }), {}));
        QVERIFY(script->calls.isEmpty());
        QCOMPARE(site.prompter.shown().first().kind, ScriptedPrompter::Shown::Question);

        // Accepted at the next attempt: the old run is posted and nothing is
        // sent, since the list has changed under the choice.
        site.prompter.clear();
        site.prompter.queueAnswer(Prompter::Answer::Yes);
        QVERIFY(DistributionRun(*site.state, stop)
                    .MakePaymentsNow(rowsFor(site, { { 8, -4 }, { 1, -5 } }), {}));
        QVERIFY(script->calls.isEmpty());
        QCOMPARE(count(site, u"SELECT count(*) FROM CheckDepPrinted"_qs), 2);
        QVERIFY(!UnfinishedRun::present(*site.state));
    }

    // A run whose accepted checks are all posted already (or that had none)
    // is completed without a question.
    void runWithNothingLeftIsCompletedQuietly()
    {
        TestSite site;
        DisburseFixture::populate(site);
        site.writeFile(site.state->DisbursementUploadName, "B8|O%4||40\r\n");
        site.writeFile(DistributionFile::ResponseName, "O%4,B8,7,Closed\r\n\r\n");
        bool stop = false;
        QCOMPARE(UnfinishedRun::settle(*site.state, stop), UnfinishedRun::Outcome::Clear);
        QVERIFY(site.prompter.shown().isEmpty());
        QCOMPARE(site.fileBytes(DistributionFile::LastUploadName), QByteArray("B8|O%4||40\r\n"));
        QCOMPARE(count(site, u"SELECT count(*) FROM CheckEntered WHERE CkID = 8"_qs), 1);
    }

    // A response older than the distribution belongs to an earlier run: the
    // distribution was never answered (a run that stopped on its result).
    void olderResponseIsNotAnUnfinishedRun()
    {
        TestSite site;
        DisburseFixture::populate(site);
        site.writeFile(DistributionFile::ResponseName, "O%4,B8,0\r\n\r\n");
        QTest::qWait(20);
        site.writeFile(site.state->DisbursementUploadName, "B8|O%4||40\r\n");
        QFile response(site.path(DistributionFile::ResponseName));
        QVERIFY(response.open(QIODevice::Append));
        response.setFileTime(
            QDateTime::currentDateTime().addSecs(-60), QFileDevice::FileModificationTime);
        response.close();
        QVERIFY(!UnfinishedRun::present(*site.state));
    }
};

QTEST_MAIN(TestRecovery)
#include "tst_recovery.moc"
