#include "hostdb/DisburseLookup.h"

#include "core/VbText.h"
#include "hostdb/DisburseList.h"

namespace {

const QString kOwnerSql = u"SELECT OFirstName2, OLastName2 FROM Owners WHERE OwnerID = :id"_qs;
const QString kCheckSql = u"SELECT * FROM CheckEntered WHERE CkID = :id"_qs;

} // namespace

DisburseLookup::DisburseLookup(const HostDb &db)
    : m_owner(db.prepare(kOwnerSql))
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
