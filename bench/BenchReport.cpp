#include "BenchReport.h"

#include <QJsonArray>

#include <algorithm>

BenchReport::Row *BenchReport::find(const QString &id)
{
    for (Row &r : rows) {
        if (r.id == id)
            return &r;
    }
    return nullptr;
}

const BenchReport::Row *BenchReport::find(const QString &id) const
{
    return const_cast<BenchReport *>(this)->find(id);
}

double BenchReport::median(QList<double> values)
{
    if (values.isEmpty())
        return 0;
    std::sort(values.begin(), values.end());
    const qsizetype n = values.size();
    return n % 2 == 1 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2;
}

qint64 BenchReport::medianPeakKb(const Row &row) const
{
    QList<double> values;
    for (qint64 kb : row.peakKb)
        values << double(kb);
    return qint64(median(values));
}

qint64 BenchReport::maxPeakKb(const Row &row) const
{
    return row.peakKb.isEmpty() ? 0 : *std::max_element(row.peakKb.cbegin(), row.peakKb.cend());
}

double BenchReport::ratio(const Row &row) const
{
    const Row *base = row.baselineId.isEmpty() ? nullptr : find(row.baselineId);
    if (!base || base->seconds.isEmpty() || row.seconds.isEmpty())
        return 0;
    const double b = medianSeconds(*base);
    return b > 0 ? medianSeconds(row) / b : 0;
}

QString BenchReport::targetText(const Row &row) const
{
    if (row.isBaseline)
        return u"—"_qs;
    QStringList parts;
    if (row.ratioTarget > 0)
        parts << u"≤ %1×"_qs.arg(row.ratioTarget, 0, 'g', 3);
    if (row.secondsTarget > 0)
        parts << u"< %1 s"_qs.arg(row.secondsTarget, 0, 'g', 3);
    if (row.peakTargetKb > 0)
        parts << u"< %1 MB"_qs.arg(row.peakTargetKb / 1024);
    return parts.join(u", "_qs);
}

QString BenchReport::verdict(const Row &row) const
{
    if (row.seconds.isEmpty() || row.failures > 0)
        return row.seconds.isEmpty() ? u"failed"_qs : u"failed %1×"_qs.arg(row.failures);
    if (row.isBaseline)
        return u"baseline"_qs;
    QStringList missed;
    if (row.ratioTarget > 0 && ratio(row) > row.ratioTarget)
        missed << u"ratio"_qs;
    if (row.secondsTarget > 0 && medianSeconds(row) >= row.secondsTarget)
        missed << u"time"_qs;
    if (row.peakTargetKb > 0 && maxPeakKb(row) >= row.peakTargetKb)
        missed << u"memory"_qs;
    return missed.isEmpty() ? u"pass"_qs : u"MISS ("_qs + missed.join(u", "_qs) + u')';
}

namespace {

QString secondsText(double s)
{
    return s >= 10 ? u"%1 s"_qs.arg(s, 0, 'f', 1) : u"%1 s"_qs.arg(s, 0, 'f', 3);
}

QString megabytes(qint64 kb)
{
    return u"%1 MB"_qs.arg(double(kb) / 1024.0, 0, 'f', 1);
}

} // namespace

QString BenchReport::markdown() const
{
    QString out = u"| Job | Time | Peak memory | Baseline | Ratio | Target | Verdict |\n"
                  "|---|---:|---:|---|---:|---|---|\n"_qs;
    for (const Row &row : rows) {
        const Row *base = row.baselineId.isEmpty() ? nullptr : find(row.baselineId);
        const bool measured = !row.seconds.isEmpty();
        out += u"| %1 | %2 | %3 | %4 | %5 | %6 | %7 |\n"_qs.arg(row.label,
            measured ? secondsText(medianSeconds(row)) : u"—"_qs,
            measured ? megabytes(maxPeakKb(row)) : u"—"_qs,
            base && !base->seconds.isEmpty()
                ? base->label + u" "_qs + secondsText(medianSeconds(*base))
                : u"—"_qs,
            ratio(row) > 0 ? u"%1×"_qs.arg(ratio(row), 0, 'f', 2) : u"—"_qs, targetText(row),
            verdict(row));
    }
    return out;
}

QJsonObject BenchReport::json() const
{
    QJsonArray jobs;
    for (const Row &row : rows) {
        QJsonArray seconds, peaks, notes;
        for (double s : row.seconds)
            seconds.append(s);
        for (qint64 kb : row.peakKb)
            peaks.append(kb);
        for (const QString &n : row.notes)
            notes.append(n);
        QJsonObject o { { u"id"_qs, row.id }, { u"job"_qs, row.label },
            { u"baseline"_qs, row.isBaseline }, { u"seconds"_qs, seconds },
            { u"peak_kb"_qs, peaks }, { u"median_seconds"_qs, medianSeconds(row) },
            { u"median_peak_kb"_qs, medianPeakKb(row) }, { u"max_peak_kb"_qs, maxPeakKb(row) },
            { u"target"_qs, targetText(row) }, { u"verdict"_qs, verdict(row) },
            { u"failures"_qs, row.failures }, { u"notes"_qs, notes } };
        if (!row.baselineId.isEmpty()) {
            o.insert(u"compared_with"_qs, row.baselineId);
            o.insert(u"ratio"_qs, ratio(row));
        }
        jobs.append(o);
    }
    return { { u"machine"_qs, machine }, { u"sizes"_qs, sizes }, { u"jobs"_qs, jobs } };
}
