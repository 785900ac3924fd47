#include "app/QtCentre.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>

void centreOnScreen(QWidget &widget)
{
    QScreen *screen = widget.screen();
    if (!screen)
        screen = QGuiApplication::primaryScreen();
    if (!screen)
        return;
    const QRect area = screen->availableGeometry();
    // The frame is known only once the window manager has framed the window;
    // before that the frame adds nothing.
    const QSize frame = widget.frameGeometry().size() - widget.size();
    const QSize room = area.size() - frame;
    if (widget.width() > room.width() || widget.height() > room.height())
        widget.resize(widget.size().boundedTo(room).expandedTo(widget.minimumSize()));
    const QSize size = widget.frameGeometry().size();
    widget.move(area.x() + (area.width() - size.width()) / 2,
        area.y() + (area.height() - size.height()) / 2);
}
