#include "rent/PaymentFile.h"

#include "app/ProgramState.h"
#include "core/Prompter.h"
#include "core/RuntimeError.h"
#include "core/TransferFile.h"
#include "hostdb/RentLookup.h"
#include "hostdb/RentPostingRecord.h"
#include "processor/ProcessorCall.h"
#include "rent/DuplicateGuard.h"

#include <QFile>

#include <utility>

namespace PaymentFile {

namespace {

const QString kNoPayments = u"There were no tenant payments found to process, or there was invalid "
                            "data in the payment file. Please try again later."_qs;
const QString kNoPaymentsTitle = u"Dwellix Remitra"_qs;
const QString kMalformed
    = u"There is a problem in the Remitra Payment File. Please contact support for assistance."_qs;
const QString kMalformedTitle = u"Remitra"_qs;
const QString kUnexpected = u"Unexpected error in payment file: "_qs;
const QString kUnexpectedTitle = u"Payment File Download"_qs;

QString tenantNameText(const RentLookup::TenantName &name)
{
    // A blank first name (Null counts as blank) leaves the last name alone.
    const QString last = VbText::text(name.last);
    const QString first = VbText::text(name.first);
    if (VbText::trim(first).isEmpty())
        return last;
    return last + u", "_qs + first;
}

RentPayment matchLine(const QString &line, int lineNumber, RentLookup &lookup)
{
    const QStringList fields = line.split(u',');
    if (fields.size() < 9)
        throw RuntimeError::subscriptOutOfRange();
    RentPayment row;
    row.line = lineNumber;

    row.property = fields.at(0);
    const auto owner = lookup.ownerOfProperty(RentPayment::key(RentPayment::cellId(row.property)));
    row.owner = owner ? u"O"_qs + VbText::trim(VbText::text(*owner)) : OwnerNotFound;
    row.unit = fields.at(1);
    row.tenant = fields.at(2);

    const QVariant tenantKey = RentPayment::key(row.tenantId());
    const auto address = lookup.unitAddress(tenantKey);
    row.address = address ? VbText::text(*address) : NotFound;
    const auto name = lookup.tenantName(tenantKey);
    row.tenantName = name ? tenantNameText(*name) : NotFound;
    row.amountText = fields.at(3);
    row.amount = Currency::parse(row.amountText);
    row.date = fields.at(4);
    const QString check = VbText::left(VbText::trim(fields.at(5)), 9);
    row.checkNumber = VbText::isNumeric(check) ? check : u""_qs;
    row.depositDate = fields.at(6);
    row.method = fields.at(7);
    row.transType = fields.at(8);
    return row;
}

QString postedNoteFor(const RentPayment &row, const QString &isoDate)
{
    QString note = u"This payment looks already posted: the tenant's ledger holds a payment of "_qs
        + row.amount->abs().toDollars() + u" dated "_qs
        + VbText::shortDate(QDate::fromString(isoDate, Qt::ISODate));
    const QVariant check = row.checkValue();
    note += check.isNull() ? u" without a check number."_qs
                           : u" with check number "_qs + check.toString() + u'.';
    return note;
}

} // namespace

namespace {

// The lines of a payment file's text, as views into it: a long file is not
// copied line by line.
QList<QStringView> linesOf(const QString &text)
{
    return QStringView(text).split(u'\n');
}

template <typename Pieces> qsizetype countCandidates(const Pieces &pieces)
{
    qsizetype count = pieces.size() - 2;
    const QStringView first = pieces.isEmpty() ? QStringView() : QStringView(pieces.first());
    if (!(first.startsWith(u'P') && VbText::isNumeric(first.mid(1, 1).toString())))
        count = 0;
    return count;
}

} // namespace

qsizetype candidateCount(const QStringList &pieces)
{
    return countCandidates(pieces);
}

namespace {

// The properties and tenants that the payment lines name, read from the
// database at once before the lines are matched one by one.
void prefetchIds(const QList<QStringView> &pieces, qsizetype count, RentLookup &lookup)
{
    QList<qint64> properties, tenants;
    auto add = [](QList<qint64> &ids, QStringView cell) {
        const QVariant key = RentPayment::key(RentPayment::cellId(cell.toString()));
        if (key.typeId() == QMetaType::LongLong)
            ids.append(key.toLongLong());
    };
    for (qsizetype i = 0; i < count; ++i) {
        const QString line = VbText::trim(pieces.at(i).toString());
        if (line.isEmpty() || !line.startsWith(u'P'))
            break;
        const QList<QStringView> fields = QStringView(line).split(u',');
        if (fields.size() < 9)
            break;
        add(properties, fields.at(0));
        add(tenants, fields.at(2));
    }
    lookup.prefetch(properties, tenants);
}

} // namespace

RentPayments parse(const QString &text, RentLookup &lookup)
{
    const QList<QStringView> pieces = linesOf(text);
    const qsizetype count = countCandidates(pieces);
    prefetchIds(pieces, count, lookup);
    RentPayments rows;
    rows.reserve(count > 0 ? std::size_t(count) : 0);
    for (qsizetype i = 0; i < count; ++i) {
        const QString line = VbText::trim(pieces.at(i).toString());
        // The payments end at the first line that is not one.
        if (line.isEmpty() || !line.startsWith(u'P'))
            break;
        rows.push_back(matchLine(line, int(i + 1), lookup));
    }
    return rows;
}

Currency transactionTotal(const RentPayments &rows)
{
    Currency total;
    for (const RentPayment &row : rows) {
        if (!row.amount)
            throw RuntimeError::typeMismatch();
        total += row.amount->abs();
    }
    return total;
}

void markPosted(RentLookup &lookup, RentPayments &rows)
{
    IsoDates isoDates;
    for (RentPayment &row : rows) {
        row.postedNote.clear();
        const QString &iso = isoDates.of(row);
        if (!row.amount || iso.isEmpty())
            continue;
        const auto posted = lookup.postedPayment(
            RentPayment::key(row.tenantId()), row.amount->abs(), iso, row.checkValue());
        if (posted)
            row.postedNote = postedNoteFor(row, posted->date);
    }
}

void moveAside(const ProgramState &state)
{
    const QString last = state.pathOf(LastDownloadName);
    if (TransferFile::exists(last) && !TransferFile::remove(last))
        throw RuntimeError::permissionDenied();
    TransferFile::renameReplacing(state.pathOf(state.files.paymentDownload), last);
}

namespace {

// The payment file's bytes, as they stand.
QByteArray fileBytes(const ProgramState &state)
{
    const QString path = state.pathOf(state.files.paymentDownload);
    if (!TransferFile::exists(path))
        throw RuntimeError::fileNotFound();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw RuntimeError::permissionDenied();
    return file.readAll();
}

} // namespace

QString fileSha256(const ProgramState &state)
{
    return RentPostingRecord::sha256(fileBytes(state));
}

namespace {

// Moves the payment file aside when the file with this SHA-256 is recorded
// as posted in full.
bool settleFile(ProgramState &state, const QString &sha)
{
    RentPostingRecord record(state.store());
    if (record.completedAt(sha).isEmpty())
        return false;
    moveAside(state);
    return true;
}

} // namespace

bool settlePosted(ProgramState &state)
{
    if (state.files.paymentDownload.isEmpty()
        || !TransferFile::exists(state.pathOf(state.files.paymentDownload)))
        return false;
    return settleFile(state, fileSha256(state));
}

void markRecorded(ProgramState &state, const QString &sha, RentPayments &rows)
{
    if (sha.isEmpty())
        return;
    RentPostingRecord record(state.store());
    const QHash<int, RentPostingRecord::Line> lines = record.lines(sha);
    if (lines.isEmpty())
        return;
    for (RentPayment &row : rows) {
        const auto it = lines.constFind(row.line);
        if (it == lines.constEnd() || it->postedAt.isEmpty())
            continue;
        const QString when
            = VbText::shortDate(QDateTime::fromString(it->postedAt, Qt::ISODateWithMs).date());
        if (it->missing == RentPostingRecord::Missing::Nothing)
            row.postedNote = u"Remitra posted this payment to the Dwellix ledgers on "_qs + when
                + u". It will not be posted again."_qs;
        else
            row.postedNote = u"Remitra posted part of this payment on "_qs + when
                + u" before the posting stopped. Updating the ledgers again posts only the rest."_qs;
    }
}

LoadResult load(ProgramState &state)
{
    Prompter &prompter = state.prompter();
    BusyCursor busy(prompter);
    LoadResult result;
    try {
        // The file is read once: its text and its SHA-256 come from the
        // same bytes.
        QByteArray bytes = fileBytes(state);
        result.fileSha256 = RentPostingRecord::sha256(bytes);
        // Payments that a posting run recorded as posted are never offered
        // again, even when the program ended before their file was moved.
        if (settleFile(state, result.fileSha256))
            throw RuntimeError::fileNotFound();
        const QString text = TransferFile::fromAnsi(std::exchange(bytes, {}));
        if (countCandidates(linesOf(text)) <= 0) {
            prompter.notice(kNoPayments, kNoPaymentsTitle);
            if (!TransferFile::remove(state.pathOf(state.files.paymentDownload)))
                throw RuntimeError::permissionDenied();
            result.status = LoadStatus::NoPayments;
            return result;
        }
        RentPayments rows;
        {
            // No message is shown while the snapshot holds the database.
            RentLookup::ReadScope snapshot(state.db());
            RentLookup lookup(state.db());
            rows = parse(text, lookup);
            markPosted(lookup, rows);
        }
        markRecorded(state, result.fileSha256, rows);
        DuplicateGuard::mark(state, result.fileSha256, rows);
        // The rows are on screen before their total is taken: an amount that
        // cannot be read fails the total, not the rows.
        result.rows = std::move(rows);
        result.total = transactionTotal(result.rows);
    } catch (const RuntimeError &error) {
        switch (error.number()) {
        case 3265:
            throw; // the host lacks a field: not a fault of the file
        case 9:
            prompter.notice(kMalformed, kMalformedTitle);
            result.status = LoadStatus::Malformed;
            break;
        case 53:
            result.status = LoadStatus::FileMissing;
            break;
        default:
            prompter.notice(
                kUnexpected + QString::number(error.number()) + u" - "_qs + error.description(),
                kUnexpectedTitle);
            result.status = LoadStatus::Failed;
            break;
        }
    }
    return result;
}

} // namespace PaymentFile
