#include "DisburseFixture.h"

#include "hostdb/DisburseList.h"

#include <QSqlQuery>
#include <QTest>

namespace {

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
    // Check 1 matches two owners, check 2 an owner's second pair and a
    // vendor, check 8 both pairs of one owner (listed once), check 11 a
    // second pair whose first pair lacks a first name. Owners carry minus
    // their id. Not listed: inner blanks, OACH N/D, vendor id other than -1,
    // VACH N, a pair with a missing part.
    void listsEnrolledPayees()
    {
        TestSite site;
        DisburseFixture::populate(site);
        DisburseFixture::addCheck(site, u"Bob Lee"_qs, 5); // vendor id 0: the owner only
        const QList<PaymentRow> rows = DisburseList::load(site.db(), u"Amount"_qs);
        QList<PaymentRow::Key> keys;
        for (const PaymentRow &r : rows)
            keys.append(r.key());
        std::sort(keys.begin(), keys.end());
        QCOMPARE(keys,
            (QList<PaymentRow::Key> { { 1, -5 }, { 1, -1 }, { 2, -1 }, { 2, 10 }, { 3, 8 },
                { 8, -4 }, { 11, -6 }, { 12, -1 } }));
        const PaymentRow &refund = rows.first();
        QCOMPARE(refund.CkID, 11);
        QCOMPARE(refund.CkAmount, Currency::fromRaw(-125000));
        QCOMPARE(refund.CkInvoice + refund.CkNumber.toString() + refund.NameA, u"INV-7512Solo"_qs);
    }

    void sorts_data()
    {
        QTest::addColumn<QString>("item");
        QTest::addColumn<QList<qint64>>("order");
        // The leading blank of " Bob Lee  " sorts it first; case is ignored.
        QTest::newRow("Payee") << u"Payee"_qs << QList<qint64> { 2, 2, 3, 1, 1, 8, 11 };
        QTest::newRow("Date") << u"Date"_qs << QList<qint64> { 11, 3, 2, 2, 1, 1, 8 };
        QTest::newRow("Amount") << u"Amount"_qs << QList<qint64> { 11, 8, 3, 2, 2, 1, 1 };
    }

    void sorts()
    {
        QFETCH(QString, item);
        TestSite site;
        DisburseFixture::populate(site);
        QTEST(checkIds(DisburseList::load(site.db(), item)), "order");
        QVERIFY(!DisburseList::listSql(u"Entry Order"_qs).contains(u"ORDER BY"_qs));
    }

    // Payee names are found through an index, one search per check, never by
    // pairing every check with every payee.
    void joinsThroughAnIndexOnLargeData()
    {
        TestSite site;
        const QString series
            = u"WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < %1) "_qs;
        site.db().execText(series.arg(20000)
                + u"INSERT INTO Owners (OwnerID, OFirstName1, OLastName1, "
                  "OFirstName2, OLastName2, OACH) SELECT i, 'F' || i, "
                  "'L' || i, 'G' || i, 'M' || i, 'Y' FROM n"_qs,
            "test");
        site.db().execText(series.arg(5000)
                + u"INSERT INTO Vendors (VenID, VenName, VACH) "
                  "SELECT i, 'Vendor ' || i, 'Y' FROM n"_qs,
            "test");
        site.db().execText(series.arg(30000)
                + u"INSERT INTO CheckEntered (CkPayee, CkAmount, CkVendorID) "
                  "SELECT CASE i % 3 WHEN 0 THEN 'f' || i || ' l' || i "
                  "WHEN 1 THEN 'G' || i || ' M' || i ELSE ' Vendor ' || "
                  "(i % 5000 + 1) END, 1, -1 FROM n"_qs,
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
        // Owner checks up to 20000 match by either pair; every vendor check.
        QCOMPARE(DisburseList::load(site.db(), u"Payee"_qs).size(), 6666 + 6667 + 10000);
    }
};

QTEST_GUILESS_MAIN(TestPaymentList)
#include "tst_payment_list.moc"
