#pragma once

class QWidget;

// Centres a top-level window on the screen it is shown on.
void centreOnScreen(QWidget *window);
