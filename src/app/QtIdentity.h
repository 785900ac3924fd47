#pragma once

class QCoreApplication;

// The program's name, version, icon and desktop entry, so the window title
// bar, the task switcher and the desktop's menu show Remitra as one program.
namespace QtIdentity {

// Name and version only: enough for --help and --version without a display.
void applyNames(QCoreApplication &app);
// Names, the window icon of every window and the desktop entry's name.
void apply(QCoreApplication &app);

} // namespace QtIdentity
