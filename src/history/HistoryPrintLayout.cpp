#include "history/HistoryPrintLayout.h"

#include "core/VbText.h"

#include <QLocale>

#include <algorithm>

namespace HistoryPrintLayout {

QStringList heading(const QString &runHeading, const QDateTime &printedAt)
{
    return { Title, runHeading,
        u"Printed "_qs + VbText::shortDate(printedAt.date()) + u' '
            + QLocale::system().toString(printedAt.time(), QLocale::ShortFormat),
        QString() };
}

QStringList part(const QString &title, const TextTable &table, int widest)
{
    QList<int> widths;
    for (const QString &caption : table.columns)
        widths << int(caption.size());
    for (const QStringList &row : table.rows) {
        for (int i = 0; i < widths.size(); ++i)
            widths[i] = std::min(widest, std::max(widths[i], int(row.value(i).size())));
    }
    const auto lay = [&](const QStringList &cells) {
        QString line;
        for (int i = 0; i < widths.size(); ++i) {
            QString cell = cells.value(i).simplified();
            if (cell.size() > widths[i])
                cell = cell.left(widths[i] - 1) + u'~';
            line += cell.leftJustified(widths[i]) + u"  "_qs;
        }
        return line.trimmed();
    };
    QStringList lines { title, lay(table.columns) };
    int total = 0;
    for (int w : std::as_const(widths))
        total += w + 2;
    lines << QString(std::max(0, total - 2), u'-');
    for (const QStringList &row : table.rows)
        lines << lay(row);
    if (table.rows.isEmpty())
        lines << u"(none)"_qs;
    lines << QString();
    return lines;
}

} // namespace HistoryPrintLayout
