#include "hostdb/DisburseList.h"

#include "core/VbText.h"
#include "hostdb/EngineSql.h"

#include <QDate>
#include <QDateTime>
#include <QHash>

#include <algorithm>
#include <functional>

namespace {

const QString kColumns
    = u"CkID, CkPayee, CkDate, CkAmount, CkRemark, CkInvoice, CkType, CkVendorID, CkNumber"_qs;
const QString kOwnersSql = u"SELECT OwnerID, OFirstName1, OLastName1, OFirstName2, OLastName2"
                           " FROM Owners WHERE OACH = 'Y'"_qs;
const QString kVendorsSql = u"SELECT VenID, VenName, VenContact FROM Vendors WHERE VACH = 'Y'"_qs;

} // namespace

PaymentRow DisburseList::readRow(const BatchRead::Row &q)
{
    PaymentRow row;
    row.CkID = q.value(0).toLongLong();
    row.CkPayee = VbText::text(q.value(1));
    row.CkDate = q.value(2);
    row.CkAmount = Currency::fromVariant(q.value(3)).value_or(Currency());
    row.CkRemark = VbText::text(q.value(4));
    row.CkInvoice = VbText::text(q.value(5));
    row.CkType = VbText::text(q.value(6));
    row.CkVendorID = q.value(7);
    row.CkNumber = q.value(8);
    return row;
}

namespace {

// The key a name is matched by: trimmed of blanks, case folded. Null (a
// missing part) matches nothing.
QString nameKey(const QString &name)
{
    const QString trimmed = VbText::trim(name);
    return trimmed.isNull() ? QString() : trimmed.toCaseFolded();
}

struct Payee
{
    qint64 idField;
    QString nameA;
    QString nameB;
};

using PayeeKeys = QHash<QString, QList<Payee>>;

PayeeKeys ownerKeys(const HostDb &db)
{
    QSqlQuery q = db.prepare(kOwnersSql + db.sql().entryOrder({ u"Owners"_qs }));
    HostDb::exec(q, "reading the enrolled owners");
    PayeeKeys keys;
    while (q.next()) {
        const QString first = VbText::text(q.value(1));
        const QString last = VbText::text(q.value(2));
        const Payee payee { -q.value(0).toLongLong(), last, first };
        const QString key1 = nameKey(VbText::joinNull(first, u" "_qs, last));
        const QString key2 = nameKey(
            VbText::joinNull(VbText::text(q.value(3)), u" "_qs, VbText::text(q.value(4))));
        if (!key1.isNull())
            keys[key1].append(payee);
        if (!key2.isNull() && key2 != key1)
            keys[key2].append(payee);
    }
    return keys;
}

PayeeKeys vendorKeys(const HostDb &db)
{
    QSqlQuery q = db.prepare(kVendorsSql + db.sql().entryOrder({ u"Vendors"_qs }));
    HostDb::exec(q, "reading the enrolled vendors");
    PayeeKeys keys;
    while (q.next()) {
        const QString name = VbText::text(q.value(1));
        const QString key = nameKey(VbText::joinNull(name, u" "_qs));
        if (!key.isNull())
            keys[key].append(Payee { q.value(0).toLongLong(), name, VbText::text(q.value(2)) });
    }
    return keys;
}

// Orders as the engines do: Null first, text without regard to case.
int compareText(const QString &a, const QString &b)
{
    if (a.isNull() || b.isNull())
        return int(b.isNull()) - int(a.isNull());
    return a.compare(b, Qt::CaseInsensitive);
}

QDate dateOf(const QVariant &v)
{
    if (v.typeId() == QMetaType::QDateTime)
        return v.toDateTime().date();
    if (v.typeId() == QMetaType::QDate)
        return v.toDate();
    return QDate::fromString(VbText::text(v), Qt::ISODate);
}

int compareDate(const QVariant &a, const QVariant &b)
{
    if (a.isNull() || b.isNull())
        return int(b.isNull()) - int(a.isNull());
    const QDate da = dateOf(a), db = dateOf(b);
    if (da.isValid() && db.isValid())
        return da < db ? -1 : (db < da ? 1 : 0);
    return compareText(VbText::text(a), VbText::text(b));
}

int compareAmount(const PaymentRow &a, const PaymentRow &b)
{
    return a.CkAmount < b.CkAmount ? -1 : (b.CkAmount < a.CkAmount ? 1 : 0);
}

void sortRows(QList<PaymentRow> &rows, const QString &sortItem)
{
    std::function<int(const PaymentRow &, const PaymentRow &)> first, second;
    const auto payee = [](const PaymentRow &a, const PaymentRow &b) {
        return compareText(a.CkPayee, b.CkPayee);
    };
    const auto date
        = [](const PaymentRow &a, const PaymentRow &b) { return compareDate(a.CkDate, b.CkDate); };
    if (sortItem == u"Payee"_qs) {
        first = payee;
        second = date;
    } else if (sortItem == u"Date"_qs) {
        first = date;
        second = payee;
    } else if (sortItem == u"Amount"_qs) {
        first = compareAmount;
        second = date;
    } else {
        return; // "Entry Order" and anything else: as read
    }
    std::stable_sort(rows.begin(), rows.end(), [&](const PaymentRow &a, const PaymentRow &b) {
        const int c = first(a, b);
        return c != 0 ? c < 0 : second(a, b) < 0;
    });
}

} // namespace

QStringList DisburseList::sortItems()
{
    return { u"Payee"_qs, u"Date"_qs, u"Amount"_qs, u"Entry Order"_qs };
}

QString DisburseList::checkColumns()
{
    return kColumns;
}

QList<PaymentRow> DisburseList::load(const HostDb &db, const QString &sortItem)
{
    db.require(HostFeature::PaymentList);
    const PayeeKeys owners = ownerKeys(db);
    const PayeeKeys vendors = vendorKeys(db);

    QSqlQuery q = db.prepare(u"SELECT "_qs + kColumns + u" FROM CheckEntered"_qs
        + db.sql().entryOrder({ u"CheckEntered"_qs }));
    HostDb::exec(q, "reading the entered checks to pay");
    QList<PaymentRow> ownerRows, vendorRows;
    while (q.next()) {
        const QString key = nameKey(VbText::text(q.value(1)));
        if (key.isNull())
            continue;
        const auto owner = owners.constFind(key);
        const auto vendor = vendors.constFind(key);
        const bool vendorCheck = !q.value(7).isNull() && q.value(7).toDouble() == -1;
        if (owner == owners.cend() && (vendor == vendors.cend() || !vendorCheck))
            continue;
        const PaymentRow check = readRow(BatchRead::QueryRow(q));
        auto add = [&check](QList<PaymentRow> &to, const Payee &p) {
            PaymentRow row = check;
            row.IDField = p.idField;
            row.NameA = p.nameA;
            row.NameB = p.nameB;
            to.append(row);
        };
        if (owner != owners.cend()) {
            for (const Payee &p : owner.value())
                add(ownerRows, p);
        }
        if (vendorCheck && vendor != vendors.cend()) {
            for (const Payee &p : vendor.value())
                add(vendorRows, p);
        }
    }
    QList<PaymentRow> rows = ownerRows + vendorRows;
    sortRows(rows, sortItem);
    return rows;
}

QList<PaymentRow> DisburseList::readRows(QSqlQuery &query)
{
    QList<PaymentRow> rows;
    while (query.next())
        rows.append(readRow(BatchRead::QueryRow(query)));
    return rows;
}
