#include "enrolment/QtWindowPlacement.h"

#include <QScreen>
#include <QWidget>

void centreOnScreen(QWidget *window)
{
    if (QScreen *screen = window->screen()) {
        QRect frame = window->frameGeometry();
        frame.moveCenter(screen->availableGeometry().center());
        window->move(frame.topLeft());
    }
}
