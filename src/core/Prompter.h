#pragma once

#include <QString>

// How jobs reach the user: every notice and question goes through here with
// the exact text and title the user sees. QtPrompter shows message boxes;
// ScriptedPrompter (tests) records them and answers from a queue.
class Prompter
{
public:
    enum class Answer { Yes, No };
    enum class Icon { Information, Critical, None };

    virtual ~Prompter() = default;

    // Modal notice with one OK button.
    virtual void notice(const QString &text, const QString &title, Icon icon = Icon::Information) = 0;
    // Modal Yes/No question.
    virtual Answer ask(const QString &text, const QString &title, Icon icon = Icon::Information) = 0;
    // Wait cursor on/off; calls nest. Use BusyCursor rather than calling
    // these directly.
    virtual void beginBusy() = 0;
    virtual void endBusy() = 0;
    // Puts the pointer back to the default at once, whatever the nesting
    // (the product does this before showing a processor error).
    virtual void resetBusy() = 0;
    // During a long wait, what is being done, shown in the window beside the
    // wait cursor: `activity` names the work ("Sending the portfolio: 100,000
    // tenants…"), `progress` how far it has got ("Waiting for the processor…
    // 12 s"). Two empty texts take it away. Shows nothing by default.
    virtual void showStatus(const QString &activity, const QString &progress)
    {
        Q_UNUSED(activity);
        Q_UNUSED(progress);
    }
};

// Shows the wait cursor for its lifetime; restored on every path out,
// exceptions included.
class BusyCursor
{
public:
    explicit BusyCursor(Prompter &prompter) : m_prompter(&prompter) { m_prompter->beginBusy(); }
    ~BusyCursor() { release(); }
    void release()
    {
        if (m_prompter) {
            m_prompter->endBusy();
            m_prompter = nullptr;
        }
    }
    BusyCursor(const BusyCursor &) = delete;
    BusyCursor &operator=(const BusyCursor &) = delete;

private:
    Prompter *m_prompter;
};
