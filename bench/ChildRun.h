#pragma once

#include <QString>
#include <QStringList>

// One child process of a bench run, timed from spawn to exit, with its
// peak resident memory as the kernel counted it (ru_maxrss of wait4). A
// spawned child shares the spawner's memory until it execs, and that count
// keeps the larger of the two: it is never below what the bench itself held
// at the spawn (a job reports its own peak instead, BenchJobs).
namespace ChildRun {

struct Result
{
    bool ok = false;
    int exitCode = -1;
    double seconds = 0; // wall time, spawn to exit
    qint64 peakKb = 0; // peak resident set of the child
};

// Runs program with the arguments; stdout (and with errorsToo stderr as
// well) goes to stdoutFile when given, else to this process's.
Result run(const QString &program, const QStringList &arguments, const QString &stdoutFile = {},
    bool errorsToo = false);

// The peak resident set of this process so far (VmHWM), in kB.
qint64 ownPeakKb();

// The load average line of the machine (1, 5 and 15 minutes).
QString loadAverage();

} // namespace ChildRun
