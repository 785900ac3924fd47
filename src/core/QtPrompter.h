#pragma once

#include "core/Prompter.h"

class QWidget;

// Shows notices and questions as standard QMessageBox dialogs (so screen
// readers and keyboard users get the platform's own message boxes), and the
// wait cursor as the application's override cursor.
class QtPrompter : public Prompter
{
public:
    explicit QtPrompter(QWidget *parent = nullptr) : m_parent(parent) {}
    void setParent(QWidget *parent) { m_parent = parent; }

    void notice(const QString &text, const QString &title, Icon icon = Icon::Information) override;
    Answer ask(const QString &text, const QString &title, Icon icon = Icon::Information) override;
    void beginBusy() override;
    void endBusy() override;
    void resetBusy() override;

private:
    QWidget *m_parent;
    int m_busyDepth = 0;
};
