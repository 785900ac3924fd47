#include "BenchReport.h"

#include <QJsonArray>
#include <QTest>

// The verdicts of the bench table: medians, ratios against the baseline the
// row names, and every target a row has.
class TestBenchReport : public QObject
{
    Q_OBJECT

    static BenchReport::Row row(const QString &id, QList<double> seconds, qint64 peakKb = 1000)
    {
        BenchReport::Row r;
        r.id = id;
        r.label = id;
        r.seconds = seconds;
        for (qsizetype i = 0; i < seconds.size(); ++i)
            r.peakKb << peakKb;
        return r;
    }

    static BenchReport report()
    {
        BenchReport report;
        BenchReport::Row base = row(u"base"_qs, { 0.9, 0.4, 0.5 });
        base.isBaseline = true;
        report.rows << base;
        BenchReport::Row job = row(u"job"_qs, { 0.6, 0.8, 0.7, 5.0 });
        job.baselineId = u"base"_qs;
        job.ratioTarget = 1.5;
        job.peakTargetKb = 300 * 1024;
        report.rows << job;
        return report;
    }

private slots:
    void mediansIgnoreTheOutlier()
    {
        QCOMPARE(BenchReport::median({ 0.9, 0.4, 0.5 }), 0.5);
        QCOMPARE(BenchReport::median({ 0.6, 0.8, 0.7, 5.0 }), 0.75);
        QCOMPARE(BenchReport::median({}), 0.0);
        const BenchReport r = report();
        QCOMPARE(r.ratio(*r.find(u"job"_qs)), 1.5);
        QCOMPARE(r.verdict(*r.find(u"job"_qs)), u"pass"_qs);
        QCOMPARE(r.verdict(*r.find(u"base"_qs)), u"baseline"_qs);
    }

    void everyMissedTargetIsNamed()
    {
        BenchReport r = report();
        BenchReport::Row &job = *r.find(u"job"_qs);
        job.seconds = { 0.8, 0.8, 0.8 };
        QCOMPARE(r.verdict(job), u"MISS (ratio)"_qs);
        job.secondsTarget = 0.8;
        job.peakKb[1] = 300 * 1024; // the highest peak counts, not the median
        QCOMPARE(r.verdict(job), u"MISS (ratio, time, memory)"_qs);
        job.failures = 1;
        QCOMPARE(r.verdict(job), u"failed 1×"_qs);
        job.seconds.clear();
        QCOMPARE(r.verdict(job), u"failed"_qs);
    }

    void aRowWithoutItsBaselineHasNoRatio()
    {
        BenchReport r = report();
        r.find(u"base"_qs)->seconds.clear();
        const BenchReport::Row &job = *r.find(u"job"_qs);
        QCOMPARE(r.ratio(job), 0.0);
        QCOMPARE(r.verdict(job), u"pass"_qs);
        QVERIFY(r.markdown().contains(
            u"| job | 0.750 s | 1.0 MB | — | — | ≤ 1.5×, < 300 MB | pass |"_qs));
    }

    void jsonKeepsEverySample()
    {
        const QJsonObject json = report().json();
        const QJsonObject job = json[u"jobs"_qs].toArray()[1].toObject();
        QCOMPARE(job[u"seconds"_qs].toArray().size(), 4);
        QCOMPARE(job[u"compared_with"_qs].toString(), u"base"_qs);
        QCOMPARE(job[u"ratio"_qs].toDouble(), 1.5);
        QCOMPARE(job[u"verdict"_qs].toString(), u"pass"_qs);
    }
};

QTEST_GUILESS_MAIN(TestBenchReport)
#include "tst_report.moc"
