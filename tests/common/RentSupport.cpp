#include "RentSupport.h"

#include <QFile>
#include <QSqlQuery>

namespace RentSupport {

namespace {
const QStringList kAccountItems = { u"Rent Income;4000;B"_qs, u"Rent received;1"_qs,
    u"Management Fee;6100;U"_qs, u"Mgmt"_qs, u"Late Fee Received;4100;T"_qs, u"Late fee;2"_qs };
} // namespace

void seedPortfolio(TestSite &site)
{
    const QString fees[] = { u"8%"_qs, u"25"_qs, u" "_qs };
    for (int o = 1; o <= 3; ++o) {
        site.insert(u"Owners"_qs, { { u"OwnerID"_qs, o }, { u"OMgmtFee"_qs, fees[o - 1] } });
        site.insert(u"Properties"_qs, { { u"PropID"_qs, o * 10 }, { u"POwnerID"_qs, o } });
    }
    const struct
    {
        int id;
        QVariant first;
        QString last;
    } tenants[] = { { 100, u"Ann"_qs, u"Avery"_qs }, { 101, u""_qs, u"Baker"_qs },
        { 200, u"Carl"_qs, u"Cole"_qs }, { 300, QVariant(), u"Dunn"_qs } };
    for (const auto &t : tenants) {
        site.insert(u"Tenants"_qs,
            { { u"TenantID"_qs, t.id }, { u"TPropID"_qs, t.id / 10 },
                { u"TFirstName1"_qs, t.first }, { u"TLastName1"_qs, t.last },
                { u"TCurrBal"_qs, 0 } });
        site.insert(u"Units"_qs,
            { { u"UTenantID"_qs, t.id }, { u"UAddress"_qs, u"Unit "_qs + QString::number(t.id) },
                { u"UCurrBal"_qs, 0 } });
    }
    site.writeIdFile(kAccountItems);
}

QString line(int prop, int tenant, const QString &amount, const QString &date, const QString &check,
    const QString &method, const QString &type)
{
    return u"P%1,U%2,T%2,%3,%4,%5,11/03/2026,%6,%7"_qs.arg(prop).arg(tenant).arg(
        amount, date, check, method, type);
}

void writePaymentFile(TestSite &site, const QStringList &lines)
{
    site.writeFile(
        site.state->PaymentDownloadName, (lines.join(u"\r\n"_qs) + u"\r\n\r\n"_qs).toLatin1());
}

void useFixture(TestSite &site, const QString &name)
{
    QFile f(testData(u"rent/"_qs + name));
    if (!f.open(QIODevice::ReadOnly))
        qFatal("missing fixture %s", qPrintable(name));
    site.writeFile(site.state->PaymentDownloadName, f.readAll());
}

void seedLargePortfolio(TestSite &site, int tenants)
{
    QSqlDatabase db = site.db().database();
    db.transaction();
    QSqlQuery owner(db), prop(db), tenant(db), unit(db);
    owner.prepare(u"INSERT INTO Owners (OwnerID, OMgmtFee) VALUES (?, ?)"_qs);
    prop.prepare(u"INSERT INTO Properties (PropID, POwnerID) VALUES (?, ?)"_qs);
    tenant.prepare(u"INSERT INTO Tenants (TenantID, TPropID, TFirstName1, TLastName1, TCurrBal)"
                   " VALUES (?, ?, 'First', ?, 0)"_qs);
    unit.prepare(u"INSERT INTO Units (UTenantID, UAddress, UCurrBal) VALUES (?, ?, 0)"_qs);
    const int properties = (tenants + 19) / 20;
    for (int o = 1; o <= (properties + 4) / 5; ++o) {
        owner.addBindValue(o);
        owner.addBindValue(o % 3 == 0 ? u"6%"_qs : u"20"_qs);
        owner.exec();
    }
    for (int p = 1; p <= properties; ++p) {
        prop.addBindValue(p);
        prop.addBindValue((p - 1) / 5 + 1);
        prop.exec();
    }
    for (int t = 1; t <= tenants; ++t) {
        tenant.addBindValue(t);
        tenant.addBindValue((t - 1) / 20 + 1);
        tenant.addBindValue(u"Last"_qs + QString::number(t));
        tenant.exec();
        unit.addBindValue(t);
        unit.addBindValue(QString::number(t) + u" Long Street"_qs);
        unit.exec();
    }
    db.commit();
    site.writeIdFile(kAccountItems);
}

void writeLargePaymentFile(TestSite &site, int tenants, int count)
{
    QStringList lines;
    for (int i = 0; i < count; ++i) {
        const int t = int((qint64(i) * 7919) % tenants) + 1;
        lines << line((t - 1) / 20 + 1, t, QString::number(500 + i % 900) + u".25"_qs,
            u"11/02/2026"_qs, QString::number(100000 + i), u"ACH"_qs,
            i % 10 == 9 ? u"Late Fee"_qs : u"Rent"_qs);
    }
    writePaymentFile(site, lines);
}

} // namespace RentSupport
