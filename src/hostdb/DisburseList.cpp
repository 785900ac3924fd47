#include "hostdb/DisburseList.h"

#include "core/VbText.h"

#include <QSqlRecord>

namespace {

// Each payee's name keys are computed once (MATERIALIZED), and SQLite joins
// the checks to them through an automatic index on the key: one look-up per
// check. An owner's second pair is keyed only where it differs from the
// first, so a check matching both pairs gives one row for that owner.
const QString kListSqlite = uR"(WITH OwnerKeys AS MATERIALIZED (
    SELECT OwnerID, OLastName1, OFirstName1,
           trim(OFirstName1 || ' ' || OLastName1, ' ') COLLATE NOCASE AS PayeeKey
      FROM Owners WHERE OACH = 'Y'
    UNION ALL
    SELECT OwnerID, OLastName1, OFirstName1,
           trim(OFirstName2 || ' ' || OLastName2, ' ') COLLATE NOCASE
      FROM Owners WHERE OACH = 'Y'
       AND trim(OFirstName1 || ' ' || OLastName1, ' ')
           IS NOT trim(OFirstName2 || ' ' || OLastName2, ' ') COLLATE NOCASE
), VendorKeys AS MATERIALIZED (
    SELECT VenID, VenName, VenContact, trim(VenName || ' ', ' ') COLLATE NOCASE AS PayeeKey
      FROM Vendors WHERE VACH = 'Y'
)
SELECT CheckEntered.*, -o.OwnerID AS IDField, o.OLastName1, o.OFirstName1
  FROM CheckEntered JOIN OwnerKeys o ON o.PayeeKey = trim(CheckEntered.CkPayee, ' ')
UNION ALL
SELECT CheckEntered.*, v.VenID AS IDField, v.VenName, v.VenContact
  FROM CheckEntered JOIN VendorKeys v ON v.PayeeKey = trim(CheckEntered.CkPayee, ' ')
 WHERE CheckEntered.CkVendorID = -1)"_qs;

struct Columns
{
    explicit Columns(const QSqlRecord &r)
        : id(r.indexOf(u"CkID"_qs))
        , payee(r.indexOf(u"CkPayee"_qs))
        , date(r.indexOf(u"CkDate"_qs))
        , amount(r.indexOf(u"CkAmount"_qs))
        , remark(r.indexOf(u"CkRemark"_qs))
        , invoice(r.indexOf(u"CkInvoice"_qs))
        , type(r.indexOf(u"CkType"_qs))
        , vendor(r.indexOf(u"CkVendorID"_qs))
        , number(r.indexOf(u"CkNumber"_qs))
        , idField(r.indexOf(u"IDField"_qs))
        , count(r.count())
    {
    }
    int id, payee, date, amount, remark, invoice, type, vendor, number, idField, count;

    PaymentRow read(const QSqlQuery &q) const
    {
        PaymentRow row;
        row.CkID = q.value(id).toLongLong();
        row.CkPayee = VbText::text(q.value(payee));
        row.CkDate = q.value(date);
        row.CkAmount = Currency::fromVariant(q.value(amount)).value_or(Currency());
        row.CkRemark = VbText::text(q.value(remark));
        row.CkInvoice = VbText::text(q.value(invoice));
        row.CkType = VbText::text(q.value(type));
        row.CkVendorID = q.value(vendor);
        row.CkNumber = q.value(number);
        if (idField >= 0) {
            row.IDField = q.value(idField).toLongLong();
            row.NameA = VbText::text(q.value(count - 2));
            row.NameB = VbText::text(q.value(count - 1));
        }
        return row;
    }
};

} // namespace

QStringList DisburseList::sortItems()
{
    return { u"Payee"_qs, u"Date"_qs, u"Amount"_qs, u"Entry Order"_qs };
}

QString DisburseList::sortClause(const QString &sortItem)
{
    if (sortItem == u"Payee"_qs)
        return u" ORDER BY CkPayee,CkDate"_qs;
    if (sortItem == u"Date"_qs)
        return u" ORDER BY CkDate,CkPayee"_qs;
    if (sortItem == u"Amount"_qs)
        return u" ORDER BY CkAmount,CkDate"_qs;
    return QStringLiteral("");
}

QString DisburseList::listSql(const QString &sortItem)
{
    return kListSqlite + sortClause(sortItem);
}

QList<PaymentRow> DisburseList::load(const HostDb &db, const QString &sortItem)
{
    QSqlQuery q = db.prepare(listSql(sortItem));
    HostDb::exec(q, "reading the entered checks to pay");
    return readRows(q);
}

QList<PaymentRow> DisburseList::readRows(QSqlQuery &query)
{
    const Columns cols(query.record());
    QList<PaymentRow> rows;
    while (query.next())
        rows.append(cols.read(query));
    return rows;
}
