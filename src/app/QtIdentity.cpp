#include "app/QtIdentity.h"

#include "app/Startup.h"

#include <QGuiApplication>
#include <QIcon>

namespace QtIdentity {

void applyNames(QCoreApplication &)
{
    QCoreApplication::setApplicationName(u"Remitra"_qs);
    QCoreApplication::setApplicationVersion(Startup::versionText());
}

void apply(QCoreApplication &app)
{
    applyNames(app);
    QIcon icon;
    for (int size : { 16, 24, 32, 48, 64, 128, 256 })
        icon.addFile(u":/icons/remitra-%1.png"_qs.arg(size), QSize(size, size));
    QGuiApplication::setWindowIcon(icon);
    // Matches remitra.desktop, so the task switcher finds the entry's icon.
    QGuiApplication::setDesktopFileName(u"remitra"_qs);
}

} // namespace QtIdentity
