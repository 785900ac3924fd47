#include "app/IdFile.h"

#include "core/RuntimeError.h"
#include "core/TransferFile.h"

#include <QStringList>

#include <limits>

namespace {

// The items of one line as the runtime's free-format input reads them: an
// item ends at a comma or at the end of the line; blanks before an item are
// skipped; a quoted item loses its quotes, may hold commas, and whatever
// follows its closing quote up to the next comma is dropped; an unquoted item
// loses its trailing blanks. A line with n commas holds n + 1 items (so an
// empty line is one empty item).
QStringList lineItems(const QString &line)
{
    QStringList items;
    qsizetype i = 0;
    const qsizetype n = line.size();
    while (true) {
        while (i < n && (line[i] == u' ' || line[i] == u'\t'))
            ++i;
        QString item;
        if (i < n && line[i] == u'"') {
            const qsizetype close = line.indexOf(u'"', i + 1);
            const qsizetype end = close < 0 ? n : close;
            item = line.mid(i + 1, end - i - 1);
            i = close < 0 ? n : close + 1;
            while (i < n && line[i] != u',')
                ++i;
        } else {
            const qsizetype comma = line.indexOf(u',', i);
            const qsizetype end = comma < 0 ? n : comma;
            item = line.mid(i, end - i);
            while (!item.isEmpty() && (item.back() == u' ' || item.back() == u'\t'))
                item.chop(1);
            i = end;
        }
        items << item;
        if (i >= n)
            break;
        ++i; // the comma
    }
    return items;
}

} // namespace

void loadIdFile(const QString &folder, AccountSettings &account)
{
    // The host application writes IDFILE.DAT; a missing file is the
    // runtime's file-not-found error in the caller.
    const QString text = TransferFile::readWhole(folder + u"/IDFILE.DAT"_qs);

    QString normalised = text;
    normalised.replace(u"\r\n"_qs, u"\n"_qs);
    normalised.replace(u'\r', u'\n');
    QStringList lines = normalised.split(u'\n');
    // The line break that ends the last line does not start another one.
    if (!lines.isEmpty() && lines.back().isEmpty())
        lines.removeLast();

    // The item counter is a 16-bit integer, as the host application's own
    // reader has it: more items than it can count is an overflow.
    qint16 counter = 0;
    for (const QString &line : lines) {
        for (const QString &item : lineItems(line)) {
            switch (counter) {
            case 9:
                account.idItems[0] = item;
                break;
            case 10:
                account.idItems[1] = item;
                break;
            case 15:
            case 16:
            case 17:
            case 18:
                account.idItems[counter - 13] = item;
                break;
            default:
                break;
            }
            if (counter == std::numeric_limits<qint16>::max())
                throw RuntimeError::overflow();
            ++counter;
        }
    }
}
