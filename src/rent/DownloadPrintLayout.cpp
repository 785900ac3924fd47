#include "rent/DownloadPrintLayout.h"

#include "rent/PaymentTableModel.h"

namespace DownloadPrintLayout {

namespace {

struct Column
{
    const char *heading;
    int width;
    bool rightAligned;
};

// In the grid's column order.
constexpr Column kColumns[PaymentTableModel::ColumnCount] = {
    { "Owner", 8, false },
    { "Prop", 8, false },
    { "Unit", 8, false },
    { "Tenant", 8, false },
    { "Unit Address", 24, false },
    { "Tenant Name", 22, false },
    { "Amount", 12, true },
    { "Date", 10, false },
    { "Check #", 9, false },
    { "Dep Date", 10, false },
    { "Method", 12, false },
    { "Type", 14, false },
};

QString cell(const QString &text, const Column &column)
{
    QString t = text;
    t.remove(u'\r');
    t.replace(u'\n', u' ');
    t = t.trimmed().left(column.width);
    return column.rightAligned ? t.rightJustified(column.width) : t.leftJustified(column.width);
}

QString row(const std::array<QString, PaymentTableModel::ColumnCount> &cells)
{
    QStringList parts;
    for (int c = 0; c < PaymentTableModel::ColumnCount; ++c)
        parts << cell(cells[std::size_t(c)], kColumns[c]);
    QString line = parts.join(u' ');
    while (line.endsWith(u' '))
        line.chop(1);
    return line;
}

} // namespace

QStringList heading(const QDateTime &printedAt)
{
    std::array<QString, PaymentTableModel::ColumnCount> captions;
    for (int c = 0; c < PaymentTableModel::ColumnCount; ++c)
        captions[std::size_t(c)] = QString::fromLatin1(kColumns[c].heading);
    const QString headings = row(captions);
    return { Title, u"Printed "_qs + printedAt.toString(u"yyyy-MM-dd HH:mm"_qs), QString(),
        headings, QString(headings.size(), u'-') };
}

QStringList body(const RentPayments &rows)
{
    QStringList out;
    out.reserve(qsizetype(rows.size()));
    for (const RentPayment &r : rows) {
        std::array<QString, PaymentTableModel::ColumnCount> cells;
        for (int c = 0; c < PaymentTableModel::ColumnCount; ++c)
            cells[std::size_t(c)] = PaymentTableModel::cellText(r, c);
        out << row(cells);
    }
    return out;
}

QStringList footer(const std::optional<Currency> &total)
{
    return { QString(), u"Total Amount: "_qs + (total ? total->toDollars() : QString()) };
}

QStringList lines(
    const RentPayments &rows, const std::optional<Currency> &total, const QDateTime &printedAt)
{
    return heading(printedAt) + body(rows) + footer(total);
}

} // namespace DownloadPrintLayout
