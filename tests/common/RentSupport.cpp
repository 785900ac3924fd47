#include "RentSupport.h"

#include "rent/PaymentFile.h"
#include "rent/UpdateLedgers.h"

#include <QFile>
#include <QSqlQuery>
#include <QSqlRecord>

namespace RentSupport {

namespace {
const QStringList kAccountItems = { u"Rent Income;4000;B"_qs, u"Rent received;1"_qs,
    u"Management Fee;6100;U"_qs, u"Mgmt"_qs, u"Late Fee Received;4100;T"_qs, u"Late fee;2"_qs };
const QString kSeries
    = u"WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < :n) "_qs;
} // namespace

QStringList accountItems()
{
    return kAccountItems;
}

void seedPortfolio(TestSite &site)
{
    const QString fees[] = { u"8%"_qs, u"25"_qs, u" "_qs };
    for (int o = 1; o <= 3; ++o) {
        site.insert(u"Owners"_qs, { { u"OwnerID"_qs, o }, { u"OMgmtFee"_qs, fees[o - 1] } });
        site.insert(u"Properties"_qs, { { u"PropID"_qs, o * 10 }, { u"POwnerID"_qs, o } });
    }
    const QList<std::pair<int, QVariant>> firstNames
        = { { 100, u"Ann"_qs }, { 101, u""_qs }, { 200, u"Carl"_qs }, { 300, QVariant() } };
    const QString lastNames[] = { u"Avery"_qs, u"Baker"_qs, u"Cole"_qs, u"Dunn"_qs };
    for (int i = 0; i < 4; ++i) {
        const auto &[id, first] = firstNames[i];
        site.insert(u"Tenants"_qs,
            { { u"TenantID"_qs, id }, { u"TPropID"_qs, id / 10 }, { u"TFirstName1"_qs, first },
                { u"TLastName1"_qs, lastNames[i] }, { u"TCurrBal"_qs, 0 } });
        site.insert(u"Units"_qs,
            { { u"UTenantID"_qs, id }, { u"UAddress"_qs, u"Unit "_qs + QString::number(id) },
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
        site.state->files.paymentDownload, (lines.join(u"\r\n"_qs) + u"\r\n\r\n"_qs).toLatin1());
}

void useFixture(TestSite &site, const QString &name)
{
    QFile f(testData(u"rent/"_qs + name));
    if (!f.open(QIODevice::ReadOnly))
        qFatal("missing fixture %s", qPrintable(name));
    site.writeFile(site.state->files.paymentDownload, f.readAll());
}

void seedLargePortfolio(TestSite &site, int tenants)
{
    const int properties = (tenants + 19) / 20;
    site.scalar(kSeries
            + u"INSERT INTO Owners (OwnerID, OMgmtFee) "
              "SELECT i, CASE i % 3 WHEN 0 THEN '6%' ELSE '20' END FROM n"_qs,
        { { u":n"_qs, (properties + 4) / 5 } });
    site.scalar(
        kSeries + u"INSERT INTO Properties (PropID, POwnerID) SELECT i, (i - 1) / 5 + 1 FROM n"_qs,
        { { u":n"_qs, properties } });
    site.scalar(kSeries
            + u"INSERT INTO Tenants (TenantID, TPropID, TFirstName1, TLastName1, TCurrBal) "
              "SELECT i, (i - 1) / 20 + 1, 'First', 'Last' || i, 0 FROM n"_qs,
        { { u":n"_qs, tenants } });
    site.scalar(u"INSERT INTO Units (UTenantID, UAddress, UCurrBal) "
                "SELECT TenantID, TenantID || ' Long Street', 0 FROM Tenants"_qs);
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

namespace RentSupport {

QStringList hostRows(TestSite &site)
{
    QStringList rows;
    for (const char *table : { "Owners", "Properties", "Tenants", "Units", "Transactions",
             "CheckDepPrinted", "SplitPrintedChecks" }) {
        QSqlQuery q(site.db().database());
        if (!q.exec(u"SELECT rowid, * FROM "_qs + QLatin1String(table) + u" ORDER BY rowid"_qs))
            qFatal("cannot read %s", table);
        while (q.next()) {
            QStringList fields { QLatin1String(table) };
            for (int i = 0; i < q.record().count(); ++i)
                fields << (q.isNull(i) ? u"Null"_qs : q.value(i).toString());
            rows << fields.join(u'|');
        }
    }
    return rows;
}

PostingChoices everything()
{
    PostingChoices c;
    c.postMgmtFees = true;
    c.createDeposit = true;
    c.depositNumber = u"77"_qs;
    c.remark = PostingChoices::MethodRemark;
    return c;
}

bool post(TestSite &site, const RentPayments &rows, const PostingChoices &choices)
{
    site.prompter.clear();
    return UpdateLedgers::run(*site.state, rows, choices);
}

RentPayments load(TestSite &site)
{
    return PaymentFile::load(*site.state).rows;
}

} // namespace RentSupport
