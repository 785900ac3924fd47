#include "history/RunText.h"

#include "core/VbText.h"

#include <QDateTime>
#include <QLocale>

namespace RunText {

namespace {

QString dateText(const QString &iso)
{
    const QDate date = QDate::fromString(iso, Qt::ISODate);
    return date.isValid() ? VbText::shortDate(date) : iso;
}

QString money(const QString &plain)
{
    const auto amount = Currency::parse(plain);
    return amount ? amount->toDollarsParen() : plain;
}

QString valueText(const QVariant &value)
{
    return value.isNull() ? u"Null"_qs : value.toString();
}

} // namespace

QString when(const QString &iso)
{
    const QDateTime at = QDateTime::fromString(iso, Qt::ISODateWithMs);
    if (!at.isValid())
        return iso;
    return VbText::shortDate(at.date()) + u' '
        + QLocale::system().toString(at.time(), QLocale::ShortFormat);
}

TextTable runList(const QList<Journal::Run> &runs)
{
    TextTable table;
    table.columns = { u"Run"_qs, u"Date"_qs, u"Kind"_qs, u"Count"_qs, u"Total"_qs, u"Result"_qs };
    for (const Journal::Run &run : runs) {
        table.rows.append({ QString::number(run.id), when(run.at), Journal::kindCaption(run.kind),
            run.count ? QLocale::system().toString(*run.count) : QString(),
            run.total ? run.total->toDollarsParen() : QString(), Journal::resultText(run) });
        const bool reversed = run.result.state == Journal::Reversed;
        table.notes.append(reversed ? u"This posting was reversed."_qs : QString());
    }
    return table;
}

QString heading(const Journal::Run &run)
{
    QString text = Journal::kindCaption(run.kind) + u" of "_qs + when(run.at) + u" (run "_qs
        + QString::number(run.id) + u"): "_qs + Journal::resultText(run);
    if (run.count) {
        QString unit = u" line(s)"_qs;
        if (run.kind == Journal::Kind::RentDownload || run.kind == Journal::Kind::RentPosting
            || run.kind == Journal::Kind::Reversal)
            unit = u" payment(s)"_qs;
        else if (run.kind == Journal::Kind::Distribution || run.kind == Journal::Kind::CheckPosting)
            unit = u" check(s)"_qs;
        text += u"; "_qs + QLocale::system().toString(*run.count) + unit;
    }
    if (run.total)
        text += u", "_qs + run.total->toDollarsParen();
    if (run.reverses)
        text += u"; reverses run "_qs + QString::number(run.reverses);
    if (!run.result.note.isEmpty() && run.result.state != Journal::Pending)
        text += u". "_qs + run.result.note.simplified();
    return text;
}

TextTable lines(const QList<Journal::Line> &lines)
{
    TextTable table;
    table.columns = { u"Line"_qs, u"Tenant"_qs, u"Amount"_qs, u"Date"_qs, u"Check #"_qs,
        u"Trans Type"_qs, u"Description"_qs, u"Outcome"_qs, u"Deposited"_qs };
    for (const Journal::Line &line : lines) {
        QString outcome = line.outcome;
        if (!line.missing.isEmpty())
            outcome += u" (still missing: "_qs + line.missing + u')';
        table.rows.append({ QString::number(line.line), line.tenantId.toString(),
            money(line.amount), dateText(line.date), line.checkNumber, line.transType, line.text,
            outcome, line.deposited ? u"Yes"_qs : QString() });
        table.notes.append(
            line.outcome == u"left out"_qs ? u"Left out: already posted earlier."_qs : QString());
    }
    return table;
}

QStringList rowCells(const Journal::Row &row)
{
    QStringList values;
    for (auto it = row.fields.cbegin(); it != row.fields.cend(); ++it)
        values << it.key() + u'=' + valueText(it.value());
    return { row.line ? QString::number(row.line) : QString(), row.table,
        row.handle.isNull() ? QString() : row.handle.toString(),
        HostWriteLog::changeName(row.change), row.field,
        row.before.isNull() ? QString() : row.before.toString(),
        row.after.isNull() ? QString() : row.after.toString(), values.join(u"; "_qs) };
}

TextTable rows(const QList<Journal::Row> &rows)
{
    TextTable table;
    table.columns = { u"Line"_qs, u"Table"_qs, u"Row"_qs, u"Change"_qs, u"Field"_qs, u"Before"_qs,
        u"After"_qs, u"Values"_qs };
    for (const Journal::Row &row : rows)
        table.rows.append(rowCells(row));
    return table;
}

TextTable messages(const QList<Journal::Message> &messages)
{
    TextTable table;
    table.columns = { u"Time"_qs, u"Title"_qs, u"Message"_qs, u"Answer"_qs };
    for (const Journal::Message &m : messages) {
        QString text = m.text;
        text.replace(u"\r\n"_qs, u" "_qs).replace(u'\r', u' ').replace(u'\n', u' ');
        table.rows.append({ when(m.at), m.title, text, m.answer });
    }
    return table;
}

TextTable files(const QList<Journal::File> &files)
{
    TextTable table;
    table.columns = { u"Role"_qs, u"Name"_qs, u"Size"_qs, u"SHA-256"_qs, u"Archived copy"_qs };
    for (const Journal::File &f : files) {
        table.rows.append(
            { f.role, f.name, QLocale::system().toString(f.size), f.sha256, f.archive });
    }
    return table;
}

} // namespace RunText
