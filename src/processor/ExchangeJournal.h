#pragma once

#include "app/MessageCapture.h"
#include "hostdb/Journal.h"
#include "processor/ProcessorCall.h"

#include <QStringList>

class ProgramState;

// The journal entry of one exchange with the processor. Created just before
// the call (after anything that would stop the job without a call), it
// records at once what is about to be sent: the files, each with its copy
// in archive/ (a copy with the same SHA-256 already there is named again
// rather than copied), their lines, and the checks of a distribution. The
// keep step it hands to ProcessorCall records the answer (result code, flag,
// what was received) before the result is reported, and every message the
// job shows from then on belongs to the run. An exchange whose answer was
// never recorded (the program ended, or an error stopped it) stays "sent".
class ExchangeJournal
{
public:
    struct What
    {
        QStringList sent; // file names in the program's folder
        QList<Journal::Line> lines;
        std::optional<qint64> count; // default: the lines of the files sent
        std::optional<Currency> total;
    };

    ExchangeJournal(ProgramState &state, Journal::Kind kind, const What &what = {});
    ~ExchangeJournal();

    ExchangeJournal(const ExchangeJournal &) = delete;
    ExchangeJournal &operator=(const ExchangeJournal &) = delete;

    // The keep step for ProcessorCall: runs `inner` (which may name what it
    // received with receives()), then records the answer.
    ProcessorCall::Keep keep(ProcessorCall::Keep inner = {});

    // A file written from the answer, with its archived copy (relative to
    // the program's folder), and what the answer held.
    void receives(const QString &name, const QString &archive,
        std::optional<qint64> count = std::nullopt, std::optional<Currency> total = std::nullopt);

    qint64 runId() const { return m_runId; }

private:
    // The file's size and SHA-256 with its archived copy (for a file sent,
    // made now when there is none; a received file comes with its own);
    // its lines are added to *lines when asked for.
    Journal::File describe(
        const QString &name, const QString &role, QString archive, qint64 *lines = nullptr) const;

    ProgramState &m_state;
    MessageCapture m_capture;
    qint64 m_runId = 0;
    bool m_answered = false;
    QList<Journal::File> m_received;
    std::optional<qint64> m_count;
    std::optional<Currency> m_total;
};
