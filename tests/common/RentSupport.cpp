#include "RentSupport.h"

#include "core/TransferFile.h"

#include <QSqlQuery>

namespace RentSupport {

QStringList accountItems()
{
    return {u"Rent Income;4000;B"_qs, u"Rent received;1"_qs, u"Management Fee;6100;U"_qs,
            u"Mgmt fee remark"_qs,    u"Late Fee Received;4100;T"_qs, u"Late fee;2"_qs};
}

void seedPortfolio(TestSite &site)
{
    const QVariant null;
    site.insert(u"Owners"_qs, {{u"OwnerID"_qs, 1}, {u"OLastName1"_qs, u"One"_qs}, {u"OMgmtFee"_qs, u"8%"_qs}});
    site.insert(u"Owners"_qs, {{u"OwnerID"_qs, 2}, {u"OLastName1"_qs, u"Two"_qs}, {u"OMgmtFee"_qs, u"25"_qs}});
    site.insert(u"Owners"_qs, {{u"OwnerID"_qs, 3}, {u"OLastName1"_qs, u"Three"_qs}, {u"OMgmtFee"_qs, u" "_qs}});
    for (int p : {1, 2, 3})
        site.insert(u"Properties"_qs, {{u"PropID"_qs, p * 10}, {u"POwnerID"_qs, p}});
    struct T { int id; int prop; QVariant first; QString last; };
    const T tenants[] = {{100, 10, u"Ann"_qs, u"Avery"_qs},
                         {101, 10, u""_qs, u"Baker"_qs},
                         {200, 20, u"Carl"_qs, u"Cole"_qs},
                         {300, 30, null, u"Dunn"_qs}};
    for (const T &t : tenants) {
        site.insert(u"Tenants"_qs, {{u"TenantID"_qs, t.id}, {u"TPropID"_qs, t.prop},
                                    {u"TFirstName1"_qs, t.first}, {u"TLastName1"_qs, t.last},
                                    {u"TCurrBal"_qs, 0}});
        site.insert(u"Units"_qs, {{u"UTenantID"_qs, t.id}, {u"UAddress"_qs, u"Unit "_qs + QString::number(t.id)},
                                  {u"UCurrBal"_qs, 0}});
    }
    site.writeIdFile(accountItems());
}

QString line(int prop, int tenant, const QString &amount, const QString &date,
             const QString &check, const QString &method, const QString &type)
{
    return u"P%1,U%2,T%2,%3,%4,%5,%6,%7,%8"_qs.arg(prop).arg(tenant).arg(amount, date, check,
                                                                       u"11/03/2026"_qs, method, type);
}

void writePaymentFile(TestSite &site, const QStringList &lines)
{
    QString text;
    for (const QString &l : lines)
        text += l + u"\r\n"_qs;
    site.writeFile(site.state->PaymentDownloadName, TransferFile::toAnsi(text + u"\r\n"_qs));
}

void seedLargePortfolio(TestSite &site, int tenants)
{
    QSqlDatabase db = site.db().database();
    db.transaction();
    QSqlQuery owner(db), prop(db), tenant(db), unit(db);
    owner.prepare(u"INSERT INTO Owners (OwnerID, OLastName1, OMgmtFee) VALUES (?, ?, ?)"_qs);
    prop.prepare(u"INSERT INTO Properties (PropID, POwnerID, PropName) VALUES (?, ?, ?)"_qs);
    tenant.prepare(u"INSERT INTO Tenants (TenantID, TPropID, TFirstName1, TLastName1, TCurrBal)"
                   " VALUES (?, ?, ?, ?, 0)"_qs);
    unit.prepare(u"INSERT INTO Units (UTenantID, UAddress, UCurrBal) VALUES (?, ?, 0)"_qs);
    const int properties = (tenants + 19) / 20;
    const int owners = (properties + 4) / 5;
    for (int o = 1; o <= owners; ++o) {
        owner.addBindValue(o);
        owner.addBindValue(u"Owner "_qs + QString::number(o));
        owner.addBindValue(o % 3 == 0 ? u"6%"_qs : u"20"_qs);
        owner.exec();
    }
    for (int p = 1; p <= properties; ++p) {
        prop.addBindValue(p);
        prop.addBindValue((p - 1) / 5 + 1);
        prop.addBindValue(u"Property "_qs + QString::number(p));
        prop.exec();
    }
    for (int t = 1; t <= tenants; ++t) {
        tenant.addBindValue(t);
        tenant.addBindValue((t - 1) / 20 + 1);
        tenant.addBindValue(u"First"_qs + QString::number(t));
        tenant.addBindValue(u"Last"_qs + QString::number(t));
        tenant.exec();
        unit.addBindValue(t);
        unit.addBindValue(QString::number(t) + u" Long Street"_qs);
        unit.exec();
    }
    db.commit();
    site.writeIdFile(accountItems());
}

QString largePaymentFile(int tenants, int count)
{
    QString text;
    for (int i = 0; i < count; ++i) {
        const int t = int((qint64(i) * 7919) % tenants) + 1;
        const int p = (t - 1) / 20 + 1;
        text += line(p, t, QString::number(500 + i % 900) + u".25"_qs, u"11/02/2026"_qs,
                     QString::number(100000 + i), u"ACH"_qs, i % 10 == 9 ? u"Late Fee"_qs : u"Rent"_qs)
                + u"\r\n"_qs;
    }
    return text + u"\r\n"_qs;
}

} // namespace RentSupport
