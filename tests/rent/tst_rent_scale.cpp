#include "RentSupport.h"

#include "hostdb/RentBackup.h"
#include "rent/PaymentFile.h"
#include "rent/PaymentTableModel.h"
#include "rent/UpdateLedgers.h"
#include "rent/frmDownload.h"

#include <QElapsedTimer>

#include <ctime>
#include <QTest>

// A rent cycle on a generated portfolio. By default a small one, checked for
// consistency; with REMITRA_BENCH=1 in the environment the full size (100,000
// tenants, 10,000 payments), with the times written to the log.
class TestRentScale : public QObject
{
    Q_OBJECT

private slots:
    void loadAndPostAPortfolio()
    {
        const bool bench = qEnvironmentVariableIntValue("REMITRA_BENCH") == 1;
        const int tenants = bench ? 100000 : 2000;
        const int payments = bench ? 10000 : 500;

        TestSite site;
        // Wall time, and processor time of this process (the machine may be
        // shared).
        QElapsedTimer clock;
        clock.start();
        std::clock_t cpu = std::clock();
        QStringList cpuTimes;
        auto cpuLap = [&] {
            const std::clock_t now = std::clock();
            cpuTimes << QString::number((now - cpu) * 1000 / CLOCKS_PER_SEC);
            cpu = now;
        };
        RentSupport::seedLargePortfolio(site, tenants);
        site.writeFile(site.state->PaymentDownloadName,
                       RentSupport::largePaymentFile(tenants, payments).toLatin1());
        const qint64 seeded = clock.restart();
        cpuLap();

        auto loaded = PaymentFile::load(*site.state);
        PaymentTableModel model;
        model.setRows(loaded.rows);
        const qint64 load = clock.restart();
        cpuLap();
        QCOMPARE(loaded.status, PaymentFile::LoadStatus::Loaded);
        QCOMPARE(model.rowCount(), payments);

        {
            frmDownload screen(*site.state, nullptr);
            QCOMPARE(screen.rowCount(), payments);
        }
        const qint64 screenLoad = clock.restart();
        cpuLap();

        RentBackup::write(site.db(), site.folder());
        const qint64 backup = clock.restart();
        cpuLap();

        PostingChoices choices;
        choices.postMgmtFees = true;
        choices.depositNumber = u"9001"_qs;
        choices.remark = PostingChoices::MethodRemark;
        QVERIFY(UpdateLedgers::run(*site.state, model.rows(), choices));
        const qint64 post = clock.restart();
        cpuLap();

        // Every payment and the deposit agree with the file's total.
        const Currency total = *loaded.total;
        QCOMPARE(site.scalar(u"SELECT count(*) FROM Transactions WHERE TransType = 'I'"_qs).toInt(),
                 payments);
        QCOMPARE(Currency::fromVariant(site.scalar(u"SELECT CkAmount FROM CheckDepPrinted"_qs)), total);
        QCOMPARE(Currency::fromVariant(site.scalar(u"SELECT sum(TCurrBal) FROM Tenants"_qs)), total);
        QCOMPARE(site.scalar(u"SELECT count(*) FROM SplitPrintedChecks"_qs).toInt(), payments);
        const int fees = site.scalar(u"SELECT count(*) FROM Transactions WHERE TransType = 'E'"_qs).toInt();
        QCOMPARE(fees, payments - payments / 10);

        qInfo("portfolio of %d tenants, %d payments: generated %lld ms; load into the model %lld ms; "
              "screen with its load %lld ms; backup copy %lld ms; posting with fees and deposit "
              "(backup included) %lld ms; processor time of each step %s ms",
              tenants, payments, seeded, load, screenLoad, backup, post,
              qPrintable(cpuTimes.join(u" / "_qs)));
    }
};

QTEST_MAIN(TestRentScale)
#include "tst_rent_scale.moc"
