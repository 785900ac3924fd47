#include "DisburseFixture.h"
#include "RentSupport.h"
#include "UploadsFixture.h"

#include "app/TopLevel.h"
#include "core/RuntimeError.h"
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
    void aCommandWhileTheHostHoldsTheLock_data()
    {
        QTest::addColumn<bool>("rent");
        QTest::addColumn<bool>("exclusive");
        for (const bool rent : { true, false })
            for (const bool exclusive : { true, false })
                QTest::addRow("%s, host %s", rent ? "rent posting" : "distribution",
                    exclusive ? "committing" : "writing")
                    << rent << exclusive;
    }
    // The command waits a few seconds, tells the user that the Dwellix
    // database is busy, changes nothing in it, and works once the lock is
    // gone. While the host commits nothing can be read, so a distribution
    // sends nothing; while it writes, the payments are read and sent but
    // cannot be posted: the next command finds the answered run and posts
    // it before anything is sent again.
    void aCommandWhileTheHostHoldsTheLock()
    {
        QFETCH(bool, rent);
        QFETCH(bool, exclusive);
        TestSite site;
        PaymentFile::LoadResult loaded;
        QList<PaymentRow> rows;
        std::shared_ptr<ScriptedProcessorClient::Script> script;
        if (rent) {
            RentSupport::seedPortfolio(site);
            RentSupport::writePaymentFile(site,
                { RentSupport::line(10, 100, u"1250.00"_qs),
                    RentSupport::line(20, 200, u"800"_qs) });
            loaded = PaymentFile::load(*site.state);
            QCOMPARE(loaded.rows.size(), 2);
        } else {
            DisburseFixture::populate(site);
            rows = DisburseList::load(site.db(), u"Payee"_qs);
            QString response;
            for (const PaymentRow &r : rows)
                response += u"O%1,B%2,0,Accepted\n"_qs.arg(r.payeeId()).arg(r.CkID);
            script = DisburseFixture::answering(site, 200, response);
        }
        const QByteArray file = site.fileBytes(site.state->files.paymentDownload);
        const QString before = ledgerSummary(site.db());
        bool stop = false;
        bool posted = false;
        const auto command = [&] {
            site.prompter.clear();
            TopLevel::run(*site.state, [&] {
                posted = rent ? UpdateLedgers::run(*site.state, loaded.rows, choices())
                              : DistributionRun(*site.state, stop).makePaymentsNow(rows, {});
            });
        };
        {
            HostWriter host(site.state->databasePath, exclusive);
            QElapsedTimer timer;
            timer.start();
            command();
            const qint64 waited = timer.elapsed();
            QVERIFY2(waited >= 3000 && waited < 20000, qPrintable(QString::number(waited)));
        }
        QVERIFY(!posted);
        QVERIFY2(
            site.prompter.texts().last().contains(kBusy), qPrintable(site.prompter.texts().last()));
        QVERIFY(!site.state->endRequested);
        QCOMPARE(site.prompter.busyDepth(), 0);
        QCOMPARE(ledgerSummary(site.db()), before);
        QCOMPARE(site.fileBytes(site.state->files.paymentDownload), file);
        if (!rent) {
            QCOMPARE(script->calls.size(), exclusive ? 0 : 1);
            QCOMPARE(UnfinishedRun::present(*site.state), !exclusive);
        }

        site.prompter.queueAnswer(Prompter::Answer::Yes);
        command();
        QVERIFY(ledgerSummary(site.db()) != before);
        if (rent) {
            QVERIFY(posted);
            QCOMPARE(site.prompter.texts().last(), ProductTexts::ledgersUpdated);
            QVERIFY(site.fileBytes(site.state->files.paymentDownload).isNull());
        } else {
            QCOMPARE(script->calls.size(), 1);
            QVERIFY(!UnfinishedRun::present(*site.state));
        }
    }

    // A flag saved while the host is free, then the screen closed while the
    // host commits: the upload cannot be built, the user is told the change
    // is kept, and it goes out at the next close even without a new edit.
    void enrolmentChangeIsKeptUntilSent()
    {
        TestSite site;
        UploadsFixture::addAll(site);
        auto script = site.scriptProcessor();
        auto screen = std::make_unique<TenantEnrolmentDialog>(*site.state);
        screen->show();
        auto *grid = child<QTableView>(*screen, "gridACH");
        grid->setCurrentIndex(grid->model()->index(0, 10));
        QTest::keyClicks(grid, u"n"_qs);
        QTest::keyClick(child<QLineEdit>(*grid, "flagEditor"), Qt::Key_Return);
        QCoreApplication::processEvents();
        QCOMPARE(grid->model()->index(0, 10).data().toString(), u"N"_qs);
        {
            HostWriter host(site.state->databasePath, true);
            screen->close();
        }
        QVERIFY(script->calls.isEmpty());
        QCOMPARE(site.prompter.shown().size(), 1);
        QVERIFY(site.prompter.texts().first().startsWith(
            u"Your changes are saved in Dwellix, but they could not be sent to Quenta Payment "
            "Services now:\r\r"_qs
            + kBusy));
        QVERIFY(!site.state->endRequested);

        for (int closing = 0; closing < 2; ++closing) {
            screen = std::make_unique<TenantEnrolmentDialog>(*site.state);
            screen->show();
            screen->close();
        }
        QCOMPARE(script->calls.size(), 1);
        QVERIFY(script->calls[0].texts[1].contains(u"|deactivate"_qs));
    }
};

QTEST_MAIN(TestLocked)
#include "tst_locked.moc"
