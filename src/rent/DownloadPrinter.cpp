#include "rent/DownloadPrinter.h"

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QPainter>
#include <QPrinter>

#include <algorithm>

bool DownloadPrinter::print(QPrinter &printer, const QStringList &heading, const QStringList &body,
    const QStringList &footer)
{
    QPainter painter;
    if (!painter.begin(&printer))
        return false;
    const QRectF page = printer.pageLayout().paintRectPixels(printer.resolution());

    qsizetype widest = 0;
    for (const QStringList *part : { &heading, &body, &footer })
        for (const QString &line : *part)
            widest = std::max(widest, line.size());

    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setStyleHint(QFont::Monospace);
    qreal pointSize = 10;
    for (; pointSize > 4; pointSize -= 0.5) {
        font.setPointSizeF(pointSize);
        const QFontMetricsF metrics(font, &printer);
        if (metrics.horizontalAdvance(QString(widest, u'M')) <= page.width())
            break;
    }
    font.setPointSizeF(pointSize);
    painter.setFont(font);
    const QFontMetricsF metrics(font, &printer);
    const qreal step = metrics.lineSpacing();
    const int perPage = std::max(int(heading.size()) + 1, int((page.height() - step) / step));

    int onPage = 0;
    auto drawLine = [&](const QString &line) {
        painter.drawText(QPointF(0, metrics.ascent() + step * onPage++), line);
    };
    for (const QString &line : heading)
        drawLine(line);
    for (const QString &line : body + footer) {
        if (onPage >= perPage) {
            // A new page starts with the heading again.
            printer.newPage();
            onPage = 0;
            for (const QString &h : heading)
                drawLine(h);
        }
        drawLine(line);
    }
    return painter.end();
}
