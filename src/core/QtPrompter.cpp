#include "core/QtPrompter.h"

#include <QApplication>
#include <QMessageBox>

namespace {

QMessageBox::Icon boxIcon(Prompter::Icon icon)
{
    switch (icon) {
    case Prompter::Icon::Critical:
        return QMessageBox::Critical;
    case Prompter::Icon::None:
        return QMessageBox::NoIcon;
    case Prompter::Icon::Information:
        break;
    }
    return QMessageBox::Information;
}

// A message box must show the normal pointer even while a job holds the
// wait cursor; the job's cursor comes back when the box closes.
class PointerForBox
{
public:
    explicit PointerForBox(int busyDepth) : m_busy(busyDepth > 0)
    {
        if (m_busy)
            QApplication::setOverrideCursor(Qt::ArrowCursor);
    }
    ~PointerForBox()
    {
        if (m_busy)
            QApplication::restoreOverrideCursor();
    }

private:
    bool m_busy;
};

} // namespace

void QtPrompter::notice(const QString &text, const QString &title, Icon icon)
{
    PointerForBox pointer(m_busyDepth);
    QMessageBox box(boxIcon(icon), title, text, QMessageBox::Ok, m_parent);
    box.exec();
}

Prompter::Answer QtPrompter::ask(const QString &text, const QString &title, Icon icon)
{
    PointerForBox pointer(m_busyDepth);
    QMessageBox box(boxIcon(icon), title, text, QMessageBox::Yes | QMessageBox::No, m_parent);
    box.setDefaultButton(QMessageBox::Yes);
    return box.exec() == QMessageBox::Yes ? Answer::Yes : Answer::No;
}

void QtPrompter::beginBusy()
{
    ++m_busyDepth;
    QApplication::setOverrideCursor(Qt::WaitCursor);
}

void QtPrompter::endBusy()
{
    if (m_busyDepth == 0)
        return;
    --m_busyDepth;
    QApplication::restoreOverrideCursor();
}

void QtPrompter::resetBusy()
{
    while (m_busyDepth > 0)
        endBusy();
}
