#include "core/QtPrompter.h"

#include <QApplication>
#include <QFrame>
#include <QLabel>
#include <QMessageBox>
#include <QVBoxLayout>

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
    explicit PointerForBox(int busyDepth)
        : m_busy(busyDepth > 0)
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

// Once a box is answered its window takes the keyboard again; not every
// window manager hands the focus back to the window a dialog belonged to.
void giveBackFocus(QWidget *owner)
{
    if (owner && owner->isVisible())
        owner->activateWindow();
}

} // namespace

QtPrompter::QtPrompter(QWidget *fallback)
    : m_fallback(fallback)
{
}

QtPrompter::~QtPrompter()
{
    delete m_panel;
}

QWidget *QtPrompter::ownerWindow()
{
    QWidget *owner = QApplication::activeModalWidget();
    if (!owner)
        owner = QApplication::activeWindow();
    if (owner) {
        owner = owner->window();
        m_lastOwner = owner;
        return owner;
    }
    if (m_lastOwner && m_lastOwner->isVisible())
        return m_lastOwner;
    return m_fallback;
}

void QtPrompter::notice(const QString &text, const QString &title, Icon icon)
{
    PointerForBox pointer(m_busyDepth);
    QWidget *owner = ownerWindow();
    QMessageBox box(boxIcon(icon), title, text, QMessageBox::Ok, owner);
    box.exec();
    giveBackFocus(owner);
}

Prompter::Answer QtPrompter::ask(const QString &text, const QString &title, Icon icon)
{
    PointerForBox pointer(m_busyDepth);
    QWidget *owner = ownerWindow();
    QMessageBox box(boxIcon(icon), title, text, QMessageBox::Yes | QMessageBox::No, owner);
    box.setDefaultButton(QMessageBox::Yes);
    const bool yes = box.exec() == QMessageBox::Yes;
    giveBackFocus(owner);
    return yes ? Answer::Yes : Answer::No;
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

// The panel is a child of the waiting window, in the middle of it, so it
// moves and closes with it and needs nothing from the window manager. It is
// painted at once: the wait may start before the event loop runs again.
void QtPrompter::showStatus(const QString &activity, const QString &progress)
{
    if (activity.isEmpty() && progress.isEmpty()) {
        delete m_panel;
        return;
    }
    QWidget *window = ownerWindow();
    if (!window || !window->isVisible()) {
        delete m_panel;
        return;
    }
    if (!m_panel || m_panel->parentWidget() != window) {
        delete m_panel;
        auto *panel = new QFrame(window);
        panel->setObjectName(u"statusPanel"_qs);
        panel->setFrameStyle(QFrame::Panel | QFrame::Raised);
        panel->setLineWidth(2);
        panel->setAutoFillBackground(true);
        m_panel = panel;
        m_panel->setAccessibleName(u"Status"_qs);
        m_activity = new QLabel(m_panel);
        m_activity->setObjectName(u"statusActivity"_qs);
        QFont bold = m_activity->font();
        bold.setBold(true);
        m_activity->setFont(bold);
        m_progress = new QLabel(m_panel);
        m_progress->setObjectName(u"statusProgress"_qs);
        auto *layout = new QVBoxLayout(m_panel);
        layout->setContentsMargins(20, 14, 20, 14);
        layout->addWidget(m_activity, 0, Qt::AlignHCenter);
        layout->addWidget(m_progress, 0, Qt::AlignHCenter);
    }
    m_activity->setText(activity);
    m_progress->setText(progress);
    m_progress->setVisible(!progress.isEmpty());
    // Wide enough for the longest waiting text, so the panel does not change
    // its width every second.
    m_panel->adjustSize();
    const int least
        = m_progress->fontMetrics().horizontalAdvance(u"Waiting for the processor… 0000 s"_qs) + 44;
    const int width = qMin(qMax(m_panel->width(), least), window->width());
    const int height = m_panel->height();
    m_panel->setGeometry(
        (window->width() - width) / 2, (window->height() - height) / 2, width, height);
    m_panel->raise();
    m_panel->show();
    m_panel->repaint();
}
