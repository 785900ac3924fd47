#include "DisburseFixture.h"

#include "disburse/PaymentListModel.h"
#include "hostdb/DisburseList.h"

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

        // The leading blank of " Bob Lee  " sorts it first; case is ignored.
        // Entry order is the table's own, unsorted: owner rows, then vendor
        // rows.
        const std::pair<QString, QList<qint64>> sorts[]
            = { { u"Payee"_qs, { 2, 2, 3, 1, 1, 12, 8, 11 } },
                  { u"Date"_qs, { 11, 3, 2, 2, 12, 1, 1, 8 } },
                  { u"Amount"_qs, { 11, 12, 8, 3, 2, 2, 1, 1 } },
                  { u"Entry Order"_qs, { 1, 1, 2, 8, 11, 12, 2, 3 } } };
        for (const auto &[item, order] : sorts)
            QCOMPARE(checkIds(DisburseList::load(site.db(), item)), order);
    }

    // A check listed for two payees is marked on both rows, each naming the
    // other; a check listed once is not.
    void checksListedTwiceAreMarked()
    {
        TestSite site;
        DisburseFixture::populate(site);
        PaymentListModel model;
        model.setRows(DisburseList::load(site.db(), u"Entry Order"_qs));
        QStringList marked;
        for (int r = 0; r < model.rowCount(); ++r) {
            const QModelIndex cell = model.index(r, PaymentListModel::Payee);
            if (cell.data(PaymentListModel::TwiceRole).toBool())
                marked << cell.data(Qt::ToolTipRole).toString();
        }
        QCOMPARE(marked,
            (QStringList { u"Owner 1: Ann Lee\nAlso listed for Owner 5: Ann Lee: pay this check "
                           "once only."_qs,
                u"Owner 5: Ann Lee\nAlso listed for Owner 1: Ann Lee: pay this check once "
                "only."_qs,
                u"Owner 1: Ann Lee\nAlso listed for Vendor 10: Bob Lee: pay this check once "
                "only."_qs,
                u"Vendor 10: Bob Lee\nAlso listed for Owner 1: Ann Lee: pay this check once "
                "only."_qs }));
    }
};

QTEST_GUILESS_MAIN(TestPaymentList)
#include "tst_payment_list.moc"
