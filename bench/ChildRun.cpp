#include "ChildRun.h"

#include <QElapsedTimer>
#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <vector>

extern char **environ;

namespace ChildRun {

Result run(
    const QString &program, const QStringList &arguments, const QString &stdoutFile, bool errorsToo)
{
    std::vector<QByteArray> storage;
    storage.push_back(program.toLocal8Bit());
    for (const QString &a : arguments)
        storage.push_back(a.toLocal8Bit());
    std::vector<char *> argv;
    for (QByteArray &s : storage)
        argv.push_back(s.data());
    argv.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    const QByteArray out = stdoutFile.toLocal8Bit();
    if (!stdoutFile.isEmpty())
        posix_spawn_file_actions_addopen(
            &actions, STDOUT_FILENO, out.constData(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (!stdoutFile.isEmpty() && errorsToo)
        posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);

    Result result;
    QElapsedTimer clock;
    clock.start();
    pid_t pid = 0;
    const int spawned = posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (spawned != 0)
        return result;
    int status = 0;
    rusage usage {};
    while (wait4(pid, &status, 0, &usage) < 0) {
        if (errno != EINTR)
            return result;
    }
    result.seconds = double(clock.nsecsElapsed()) / 1e9;
    result.peakKb = usage.ru_maxrss; // kB on Linux
    result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    result.ok = result.exitCode == 0;
    return result;
}

qint64 ownPeakKb()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith("VmHWM:"))
            return line.mid(6).trimmed().split(' ').value(0).toLongLong();
    }
    return 0;
}

QString loadAverage()
{
    QFile f(QStringLiteral("/proc/loadavg"));
    if (!f.open(QIODevice::ReadOnly))
        return {};
    const QList<QByteArray> parts = f.readAll().split(' ');
    return QString::fromLatin1(parts.mid(0, 3).join(' '));
}

} // namespace ChildRun
