#pragma once

class QWidget;

// Places a screen in the middle of the screen it is on: left = (screen width
// - width) / 2 and top likewise, in whole pixels.
void centreOnScreen(QWidget &screen);
