#pragma once

#include <QStringList>

class QPrinter;

// Draws the printed review screen (see DownloadPrintLayout) on a printer in
// a fixed-pitch font small enough for the widest line, landscape, repeating
// the heading on each page.
class DownloadPrinter
{
public:
    // False when the printer could not be started.
    static bool print(QPrinter &printer, const QStringList &heading, const QStringList &body,
        const QStringList &footer);
};
