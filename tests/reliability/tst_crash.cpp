#include "DisburseFixture.h"
#include "RentSupport.h"
#include "ScriptedProcessorClient.h"

#include "app/IdFile.h"
#include "core/ScriptedPrompter.h"
#include "core/TransferFile.h"
#include "disburse/DistributionFile.h"
#include "disburse/DistributionRun.h"
#include "disburse/UnfinishedRun.h"
#include "hostdb/DisburseList.h"
#include "hostdb/HostDb.h"
#include "processor/RentDownload.h"
#include "rent/PaymentFile.h"
#include "rent/UpdateLedgers.h"

#include <QApplication>
#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QProcess>
#include <QSqlQuery>
#include <QTest>
#include <QThread>

#include <csignal>
#include <sys/types.h>

// A large rent posting run and a large distribution, each run by a helper
// process (this program, started again with REMITRA_CRASH_HELPER set) that is
// killed with SIGKILL at points spread over the run. After every kill the
// host database is as before the run or as after it, the payment file, its
// archive copy and the distribution files are whole, and what is left is
// finished by the program's own paths without posting anything twice.
namespace {

constexpr int kTenants = 2000;
constexpr int kPayments = 3000;
constexpr int kOwners = 600;
constexpr int kChecks = 3000;

const QString kAllSummary = u"SELECT (SELECT count(*) FROM Transactions), "
                            "(SELECT total(TCurrBal) FROM Tenants), (SELECT total(UCurrBal) FROM Units), "
                            "(SELECT count(*) FROM CheckEntered), (SELECT count(*) FROM SplitChecks), "
                            "(SELECT count(*) FROM CheckDepPrinted), (SELECT count(*) FROM SplitPrintedChecks), "
                            "(SELECT total(OCurrBal) FROM Owners)"_qs;

int killPoints()
{
    const int n = qEnvironmentVariableIntValue("REMITRA_KILL_POINTS");
    return n > 0 ? n : 24;
}

// A program state over an existing folder, as start-up leaves it.
struct FolderState
{
    ScriptedPrompter prompter;
    std::unique_ptr<ProgramState> state;

    explicit FolderState(const QString &folder)
    {
        state = std::make_unique<ProgramState>(prompter, folder);
        state->DatabasePath = folder + u"/dxdatafl.db"_qs;
        state->setHostDb(HostDb::openSqlite(state->DatabasePath));
        state->SiteCode = u"DXRM"_qs;
        state->PaymentDownloadName = u"DX_Quenta_PaymentFile.txt"_qs;
        state->DisbursementUploadName = u"DX_Quenta_DisbursementPayment.txt"_qs;
        state->ProcessorUrl = u"http://127.0.0.1:9/qps/upload.php"_qs;
        state->ProcessorUser = u"user"_qs;
        state->ProcessorPassword = u"secret"_qs;
        LoadIDFile(*state);
    }

    QString summary() const
    {
        QSqlQuery q(state->db().database());
        if (!q.exec(kAllSummary) || !q.next())
            qFatal("summary failed");
        QStringList cells;
        for (int i = 0; i < 8; ++i)
            cells << q.value(i).toString();
        return cells.join(u'|');
    }
};

PostingChoices rentChoices()
{
    PostingChoices choices;
    choices.postMgmtFees = true;
    choices.createDeposit = true;
    choices.depositNumber = u"D-77"_qs;
    choices.remark = PostingChoices::MethodRemark;
    return choices;
}

QString distributionResponse(const QList<PaymentRow> &rows)
{
    QString response;
    int n = 0;
    for (const PaymentRow &r : rows) // one in ten rejected
        response += (++n % 10 == 0 ? u"O%1,B%2,7,Over the limit\n"_qs : u"O%1,B%2,0,Accepted\n"_qs)
                        .arg(r.payeeId())
                        .arg(r.CkID);
    return response;
}

// The helper's side: runs one job over the folder and says "ready" just
// before the part that writes.
int runHelper(const QString &job, const QString &folder)
{
    FolderState site(folder);
    QTextStream out(stdout);
    if (job == u"rent"_qs) {
        PaymentFile::LoadResult loaded = PaymentFile::load(*site.state);
        if (loaded.status != PaymentFile::LoadStatus::Loaded)
            return 3;
        out << "ready" << Qt::endl;
        return UpdateLedgers::run(*site.state, loaded.rows, rentChoices()) ? 0 : 4;
    }
    const QList<PaymentRow> rows = DisburseList::load(site.state->db(), u"Payee"_qs);
    auto script = std::make_shared<ScriptedProcessorClient::Script>();
    script->replies.append({ true, 200, distributionResponse(rows) });
    site.state->ClientFactory = ScriptedProcessorClient::factory(script);
    bool stop = true;
    out << "ready" << Qt::endl;
    return DistributionRun(*site.state, stop).MakePaymentsNow(rows, {}) ? 0 : 4;
}

void copyFolder(const QString &from, const QString &to)
{
    QDir().mkpath(to);
    QDirIterator it(from, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        const QString target = to + path.mid(from.size());
        QDir().mkpath(QFileInfo(target).path());
        QFile::copy(path, target);
    }
}

QByteArray bytesOf(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

} // namespace

class TestCrash : public QObject
{
    Q_OBJECT

    struct Run
    {
        int exitCode = -1;
        bool killed = false;
        qint64 readyAfterMs = 0; // from the start to "ready"
        qint64 endedAfterMs = 0; // from "ready" to the end or the kill
    };

    // Starts the helper; kills it killAfterMs after it said "ready" (never
    // when negative).
    static Run runHelper(const QString &job, const QString &folder, qint64 killAfterMs)
    {
        QProcess helper;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(u"REMITRA_CRASH_HELPER"_qs, job);
        env.insert(u"REMITRA_CRASH_FOLDER"_qs, folder);
        helper.setProcessEnvironment(env);
        helper.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        Run run;
        QElapsedTimer timer;
        timer.start();
        helper.start(QCoreApplication::applicationFilePath(), {});
        if (!helper.waitForStarted(10000))
            qFatal("helper did not start");
        QByteArray said;
        while (!said.contains("ready\n")) {
            if (!helper.waitForReadyRead(60000))
                qFatal("helper never got ready");
            said += helper.readAllStandardOutput();
        }
        run.readyAfterMs = timer.restart();
        if (killAfterMs >= 0) {
            if (!helper.waitForFinished(int(killAfterMs)) && helper.state() == QProcess::Running) {
                ::kill(pid_t(helper.processId()), SIGKILL);
                run.killed = true;
            }
        }
        helper.waitForFinished(120000);
        run.endedAfterMs = timer.elapsed();
        run.exitCode = run.killed ? -1 : helper.exitCode();
        return run;
    }

    // Kill points spread over one and a half times the measured run (a run
    // under load takes longer), with the first ones close together at its
    // start; the last one lets the run end.
    static QList<qint64> killTimes(qint64 runMs)
    {
        QList<qint64> times;
        const int n = killPoints();
        for (int i = 0; i < n; ++i)
            times << (i < 4 ? i * 5 : runMs * 3 * (i - 3) / (2 * (n - 4)));
        times.last() = 120000; // one run to its end, however slow the machine
        return times;
    }

    QTemporaryDir work;
    int tried = 0;

private slots:
    void rentPostingKilledAnywhere()
    {
        // The template folder: a large portfolio and a downloaded payment file
        // with its archive copy, as the download leaves them.
        TestSite seed;
        RentSupport::seedLargePortfolio(seed, kTenants);
        RentSupport::writeLargePaymentFile(seed, kTenants, kPayments);
        const QByteArray payments = seed.fileBytes(seed.state->PaymentDownloadName);
        QVERIFY(TransferFile::remove(seed.path(seed.state->PaymentDownloadName)));
        auto script = std::make_shared<ScriptedProcessorClient::Script>();
        script->replies.append({ true, 200, TransferFile::fromAnsi(payments.chopped(2)) });
        seed.state->ClientFactory = ScriptedProcessorClient::factory(script);
        DownloadPaymentFile(*seed.state);
        QCOMPARE(seed.fileBytes(seed.state->PaymentDownloadName), payments);
        const QString templ = work.path() + u"/rent-template"_qs;
        QDir().mkpath(templ);
        seed.db().execText(u"VACUUM INTO '"_qs + templ + u"/dxdatafl.db'"_qs, "test");
        for (const QString &name : QDir(seed.folder()).entryList(QDir::Files))
            if (!name.startsWith(u"dxdatafl"_qs))
                QFile::copy(seed.path(name), templ + u'/' + name);
        copyFolder(seed.path(u"archive"_qs), templ + u"/archive"_qs);
        const QString archiveName = QDir(templ + u"/archive"_qs).entryList(QDir::Files).value(0);
        QVERIFY(!archiveName.isEmpty());

        const QString before = FolderState(templ).summary();
        // One whole run: the state after, and how long it takes.
        const QString full = work.path() + u"/rent-full"_qs;
        copyFolder(templ, full);
        const Run whole = runHelper(u"rent"_qs, full, -1);
        QCOMPARE(whole.exitCode, 0);
        const QString after = FolderState(full).summary();
        QVERIFY(after != before);
        qInfo("rent posting of %d payments: %lld ms after start-up", kPayments, whole.endedAfterMs);

        int atBefore = 0, atAfter = 0, finished = 0;
        for (const qint64 at : killTimes(whole.endedAfterMs)) {
            const QString folder = work.path() + u"/rent-kill-"_qs + QString::number(at);
            copyFolder(templ, folder);
            const Run run = runHelper(u"rent"_qs, folder, at);
            tried += run.killed ? 1 : 0;
            if (!run.killed) {
                ++finished;
                QCOMPARE(run.exitCode, 0);
            }
            FolderState site(folder);
            const QString now = site.summary();
            QVERIFY2(now == before || now == after,
                qPrintable(u"killed at %1 ms: %2"_qs.arg(at).arg(now)));
            QCOMPARE(bytesOf(folder + u"/archive/"_qs + archiveName), payments);
            const QByteArray waiting = bytesOf(site.state->pathOf(site.state->PaymentDownloadName));
            const QByteArray last = bytesOf(site.state->pathOf(PaymentFile::LastDownloadName));
            if (now == before) {
                ++atBefore;
                QCOMPARE(waiting, payments);
                // The same command completes the posting.
                PaymentFile::LoadResult loaded = PaymentFile::load(*site.state);
                QCOMPARE(loaded.rows.size(), kPayments);
                QVERIFY(UpdateLedgers::run(*site.state, loaded.rows, rentChoices()));
                QCOMPARE(site.summary(), after);
            } else {
                ++atAfter;
                // Posted: the file is moved aside, or, killed just before the
                // move, still waiting with every payment marked as posted.
                QVERIFY(waiting == payments || last == payments);
                if (!waiting.isEmpty()) {
                    PaymentFile::LoadResult loaded = PaymentFile::load(*site.state);
                    QCOMPARE(loaded.rows.size(), kPayments);
                    for (const RentPayment &row : loaded.rows)
                        QVERIFY(!row.postedNote.isEmpty());
                }
            }
            site.state.reset();
            QDir(folder).removeRecursively();
        }
        qInfo("rent: %d kill points, %d before, %d after, %d ran to the end", killPoints(),
            atBefore, atAfter, finished);
        QVERIFY(atBefore > 0);
        QVERIFY(atAfter > 0);
    }

    void distributionKilledAnywhere()
    {
        TestSite seed;
        HostDb &db = seed.db();
        const QString series
            = u"WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < %1) "_qs;
        db.execText(series.arg(kOwners)
                + u"INSERT INTO Owners (OwnerID, OFirstName1, OLastName1, OACH, OCurrBal) "
                  "SELECT i, 'First' || i, 'Last' || i, 'Y', 0 FROM n"_qs,
            "test");
        db.execText(u"INSERT INTO Properties (PropID, POwnerID, PCurrBal) SELECT OwnerID, OwnerID, 0 FROM Owners"_qs,
            "test");
        db.execText(series.arg(kChecks)
                + u"INSERT INTO CheckEntered (CkPayee, CkDate, CkAmount, CkRemark, CkVendorID, CkType) "
                  "SELECT 'First' || (i % %1 + 1) || ' Last' || (i % %1 + 1), '2024-05-01', i * 1.25, "
                  "'Draw ' || i, 0, 'C' FROM n"_qs.arg(kOwners),
            "test");
        db.execText(u"INSERT INTO SplitChecks (CkNumber, CkAmount, CkAccountID, CkPostToID, CkType, "
                    "CkPostTo) SELECT CkID, 10, 4000, CkID % %1 + 1, 'C', code FROM CheckEntered, "
                    "(SELECT 'O' AS code UNION ALL SELECT 'P')"_qs.arg(kOwners),
            "test");
        seed.writeIdFile({ u"Rent Income;4000;B"_qs, u"Rent received;1"_qs, u"Management Fee;6100;U"_qs,
            u"Mgmt"_qs, u"Late Fee Received;4100;T"_qs, u"Late fee;2"_qs });
        const QString templ = work.path() + u"/disb-template"_qs;
        QDir().mkpath(templ);
        db.execText(u"VACUUM INTO '"_qs + templ + u"/dxdatafl.db'"_qs, "test");
        QFile::copy(seed.path(u"IDFILE.DAT"_qs), templ + u"/IDFILE.DAT"_qs);

        const QString before = FolderState(templ).summary();
        const QString full = work.path() + u"/disb-full"_qs;
        copyFolder(templ, full);
        const Run whole = runHelper(u"distribution"_qs, full, -1);
        QCOMPARE(whole.exitCode, 0);
        const QString after = FolderState(full).summary();
        QVERIFY(after != before);
        const QByteArray lastUpload = bytesOf(full + u'/' + DistributionFile::LastUploadName);
        const QByteArray response = bytesOf(full + u'/' + DistributionFile::ResponseName);
        QVERIFY(!lastUpload.isEmpty() && !response.isEmpty());
        qInfo("distribution of %d checks: %lld ms after start-up", kChecks, whole.endedAfterMs);

        int atBefore = 0, recovered = 0, atAfter = 0, finished = 0;
        for (const qint64 at : killTimes(whole.endedAfterMs)) {
            const QString folder = work.path() + u"/disb-kill-"_qs + QString::number(at);
            copyFolder(templ, folder);
            const Run run = runHelper(u"distribution"_qs, folder, at);
            tried += run.killed ? 1 : 0;
            finished += run.killed ? 0 : 1;
            FolderState site(folder);
            const QString now = site.summary();
            QVERIFY2(now == before || now == after,
                qPrintable(u"killed at %1 ms: %2"_qs.arg(at).arg(now)));
            const QString distribution = site.state->pathOf(site.state->DisbursementUploadName);
            const QByteArray sent = bytesOf(distribution);
            const QByteArray answer = bytesOf(site.state->pathOf(DistributionFile::ResponseName));
            // Files are whole or absent.
            QVERIFY(sent.isEmpty() || sent == lastUpload);
            QVERIFY(answer.isEmpty() || answer == response);
            if (now == before) {
                ++atBefore;
                if (!answer.isEmpty()) {
                    // Answered but not posted: the recovery path finds the run
                    // and posts its accepted checks once.
                    QVERIFY(UnfinishedRun::present(*site.state));
                    site.prompter.queueAnswer(Prompter::Answer::Yes);
                    bool stop = true;
                    QCOMPARE(UnfinishedRun::settle(*site.state, stop), UnfinishedRun::Outcome::Posted);
                    QCOMPARE(site.summary(), after);
                    ++recovered;
                }
            } else {
                ++atAfter;
                QVERIFY(run.killed || run.exitCode == 0);
                bool stop = true;
                QCOMPARE(UnfinishedRun::settle(*site.state, stop), UnfinishedRun::Outcome::Clear);
                QCOMPARE(site.summary(), after);
            }
            // Whatever happened, nothing is left unfinished now and nothing was
            // posted twice.
            QVERIFY(!UnfinishedRun::present(*site.state) || now == before);
            QVERIFY(site.summary() == after || site.summary() == before);
            site.state.reset();
            QDir(folder).removeRecursively();
        }
        qInfo("distribution: %d kill points, %d before (%d recovered), %d after, %d ran to the end",
            killPoints(), atBefore, recovered, atAfter, finished);
        // With few points (the sanitizer run) a kill need not land in the
        // posting itself.
        if (killPoints() >= 16)
            QVERIFY(recovered > 0);
    }

    void cleanupTestCase() { qInfo("%d helpers killed in all", tried); }
};

int main(int argc, char **argv)
{
    const QString job = qEnvironmentVariable("REMITRA_CRASH_HELPER");
    if (!job.isEmpty()) {
        QCoreApplication app(argc, argv);
        return runHelper(job, qEnvironmentVariable("REMITRA_CRASH_FOLDER"));
    }
    QApplication app(argc, argv);
    TestCrash test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}

#include "tst_crash.moc"
