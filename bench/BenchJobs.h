#pragma once

#include <QList>
#include <QString>
#include <QStringList>

// The measured jobs of a bench run. Each runs alone in a child process
// (remitra-bench --job ID ...) on a fresh copy of the portfolio, times only
// its own work and writes the time to a result file.
namespace BenchJobs {

enum class Baseline { None, SqliteExport, WriteLoop };

struct Job
{
    QString id; // the --job name
    QString label; // the table's name for it
    Baseline baseline = Baseline::None;
    double ratioTarget = 0; // at most this multiple of the baseline (0: none)
    double secondsTarget = 0; // under this many seconds (0: none)
    bool paymentFile = false; // needs the downloaded payment file
    bool sandbox = false; // talks to the processor sandbox
};

// Every job, in the order of the table.
const QList<Job> &all();
// The plain write loop that makes the posting's writes: the posting's floor.
const Job &writeLoop();

// Peak memory every job must stay under.
constexpr qint64 PeakTargetKb = 300 * 1024;

// Child side: runs the job named by --job in this process. Arguments:
// --job ID --folder DIR --result FILE [--url URL --user U --password P].
// The result file holds "start end peak": the times in CLOCK_MONOTONIC
// nanoseconds (start 0: from the process's spawn), the child's own peak
// resident memory in kB (VmHWM); then notes, one a line. Returns the exit
// code.
int runChild(int argc, char *argv[]);

// CLOCK_MONOTONIC now, in nanoseconds (shared by parent and child).
qint64 monotonicNs();

} // namespace BenchJobs
