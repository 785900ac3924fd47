#include "core/ScriptedPrompter.h"

void ScriptedPrompter::notice(const QString &text, const QString &title, Icon icon)
{
    m_shown.append({Shown::Notice, text, title, icon});
}

Prompter::Answer ScriptedPrompter::ask(const QString &text, const QString &title, Icon icon)
{
    m_shown.append({Shown::Question, text, title, icon});
    if (m_answers.isEmpty()) {
        ++m_unanswered;
        return Answer::No;
    }
    return m_answers.dequeue();
}

QStringList ScriptedPrompter::texts() const
{
    QStringList out;
    for (const Shown &s : m_shown)
        out << s.text;
    return out;
}

QStringList ScriptedPrompter::titles() const
{
    QStringList out;
    for (const Shown &s : m_shown)
        out << s.title;
    return out;
}

void ScriptedPrompter::showStatus(const QString &activity, const QString &progress)
{
    m_statuses << (progress.isEmpty() ? activity : activity + u" | "_qs + progress);
}
