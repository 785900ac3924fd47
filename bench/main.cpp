// remitra-bench: generates a portfolio and measures the jobs a large site
// makes slow, each in a child process of its own, against baselines run in
// the same session. Prints a Markdown table; --json FILE writes every sample.

#include "BenchJobs.h"
#include "BenchReport.h"
#include "BenchSite.h"
#include "ChildRun.h"
#include "DemoSite.h"
#include "SandboxProcess.h"

#include "core/RuntimeError.h"
#include "hostdb/HostDb.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QStandardPaths>
#include <QSysInfo>
#include <QTemporaryDir>
#include <QThread>

#include <cstdio>
#include <cstring>

namespace {

struct Settings
{
    BenchSite::Sizes sizes;
    int repeat = 5;
    QString jsonFile;
    QStringList only; // job ids to run ("" = all)
    bool keep = false;
};

int positive(const QCommandLineParser &parser, const QString &name, int fallback)
{
    if (!parser.isSet(name))
        return fallback;
    bool ok = false;
    const int value = parser.value(name).toInt(&ok);
    if (!ok || value < 1) {
        std::fprintf(stderr, "remitra-bench: --%s takes a positive number\n", qPrintable(name));
        std::exit(2);
    }
    return value;
}

Settings parse(const QCoreApplication &app)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        u"Times Remitra's jobs on a generated portfolio against baselines measured in the same "
        "run: the sqlite3 shell exporting the setup join, and a plain loop making the posting's "
        "writes."_qs);
    parser.addHelpOption();
    parser.addOptions({
        { u"tenants"_qs, u"Tenants (and units) of the portfolio (default 100000)."_qs, u"N"_qs },
        { u"payments"_qs, u"Rent payments in the downloaded file (default 10000)."_qs, u"M"_qs },
        { u"checks"_qs, u"Entered checks paid by the distribution run (default 5000)."_qs,
            u"K"_qs },
        { u"repeat"_qs, u"Repetitions of every job; the median is reported (default 5)."_qs,
            u"R"_qs },
        { u"json"_qs, u"Also write every sample and verdict to this JSON file."_qs, u"FILE"_qs },
        { u"only"_qs, u"Run only these jobs (comma-separated ids; baselines always run)."_qs,
            u"IDS"_qs },
        { u"keep"_qs, u"Keep the generated folder and print where it is."_qs },
    });
    parser.process(app);
    Settings s;
    s.sizes.tenants = positive(parser, u"tenants"_qs, s.sizes.tenants);
    s.sizes.payments = positive(parser, u"payments"_qs, s.sizes.payments);
    s.sizes.checks = positive(parser, u"checks"_qs, s.sizes.checks);
    s.repeat = positive(parser, u"repeat"_qs, s.repeat);
    s.jsonFile = parser.value(u"json"_qs);
    if (parser.isSet(u"only"_qs))
        s.only = parser.value(u"only"_qs).split(u',', Qt::SkipEmptyParts);
    s.keep = parser.isSet(u"keep"_qs);
    return s;
}

QJsonObject machine()
{
    QString cpu;
    QFile info(u"/proc/cpuinfo"_qs);
    if (info.open(QIODevice::ReadOnly)) {
        for (const QByteArray &line : info.readAll().split('\n')) {
            if (line.startsWith("model name")) {
                cpu = QString::fromLatin1(line.mid(line.indexOf(':') + 1).trimmed());
                break;
            }
        }
    }
    qint64 memKb = 0;
    QFile mem(u"/proc/meminfo"_qs);
    if (mem.open(QIODevice::ReadOnly)) {
        const QByteArray first = mem.readLine();
        memKb = first.mid(9).trimmed().split(' ').value(0).toLongLong();
    }
    return { { u"nproc"_qs, QThread::idealThreadCount() }, { u"cpu"_qs, cpu },
        { u"ram_mb"_qs, memKb / 1024 }, { u"kernel"_qs, QSysInfo::kernelVersion() } };
}

class Runner
{
public:
    explicit Runner(const QString &root)
        : m_master(QDir(root).filePath(u"site"_qs))
        , m_work(QDir(root).filePath(u"run"_qs))
        , m_results(QDir(root).filePath(u"result.txt"_qs))
    {
    }

    const QString &master() const { return m_master; }
    void setSandbox(const SandboxProcess *sandbox) { m_sandbox = sandbox; }

    // One repetition of a job in a child process on a fresh copy of the site.
    void runJob(BenchReport::Row &row, const BenchJobs::Job &job)
    {
        if (job.sandbox && !m_sandbox) {
            row.notes = QStringList { u"skipped: the sandbox is not running"_qs };
            return;
        }
        BenchSite::copyForJob(m_master, m_work, job.paymentFile);
        QStringList args { u"--job"_qs, job.id, u"--folder"_qs, m_work, u"--result"_qs, m_results };
        if (m_sandbox)
            args << u"--url"_qs << m_sandbox->url() << u"--user"_qs << m_sandbox->user()
                 << u"--password"_qs << m_sandbox->password();
        QFile::remove(m_results);
        const qint64 spawned = BenchJobs::monotonicNs();
        const ChildRun::Result child = ChildRun::run(QCoreApplication::applicationFilePath(), args,
            QDir(m_work).filePath(u"out.txt"_qs), true);
        QFile result(m_results);
        QList<QByteArray> lines;
        if (result.open(QIODevice::ReadOnly))
            lines = result.readAll().split('\n');
        const QList<QByteArray> stamps = lines.value(0).split(' ');
        qint64 start = stamps.value(0).toLongLong();
        const qint64 end = stamps.value(1).toLongLong();
        if (start == 0)
            start = spawned;
        row.notes.clear();
        for (qsizetype i = 1; i < lines.size(); ++i) {
            if (!lines[i].isEmpty())
                row.notes << QString::fromUtf8(lines[i]);
        }
        if (!child.ok || end <= start) {
            ++row.failures;
            QFile output(QDir(m_work).filePath(u"out.txt"_qs));
            const QByteArray said
                = output.open(QIODevice::ReadOnly) ? output.readAll() : QByteArray();
            std::fprintf(stderr, "  %s failed (exit %d): %s\n%s", qPrintable(job.id),
                child.exitCode, qPrintable(row.notes.join(u"; "_qs)), said.constData());
            return;
        }
        row.seconds << double(end - start) / 1e9;
        // The job's own peak where it reported one (see BenchJobs).
        const qint64 ownPeak = stamps.value(2).toLongLong();
        row.peakKb << (ownPeak > 0 ? ownPeak : child.peakKb);
    }

    // The sqlite3 shell writing the setup join to a file, timed from spawn
    // to exit.
    void runShellExport(BenchReport::Row &row, const QString &shell, const QString &sql)
    {
        const QString db = QDir(m_master).filePath(QString::fromLatin1(HostDb::SqliteFileName));
        QDir().mkpath(m_work);
        const QString out = QDir(m_work).filePath(u"export.txt"_qs);
        const ChildRun::Result child
            = ChildRun::run(shell, { u"-batch"_qs, u"-separator"_qs, u"|"_qs, db, sql }, out);
        if (!child.ok) {
            ++row.failures;
            return;
        }
        row.seconds << child.seconds;
        row.peakKb << child.peakKb;
        row.notes = QStringList { u"export %1 bytes"_qs.arg(QFileInfo(out).size()) };
    }

private:
    QString m_master;
    QString m_work;
    QString m_results;
    const SandboxProcess *m_sandbox = nullptr;
};

int runBench(const Settings &settings)
{
    QTemporaryDir temp(QDir::temp().filePath(u"remitra-bench-XXXXXX"_qs));
    temp.setAutoRemove(!settings.keep);
    Runner runner(temp.path());

    BenchReport report;
    report.machine = machine();
    report.machine.insert(u"load_before"_qs, ChildRun::loadAverage());
    report.sizes
        = { { u"tenants"_qs, settings.sizes.tenants }, { u"payments"_qs, settings.sizes.payments },
              { u"checks"_qs, settings.sizes.checks }, { u"repeat"_qs, settings.repeat } };

    std::printf("remitra-bench: %d tenants, %d payments, %d checks, %d repetitions\n",
        settings.sizes.tenants, settings.sizes.payments, settings.sizes.checks, settings.repeat);
    std::printf("machine: %d cores, %s, %lld MB RAM; load average %s\n",
        report.machine[u"nproc"_qs].toInt(), qPrintable(report.machine[u"cpu"_qs].toString()),
        static_cast<long long>(report.machine[u"ram_mb"_qs].toInteger()),
        qPrintable(ChildRun::loadAverage()));
    std::fflush(stdout);

    QElapsedTimer clock;
    clock.start();
    const BenchSite::Written site = BenchSite::write(runner.master(), settings.sizes);
    std::printf("portfolio: %d owners, %d properties, %d tenants, %d entered checks, %d payments; "
                "database %.1f MB (generated in %.1f s)\n",
        site.owners, site.properties, site.tenants, site.checks, site.payments,
        double(site.databaseBytes) / 1048576.0, double(clock.elapsed()) / 1000.0);
    std::fflush(stdout);

    SandboxProcess sandbox(u"bench-user"_qs, u"bench-pass"_qs);
    if (sandbox.isRunning()) {
        runner.setSandbox(&sandbox);
        DemoSite::writeSettings(QDir(runner.master()).filePath(BenchSite::SettingsName),
            sandbox.url(), sandbox.user(), sandbox.password());
    } else {
        std::fprintf(stderr,
            "remitra-bench: the processor sandbox did not start; start-up and "
            "Upload All are skipped\n");
    }

    const QString shell = QStandardPaths::findExecutable(u"sqlite3"_qs);
    BenchReport::Row exportRow;
    exportRow.id = u"sqlite3-export"_qs;
    exportRow.label = u"sqlite3 shell export (setup join)"_qs;
    exportRow.isBaseline = true;
    report.rows << exportRow;
    BenchReport::Row loopRow;
    loopRow.id = BenchJobs::writeLoop().id;
    loopRow.label = BenchJobs::writeLoop().label;
    loopRow.isBaseline = true;
    report.rows << loopRow;

    QList<BenchJobs::Job> jobs;
    for (const BenchJobs::Job &job : BenchJobs::all()) {
        if (!settings.only.isEmpty() && !settings.only.contains(job.id))
            continue;
        jobs << job;
        BenchReport::Row row;
        row.id = job.id;
        row.label = job.label;
        row.ratioTarget = job.ratioTarget;
        row.secondsTarget = job.secondsTarget;
        row.peakTargetKb = BenchJobs::PeakTargetKb;
        if (job.baseline == BenchJobs::Baseline::SqliteExport)
            row.baselineId = exportRow.id;
        else if (job.baseline == BenchJobs::Baseline::WriteLoop)
            row.baselineId = loopRow.id;
        report.rows << row;
    }
    if (shell.isEmpty())
        report.find(exportRow.id)->notes << u"skipped: no sqlite3 shell on the PATH"_qs;

    // Repetitions are interleaved, so a baseline and its job share the
    // machine's moods alike.
    for (int rep = 1; rep <= settings.repeat; ++rep) {
        std::printf("repetition %d of %d (load average %s)\n", rep, settings.repeat,
            qPrintable(ChildRun::loadAverage()));
        std::fflush(stdout);
        if (!shell.isEmpty())
            runner.runShellExport(*report.find(exportRow.id), shell, site.exportSql);
        runner.runJob(*report.find(loopRow.id), BenchJobs::writeLoop());
        for (const BenchJobs::Job &job : jobs)
            runner.runJob(*report.find(job.id), job);
    }
    report.machine.insert(u"load_after"_qs, ChildRun::loadAverage());

    std::printf("\n%s\n", report.markdown().toUtf8().constData());
    for (const BenchReport::Row &row : report.rows) {
        if (!row.notes.isEmpty())
            std::printf("  %s: %s\n", qPrintable(row.id), qPrintable(row.notes.join(u"; "_qs)));
    }
    std::printf("load average before %s, after %s\n",
        qPrintable(report.machine[u"load_before"_qs].toString()),
        qPrintable(report.machine[u"load_after"_qs].toString()));
    if (settings.keep)
        std::printf("generated folder kept: %s\n", qPrintable(temp.path()));

    if (!settings.jsonFile.isEmpty()) {
        QFile out(settings.jsonFile);
        if (!out.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
            std::fprintf(stderr, "remitra-bench: cannot write %s\n", qPrintable(settings.jsonFile));
            return 1;
        }
        out.write(QJsonDocument(report.json()).toJson());
    }
    bool allMeasured = true;
    for (const BenchReport::Row &row : report.rows)
        allMeasured = allMeasured && row.failures == 0;
    return allMeasured ? 0 : 1;
}

} // namespace

int main(int argc, char *argv[])
{
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--job") == 0)
            return BenchJobs::runChild(argc, argv);
    }
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(u"remitra-bench"_qs);
    const Settings settings = parse(app);
    try {
        return runBench(settings);
    } catch (const RuntimeError &error) {
        std::fprintf(stderr, "remitra-bench: %s\n", qPrintable(error.description()));
        return 1;
    }
}
