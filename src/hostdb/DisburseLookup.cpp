#include "hostdb/DisburseLookup.h"

#include "core/VbText.h"
#include "hostdb/BatchRead.h"
#include "hostdb/DisburseList.h"

namespace {

const QString kOwnerSql = u"SELECT OFirstName2, OLastName2 FROM Owners WHERE OwnerID = :id"_qs;
const QString kCheckSql
    = u"SELECT "_qs + DisburseList::checkColumns() + u" FROM CheckEntered WHERE CkID = :id"_qs;
const QString kOwnerBatchSql
    = u"SELECT OwnerID, OFirstName2, OLastName2 FROM Owners WHERE OwnerID IN ("_qs;
const QString kCheckBatchSql
    = u"SELECT "_qs + DisburseList::checkColumns() + u" FROM CheckEntered WHERE CkID IN ("_qs;

// The owner's second name pair as a payee would spell it, trimmed; Null
// when a part of it is Null.
QString secondPair(const BatchRead::Row &q, int firstColumn)
{
    return VbText::trim(VbText::joinNull(
        VbText::text(q.value(firstColumn)), u" "_qs, VbText::text(q.value(firstColumn + 1))));
}

// A distribution is written, and a finished one posted, only where the host
// can take the posting of the answer: the fields are checked before
// anything is sent.
const HostDb &checked(const HostDb &db)
{
    db.require(HostFeature::PaymentList);
    db.require(HostFeature::CheckPosting);
    return db;
}

} // namespace

DisburseLookup::DisburseLookup(const HostDb &db)
    : m_db(checked(db))
    , m_owner(db.prepare(kOwnerSql))
    , m_check(db.prepare(kCheckSql))
{
}

bool DisburseLookup::paysSecondPair(qint64 ownerId, const QString &payee)
{
    std::optional<QString> pair;
    const auto known = m_secondPairs.constFind(ownerId);
    if (known != m_secondPairs.cend()) {
        pair = *known;
    } else {
        m_owner.bindValue(u":id"_qs, ownerId);
        HostDb::exec(m_owner, "finding the owner of a payment");
        if (m_owner.next())
            pair = secondPair(BatchRead::QueryRow(m_owner), 0);
        m_owner.finish();
    }
    if (!pair || pair->isNull())
        return false;
    const QString trimmed = VbText::trim(payee);
    return !trimmed.isNull() && trimmed.compare(*pair, Qt::CaseInsensitive) == 0;
}

void DisburseLookup::prefetchOwners(const QList<qint64> &ownerIds)
{
    BatchRead::run(m_db, kOwnerBatchSql, ownerIds, "finding the owners of the payments",
        [this](const BatchRead::Row &q) {
            // The first row of an owner, as a keyed look-up meets it.
            const qint64 id = q.value(0).toLongLong();
            if (!m_secondPairs.contains(id))
                m_secondPairs.insert(id, secondPair(q, 1));
        });
}

QHash<qint64, PaymentRow> DisburseLookup::enteredChecks(const QList<qint64> &ckIds)
{
    QHash<qint64, PaymentRow> found;
    BatchRead::run(m_db, kCheckBatchSql, ckIds, "finding the entered checks",
        [&found](const BatchRead::Row &q) {
            const PaymentRow row = DisburseList::readRow(q);
            if (!found.contains(row.CkID))
                found.insert(row.CkID, row);
        });
    return found;
}

std::optional<PaymentRow> DisburseLookup::enteredCheck(qint64 ckId)
{
    m_check.bindValue(u":id"_qs, ckId);
    HostDb::exec(m_check, "finding an entered check");
    const QList<PaymentRow> rows = DisburseList::readRows(m_check);
    m_check.finish();
    if (rows.isEmpty())
        return std::nullopt;
    return rows.first();
}
