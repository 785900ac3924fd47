#include "DisburseFixture.h"
#include "TestSupport.h"

#include "hostdb/DisburseList.h"

#include <QSqlQuery>
#include <QTest>

namespace {

using Key = PaymentRow::Key;

QList<qint64> checkIds(const QList<PaymentRow> &rows)
{
    QList<qint64> ids;
    for (const PaymentRow &r : rows)
        ids.append(r.CkID);
    return ids;
}

} // namespace

class TestPaymentList : public QObject
{
    Q_OBJECT

private slots:
    void listsEnrolledPayeesOnly()
    {
        TestSite site;
        DisburseFixture::populate(site);
        const QList<PaymentRow> rows = DisburseList::load(site.db(), u"Payee"_qs);

        QList<Key> keys;
        for (const PaymentRow &r : rows)
            keys.append(r.key());
        std::sort(keys.begin(), keys.end());
        // Owners carry minus their id, vendors their id. Check 1 matches two
        // owners, check 2 an owner's second pair and a vendor, check 8 both
        // pairs of one owner (listed once), check 11 a second pair whose
        // first pair lacks a first name.
        const QList<Key> expected { { 1, -5 }, { 1, -1 }, { 2, -1 }, { 2, 10 }, { 3, 8 }, { 8, -4 },
            { 11, -6 } };
        QCOMPARE(keys, expected);

        const PaymentRow refund = *std::find_if(
            rows.cbegin(), rows.cend(), [](const PaymentRow &r) { return r.CkID == 11; });
        QCOMPARE(refund.CkAmount, Currency::fromRaw(-125000));
        QCOMPARE(refund.CkInvoice, u"INV-7"_qs);
        QCOMPARE(refund.CkNumber.toInt(), 512);
        for (const PaymentRow &r : rows) {
            if (r.IDField == 10)
                QCOMPARE(r.NameA, u"Bob Lee"_qs); // a vendor row carries the vendor's name
            if (r.IDField == -1)
                QCOMPARE(r.NameA, u"Lee"_qs); // an owner row the owner's last name
        }
    }

    void vendorHalfNeedsVendorIdMinusOne()
    {
        TestSite site;
        DisburseFixture::populate(site);
        // The same payee with vendor id 0 is listed for the owner only.
        const qint64 id = DisburseFixture::addCheck(site, u"Bob Lee"_qs, u"5"_qs);
        QList<qint64> payees;
        for (const PaymentRow &r : DisburseList::load(site.db(), u"Entry Order"_qs)) {
            if (r.CkID == id)
                payees.append(r.IDField);
        }
        QCOMPARE(payees, QList<qint64> { -1 });
    }

    void sorts_data()
    {
        QTest::addColumn<QString>("item");
        QTest::addColumn<QList<qint64>>("order");
        // The leading blank of " Bob Lee  " sorts it first; text sorts
        // without regard to case.
        QTest::newRow("Payee") << u"Payee"_qs << QList<qint64> { 2, 2, 3, 1, 1, 8, 11 };
        QTest::newRow("Date") << u"Date"_qs << QList<qint64> { 11, 3, 2, 2, 1, 1, 8 };
        QTest::newRow("Amount") << u"Amount"_qs << QList<qint64> { 11, 8, 3, 2, 2, 1, 1 };
    }

    void sorts()
    {
        QFETCH(QString, item);
        QFETCH(QList<qint64>, order);
        TestSite site;
        DisburseFixture::populate(site);
        QCOMPARE(checkIds(DisburseList::load(site.db(), item)), order);
    }

    void entryOrderAddsNoOrderBy()
    {
        QVERIFY(!DisburseList::listSql(u"Entry Order"_qs).contains(u"ORDER BY"_qs));
        QVERIFY(!DisburseList::listSql(u"Something else"_qs).contains(u"ORDER BY"_qs));
        QCOMPARE(DisburseList::sortItems(),
            (QStringList { u"Payee"_qs, u"Date"_qs, u"Amount"_qs, u"Entry Order"_qs }));
        TestSite site;
        DisburseFixture::populate(site);
        QList<qint64> ids = checkIds(DisburseList::load(site.db(), u"Entry Order"_qs));
        std::sort(ids.begin(), ids.end());
        QCOMPARE(ids, (QList<qint64> { 1, 1, 2, 2, 3, 8, 11 }));
    }

    // The payee names are looked up through an index, one search per check;
    // pairing every check with every payee would make the list unusable on a
    // large portfolio.
    void joinsThroughAnIndexOnLargeData()
    {
        TestSite site;
        site.db().execText(
            u"WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 20000) "
            "INSERT INTO Owners (OwnerID, OFirstName1, OLastName1, OFirstName2, OLastName2, OACH) "
            "SELECT i, 'F' || i, 'L' || i, 'G' || i, 'M' || i, 'Y' FROM n"_qs,
            "test");
        site.db().execText(
            u"WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 5000) "
            "INSERT INTO Vendors (VenID, VenName, VACH) SELECT i, 'Vendor ' || i, 'Y' FROM n"_qs,
            "test");
        site.db().execText(
            u"WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 30000) "
            "INSERT INTO CheckEntered (CkPayee, CkAmount, CkDate, CkVendorID) "
            "SELECT CASE i % 3 WHEN 0 THEN 'f' || i || ' l' || i WHEN 1 THEN 'G' || i || ' M' || i "
            "ELSE ' Vendor ' || (i % 5000 + 1) END, 1, '2024-01-01', -1 FROM n"_qs,
            "test");

        QSqlQuery plan(site.db().database());
        QVERIFY(plan.exec(u"EXPLAIN QUERY PLAN "_qs + DisburseList::listSql(u"Payee"_qs)));
        QStringList steps;
        while (plan.next())
            steps.append(plan.value(3).toString());
        const QString text = steps.join(u'\n');
        QVERIFY2(text.contains(u"SEARCH o USING AUTOMATIC COVERING INDEX (PayeeKey=?)"_qs),
            qPrintable(text));
        QVERIFY2(text.contains(u"SEARCH v USING AUTOMATIC COVERING INDEX (PayeeKey=?)"_qs),
            qPrintable(text));
        QVERIFY2(!text.contains(u"SCAN o"_qs) && !text.contains(u"SCAN v"_qs), qPrintable(text));

        // Owner checks below 20000 match by the first or second pair.
        const QList<PaymentRow> rows = DisburseList::load(site.db(), u"Payee"_qs);
        QCOMPARE(rows.size(), 6666 + 6667 + 10000);
    }
};

QTEST_GUILESS_MAIN(TestPaymentList)
#include "tst_payment_list.moc"
