#include "rent/DuplicateGuard.h"

#include "app/ProgramState.h"
#include "core/Prompter.h"
#include "hostdb/Journal.h"

#include <QDateTime>

namespace DuplicateGuard {

namespace {

// The row's key as the journal gives it (Journal::paymentKey).
QString keyOf(const RentPayment &row, const QString &iso)
{
    return Journal::paymentKey(RentPayment::longValue(row.tenantId()),
        row.amount->abs().toPlainText(), iso, row.checkValue().toString(), row.transType.trimmed());
}

} // namespace

QHash<int, Earlier> find(ProgramState &state, const RentPayments &rows, const QString &fileSha256)
{
    QHash<int, Earlier> found;
    IsoDates isoOf;
    QList<QString> isoDates(qsizetype(rows.size()));
    QString first, last;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const RentPayment &row = rows[i];
        if (!row.amount)
            continue;
        const QString &iso = isoOf.of(row);
        if (iso.isEmpty())
            continue;
        isoDates[qsizetype(i)] = iso;
        if (first.isEmpty() || iso < first)
            first = iso;
        if (last.isEmpty() || iso > last)
            last = iso;
    }
    if (first.isEmpty())
        return found;

    Journal journal(state.store());
    const QList<Journal::PostedPayment> posted = journal.postedBetween(first, last, fileSha256);
    if (posted.isEmpty())
        return found;
    // Each key's first posting, and the next posting of the same key.
    QHash<QString, qsizetype> firstOf;
    firstOf.reserve(posted.size());
    QList<qsizetype> next(posted.size(), -1);
    for (qsizetype p = posted.size() - 1; p >= 0; --p) {
        // Stored one up, so that 0 means none.
        qsizetype &head = firstOf[posted[p].key];
        next[p] = head - 1;
        head = p + 1;
    }
    const QHash<qint64, QString> times = journal.postingTimes();
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const QString &iso = isoDates[qsizetype(i)];
        if (iso.isEmpty())
            continue;
        const qsizetype head = firstOf.value(keyOf(rows[i], iso));
        for (qsizetype p = head - 1; p >= 0; p = next[p]) {
            // The same line of the same file is the posting record's to take
            // up (a run that stopped part-way is resumed, not repeated).
            if (posted[p].sameFile && posted[p].line == rows[i].line)
                continue;
            found.insert(int(i), { posted[p].runId, times.value(posted[p].runId), posted[p].line });
            break;
        }
    }
    return found;
}

QString noteFor(const Earlier &earlier)
{
    const QDateTime at = QDateTime::fromString(earlier.runAt, Qt::ISODateWithMs);
    return u"Remitra already posted this payment to the Dwellix ledgers: rent posting of "_qs
        + VbText::shortDate(at.date()) + u" (run "_qs + QString::number(earlier.runId)
        + u" in History, line "_qs + QString::number(earlier.line) + u" of its payment file)."_qs;
}

void mark(ProgramState &state, const QString &fileSha256, RentPayments &rows)
{
    const QHash<int, Earlier> found = find(state, rows, fileSha256);
    for (auto it = found.cbegin(); it != found.cend(); ++it) {
        RentPayment &row = rows[std::size_t(it.key())];
        const QString note = noteFor(it.value());
        row.postedNote = row.postedNote.isEmpty() ? note : note + u'\n' + row.postedNote;
    }
}

QString questionText(qsizetype count, Currency total)
{
    return QString::number(count) + u" of these payments ("_qs + total.toDollars()
        + u" in all) match payments that Remitra has already posted to the Dwellix ledgers "
          "(the marked rows; point at one to see when). Posting them again would post the "
          "same money twice.\r\rDo you want to leave them out of this posting? Yes leaves "
          "them out; No posts them again with the others."_qs;
}

Choice confirm(ProgramState &state, const RentPayments &rows, const QString &fileSha256)
{
    Choice choice;
    const QHash<int, Earlier> found = find(state, rows, fileSha256);
    if (found.isEmpty())
        return choice; // every row is posted
    Currency total;
    for (auto it = found.cbegin(); it != found.cend(); ++it)
        total += rows[std::size_t(it.key())].amount->abs();
    if (state.prompter().ask(questionText(found.size(), total), u"Remitra"_qs)
        == Prompter::Answer::No)
        return choice;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const auto it = found.constFind(int(i));
        if (it == found.cend()) {
            choice.toPost.push_back(rows[i]);
            continue;
        }
        choice.leftOut.push_back(rows[i]);
        choice.earlier.insert(rows[i].line, it.value());
    }
    return choice;
}

} // namespace DuplicateGuard
