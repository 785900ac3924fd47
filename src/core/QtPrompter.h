#pragma once

#include "core/Prompter.h"

#include <QPointer>

class QLabel;
class QWidget;

// Shows notices and questions as standard QMessageBox dialogs (so screen
// readers and keyboard users get the platform's own message boxes), the wait
// cursor as the application's override cursor, and the status of a long wait
// as a panel over the window that waits.
//
// A box belongs to the window that raised it: the modal screen that is open,
// else the active window, else the window the last box belonged to while it
// is still shown (the window manager may not have handed the focus back yet
// between two boxes), else the fallback window given here. So a box appears
// over its window and, once answered, leaves that window in front.
class QtPrompter : public Prompter
{
public:
    explicit QtPrompter(QWidget *fallback = nullptr);
    ~QtPrompter() override;
    void setParent(QWidget *fallback) { m_fallback = fallback; }

    void notice(const QString &text, const QString &title, Icon icon = Icon::Information) override;
    Answer ask(const QString &text, const QString &title, Icon icon = Icon::Information) override;
    void beginBusy() override;
    void endBusy() override;
    void resetBusy() override;
    void showStatus(const QString &activity, const QString &progress) override;

    // The window a message raised now belongs to (null when no window is
    // shown and there is no fallback).
    QWidget *ownerWindow();
    // The status panel while one is shown.
    QWidget *statusPanel() const { return m_panel; }

private:
    QPointer<QWidget> m_fallback;
    QPointer<QWidget> m_lastOwner;
    QPointer<QWidget> m_panel;
    QLabel *m_activity = nullptr;
    QLabel *m_progress = nullptr;
    int m_busyDepth = 0;
};
