#include "RentSupport.h"

#include "rent/PaymentFile.h"
#include "rent/PaymentTableModel.h"
#include "rent/UpdateLedgers.h"
#include "rent/frmDownload.h"

#include <QElapsedTimer>
#include <QTest>

#include <ctime>

// A rent cycle on a generated portfolio, checked for consistency. Small by
// default; REMITRA_BENCH=1 runs the full size (100,000 tenants, 10,000
// payments) and logs wall and processor times of each step.
class TestRentScale : public QObject
{
    Q_OBJECT

private slots:
    void loadAndPostAPortfolio()
    {
        const bool bench = qEnvironmentVariableIntValue("REMITRA_BENCH") == 1;
        const int tenants = bench ? 100000 : 2000;
        const int payments = bench ? 10000 : 500;
        QStringList times;
        QElapsedTimer clock;
        std::clock_t cpu = std::clock();
        auto lap = [&](const char *step) {
            const std::clock_t now = std::clock();
            times << u"%1 %2 ms (cpu %3 ms)"_qs.arg(QString::fromLatin1(step))
                         .arg(clock.restart())
                         .arg((now - cpu) * 1000 / CLOCKS_PER_SEC);
            cpu = now;
        };

        TestSite site;
        clock.start();
        RentSupport::seedLargePortfolio(site, tenants);
        RentSupport::writeLargePaymentFile(site, tenants, payments);
        lap("generate");
        frmDownload screen(*site.state, nullptr);
        lap("load into the screen");
        QCOMPARE(screen.rowCount(), payments);

        PostingChoices choices;
        choices.postMgmtFees = true;
        choices.depositNumber = u"9001"_qs;
        QVERIFY(UpdateLedgers::run(*site.state, screen.model().rows(), choices));
        lap("post with fees and deposit (backup included)");
        qInfo("%d tenants, %d payments: %s", tenants, payments, qPrintable(times.join(u"; "_qs)));

        // Payments, balances and the deposit agree with the screen's total.
        const Currency total = PaymentFile::TransactionTotal(screen.model().rows());
        QCOMPARE(
            Currency::fromVariant(site.scalar(u"SELECT CkAmount FROM CheckDepPrinted"_qs)), total);
        QCOMPARE(
            Currency::fromVariant(site.scalar(u"SELECT sum(TCurrBal) FROM Tenants"_qs)), total);
        QCOMPARE(site.scalar(u"SELECT count(*) FROM SplitPrintedChecks"_qs).toInt(), payments);
        QCOMPARE(site.scalar(u"SELECT count(*) FROM Transactions"_qs).toInt(), payments * 19 / 10);
    }
};

QTEST_MAIN(TestRentScale)
#include "tst_rent_scale.moc"
