#pragma once

#include "core/Prompter.h"

#include <QList>
#include <QQueue>
#include <QStringList>

// A Prompter for tests and headless runs: records every message in order and
// answers questions from a queue (an empty queue answers No and records the
// question as unanswered).
class ScriptedPrompter : public Prompter
{
public:
    struct Shown
    {
        enum Kind { Notice, Question } kind;
        QString text;
        QString title;
        Icon icon;
    };

    void notice(const QString &text, const QString &title, Icon icon = Icon::Information) override;
    Answer ask(const QString &text, const QString &title, Icon icon = Icon::Information) override;
    void beginBusy() override { ++m_busyDepth; ++m_busyCount; }
    void endBusy() override { if (m_busyDepth > 0) --m_busyDepth; }
    void resetBusy() override { m_busyDepth = 0; }
    // Every status in order, as "activity" or "activity | progress"; an
    // empty text is the status taken away.
    void showStatus(const QString &activity, const QString &progress) override;

    void queueAnswer(Answer a) { m_answers.enqueue(a); }
    void queueAnswers(std::initializer_list<Answer> answers)
    {
        for (Answer a : answers)
            m_answers.enqueue(a);
    }

    const QList<Shown> &shown() const { return m_shown; }
    QStringList texts() const;
    QStringList titles() const;
    void clear() { m_shown.clear(); }
    int unansweredQuestions() const { return m_unanswered; }
    int pendingAnswers() const { return int(m_answers.size()); }
    int busyDepth() const { return m_busyDepth; }
    int busyCount() const { return m_busyCount; }
    const QStringList &statuses() const { return m_statuses; }

private:
    QList<Shown> m_shown;
    QStringList m_statuses;
    QQueue<Answer> m_answers;
    int m_unanswered = 0;
    int m_busyDepth = 0;
    int m_busyCount = 0;
};
