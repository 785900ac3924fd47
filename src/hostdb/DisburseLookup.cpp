#include "hostdb/DisburseLookup.h"

#include "core/VbText.h"
#include "hostdb/DisburseList.h"

namespace {

const QString kOwnerSql = u"SELECT OFirstName2, OLastName2 FROM Owners WHERE OwnerID = :id"_qs;
const QString kCheckSql
    = u"SELECT "_qs + DisburseList::checkColumns() + u" FROM CheckEntered WHERE CkID = :id"_qs;

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
    : m_owner(checked(db).prepare(kOwnerSql))
    , m_check(db.prepare(kCheckSql))
{
}

bool DisburseLookup::paysSecondPair(qint64 ownerId, const QString &payee)
{
    m_owner.bindValue(u":id"_qs, ownerId);
    HostDb::exec(m_owner, "finding the owner of a payment");
    bool second = false;
    if (m_owner.next()) {
        const QString pair = VbText::Trim(VbText::joinNull(
            VbText::text(m_owner.value(0)), u" "_qs, VbText::text(m_owner.value(1))));
        const QString trimmed = VbText::Trim(payee);
        second = !pair.isNull() && !trimmed.isNull()
            && trimmed.compare(pair, Qt::CaseInsensitive) == 0;
    }
    m_owner.finish();
    return second;
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
