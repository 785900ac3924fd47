#pragma once

#include "core/Prompter.h"
#include "hostdb/Journal.h"

#include <QList>

class ProgramState;

// Records in the journal every message a run shows the user, in order, and
// the answer to each question. For its lifetime it stands in for the
// state's prompter and passes everything on to the one it replaced. A job
// creates it first thing, before anything takes the state's prompter.
// Messages shown before the run has its journal entry are kept and written
// when attach() names the run; without a run they are not recorded.
//
// A message is written before it is shown, so a program ended while the
// box waits still has it in the journal. Jobs show messages only once the
// host database is committed, so the write never joins a host transaction.
class MessageCapture : public Prompter
{
public:
    explicit MessageCapture(ProgramState &state);
    ~MessageCapture() override;

    MessageCapture(const MessageCapture &) = delete;
    MessageCapture &operator=(const MessageCapture &) = delete;

    void attach(qint64 runId);
    qint64 runId() const { return m_runId; }

    void notice(const QString &text, const QString &title, Icon icon = Icon::Information) override;
    Answer ask(const QString &text, const QString &title, Icon icon = Icon::Information) override;
    void beginBusy() override { m_inner.beginBusy(); }
    void endBusy() override { m_inner.endBusy(); }
    void resetBusy() override { m_inner.resetBusy(); }
    void showStatus(const QString &activity, const QString &progress) override
    {
        m_inner.showStatus(activity, progress);
    }

private:
    void record(const Journal::Message &message);

    ProgramState &m_state;
    Prompter &m_inner;
    qint64 m_runId = 0;
    QList<Journal::Message> m_waiting;
};
