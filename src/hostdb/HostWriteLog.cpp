#include "hostdb/HostWriteLog.h"

#include "core/VbText.h"
#include "hostdb/BatchRead.h"
#include "hostdb/HostDb.h"

#include <QDate>
#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>

#include <charconv>
#include <cmath>
#include <cstdio>

namespace {

const QSet<QString> kMoney = { u"TransAmount"_qs, u"CkAmount"_qs, u"TCurrBal"_qs, u"UCurrBal"_qs,
    u"OCurrBal"_qs, u"PCurrBal"_qs };
const QSet<QString> kDates = { u"TransDate"_qs, u"CkDate"_qs };
const QSet<QString> kNumbers = { u"TransAccountID"_qs, u"TransPostToID"_qs, u"TransCheckNumber"_qs,
    u"TransOID"_qs, u"TransPID"_qs, u"TransUID"_qs, u"TransTID"_qs, u"CkID"_qs, u"CkAccountID"_qs,
    u"CkVendorID"_qs, u"CkNumber"_qs, u"CkCheckNumber"_qs, u"CkPostToID"_qs, u"UTenantID"_qs,
    u"TenantID"_qs, u"OwnerID"_qs, u"PropID"_qs };

QString dateText(const QVariant &value)
{
    if (value.typeId() == QMetaType::QDate)
        return value.toDate().toString(Qt::ISODate);
    if (value.typeId() == QMetaType::QDateTime)
        return value.toDateTime().date().toString(Qt::ISODate);
    const QString text = value.toString();
    const QDate iso = QDate::fromString(text.left(10), Qt::ISODate);
    return iso.isValid() ? iso.toString(Qt::ISODate) : text;
}

QString numberText(const QVariant &value)
{
    if (value.typeId() == QMetaType::Double) {
        const double d = value.toDouble();
        if (std::isfinite(d) && d == std::trunc(d) && std::fabs(d) < 9.0e15)
            return QString::number(qint64(d));
        return QString::number(d, 'g', 17);
    }
    bool ok = false;
    const qint64 n = value.toLongLong(&ok);
    return ok ? QString::number(n) : value.toString();
}

} // namespace

QVariant HostWriteLog::normal(const QString &field, const QVariant &value)
{
    if (value.isNull() || !value.isValid())
        return QVariant();
    if (kMoney.contains(field)) {
        const auto money = Currency::fromVariant(value);
        return money ? money->toPlainText() : VbText::text(value);
    }
    if (kDates.contains(field))
        return dateText(value);
    if (kNumbers.contains(field))
        return numberText(value);
    return VbText::text(value);
}

QVariantMap HostWriteLog::normal(const QVariantMap &fields)
{
    QVariantMap kept;
    for (auto it = fields.cbegin(); it != fields.cend(); ++it)
        kept.insert(it.key(), normal(it.key(), it.value()));
    return kept;
}

QVariant HostWriteLog::bindable(const QString &field, const QVariant &kept)
{
    if (kept.isNull())
        return QVariant();
    const QString text = kept.toString();
    if (kMoney.contains(field)) {
        const auto money = Currency::parse(text);
        return money ? QVariant(money->toDatabaseValue()) : QVariant(text);
    }
    if (kDates.contains(field)) {
        const QDate date = QDate::fromString(text, Qt::ISODate);
        return date.isValid() ? QVariant(date) : QVariant(text);
    }
    if (kNumbers.contains(field)) {
        bool ok = false;
        const qint64 n = text.toLongLong(&ok);
        return ok ? QVariant(n) : QVariant(text);
    }
    return text;
}

QString HostWriteLog::json(const QVariantMap &fields)
{
    return QString::fromUtf8(
        QJsonDocument(QJsonObject::fromVariantMap(fields)).toJson(QJsonDocument::Compact));
}

QStringList HostWriteLog::hostFields(const QString &table, Change change)
{
    if (change == Change::Balance) {
        if (table == u"Units"_qs)
            return { u"UTenantID"_qs, u"UAddress"_qs, u"UNumber"_qs };
        if (table == u"Tenants"_qs)
            return { u"TenantID"_qs };
        if (table == u"Owners"_qs)
            return { u"OwnerID"_qs };
        if (table == u"Properties"_qs)
            return { u"PropID"_qs };
        return {};
    }
    if (table == u"Transactions"_qs)
        return { u"TransAccountID"_qs, u"TransPostToID"_qs, u"TransAmount"_qs, u"TransDate"_qs,
            u"TransCheckNumber"_qs, u"TransRemark"_qs, u"TransType"_qs, u"TransStatus"_qs,
            u"TransTax"_qs, u"TransOID"_qs, u"TransPID"_qs, u"TransUID"_qs, u"TransTID"_qs };
    if (table == u"CheckDepPrinted"_qs)
        return { u"CkID"_qs, u"CkPayee"_qs, u"CkAccountID"_qs, u"CkAmount"_qs, u"CkDate"_qs,
            u"CkInvoice"_qs, u"CkRemark"_qs, u"CkStatus"_qs, u"CkVendorID"_qs, u"CkPostTo"_qs,
            u"CkPostToText"_qs, u"CkNumber"_qs, u"CkType"_qs, u"CkSplit"_qs };
    if (change == Change::Removed) {
        if (table == u"SplitChecks"_qs)
            return { u"CkNumber"_qs, u"CkAmount"_qs, u"CkAccountID"_qs, u"CkPostToID"_qs,
                u"CkRemark"_qs, u"CkStatus"_qs, u"CkType"_qs, u"CkPostTo"_qs };
        if (table == u"CheckEntered"_qs)
            return { u"CkID"_qs, u"CkPayee"_qs, u"CkDate"_qs, u"CkAmount"_qs, u"CkInvoice"_qs,
                u"CkRemark"_qs, u"CkVendorID"_qs, u"CkStatus"_qs, u"CkSplit"_qs, u"CkAccountID"_qs,
                u"CkPostToID"_qs, u"CkPostTo"_qs, u"CkNumber"_qs, u"CkType"_qs };
        return {};
    }
    if (table == u"SplitPrintedChecks"_qs)
        return { u"CkNumber"_qs, u"CkCheckNumber"_qs, u"CkAmount"_qs, u"CkAccountID"_qs,
            u"CkPostToID"_qs, u"CkRemark"_qs, u"CkStatus"_qs, u"CkType"_qs, u"CkPostTo"_qs };
    return {};
}

QString HostWriteLog::jsonFieldsSql(const QString &table, Change change, const QString &alias)
{
    // The values alone, in the order of hostFields(): a third of the bytes
    // of an object that names every field on every row.
    QStringList values;
    for (const QString &f : hostFields(table, change))
        values << alias + u'.' + f;
    return u"json_array("_qs + values.join(u", "_qs) + u')';
}

QVariantMap HostWriteLog::fieldsFromJson(
    const QString &table, Change change, const QJsonDocument &json)
{
    if (json.isObject())
        return fieldsFromJson(table, change, QJsonValue(json.object()));
    if (json.isArray())
        return fieldsFromJson(table, change, QJsonValue(json.array()));
    return {};
}

QVariantMap HostWriteLog::fieldsFromJson(
    const QString &table, Change change, const QJsonValue &json)
{
    QVariantMap fields;
    if (json.isObject()) {
        fields = json.toObject().toVariantMap();
    } else if (json.isArray()) {
        const QStringList names = hostFields(table, change);
        const QJsonArray values = json.toArray();
        for (qsizetype i = 0; i < names.size() && i < values.size(); ++i)
            fields.insert(names.at(i), values.at(i).toVariant());
    }
    for (auto it = fields.begin(); it != fields.end(); ++it) {
        if (it.value().isNull() || it.value().typeId() == QMetaType::Nullptr)
            it.value() = QVariant();
    }
    // Fields read from the host come in the host's own types.
    return normal(fields);
}

void HostWriteLog::removing(const HostDb &db, const QString &table, const QList<qint64> &handles)
{
    if (handles.isEmpty())
        return;
    if (m_keysOnly) {
        for (const qint64 handle : handles)
            pack(Change::Removed, table, handle, {});
        return;
    }
    // Slim rows exist only on the SQLite host; the table lives in the
    // connection's temp schema, so it goes with the posting's transaction.
    db.execText(u"CREATE TEMP TABLE IF NOT EXISTS remitra_removed (tbl TEXT NOT NULL, "
                "handle INTEGER NOT NULL, fields TEXT, PRIMARY KEY (tbl, handle))"_qs,
        "keeping the removed rows for the journal");
    QByteArray list("[");
    for (qsizetype i = 0; i < handles.size(); ++i) {
        if (i)
            list += ',';
        list += QByteArray::number(handles.at(i));
    }
    list += ']';
    QSqlQuery keep = db.prepare(u"INSERT OR REPLACE INTO temp.remitra_removed "
                                "SELECT :tbl, h.rowid, "_qs
        + jsonFieldsSql(table, Change::Removed, u"h"_qs) + u" FROM main."_qs + table
        + u" h WHERE h.rowid IN (SELECT value FROM json_each(:handles))"_qs);
    keep.bindValue(u":tbl"_qs, table);
    keep.bindValue(u":handles"_qs, QString::fromLatin1(list));
    HostDb::exec(keep, "keeping the removed rows for the journal");
    for (const qint64 handle : handles)
        addSlim(Change::Removed, table, handle, {}, {}, {});
}

const QStringList &HostWriteLog::slimTables()
{
    static const QStringList tables { u"Transactions"_qs, u"CheckDepPrinted"_qs,
        u"SplitPrintedChecks"_qs, u"Units"_qs, u"Tenants"_qs, u"Owners"_qs, u"Properties"_qs,
        u"SplitChecks"_qs, u"CheckEntered"_qs };
    return tables;
}

const QStringList &HostWriteLog::slimFields()
{
    static const QStringList fields { QString(), u"UCurrBal"_qs, u"TCurrBal"_qs, u"OCurrBal"_qs,
        u"PCurrBal"_qs };
    return fields;
}

void HostWriteLog::addSlim(Change change, const QString &table, const QVariant &handle,
    const QString &field, Currency before, Currency after)
{
    const qsizetype t = slimTables().indexOf(table);
    const qsizetype f = slimFields().indexOf(field);
    Q_ASSERT(t >= 0 && f >= 0);
    Slim slim;
    slim.handle = handle.toLongLong();
    if (change == Change::Balance) {
        slim.balance = int(m_slimBalances.size());
        m_slimBalances.push_back({ before, after });
    }
    slim.position = ++m_position;
    slim.line = m_line;
    slim.table = quint8(t);
    slim.field = quint8(f);
    slim.change = change;
    m_slim.push_back(slim);
}

namespace {

// A value as JSON, as the engine's json_array() writes the host value the
// driver binds for it. Written straight into the block: the posting writes
// this for every field of every row.
void appendJson(QByteArray &out, const QVariant &value)
{
    if (BatchRead::isNullValue(value)) {
        out += "null";
        return;
    }
    char digits[32];
    switch (value.typeId()) {
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::Bool: {
        const auto [end, ec] = std::to_chars(digits, digits + sizeof digits, value.toLongLong());
        out.append(digits, end - digits);
        return;
    }
    case QMetaType::Double: {
        const double d = value.toDouble();
        out += std::isfinite(d) ? QByteArray::number(d, 'g', 17) : QByteArray("null");
        return;
    }
    case QMetaType::QDate: {
        // Bound as its ISO text.
        const QDate date = value.toDate();
        if (date.year() >= 1 && date.year() <= 9999) {
            const int n = std::snprintf(digits, sizeof digits, "\"%04d-%02d-%02d\"",
                date.year(), date.month(), date.day());
            out.append(digits, n);
            return;
        }
        break;
    }
    default:
        break;
    }
    out += '"';
    for (const char b : value.toString().toUtf8()) {
        if (b == '"' || b == '\\') {
            out += '\\';
            out += b;
        } else if (static_cast<unsigned char>(b) < 0x20) {
            std::snprintf(digits, sizeof digits, "\\u%04x", unsigned(b));
            out += digits;
        } else {
            out += b;
        }
    }
    out += '"';
}

} // namespace

QByteArray HostWriteLog::jsonArray(const QVariantList &values)
{
    QByteArray json;
    json.reserve(160);
    json += '[';
    for (qsizetype i = 0; i < values.size(); ++i) {
        if (i)
            json += ',';
        appendJson(json, values.at(i));
    }
    return json + ']';
}

QVariantMap HostWriteLog::named(const QString &table, const QVariantList &values)
{
    const QStringList names = hostFields(table, Change::Added);
    Q_ASSERT(names.size() == values.size());
    QVariantMap fields;
    for (qsizetype i = 0; i < names.size() && i < values.size(); ++i)
        fields.insert(names.at(i), values.at(i));
    return fields;
}

QByteArray HostWriteLog::identity(
    const KeyedRows &rows, const KeyedRows::Change &change, int index)
{
    QByteArray json("[");
    for (const QString &field : hostFields(rows.table(), Change::Balance)) {
        if (json.size() > 1)
            json += ',';
        if (field == rows.keyField()) {
            appendJson(json, change.row.key);
            continue;
        }
        const qsizetype at = rows.fields().indexOf(field);
        if (at < 0 || at == index)
            return {}; // not read with the balance
        appendJson(json, change.row.values.value(at));
    }
    return json + ']';
}

const QString HostWriteLog::MovedBlocksTable = u"temp.remitra_row_blocks"_qs;

void HostWriteLog::pack(Change change, const QString &table, qint64 handle,
    const QByteArray &fields, const QString &field, const QByteArray &before,
    const QByteArray &after)
{
    if (!m_blocks.empty() && m_blocks.back().count >= blockRows && m_host) {
        // A full block leaves memory.
        if (!m_movedBlocks) {
            m_host->execText(u"CREATE TEMP TABLE IF NOT EXISTS remitra_row_blocks ("
                             "position INTEGER PRIMARY KEY, count INTEGER NOT NULL, "
                             "rows TEXT NOT NULL)"_qs,
                "keeping the posted rows for the journal");
            m_host->execText(u"DELETE FROM "_qs + MovedBlocksTable,
                "keeping the posted rows for the journal");
            m_movedBlocks = true;
        }
        const Block &full = m_blocks.back();
        QSqlQuery move = m_host->prepare(u"INSERT INTO "_qs + MovedBlocksTable
            + u" (position, count, rows) VALUES (:position, :count, :rows)"_qs);
        move.bindValue(u":position"_qs, full.position);
        move.bindValue(u":count"_qs, full.count);
        move.bindValue(u":rows"_qs, full.json());
        HostDb::exec(move, "keeping the posted rows for the journal");
        m_blocks.pop_back();
    }
    if (m_blocks.empty() || m_blocks.back().count >= blockRows)
        m_blocks.push_back({ m_position + 1, 0, {} });
    Block &block = m_blocks.back();
    QByteArray &rows = block.rows;
    if (block.count++)
        rows += ',';
    // Table, field and change names are plain identifiers and money text is
    // digits, a sign and a point: nothing in them needs escaping.
    const auto quotedOrNull = [&rows](const QByteArray &text) {
        if (text.isNull()) {
            rows += "null";
        } else {
            rows += '"';
            rows += text;
            rows += '"';
        }
    };
    const auto quotedName = [&rows](const QString &name) {
        rows += '"';
        for (const QChar c : name)
            rows += char(c.unicode());
        rows += '"';
    };
    const auto number = [&rows](qint64 n) {
        char digits[24];
        const auto [end, ec] = std::to_chars(digits, digits + sizeof digits, n);
        rows.append(digits, end - digits);
    };
    rows += '[';
    number(++m_position);
    rows += ',';
    if (m_line)
        number(m_line);
    else
        rows += "null";
    rows += ',';
    quotedName(table);
    rows += ',';
    number(handle);
    rows += ',';
    quotedName(changeName(change));
    rows += ',';
    rows += fields.isEmpty() ? QByteArray("null") : fields;
    rows += ',';
    if (field.isEmpty())
        rows += "null";
    else
        quotedName(field);
    rows += ',';
    quotedOrNull(before);
    rows += ',';
    quotedOrNull(after);
    rows += ']';
}

void HostWriteLog::added(const QString &table, const QVariant &handle, const QVariantMap &fields)
{
    m_entries.append(
        { ++m_position, Change::Added, table, handle, normal(fields), {}, {}, {}, m_line });
}

void HostWriteLog::balance(const QString &table, const QVariant &handle,
    const QVariantMap &keyFields, const QString &field, Currency before, Currency after)
{
    m_entries.append({ ++m_position, Change::Balance, table, handle, normal(keyFields), field,
        before.toPlainText(), after.toPlainText(), m_line });
}

void HostWriteLog::balance(const KeyedRows &rows, const KeyedRows::Change &change, int index)
{
    if (m_slimRows && !change.row.handle.isNull()) {
        const QByteArray fields = identity(rows, change, index);
        if (!fields.isEmpty()) {
            pack(Change::Balance, rows.table(), change.row.handle.toLongLong(), fields,
                rows.fields().at(index), change.before.toPlainText().toLatin1(),
                change.after.toPlainText().toLatin1());
            return;
        }
        addSlim(Change::Balance, rows.table(), change.row.handle, rows.fields().at(index),
            change.before, change.after);
        return;
    }
    QVariantMap keyFields { { rows.keyField(), change.row.key } };
    for (qsizetype i = 0; i < rows.fields().size(); ++i) {
        if (i != index)
            keyFields.insert(rows.fields().at(i), change.row.values.value(i));
    }
    balance(rows.table(), change.row.handle, keyFields, rows.fields().at(index), change.before,
        change.after);
}

void HostWriteLog::changed(const QString &table, const QVariant &handle,
    const QVariantMap &keyFields, const QString &field, const QVariant &before,
    const QVariant &after)
{
    m_entries.append({ ++m_position, Change::Changed, table, handle, normal(keyFields), field,
        normal(field, before), normal(field, after), m_line });
}

void HostWriteLog::removed(const QString &table, const QVariant &handle, const QVariantMap &fields)
{
    m_entries.append(
        { ++m_position, Change::Removed, table, handle, normal(fields), {}, {}, {}, m_line });
}

void HostWriteLog::amendAdded(const QString &table, const QString &keyField, const QVariant &key,
    const QString &field, const QVariant &value)
{
    // A slim row is read from the host as the posting left it.
    const QVariant wanted = normal(keyField, key);
    for (auto it = m_entries.rbegin(); it != m_entries.rend(); ++it) {
        if (it->change == Change::Added && it->table == table
            && it->fields.value(keyField) == wanted) {
            it->fields.insert(field, normal(field, value));
            return;
        }
    }
}

QString HostWriteLog::changeName(Change change)
{
    switch (change) {
    case Change::Added:
        return u"added"_qs;
    case Change::Balance:
        return u"balance"_qs;
    case Change::Changed:
        return u"changed"_qs;
    case Change::Removed:
        return u"removed"_qs;
    }
    return {};
}

HostWriteLog::Change HostWriteLog::changeOf(const QString &name)
{
    if (name == u"balance"_qs)
        return Change::Balance;
    if (name == u"changed"_qs)
        return Change::Changed;
    if (name == u"removed"_qs)
        return Change::Removed;
    return Change::Added;
}
