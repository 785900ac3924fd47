#pragma once

#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>

// The figures of a bench run: samples per job, medians, ratios against the
// baselines, targets and verdicts, as a Markdown table and as JSON.
class BenchReport
{
public:
    struct Row
    {
        QString id;
        QString label;
        bool isBaseline = false;
        QString baselineId; // the row this one is compared with ("" for none)
        double ratioTarget = 0;
        double secondsTarget = 0;
        qint64 peakTargetKb = 0;
        QList<double> seconds;
        QList<qint64> peakKb;
        QStringList notes; // of the last repetition
        int failures = 0;
    };

    QList<Row> rows;
    QJsonObject machine; // nproc, CPU, RAM, load averages
    QJsonObject sizes;

    Row *find(const QString &id);
    const Row *find(const QString &id) const;

    static double median(QList<double> values);
    double medianSeconds(const Row &row) const { return median(row.seconds); }
    qint64 medianPeakKb(const Row &row) const;
    qint64 maxPeakKb(const Row &row) const;
    // Job time over baseline time (0 when there is no baseline).
    double ratio(const Row &row) const;
    QString targetText(const Row &row) const;
    // "pass", "MISS (...)", "failed" or "baseline".
    QString verdict(const Row &row) const;

    QString markdown() const;
    QJsonObject json() const;
};
