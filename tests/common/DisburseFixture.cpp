#include "DisburseFixture.h"

namespace DisburseFixture {

namespace {

void owner(TestSite &site, int id, const QVariant &first1, const QString &last1,
    const QVariant &first2, const QVariant &last2, const QString &ach)
{
    site.insert(u"Owners"_qs,
        { { u"OwnerID"_qs, id }, { u"OFirstName1"_qs, first1 }, { u"OLastName1"_qs, last1 },
            { u"OFirstName2"_qs, first2 }, { u"OLastName2"_qs, last2 }, { u"OACH"_qs, ach },
            { u"OCurrBal"_qs, 0 } });
}

void vendor(TestSite &site, int id, const QString &name, const QString &ach)
{
    site.insert(u"Vendors"_qs,
        { { u"VenID"_qs, id }, { u"VenName"_qs, name }, { u"VenContact"_qs, u"Pat"_qs },
            { u"VACH"_qs, ach } });
}

} // namespace

qint64 addCheck(
    TestSite &site, const QString &payee, const QString &amount, const QVariantMap &more)
{
    QVariantMap values { { u"CkPayee"_qs, payee }, { u"CkAmount"_qs, amount.toDouble() },
        { u"CkDate"_qs, u"2024-03-01"_qs }, { u"CkVendorID"_qs, 0 }, { u"CkType"_qs, u"C"_qs } };
    for (auto it = more.cbegin(); it != more.cend(); ++it)
        values.insert(it.key(), it.value());
    return site.insert(u"CheckEntered"_qs, values);
}

void addSplit(TestSite &site, qint64 ckId, const QString &postTo, qint64 postToId,
    const QString &amount, const QString &type, const QVariantMap &more)
{
    QVariantMap values { { u"CkNumber"_qs, ckId }, { u"CkPostTo"_qs, postTo },
        { u"CkPostToID"_qs, postToId }, { u"CkAmount"_qs, amount.toDouble() },
        { u"CkType"_qs, type }, { u"CkAccountID"_qs, 4000 }, { u"CkStatus"_qs, u"E"_qs },
        { u"CkRemark"_qs, u"split"_qs } };
    for (auto it = more.cbegin(); it != more.cend(); ++it)
        values.insert(it.key(), it.value());
    site.insert(u"SplitChecks"_qs, values);
}

void populate(TestSite &site)
{
    const QVariant null;
    owner(site, 1, u"Ann"_qs, u"Lee"_qs, u"Bob"_qs, u"Lee"_qs, u"Y"_qs);
    owner(site, 2, u"Carl"_qs, u"Diaz"_qs, null, null, u"N"_qs);
    owner(site, 3, u"Dana"_qs, u"Fox"_qs, null, null, u"D"_qs);
    owner(site, 4, u"Eve"_qs, u"Gray"_qs, u"eve"_qs, u"gray"_qs, u"y"_qs);
    owner(site, 5, u"Ann"_qs, u"Lee"_qs, null, null, u"Y"_qs);
    owner(site, 6, null, u"Solo"_qs, u"Hal"_qs, u"Solo"_qs, u"Y"_qs);
    vendor(site, 8, u"Acme Repairs"_qs, u"Y"_qs);
    vendor(site, 9, u"Zed Plumbing"_qs, u"N"_qs);
    vendor(site, 10, u"Bob Lee"_qs, u"Y"_qs);

    addCheck(site, u"Ann Lee"_qs, u"1500"_qs,
        { { u"CkDate"_qs, u"2024-03-05"_qs }, { u"CkRemark"_qs, u"March owner draw "_qs } });
    addCheck(site, u" Bob Lee  "_qs, u"250.5"_qs,
        { { u"CkDate"_qs, u"2024-03-01"_qs }, { u"CkRemark"_qs, u"March draw"_qs },
            { u"CkVendorID"_qs, -1 } });
    addCheck(site, u"Acme Repairs"_qs, u"82.4"_qs,
        { { u"CkDate"_qs, u"2024-02-20"_qs }, { u"CkRemark"_qs, u" Repairs unit 4"_qs },
            { u"CkVendorID"_qs, -1 } });
    addCheck(site, u"Acme Repairs"_qs, u"10"_qs);
    addCheck(site, u"Ann  Lee"_qs, u"11"_qs);
    addCheck(site, u"Carl Diaz"_qs, u"12"_qs);
    addCheck(site, u"Dana Fox"_qs, u"13"_qs);
    addCheck(site, u"EVE GRAY"_qs, u"40"_qs, { { u"CkDate"_qs, u"2024-03-10"_qs } });
    addCheck(site, u"Zed Plumbing"_qs, u"14"_qs, { { u"CkVendorID"_qs, -1 } });
    addCheck(site, u"Solo"_qs, u"15"_qs);
    addCheck(site, u"Hal Solo"_qs, u"-12.5"_qs,
        { { u"CkDate"_qs, u"2024-01-15"_qs }, { u"CkRemark"_qs, u"  Refund |x "_qs },
            { u"CkInvoice"_qs, u"INV-7"_qs }, { u"CkNumber"_qs, 512 } });
}

} // namespace DisburseFixture
