#include "hostdb/RentPostingRecord.h"

#include "hostdb/HostDb.h"
#include "hostdb/RemitraStore.h"

#include <QCryptographicHash>

namespace {

QString missingName(RentPostingRecord::Missing missing)
{
    switch (missing) {
    case RentPostingRecord::Missing::UnitAndTenantBalance:
        return u"unit"_qs;
    case RentPostingRecord::Missing::TenantBalance:
        return u"tenant"_qs;
    case RentPostingRecord::Missing::ManagementFee:
        return u"fee"_qs;
    case RentPostingRecord::Missing::Nothing:
        break;
    }
    return {};
}

RentPostingRecord::Missing missingFrom(const QString &text)
{
    if (text == u"unit"_qs)
        return RentPostingRecord::Missing::UnitAndTenantBalance;
    if (text == u"tenant"_qs)
        return RentPostingRecord::Missing::TenantBalance;
    if (text == u"fee"_qs)
        return RentPostingRecord::Missing::ManagementFee;
    return RentPostingRecord::Missing::Nothing;
}

} // namespace

RentPostingRecord::RentPostingRecord(const RemitraStore &store)
    : m_store(store)
    , m_lines(store.prepare(u"SELECT line, posted_at, missing, deposited_at FROM "_qs
          + store.table("rent_lines") + u" WHERE file_sha256 = :sha"_qs))
    , m_complete(store.prepare(u"SELECT complete_at FROM "_qs + store.table("rent_files")
          + u" WHERE file_sha256 = :sha"_qs))
    , m_posted(store.prepare(u"INSERT INTO "_qs + store.table("rent_lines")
          + u" (file_sha256, line, posted_at, missing) VALUES (:sha, :line, :at, :missing) "
            "ON CONFLICT (file_sha256, line) DO UPDATE SET "
            "posted_at = coalesce(posted_at, excluded.posted_at), missing = excluded.missing"_qs))
    , m_deposited(store.prepare(u"INSERT INTO "_qs + store.table("rent_lines")
          + u" (file_sha256, line, deposited_at) VALUES (:sha, :line, :at) "
            "ON CONFLICT (file_sha256, line) DO UPDATE SET "
            "deposited_at = coalesce(deposited_at, excluded.deposited_at)"_qs))
    , m_setComplete(store.prepare(u"INSERT OR IGNORE INTO "_qs + store.table("rent_files")
          + u" (file_sha256, complete_at) VALUES (:sha, :at)"_qs))
{
}

QHash<int, RentPostingRecord::Line> RentPostingRecord::lines(const QString &fileSha256)
{
    QHash<int, Line> found;
    m_lines.bindValue(u":sha"_qs, fileSha256);
    HostDb::exec(m_lines, "reading which payments were posted");
    while (m_lines.next()) {
        Line line;
        line.postedAt = m_lines.value(1).toString();
        line.missing = missingFrom(m_lines.value(2).toString());
        line.depositedAt = m_lines.value(3).toString();
        found.insert(m_lines.value(0).toInt(), line);
    }
    m_lines.finish();
    return found;
}

QString RentPostingRecord::completedAt(const QString &fileSha256)
{
    m_complete.bindValue(u":sha"_qs, fileSha256);
    HostDb::exec(m_complete, "reading which payment files were posted");
    const QString at = m_complete.next() ? m_complete.value(0).toString() : QString();
    m_complete.finish();
    return at;
}

void RentPostingRecord::recordPosted(const QString &fileSha256, int line, Missing missing)
{
    m_posted.bindValue(u":sha"_qs, fileSha256);
    m_posted.bindValue(u":line"_qs, line);
    m_posted.bindValue(u":at"_qs, RemitraStore::now());
    const QString text = missingName(missing);
    m_posted.bindValue(u":missing"_qs, text.isEmpty() ? QVariant() : QVariant(text));
    HostDb::exec(m_posted, "recording a posted payment");
}

void RentPostingRecord::recordDeposited(const QString &fileSha256, int line)
{
    m_deposited.bindValue(u":sha"_qs, fileSha256);
    m_deposited.bindValue(u":line"_qs, line);
    m_deposited.bindValue(u":at"_qs, RemitraStore::now());
    HostDb::exec(m_deposited, "recording a deposited payment");
}

void RentPostingRecord::recordPosted(
    const QString &fileSha256, const QList<std::pair<int, Missing>> &lines)
{
    if (lines.isEmpty())
        return;
    // [[line, missing], ...] as JSON: one statement for the whole file.
    QByteArray json("[");
    for (qsizetype i = 0; i < lines.size(); ++i) {
        const QString missing = missingName(lines.at(i).second);
        json += (i ? ",[" : "[") + QByteArray::number(lines.at(i).first) + ','
            + (missing.isEmpty() ? QByteArray("null") : '"' + missing.toLatin1() + '"') + ']';
    }
    json += ']';
    QSqlQuery q = m_store.prepare(u"INSERT INTO "_qs + m_store.table("rent_lines")
        + u" (file_sha256, line, posted_at, missing) SELECT :sha, value ->> 0, :at, "
          "value ->> 1 FROM json_each(:lines) WHERE true "
          "ON CONFLICT (file_sha256, line) DO UPDATE SET "
          "posted_at = coalesce(posted_at, excluded.posted_at), missing = excluded.missing"_qs);
    q.bindValue(u":sha"_qs, fileSha256);
    q.bindValue(u":at"_qs, RemitraStore::now());
    q.bindValue(u":lines"_qs, QString::fromLatin1(json));
    HostDb::exec(q, "recording the posted payments");
}

void RentPostingRecord::recordDeposited(const QString &fileSha256, const QList<int> &lines)
{
    if (lines.isEmpty())
        return;
    QByteArray json("[");
    for (qsizetype i = 0; i < lines.size(); ++i)
        json += (i ? "," : "") + QByteArray::number(lines.at(i));
    json += ']';
    QSqlQuery q = m_store.prepare(u"INSERT INTO "_qs + m_store.table("rent_lines")
        + u" (file_sha256, line, deposited_at) SELECT :sha, value, :at "
          "FROM json_each(:lines) WHERE true ON CONFLICT (file_sha256, line) DO UPDATE SET "
          "deposited_at = coalesce(deposited_at, excluded.deposited_at)"_qs);
    q.bindValue(u":sha"_qs, fileSha256);
    q.bindValue(u":at"_qs, RemitraStore::now());
    q.bindValue(u":lines"_qs, QString::fromLatin1(json));
    HostDb::exec(q, "recording the deposited payments");
}

void RentPostingRecord::recordComplete(const QString &fileSha256)
{
    m_setComplete.bindValue(u":sha"_qs, fileSha256);
    m_setComplete.bindValue(u":at"_qs, RemitraStore::now());
    HostDb::exec(m_setComplete, "recording a posted payment file");
}

QString RentPostingRecord::sha256(const QByteArray &bytes)
{
    return QString::fromLatin1(QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex());
}

QString RentPostingRecord::missingText(Missing missing)
{
    return missingName(missing);
}

RentPostingRecord::Missing RentPostingRecord::missingOf(const QString &text)
{
    return missingFrom(text);
}

void RentPostingRecord::forget(
    const QString &fileSha256, const QList<int> &postedLines, const QList<int> &depositedLines)
{
    const QString lines = m_store.table("rent_lines");
    QSqlQuery posted = m_store.prepare(u"UPDATE "_qs + lines
        + u" SET posted_at = NULL, missing = NULL WHERE file_sha256 = :sha AND line = :line"_qs);
    for (int line : postedLines) {
        posted.bindValue(u":sha"_qs, fileSha256);
        posted.bindValue(u":line"_qs, line);
        HostDb::exec(posted, "recording a reversed payment");
    }
    QSqlQuery deposited = m_store.prepare(u"UPDATE "_qs + lines
        + u" SET deposited_at = NULL WHERE file_sha256 = :sha AND line = :line"_qs);
    for (int line : depositedLines) {
        deposited.bindValue(u":sha"_qs, fileSha256);
        deposited.bindValue(u":line"_qs, line);
        HostDb::exec(deposited, "recording a reversed deposit");
    }
    QSqlQuery empty = m_store.prepare(u"DELETE FROM "_qs + lines
        + u" WHERE file_sha256 = :sha AND posted_at IS NULL AND deposited_at IS NULL"_qs);
    empty.bindValue(u":sha"_qs, fileSha256);
    HostDb::exec(empty, "recording a reversed posting");
    QSqlQuery file = m_store.prepare(
        u"DELETE FROM "_qs + m_store.table("rent_files") + u" WHERE file_sha256 = :sha"_qs);
    file.bindValue(u":sha"_qs, fileSha256);
    HostDb::exec(file, "recording a reversed posting");
}
