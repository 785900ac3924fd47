#include "DisburseFixture.h"

#include "hostdb/DisburseList.h"

#include <QSqlQuery>
#include <QSqlRecord>

namespace DisburseFixture {

qint64 addCheck(TestSite &site, const QString &payee, double amount, const QVariantMap &more)
{
    QVariantMap values { { u"CkPayee"_qs, payee }, { u"CkAmount"_qs, amount },
        { u"CkDate"_qs, u"2024-03-01"_qs }, { u"CkVendorID"_qs, 0 }, { u"CkType"_qs, u"C"_qs } };
    values.insert(more);
    return site.insert(u"CheckEntered"_qs, values);
}

void addSplit(TestSite &site, qint64 ckId, const QString &postTo, qint64 postToId, double amount,
    const QString &type, const QVariantMap &more)
{
    QVariantMap values { { u"CkNumber"_qs, ckId }, { u"CkPostTo"_qs, postTo },
        { u"CkPostToID"_qs, postToId }, { u"CkAmount"_qs, amount }, { u"CkType"_qs, type },
        { u"CkAccountID"_qs, 4000 }, { u"CkStatus"_qs, u"E"_qs }, { u"CkRemark"_qs, u"split"_qs } };
    values.insert(more);
    site.insert(u"SplitChecks"_qs, values);
}

void populate(TestSite &site)
{
    const QVariant null;
    const QList<QVariantList> owners { { 1, u"Ann"_qs, u"Lee"_qs, u"Bob"_qs, u"Lee"_qs, u"Y"_qs },
        { 2, u"Carl"_qs, u"Diaz"_qs, null, null, u"N"_qs },
        { 3, u"Dana"_qs, u"Fox"_qs, null, null, u"D"_qs },
        { 4, u"Eve"_qs, u"Gray"_qs, u"eve"_qs, u"gray"_qs, u"y"_qs },
        { 5, u"Ann"_qs, u"Lee"_qs, null, null, u"Y"_qs },
        { 6, null, u"Solo"_qs, u"Hal"_qs, u"Solo"_qs, u"Y"_qs } };
    for (const QVariantList &o : owners) {
        site.insert(u"Owners"_qs,
            { { u"OwnerID"_qs, o[0] }, { u"OFirstName1"_qs, o[1] }, { u"OLastName1"_qs, o[2] },
                { u"OFirstName2"_qs, o[3] }, { u"OLastName2"_qs, o[4] }, { u"OACH"_qs, o[5] },
                { u"OCurrBal"_qs, 0 } });
    }
    const QList<QVariantList> vendors { { 8, u"Acme Repairs"_qs, u"Y"_qs },
        { 9, u"Zed Plumbing"_qs, u"N"_qs }, { 10, u"Bob Lee"_qs, u"Y"_qs } };
    for (const QVariantList &v : vendors) {
        site.insert(u"Vendors"_qs,
            { { u"VenID"_qs, v[0] }, { u"VenName"_qs, v[1] }, { u"VenContact"_qs, u"Pat"_qs },
                { u"VACH"_qs, v[2] } });
    }
    const QString date = u"CkDate"_qs, remark = u"CkRemark"_qs, vendor = u"CkVendorID"_qs;
    addCheck(site, u"Ann Lee"_qs, 1500,
        { { date, u"2024-03-05"_qs }, { remark, u"March owner draw "_qs } });
    addCheck(site, u" Bob Lee  "_qs, 250.5, { { remark, u"March draw"_qs }, { vendor, -1 } });
    addCheck(site, u"Acme Repairs"_qs, 82.4,
        { { date, u"2024-02-20"_qs }, { remark, u" Repairs unit 4"_qs }, { vendor, -1 } });
    addCheck(site, u"Acme Repairs"_qs, 10);
    addCheck(site, u"Ann  Lee"_qs, 11);
    addCheck(site, u"Carl Diaz"_qs, 12);
    addCheck(site, u"Dana Fox"_qs, 13);
    addCheck(site, u"EVE GRAY"_qs, 40, { { date, u"2024-03-10"_qs } });
    addCheck(site, u"Zed Plumbing"_qs, 14, { { vendor, -1 } });
    addCheck(site, u"Solo"_qs, 15);
    addCheck(site, u"Hal Solo"_qs, -12.5,
        { { date, u"2024-01-15"_qs }, { remark, u"  Refund |x "_qs },
            { u"CkInvoice"_qs, u"INV-7"_qs }, { u"CkNumber"_qs, 512 } });
}

QList<PaymentRow> rowsFor(TestSite &site, const QList<PaymentRow::Key> &keys)
{
    const QList<PaymentRow> all = DisburseList::load(site.db(), u"Entry Order"_qs);
    QList<PaymentRow> rows;
    for (const PaymentRow::Key &key : keys) {
        auto it = std::find_if(
            all.cbegin(), all.cend(), [&](const PaymentRow &r) { return r.key() == key; });
        if (it == all.cend())
            qFatal("no list row for check %lld", key.first);
        rows.append(*it);
    }
    return rows;
}

std::shared_ptr<ScriptedProcessorClient::Script> answering(
    TestSite &site, qint32 code, const QString &response)
{
    return site.scriptProcessor({ { true, code, response } });
}

QString dump(TestSite &site, const QString &sql)
{
    QSqlQuery q(site.db().database());
    if (!q.exec(sql))
        qFatal("%s", qPrintable(sql));
    QStringList rows;
    while (q.next()) {
        QStringList fields;
        for (int i = 0; i < q.record().count(); ++i)
            fields.append(q.value(i).toString());
        rows.append(fields.join(u'|'));
    }
    return rows.join(u';');
}

} // namespace DisburseFixture
