#include "app/MessageCapture.h"

#include "app/ProgramState.h"
#include "core/RuntimeError.h"
#include "hostdb/RemitraStore.h"

MessageCapture::MessageCapture(ProgramState &state)
    : m_state(state)
    , m_inner(state.prompter())
{
    m_state.setPrompter(*this);
}

MessageCapture::~MessageCapture()
{
    m_state.setPrompter(m_inner);
}

void MessageCapture::attach(qint64 runId)
{
    m_runId = runId;
    const QList<Journal::Message> waiting = std::exchange(m_waiting, {});
    for (const Journal::Message &message : waiting)
        record(message);
}

void MessageCapture::record(const Journal::Message &message)
{
    if (!m_runId) {
        m_waiting.append(message);
        return;
    }
    // What the user is told matters more than its record: a store that
    // cannot be written does not keep the message from being shown.
    try {
        Journal(m_state.store()).addMessage(m_runId, message);
    } catch (const RuntimeError &error) {
        qWarning("a message was not recorded in the journal: %s", qPrintable(error.description()));
    }
}

void MessageCapture::notice(const QString &text, const QString &title, Icon icon)
{
    record({ RemitraStore::now(), title, text, {} });
    m_inner.notice(text, title, icon);
}

Prompter::Answer MessageCapture::ask(const QString &text, const QString &title, Icon icon)
{
    // The question is on record before it waits; its answer follows it.
    record({ RemitraStore::now(), title, text, u"asked"_qs });
    const Answer answer = m_inner.ask(text, title, icon);
    const QString said = answer == Answer::Yes ? u"Yes"_qs : u"No"_qs;
    record({ RemitraStore::now(), title, u"Answer: "_qs + said, said });
    return answer;
}
