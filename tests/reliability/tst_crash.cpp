#include "RentSupport.h"
#include "SandboxProcess.h"

#include "core/ScriptedPrompter.h"
#include "core/TransferFile.h"
#include "disburse/DistributionFile.h"
#include "disburse/DistributionRun.h"
#include "disburse/UnfinishedRun.h"
#include "hostdb/DisburseList.h"
#include "hostdb/DistributionRecord.h"
#include "hostdb/HostDb.h"
#include "hostdb/Journal.h"
#include "hostdb/JournalRecovery.h"
#include "hostdb/RentPostingRecord.h"
#include "processor/HttpProcessorClient.h"
#include "processor/RentDownload.h"
#include "rent/PaymentFile.h"
#include "rent/ReversePosting.h"
#include "rent/UpdateLedgers.h"

#include <QApplication>
#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>
#include <QSqlQuery>
#include <QTest>
#include <QThread>

#include <csignal>
#include <sys/types.h>

// A rent download, a large rent posting and a large distribution, each run by
// a helper process (this program, started again with REMITRA_CRASH_HELPER
// set) that is killed with SIGKILL: at every message box it shows (the
// helper waits there, as a user away from the desk would), and at points
// spread over the run. Then the next session does what a user would: opens
// the screens again, posts what is offered and pays everything listed. The
// processor is the real sandbox over HTTP, which remembers every check it
// paid; no check may be paid twice, no payment posted twice, and no payment
// the processor handed over or accepted may be lost.
namespace {

constexpr int kTenants = 2000;
constexpr int kPayments = 3000;
constexpr int kOwners = 500;
constexpr int kChecks = 2000;
// Checks above this amount are refused by the processor (a few, so that
// the rejection questions are kill points too).
constexpr double kLimit = 2493.75;

int killPoints()
{
    const int n = qEnvironmentVariableIntValue("REMITRA_KILL_POINTS");
    return n > 0 ? n : 24;
}

// The helper's prompter: says every message on stdout, answers Yes, and at
// message number stopAt waits for the kill.
class TellingPrompter : public ScriptedPrompter
{
public:
    explicit TellingPrompter(int stopAt)
        : m_stopAt(stopAt)
    {
    }
    void notice(const QString &text, const QString &title, Icon icon) override
    {
        ScriptedPrompter::notice(text, title, icon);
        say(title);
    }
    Answer ask(const QString &text, const QString &title, Icon icon) override
    {
        queueAnswer(Answer::Yes);
        const Answer answer = ScriptedPrompter::ask(text, title, icon);
        say(title);
        return answer;
    }

private:
    void say(const QString &title)
    {
        QTextStream out(stdout);
        out << "message " << ++m_count << ' ' << title << Qt::endl;
        if (m_count != m_stopAt)
            return;
        out << "waiting" << Qt::endl;
        for (;;)
            QThread::sleep(60);
    }
    int m_stopAt;
    int m_count = 0;
};

// The user of the next session: posts what a finished run left, and does not
// send again what may have been paid.
class CarefulUser : public ScriptedPrompter
{
public:
    Answer ask(const QString &text, const QString &title, Icon icon) override
    {
        queueAnswer(text.contains(u"no record of an answer"_qs) ? Answer::No : Answer::Yes);
        return ScriptedPrompter::ask(text, title, icon);
    }
};

// A program state over an existing folder, as start-up leaves it.
struct FolderState
{
    std::unique_ptr<ScriptedPrompter> prompter;
    std::unique_ptr<ProgramState> state;

    explicit FolderState(const QString &folder, std::unique_ptr<ScriptedPrompter> who = {})
        : prompter(who ? std::move(who) : std::make_unique<ScriptedPrompter>())
        , state(openFolder(*prompter, folder))
    {
    }

    void useSandbox(const QString &url)
    {
        state->login.url = url;
        state->login.user = u"sandbox-user"_qs;
        state->login.password = u"sandbox-pass"_qs;
        state->clientFactory = [] { return std::make_unique<HttpProcessorClient>(30); };
    }

    QString summary() const { return ledgerSummary(state->db()); }

    QStringList column(const QString &sql) const
    {
        QSqlQuery q(state->db().database());
        if (!q.exec(sql))
            qFatal("query failed");
        QStringList values;
        while (q.next())
            values << q.value(0).toString();
        return values;
    }
};

// The helper's side: runs one job over the folder, saying "ready" just
// before it starts.
int runHelper(const QString &job, const QString &folder)
{
    FolderState site(
        folder, std::make_unique<TellingPrompter>(qEnvironmentVariableIntValue("REMITRA_STOP_AT")));
    site.useSandbox(qEnvironmentVariable("REMITRA_CRASH_URL"));
    QTextStream out(stdout);
    if (job == u"download"_qs) {
        out << "ready" << Qt::endl;
        downloadPaymentFile(*site.state);
        return 0;
    }
    if (job == u"rent"_qs) {
        PaymentFile::LoadResult loaded = PaymentFile::load(*site.state);
        if (loaded.status != PaymentFile::LoadStatus::Loaded)
            return 3;
        out << "ready" << Qt::endl;
        return UpdateLedgers::run(
                   *site.state, loaded.rows, RentSupport::everything(), loaded.fileSha256)
            ? 0
            : 4;
    }
    const QList<PaymentRow> rows = DisburseList::load(site.state->db(), u"Payee"_qs);
    bool stop = false; // every rejection is asked about
    out << "ready" << Qt::endl;
    return DistributionRun(*site.state, stop).makePaymentsNow(rows, {}) ? 0 : 4;
}

// A program folder with a copy of the seed's host database and its other files.
QString folderFrom(TestSite &seed, const QString &folder)
{
    QDir().mkpath(folder);
    seed.db().execText(u"VACUUM INTO '"_qs + folder + u"/dxdatafl.db'"_qs, "test");
    for (const QString &name : QDir(seed.folder()).entryList(QDir::Files))
        if (!name.startsWith(u"dxdatafl"_qs) && !name.startsWith(u"remitra"_qs))
            QFile::copy(seed.path(name), folder + u'/' + name);
    return folder;
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

// Where a helper is killed: at its n-th message box, or so many
// milliseconds after it said "ready" (-1: it runs to its end).
struct KillPoint
{
    int message = 0;
    qint64 afterMs = -1;
    bool duringCall = false; // the processor holds its answer back meanwhile
    QString name() const
    {
        if (duringCall)
            return u"during-the-call"_qs;
        return message > 0 ? u"message-%1"_qs.arg(message) : u"at-%1ms"_qs.arg(afterMs);
    }
};

struct Run
{
    bool killed = false;
    int exitCode = -1;
    int messages = 0; // message boxes shown before the end or the kill
    qint64 endedAfterMs = 0; // from "ready" to the end or the kill
};

Run runHelperProcess(const QString &job, const QString &folder, const QString &url, KillPoint at)
{
    QProcess helper;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(u"REMITRA_CRASH_HELPER"_qs, job);
    env.insert(u"REMITRA_CRASH_FOLDER"_qs, folder);
    env.insert(u"REMITRA_CRASH_URL"_qs, url);
    env.insert(u"REMITRA_STOP_AT"_qs, QString::number(at.message));
    helper.setProcessEnvironment(env);
    helper.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    helper.start(QCoreApplication::applicationFilePath(), {});
    if (!helper.waitForStarted(10000))
        qFatal("helper did not start");
    Run run;
    QByteArray said;
    QElapsedTimer timer;
    auto readUntil = [&](const QByteArray &word, int waitMs) {
        while (!said.contains(word)) {
            if (!helper.waitForReadyRead(waitMs))
                return false;
            said += helper.readAllStandardOutput();
        }
        return true;
    };
    if (!readUntil("ready\n", 60000))
        qFatal("helper never got ready");
    timer.start();
    if (at.message > 0) {
        if (readUntil("waiting\n", 120000)) {
            ::kill(pid_t(helper.processId()), SIGKILL);
            run.killed = true;
        }
    } else if (at.afterMs >= 0) {
        if (!helper.waitForFinished(int(at.afterMs)) && helper.state() == QProcess::Running) {
            ::kill(pid_t(helper.processId()), SIGKILL);
            run.killed = true;
        }
    }
    helper.waitForFinished(180000);
    said += helper.readAllStandardOutput();
    run.endedAfterMs = timer.elapsed();
    run.exitCode = run.killed ? -1 : helper.exitCode();
    run.messages = int(said.count("message "));
    return run;
}

// Kill points over a run: every message box it shows, then times spread
// over one and a half times the measured run (a run under load takes
// longer), the first ones close together at its start.
QList<KillPoint> killPointsFor(const Run &whole)
{
    QList<KillPoint> points;
    for (int m = 1; m <= whole.messages; ++m)
        points.append({ m, -1 });
    const int n = killPoints();
    for (int i = 0; i < n; ++i)
        points.append({ 0, i < 4 ? i * 5 : whole.endedAfterMs * 3 * (i - 3) / (2 * (n - 4)) });
    return points;
}

// The program killed between the host's commit and the journal's: a helper
// process (this program started again with REMITRA_JOURNAL_CRASH set) posts, or reverses a posting,
// and kills itself at a named point of the commit. With the store on its own connection (the Access
// host's order of writes) the journal entry is then pending; the next start settles it from the
// host, and nothing is posted twice or lost. Attached to the SQLite host there is one commit, and
// nothing is ever pending.
PostingChoices commitChoices()
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

int runCommitHelper()
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
        return UpdateLedgers::run(*state, loaded.rows, commitChoices(), loaded.fileSha256) ? 0 : 4;
    }
    return ReversePosting::run(*state, Journal(state->store()).runs().first().id) ? 0 : 4;
}

// Runs the commit helper; true when it was killed.
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

class TestCrash : public QObject
{
    Q_OBJECT

    QTemporaryDir work;
    int tried = 0;

    // A sandbox over a copy of the given state file.
    std::unique_ptr<SandboxProcess> sandboxFor(const QString &folder, const QString &stateFile)
    {
        QStringList args;
        if (!stateFile.isEmpty()) {
            QFile::copy(stateFile, folder + u"/sandbox.json"_qs);
            args << u"--state"_qs << folder + u"/sandbox.json"_qs;
        }
        args << u"--payment-limit"_qs << QString::number(kLimit);
        auto sandbox
            = std::make_unique<SandboxProcess>(u"sandbox-user"_qs, u"sandbox-pass"_qs, args);
        if (!sandbox->isRunning())
            qFatal("sandbox did not start");
        return sandbox;
    }

private slots:
    // The processor hands the payments over once: killed while the result
    // of the download is on screen, the next start finds them waiting.
    void rentDownloadKilledAtItsMessage()
    {
        TestSite seed;
        RentSupport::seedLargePortfolio(seed, kTenants);
        RentSupport::writeLargePaymentFile(seed, kTenants, 200);
        const QByteArray payments = seed.fileBytes(seed.state->files.paymentDownload);
        QFile::remove(seed.path(seed.state->files.paymentDownload));
        const QString folder = folderFrom(seed, work.path() + u"/download"_qs);

        auto sandbox = sandboxFor(folder, {});
        QStringList lines = QString::fromLatin1(payments).split(u"\r\n"_qs);
        lines.removeAll(QString());
        sandbox->queueLines(lines);
        const Run run = runHelperProcess(u"download"_qs, folder, sandbox->url(), { 1, -1 });
        QVERIFY(run.killed);
        ++tried;
        FolderState site(folder);
        QCOMPARE(bytesOf(site.state->pathOf(site.state->files.paymentDownload)), payments);
        QCOMPARE(QDir(folder + u"/archive"_qs).entryList(QDir::Files).size(), 1);
        QCOMPARE(sandbox->records().value(u"delivered"_qs).toArray().size(), 200);
    }

    void rentPostingKilledAnywhere()
    {
        // The template folder: a large portfolio and a downloaded payment file
        // with its archive copy, as the download leaves them.
        TestSite seed;
        RentSupport::seedLargePortfolio(seed, kTenants);
        RentSupport::writeLargePaymentFile(seed, kTenants, kPayments);
        const QByteArray payments = seed.fileBytes(seed.state->files.paymentDownload);
        const QString templ = folderFrom(seed, work.path() + u"/rent-template"_qs);

        const QString before = FolderState(templ).summary();
        const QString full = work.path() + u"/rent-full"_qs;
        copyFolder(templ, full);
        const Run whole = runHelperProcess(u"rent"_qs, full, QString(), {});
        QCOMPARE(whole.exitCode, 0);
        QCOMPARE(whole.messages, 1); // "Your Dwellix Ledgers are now updated."
        const QString after = FolderState(full).summary();
        QVERIFY(after != before);
        qInfo("rent posting of %d payments: %lld ms", kPayments, whole.endedAfterMs);

        int atBefore = 0, atAfter = 0;
        for (const KillPoint &at : killPointsFor(whole)) {
            const QString folder = work.path() + u"/rent-"_qs + at.name();
            copyFolder(templ, folder);
            const Run run = runHelperProcess(u"rent"_qs, folder, QString(), at);
            tried += run.killed ? 1 : 0;
            QVERIFY(run.killed || run.exitCode == 0);

            // The next session opens the review screen and posts what it
            // offers.
            FolderState site(folder);
            const QString now = site.summary();
            QVERIFY2(now == before || now == after, qPrintable(at.name() + u": "_qs + now));
            PaymentFile::LoadResult loaded = PaymentFile::load(*site.state);
            if (now == before) {
                ++atBefore;
                QCOMPARE(loaded.rows.size(), std::size_t(kPayments));
                QVERIFY(UpdateLedgers::run(
                    *site.state, loaded.rows, RentSupport::everything(), loaded.fileSha256));
            } else {
                ++atAfter;
                // Posted: nothing is offered again, whenever the kill came.
                QCOMPARE(loaded.status, PaymentFile::LoadStatus::FileMissing);
                QVERIFY(loaded.rows.empty());
            }
            QCOMPARE(site.summary(), after);
            QCOMPARE(bytesOf(site.state->pathOf(PaymentFile::LastDownloadName)), payments);
            site.state.reset();
            QDir(folder).removeRecursively();
        }
        qInfo("rent: %d kill points before the commit, %d after", atBefore, atAfter);
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
        db.execText(u"INSERT INTO Properties (PropID, POwnerID, PCurrBal) "
                    "SELECT OwnerID, OwnerID, 0 FROM Owners"_qs,
            "test");
        db.execText(series.arg(kChecks)
                + u"INSERT INTO CheckEntered (CkPayee, CkDate, CkAmount, CkRemark, CkVendorID, "
                  "CkType) SELECT 'First' || (i % %1 + 1) || ' Last' || (i % %1 + 1), "
                  "'2024-05-01', i * 1.25, 'Draw ' || i, 0, 'C' FROM n"_qs.arg(kOwners),
            "test");
        db.execText(u"INSERT INTO SplitChecks (CkNumber, CkAmount, CkAccountID, CkPostToID, "
                    "CkType, CkPostTo) SELECT CkID, 10, 4000, CkID % %1 + 1, 'C', code FROM "
                    "CheckEntered, (SELECT 'O' AS code UNION ALL SELECT 'P')"_qs.arg(kOwners),
            "test");
        seed.writeIdFile(RentSupport::accountItems());
        const QString templ = folderFrom(seed, work.path() + u"/disb-template"_qs);
        // The processor knows every owner as active.
        QJsonObject payees;
        for (int i = 1; i <= kOwners; ++i)
            payees.insert(u"O%1"_qs.arg(i),
                QJsonObject { { u"kind"_qs, u"Owner"_qs },
                    { u"name"_qs, u"First%1 Last%1"_qs.arg(i) },
                    { u"action"_qs, u"activate"_qs } });
        const QString sandboxState = work.path() + u"/sandbox-template.json"_qs;
        {
            QFile f(sandboxState);
            QVERIFY(f.open(QIODevice::WriteOnly));
            f.write(QJsonDocument(QJsonObject { { u"payees"_qs, payees } }).toJson());
        }

        const QString before = FolderState(templ).summary();
        const QString full = work.path() + u"/disb-full"_qs;
        copyFolder(templ, full);
        auto fullSandbox = sandboxFor(full, sandboxState);
        const Run whole = runHelperProcess(u"distribution"_qs, full, fullSandbox->url(), {});
        QCOMPARE(whole.exitCode, 0);
        const int refused = int(kChecks - kLimit / 1.25);
        // The result, one question per refused check, the closing notice.
        QCOMPARE(whole.messages, 1 + refused + 1);
        const QString after = FolderState(full).summary();
        QVERIFY(after != before);
        qInfo("distribution of %d checks: %lld ms", kChecks, whole.endedAfterMs);

        int clean = 0, unanswered = 0;
        QList<KillPoint> points = killPointsFor(whole);
        // The processor has taken the request and not yet answered when the
        // program dies.
        points.append({ 0, 2000, true });
        for (const KillPoint &at : std::as_const(points)) {
            const QString folder = work.path() + u"/disb-"_qs + at.name();
            copyFolder(templ, folder);
            auto sandbox = sandboxFor(folder, sandboxState);
            if (at.duringCall)
                sandbox->forceDelay(int(at.afterMs) * 3);
            const Run run = runHelperProcess(u"distribution"_qs, folder, sandbox->url(), at);
            tried += run.killed ? 1 : 0;

            // The next session: the payment screen posts what an answered
            // run left, then the user pays everything listed again.
            FolderState site(folder, std::make_unique<CarefulUser>());
            site.useSandbox(sandbox->url());
            bool stop = true;
            UnfinishedRun::settle(*site.state, stop);
            const QList<PaymentRow> listed = DisburseList::load(site.state->db(), u"Payee"_qs);
            if (!listed.isEmpty())
                DistributionRun(*site.state, stop).makePaymentsNow(listed, {});

            // No check was paid twice; every paid check is posted once, or is
            // still entered and named to the user as sent without an answer.
            const QJsonObject records = sandbox->records();
            QVERIFY2(records.value(u"duplicates"_qs).toArray().isEmpty(),
                qPrintable(at.name() + u": paid twice"_qs));
            QSet<QString> paid;
            for (const QJsonValue &v : records.value(u"payments"_qs).toArray()) {
                const QJsonObject p = v.toObject();
                if (p.value(u"answer"_qs).toString().section(u',', 2, 2) == u"0"_qs)
                    paid.insert(p.value(u"line"_qs).toString().section(u'|', 2, 2));
            }
            const QStringList posted
                = site.column(u"SELECT CkRemark FROM CheckDepPrinted WHERE CkType = 'C'"_qs);
            QSet<QString> postedSet(posted.cbegin(), posted.cend());
            QCOMPARE(postedSet.size(), posted.size());
            QVERIFY2(postedSet.subtract(paid).isEmpty(), qPrintable(at.name()));
            QSet<QString> waiting;
            for (const DistributionRecord::Unanswered &u :
                DistributionRecord(site.state->store()).unanswered())
                waiting.insert(u.check.CkRemark);
            for (const QString &remark : std::as_const(paid)) {
                QVERIFY2(posted.contains(remark) != waiting.contains(remark),
                    qPrintable(at.name() + u": "_qs + remark));
            }
            QCOMPARE(site.column(u"SELECT count(*) FROM Transactions"_qs).value(0).toInt(),
                2 * int(posted.size()));
            if (waiting.isEmpty()) {
                ++clean;
                QCOMPARE(site.summary(), after);
            } else {
                ++unanswered;
                QVERIFY(at.message == 0); // a message waits only after the answer is kept
            }
            if (at.duringCall) {
                // Every check went out (most were paid); none was sent again.
                QCOMPARE(waiting.size(), kChecks);
                QCOMPARE(posted.size(), 0);
            }
            site.state.reset();
            QDir(folder).removeRecursively();
        }
        qInfo("distribution: %d kill points ended as a clean run, %d with payments sent "
              "without a recorded answer",
            clean, unanswered);
    }

    void cleanupTestCase() { qInfo("%d helpers killed in all", tried); }

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
            QVERIFY(
                UpdateLedgers::run(*site.state, loaded.rows, commitChoices(), loaded.fileSha256));
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
            HostDb::openSqlite(site.state->databasePath), RemitraStore::Connection::OwnConnection);
        RentSupport::seedPortfolio(site);
        RentSupport::writePaymentFile(site, { RentSupport::line(10, 100, u"1000"_qs) });
        const QStringList before = RentSupport::hostRows(site);
        QVERIFY(RentSupport::post(site, RentSupport::load(site), commitChoices()));
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
        return runCommitHelper();
    }
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
