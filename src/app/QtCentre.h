#pragma once

class QWidget;

// Places a screen in the middle of the screen it is on: left = (screen width
// - width) / 2 and top likewise, in whole pixels. A screen larger than the
// space the desktop leaves is first made to fit it (never below its minimum
// size).
void centreOnScreen(QWidget &screen);
