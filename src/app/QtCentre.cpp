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
    const QSize size = widget.frameGeometry().size();
    widget.move(area.x() + (area.width() - size.width()) / 2,
        area.y() + (area.height() - size.height()) / 2);
}
