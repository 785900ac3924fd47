#include "RentSupport.h"

#include "core/ScriptedPrompter.h"
#include "hostdb/Journal.h"
#include "hostdb/JournalRecovery.h"
#include "hostdb/RentPostingRecord.h"
#include "rent/PaymentFile.h"
#include "rent/ReversePosting.h"
#include "rent/UpdateLedgers.h"

#include <QProcess>
#include <QTest>

#include <csignal>

// The program killed between the host's commit and the journal's: a helper
// process (this program started again) posts, or reverses a posting, and
// kills itself at a named point of the commit. With the store on its own
// connection (the Access host's order of writes) the journal entry is then
// pending; the next start settles it from the host, and nothing is posted
// twice or lost. Attached to the SQLite host there is one commit, and
// nothing is ever pending.
namespace {

PostingChoices choices()
{
    PostingChoices c;
    c.postMgmtFees = true;
    c.depositNumber = u"12"_qs;
    return c;
}

RemitraStore::Connection storeOn(bool ownConnection)
{
    return ownConnection ? RemitraStore::Connection::OwnConnection
                         : RemitraStore::Connection::Attached;
}

int runHelper()
{
    const QString job = qEnvironmentVariable("REMITRA_JOURNAL_CRASH");
    const QByteArray point = qgetenv("REMITRA_KILL_AT");
    ScriptedPrompter prompter;
    prompter.queueAnswer(Prompter::Answer::Yes);
    auto state = openFolder(prompter, qEnvironmentVariable("REMITRA_FOLDER"),
        storeOn(qEnvironmentVariableIntValue("REMITRA_OWN_STORE") != 0));
    state->store().setCheckpoint([&](const char *where) {
        if (point == where)
            ::raise(SIGKILL);
    });
    if (job == u"post"_qs) {
        const PaymentFile::LoadResult loaded = PaymentFile::load(*state);
        return UpdateLedgers::run(*state, loaded.rows, choices(), loaded.fileSha256) ? 0 : 4;
    }
    return ReversePosting::run(*state, Journal(state->store()).runs().first().id) ? 0 : 4;
}

// Runs the helper; true when it was killed.
bool killedHelper(const QString &job, const QString &folder, bool own, const QString &point)
{
    QProcess helper;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(u"REMITRA_JOURNAL_CRASH"_qs, job);
    env.insert(u"REMITRA_FOLDER"_qs, folder);
    env.insert(u"REMITRA_OWN_STORE"_qs, own ? u"1"_qs : u"0"_qs);
    env.insert(u"REMITRA_KILL_AT"_qs, point);
    helper.setProcessEnvironment(env);
    helper.setProcessChannelMode(QProcess::ForwardedChannels);
    helper.start(QCoreApplication::applicationFilePath(), {});
    if (!helper.waitForFinished(60000))
        qFatal("the helper did not end");
    return helper.exitStatus() == QProcess::CrashExit;
}

} // namespace

class TestJournalCrash : public QObject
{
    Q_OBJECT

private slots:
    void postingKilledBetweenTheCommits_data()
    {
        QTest::addColumn<bool>("own");
        QTest::addColumn<QString>("point");
        QTest::addColumn<bool>("posted");
        QTest::newRow("own store, after the host's commit") << true << u"host committed"_qs << true;
        QTest::newRow("own store, before the host's commit")
            << true << u"journal pending"_qs << false;
        QTest::newRow("attached, after the one commit") << false << u"host committed"_qs << true;
    }
    void postingKilledBetweenTheCommits()
    {
        QFETCH(bool, own);
        QFETCH(QString, point);
        QFETCH(bool, posted);
        TestSite site;
        RentSupport::seedPortfolio(site);
        RentSupport::writePaymentFile(site,
            { RentSupport::line(10, 100, u"1000"_qs), RentSupport::line(20, 200, u"400"_qs) });
        const QStringList before = RentSupport::hostRows(site);
        site.state.reset();
        QVERIFY(killedHelper(u"post"_qs, site.folder(), own, point));

        // The next start.
        site.state = openFolder(site.prompter, site.folder(), storeOn(own));
        Journal journal(site.state->store());
        QCOMPARE(journal.runs().first().result.state, own ? Journal::Pending : Journal::Posted);
        JournalRecovery::settle(site.db(), site.state->store());
        const Journal::Run run = journal.runs().first();
        QCOMPARE(run.result.state, posted ? Journal::Posted : Journal::RolledBack);

        // What the review screen offers now, posted: each payment once.
        const PaymentFile::LoadResult loaded = PaymentFile::load(*site.state);
        if (posted) {
            QCOMPARE(loaded.status, PaymentFile::LoadStatus::FileMissing);
            QVERIFY(!RentPostingRecord(site.state->store()).completedAt(run.fileSha256).isEmpty());
        } else {
            QCOMPARE(RentSupport::hostRows(site), before);
            QCOMPARE(loaded.rows.size(), std::size_t(2));
            QVERIFY(UpdateLedgers::run(*site.state, loaded.rows, choices(), loaded.fileSha256));
            QCOMPARE(journal.runs().first().result.state, Journal::Posted);
        }
        QCOMPARE(
            site.scalar(u"SELECT count(*) FROM Transactions WHERE TransType = 'I'"_qs).toInt(), 2);
        QCOMPARE(site.scalar(u"SELECT total(TCurrBal) FROM Tenants"_qs).toInt(), 1400);
    }

    // A reversal killed after the host's commit: settled as reversed, its
    // payments no longer recorded as posted, and its file put back from
    // History, as the program that died could not.
    void reversalKilledAfterTheHostsCommit()
    {
        TestSite site;
        site.state->setHostDb(
            HostDb::openSqlite(site.state->DatabasePath), RemitraStore::Connection::OwnConnection);
        RentSupport::seedPortfolio(site);
        RentSupport::writePaymentFile(site, { RentSupport::line(10, 100, u"1000"_qs) });
        const QStringList before = RentSupport::hostRows(site);
        QVERIFY(RentSupport::post(site, RentSupport::load(site), choices()));
        const qint64 posting = Journal(site.state->store()).runs().first().id;
        site.state.reset();
        QVERIFY(killedHelper(u"reverse"_qs, site.folder(), true, u"host committed"_qs));

        site.state = openFolder(site.prompter, site.folder(), storeOn(true));
        QCOMPARE(RentSupport::hostRows(site), before);
        JournalRecovery::settle(site.db(), site.state->store());
        Journal journal(site.state->store());
        const Journal::Run run = *journal.run(posting);
        QCOMPARE(run.result.state, Journal::Reversed);
        QVERIFY(RentPostingRecord(site.state->store()).lines(run.fileSha256).isEmpty());
        QVERIFY(ReversePosting::canPutBack(*site.state, run));
        QVERIFY(ReversePosting::putBack(*site.state, posting));
        QCOMPARE(PaymentFile::load(*site.state).rows.size(), std::size_t(1));
    }
};

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsSet("REMITRA_JOURNAL_CRASH")) {
        QCoreApplication app(argc, argv);
        return runHelper();
    }
    QCoreApplication app(argc, argv);
    TestJournalCrash test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}

#include "tst_journal_crash.moc"
