#include "DisburseFixture.h"
#include "RentSupport.h"
#include "ScriptedProcessorClient.h"

#include "UploadsFixture.h"

#include "app/TopLevel.h"
#include "core/RuntimeError.h"
#include "disburse/DistributionFile.h"
#include "disburse/DistributionRun.h"
#include "disburse/UnfinishedRun.h"
#include "enrolment/TenantEnrolmentDialog.h"
#include "hostdb/DisburseList.h"
#include "rent/PaymentFile.h"
#include "rent/UpdateLedgers.h"

#include <QElapsedTimer>
#include <QLineEdit>
#include <QProcess>
#include <QTableView>
#include <QTest>

// The host application writing to its database at the moment a command runs:
// a separate process (the sqlite3 shell) holds the lock. The command waits a
// few seconds, tells the user that the Dwellix database is busy, changes
// nothing in it, and the same command works once the lock is gone.
namespace {

// The host's side: a shell process holding a write lock until release().
class HostWriter
{
public:
    // exclusive: the host is committing (no one may read); otherwise it has
    // begun writing (others may still read).
    HostWriter(const QString &database, bool exclusive)
    {
        m_shell.setProcessChannelMode(QProcess::MergedChannels);
        m_shell.start(u"sqlite3"_qs, { u"-batch"_qs, database });
        if (!m_shell.waitForStarted(5000))
            qFatal("sqlite3 did not start");
        m_shell.write(exclusive ? "BEGIN EXCLUSIVE;\n" : "BEGIN IMMEDIATE;\n");
        m_shell.write("UPDATE Vendors SET VenName = VenName;\nSELECT 'locked';\n");
        QByteArray said;
        while (!said.contains("locked")) {
            if (!m_shell.waitForReadyRead(5000))
                qFatal("the host shell did not take the lock: %s", said.constData());
            said += m_shell.readAll();
        }
    }
    ~HostWriter() { release(); }
    void release()
    {
        if (m_shell.state() == QProcess::NotRunning)
            return;
        m_shell.write("ROLLBACK;\n.quit\n");
        m_shell.closeWriteChannel();
        m_shell.waitForFinished(5000);
    }

private:
    QProcess m_shell;
};

const QString kBusy = RuntimeError::databaseBusy().description();

} // namespace

class TestLocked : public QObject
{
    Q_OBJECT

    static PostingChoices choices()
    {
        PostingChoices c;
        c.postMgmtFees = true;
        c.createDeposit = true;
        c.remark = PostingChoices::DefaultRemark;
        return c;
    }

private slots:
    void rentPostingWaitsAndTellsTheUser_data()
    {
        QTest::addColumn<bool>("exclusive");
        QTest::newRow("host committing") << true;
        QTest::newRow("host writing") << false;
    }
    void rentPostingWaitsAndTellsTheUser()
    {
        QFETCH(bool, exclusive);
        TestSite site;
        RentSupport::seedPortfolio(site);
        RentSupport::writePaymentFile(site,
            { RentSupport::line(10, 100, u"1250.00"_qs), RentSupport::line(20, 200, u"800"_qs) });
        const QByteArray file = site.fileBytes(site.state->PaymentDownloadName);
        PaymentFile::LoadResult loaded = PaymentFile::load(*site.state);
        QCOMPARE(loaded.rows.size(), 2);
        const QString before = ledgerSummary(site.db());

        std::optional<HostWriter> host(std::in_place, site.state->DatabasePath, exclusive);
        QElapsedTimer timer;
        timer.start();
        bool posted = false;
        TopLevel::run(
            *site.state, [&] { posted = UpdateLedgers::run(*site.state, loaded.rows, choices()); });
        const qint64 waited = timer.elapsed();
        QVERIFY(!posted);
        QVERIFY2(waited >= 3000 && waited < 20000, qPrintable(QString::number(waited)));
        QCOMPARE(site.prompter.shown().size(), 1);
        QVERIFY2(site.prompter.texts().first().contains(kBusy),
            qPrintable(site.prompter.texts().first()));
        QVERIFY(!site.state->EndRequested);
        QCOMPARE(site.prompter.busyDepth(), 0);
        host->release();
        QCOMPARE(ledgerSummary(site.db()), before);
        QCOMPARE(site.fileBytes(site.state->PaymentDownloadName), file);

        // The lock is gone: the same command posts.
        site.prompter.clear();
        TopLevel::run(
            *site.state, [&] { posted = UpdateLedgers::run(*site.state, loaded.rows, choices()); });
        QVERIFY(posted);
        QCOMPARE(site.prompter.texts().last(), ProductTexts::ledgersUpdated);
        QCOMPARE(
            site.scalar(
                    u"SELECT count(*) FROM Transactions WHERE TransAmount > 0 AND TransTID > 0"_qs)
                .toInt(),
            2);
        QVERIFY(site.fileBytes(site.state->PaymentDownloadName).isNull());
    }

    // A flag saved while the host is free, then the screen closed while the
    // host commits: the upload cannot be built, the user is told the change
    // is kept, and it goes out at the next close even without a new edit.
    void enrolmentChangeIsKeptUntilSent()
    {
        TestSite site;
        UploadsFixture::addAll(site);
        auto script = std::make_shared<ScriptedProcessorClient::Script>();
        site.state->ClientFactory = ScriptedProcessorClient::factory(script);
        auto screen = std::make_unique<TenantEnrolmentDialog>(*site.state);
        screen->show();
        auto *grid = child<QTableView>(*screen, "gridACH");
        grid->setCurrentIndex(grid->model()->index(0, 10));
        QTest::keyClicks(grid, u"n"_qs);
        auto *editor = child<QLineEdit>(*grid, "flagEditor");
        QVERIFY(editor);
        QTest::keyClick(editor, Qt::Key_Return);
        QCoreApplication::processEvents();
        QCOMPARE(grid->model()->index(0, 10).data().toString(), u"N"_qs);
        {
            HostWriter host(site.state->DatabasePath, true);
            screen->close();
        }
        QVERIFY(script->calls.isEmpty());
        QCOMPARE(site.prompter.texts(),
            QStringList { u"Your changes are saved in Dwellix, but they could not be sent to "
                          "Quenta Payment Services now:\r\r"_qs
                + kBusy
                + u"\r\rRemitra will send them the next time you close this screen or start "
                  "Remitra."_qs });
        QVERIFY(!site.state->EndRequested);

        for (int closing = 0; closing < 2; ++closing) {
            screen = std::make_unique<TenantEnrolmentDialog>(*site.state);
            screen->show();
            screen->close();
        }
        QCOMPARE(script->calls.size(), 1);
        QVERIFY(script->calls[0].texts[1].contains(u"|deactivate"_qs));
    }

    void distributionWhileTheHostHoldsTheLock_data()
    {
        QTest::addColumn<bool>("exclusive");
        QTest::newRow("host committing") << true;
        QTest::newRow("host writing") << false;
    }
    // While the host commits nothing can be read: nothing is sent. While it
    // writes, the payments are read and sent but cannot be posted: the next
    // command finds the answered run and posts it before anything is sent
    // again. Nothing is written in the host meanwhile.
    void distributionWhileTheHostHoldsTheLock()
    {
        QFETCH(bool, exclusive);
        TestSite site;
        DisburseFixture::populate(site);
        const QList<PaymentRow> rows = DisburseList::load(site.db(), u"Payee"_qs);
        QString response;
        for (const PaymentRow &r : rows)
            response += u"O%1,B%2,0,Accepted\n"_qs.arg(r.payeeId()).arg(r.CkID);
        auto script = DisburseFixture::answering(site, 200, response);
        const QString before = ledgerSummary(site.db());
        bool stop = false;
        const auto pay = [&] {
            TopLevel::run(
                *site.state, [&] { DistributionRun(*site.state, stop).MakePaymentsNow(rows, {}); });
        };
        {
            HostWriter host(site.state->DatabasePath, exclusive);
            QElapsedTimer timer;
            timer.start();
            pay();
            QVERIFY(timer.elapsed() >= 3000);
        }
        QCOMPARE(site.prompter.texts().last(), kBusy);
        QCOMPARE(script->calls.size(), exclusive ? 0 : 1);
        QCOMPARE(ledgerSummary(site.db()), before);
        QCOMPARE(UnfinishedRun::present(*site.state), !exclusive);

        site.prompter.clear();
        site.prompter.queueAnswer(Prompter::Answer::Yes);
        pay();
        QCOMPARE(script->calls.size(), 1);
        QVERIFY(ledgerSummary(site.db()) != before);
        QVERIFY(!UnfinishedRun::present(*site.state));
    }
};

QTEST_MAIN(TestLocked)
#include "tst_locked.moc"
