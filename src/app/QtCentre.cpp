#include "app/QtCentre.h"

#include <QApplication>
#include <QScreen>
#include <QWidget>

namespace {

// What the window manager's frame adds to a window. Known only once the
// window is framed; before that, the frame of another shown window of the
// program stands in for it (the window manager frames them alike).
QSize frameExtra(const QWidget &widget)
{
    const QSize own = widget.frameGeometry().size() - widget.size();
    if (!own.isNull())
        return own;
    for (const QWidget *other : QApplication::topLevelWidgets()) {
        if (other != &widget && other->isVisible()) {
            const QSize extra = other->frameGeometry().size() - other->size();
            if (!extra.isNull())
                return extra;
        }
    }
    return QSize(0, 0);
}

} // namespace

void centreOnScreen(QWidget &widget)
{
    QScreen *screen = widget.screen();
    if (!screen)
        screen = QGuiApplication::primaryScreen();
    if (!screen)
        return;
    const QRect area = screen->availableGeometry();
    const QSize frame = frameExtra(widget);
    const QSize room = area.size() - frame;
    if (widget.width() > room.width() || widget.height() > room.height())
        widget.resize(widget.size().boundedTo(room).expandedTo(widget.minimumSize()));
    const QSize size = widget.size() + frame;
    widget.move(area.x() + (area.width() - size.width()) / 2,
        area.y() + (area.height() - size.height()) / 2);
}
