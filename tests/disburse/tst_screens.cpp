#include "DisburseFixture.h"

#include "core/ScriptedPrompter.h"
#include "disburse/DistributionFile.h"
#include "disburse/LastBatchWindow.h"
#include "disburse/PaymentListModel.h"
#include "disburse/PaymentSelectionWindow.h"
#include "hostdb/DisburseList.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <QTableWidget>
#include <QTest>

namespace {

using Key = PaymentRow::Key;

// The keys of the chosen rows, in the order they were chosen.
QList<Key> chosen(const PaymentSelectionWindow &form)
{
    QList<Key> keys;
    for (const PaymentRow &r : form.selectedRows())
        keys.append(r.key());
    return keys;
}

QList<qint64> checkIds(const QList<PaymentRow> &rows)
{
    QList<qint64> ids;
    for (const PaymentRow &r : rows)
        ids.append(r.CkID);
    return ids;
}

} // namespace

class TestScreens : public QObject
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
    // Click, Ctrl-click and Shift-click: the total follows every change and
    // the choice keeps the order it was made in, also across a new sort.
    void selectionAndTotal()
    {
        TestSite site;
        DisburseFixture::populate(site);
        PaymentSelectionWindow form(*site.state);
        form.show();
        auto *grid = child<QTableView>(form, "gridMakePayments");
        auto *model = qobject_cast<PaymentListModel *>(grid->model());
        auto *total = child<QLineEdit>(form, "txtTotalSelected");
        auto clickRow = [&](Key key, Qt::KeyboardModifiers mods = Qt::NoModifier) {
            QTest::mouseClick(grid->viewport(), Qt::LeftButton, mods,
                grid->visualRect(model->index(model->find(key), 0)).center());
        };
        auto highlighted = [&] { return int(grid->selectionModel()->selectedRows().size()); };
        clickRow({ 11, -6 });
        QCOMPARE(total->text(), u"($12.50)"_qs);
        clickRow({ 8, -4 }, Qt::ControlModifier);
        QCOMPARE(total->text(), u"$27.50"_qs);
        clickRow({ 11, -6 }, Qt::ControlModifier);
        QCOMPARE(total->text(), u"$40.00"_qs);
        clickRow({ 3, 8 });
        clickRow({ 8, -4 }, Qt::ShiftModifier); // check 3, both rows of check 1, check 8
        QCOMPARE(total->text(), u"$3,122.40"_qs);
        clickRow({ 11, -6 }, Qt::ControlModifier);
        QCOMPARE(total->text(), u"$3,109.90"_qs);
        const QList<Key> order = chosen(form);
        QCOMPARE(order.size(), 5);
        QCOMPARE(order[0], (Key { 3, 8 }));
        QCOMPARE(order[1].first + order[2].first, 2);
        QCOMPARE(order.mid(3), (QList<Key> { { 8, -4 }, { 11, -6 } }));

        child<QComboBox>(form, "optSortBy")->setCurrentText(u"Amount"_qs);
        QCOMPARE(model->row(0).CkID, 11);
        QCOMPARE(total->text(), u"$3,109.90"_qs);
        QCOMPARE(highlighted(), 5);
        QCOMPARE(chosen(form), order);

        click(form, "cmdSelectAll");
        QCOMPARE(total->text(), u"$3,610.90"_qs);
        QCOMPARE(highlighted(), 7);
        click(form, "cmdDeSelectAll");
        QCOMPARE(total->text(), u"0"_qs);
        QCOMPARE(highlighted() + chosen(form).size(), 0);
    }

    // Dwellix removes one check and changes another while the screen is
    // open: neither is sent, the user is told which, the list shows them as
    // they are now, and what is posted later is what was sent.
    void checksChangedBehindTheScreen()
    {
        TestSite site;
        DisburseFixture::populate(site);
        auto script = DisburseFixture::answering(site, 200, u"O%4,B8,0\n"_qs);
        PaymentSelectionWindow form(*site.state);
        form.show();
        auto *grid = child<QTableView>(form, "gridMakePayments");
        auto *model = qobject_cast<PaymentListModel *>(grid->model());
        auto *total = child<QLineEdit>(form, "txtTotalSelected");
        auto *pay = child<QPushButton>(form, "cmdMakePaymentsNow");
        click(form, "cmdSelectAll");
        site.db().execText(u"DELETE FROM CheckEntered WHERE CkID = 3"_qs, "test");
        site.db().execText(u"UPDATE CheckEntered SET CkAmount = 45 WHERE CkID = 8"_qs, "test");

        QTest::mouseClick(pay, Qt::LeftButton);
        QVERIFY(script->calls.isEmpty());
        QCOMPARE(site.prompter.titles(), QStringList { u"Make Payments"_qs });
        const QString told = site.prompter.texts().first();
        QVERIFY2(told.contains(u"No longer in the Entered Check File:\rCheck 3 to Acme Repairs, "
                               "$82.40"_qs),
            qPrintable(told));
        QVERIFY(told.contains(u"Check 8 to EVE GRAY, $40.00, "_qs));
        QVERIFY(told.contains(u"is now  Check 8 to EVE GRAY, $45.00, "_qs));
        QCOMPARE(model->find({ 3, 8 }), -1);
        QCOMPARE(model->row(model->find({ 8, -4 })).CkAmount, Currency::fromWhole(45));
        QVERIFY(!chosen(form).contains(Key { 8, -4 }) && !chosen(form).contains(Key { 3, 8 }));
        QCOMPARE(chosen(form).size(), 5);
        QCOMPARE(total->text(), u"$3,488.50"_qs);

        // Chosen again, the check goes out and is posted at its new amount.
        click(form, "cmdDeSelectAll");
        grid->selectRow(model->find({ 8, -4 }));
        site.prompter.clear();
        QTest::mouseClick(pay, Qt::LeftButton);
        QCOMPARE(script->calls.size(), 1);
        QCOMPARE(script->calls[0].texts[1], u"B8|O%4||45\r\n"_qs);
        QCOMPARE(DisburseFixture::dump(site, u"SELECT CkAmount FROM CheckDepPrinted"_qs), u"45"_qs);
        QCOMPARE(model->find({ 8, -4 }), -1);
    }

    void showLast_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QStringList>("rows");
        QTest::addColumn<QStringList>("shown"); // title: text
        // The last line of the file is never counted.
        QTest::newRow("three lines")
            << QByteArray("B1|O1|Rent|10\r\nB2|O%2|Draw|20.5\r\nB3|V3|Fix|30\r\n")
            << QStringList { u"B1|O1|Rent|10"_qs, u"B2|O%2|Draw|20.5"_qs } << QStringList();
        QTest::newRow("one line, file deleted")
            << QByteArray("B1|O1|Rent|10\r\n") << QStringList()
            << QStringList { u"Dwellix Remitra: No payments were found."_qs };
        // A blank piece ends the filling and drops one row at the end.
        QTest::newRow("blank line")
            << QByteArray("B1|O1|a|1\n\nB3|V3|c|3\nB4|V4|d|4\nB5|V5|e|5\n")
            << QStringList { u"B1|O1|a|1"_qs, u"|||"_qs, u"|||"_qs } << QStringList();
        QTest::newRow("short line") << QByteArray("B1|O1\r\nB2|O2|x|2\r\n")
                                    << QStringList { u"B1|O1||"_qs } << QStringList();
        QTest::newRow("empty file")
            << QByteArray("") << QStringList()
            << QStringList {
                   u"Payment File Download: Unexpected error in payment file: 9 - Subscript out of range"_qs
               };
        QTest::newRow("no file") << QByteArray() << QStringList() << QStringList();
    }

    void showLast()
    {
        QFETCH(QByteArray, file);
        QFETCH(QStringList, shown);
        TestSite site;
        if (!file.isNull())
            site.writeFile(DistributionFile::LastUploadName, file);
        LastBatchWindow form(*site.state);
        QCOMPARE(form.windowTitle(), u"Last Batch Processed"_qs);
        auto *grid = child<QTableWidget>(form, "gridShowLast");
        QCOMPARE(grid->columnCount(), 7);
        QStringList rows;
        for (int r = 0; r < grid->rowCount(); ++r) {
            QStringList row;
            for (int c = 0; c < 4; ++c)
                row.append(grid->item(r, c) ? grid->item(r, c)->text() : QString());
            rows.append(row.join(u'|'));
        }
        QTEST(rows, "rows");
        QStringList messages;
        for (const ScriptedPrompter::Shown &m : site.prompter.shown())
            messages.append(m.title + u": "_qs + m.text);
        QCOMPARE(messages, shown);
        const bool deleted = !shown.isEmpty() && shown.first().contains(u"No payments"_qs);
        QCOMPARE(
            site.fileBytes(DistributionFile::LastUploadName).isNull(), file.isNull() || deleted);
    }
};

QTEST_MAIN(TestScreens)
#include "tst_screens.moc"
