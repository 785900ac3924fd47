#include "DisburseFixture.h"
#include "ScriptedProcessorClient.h"
#include "TestSupport.h"

#include "disburse/DistributionFile.h"
#include "disburse/DistributionRun.h"
#include "disburse/PaymentListModel.h"
#include "disburse/frmMakePayments.h"
#include "disburse/frmShowLast.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <QTableWidget>
#include <QTest>

namespace {

using Key = PaymentRow::Key;

struct Screen
{
    explicit Screen(TestSite &site)
        : form(*site.state)
    {
        form.show();
        grid = form.findChild<QTableView *>(u"gridMakePayments"_qs);
        model = qobject_cast<PaymentListModel *>(grid->model());
        total = form.findChild<QLineEdit *>(u"txtTotalSelected"_qs);
    }

    int rowOf(Key key) const { return model->find(key); }
    void click(Key key, Qt::KeyboardModifiers mods = Qt::NoModifier)
    {
        const int row = rowOf(key);
        QVERIFY(row >= 0);
        QTest::mouseClick(grid->viewport(), Qt::LeftButton, mods,
            grid->visualRect(model->index(row, 0)).center());
    }
    void press(const char *button)
    {
        QTest::mouseClick(
            form.findChild<QPushButton *>(QString::fromLatin1(button)), Qt::LeftButton);
    }
    QList<Key> chosen() const
    {
        QList<Key> keys;
        for (const PaymentRow &r : form.selectedRows())
            keys.append(r.key());
        return keys;
    }
    int highlighted() const { return int(grid->selectionModel()->selectedRows().size()); }

    frmMakePayments form;
    QTableView *grid = nullptr;
    PaymentListModel *model = nullptr;
    QLineEdit *total = nullptr;
};

QStringList cells(QTableWidget *grid)
{
    QStringList out;
    for (int r = 0; r < grid->rowCount(); ++r) {
        QStringList row;
        for (int c = 0; c < 4; ++c)
            row.append(grid->item(r, c) ? grid->item(r, c)->text() : QString());
        out.append(row.join(u'|'));
    }
    return out;
}

} // namespace

class TestScreens : public QObject
{
    Q_OBJECT

private slots:
    void captions()
    {
        TestSite site;
        Screen s(site);
        QCOMPARE(s.form.windowTitle(), u"Make Payments"_qs);
        QCOMPARE(s.form.findChild<QPushButton *>(u"cmdSelectAll"_qs)->text(), u"&Select All"_qs);
        QCOMPARE(
            s.form.findChild<QPushButton *>(u"cmdDeSelectAll"_qs)->text(), u"De-Select All"_qs);
        QCOMPARE(s.form.findChild<QPushButton *>(u"cmdMakePaymentsNow"_qs)->text(),
            u"&Make all SELECTED payments now"_qs);
        QCOMPARE(s.form.findChild<QLabel *>(u"labMakePaymentsTotal"_qs)->text(),
            u"Total Amount to be Paid:"_qs);
        QStringList headers;
        for (int c = 0; c < s.model->columnCount(); ++c)
            headers.append(s.model->headerData(c, Qt::Horizontal).toString());
        QCOMPARE(headers,
            (QStringList { u"Payee Name"_qs, u"Date"_qs, u"Remark"_qs, u"Invoice"_qs, u"Amount"_qs,
                u"IDField"_qs }));
        QCOMPARE(s.form.findChild<QComboBox *>(u"optSortBy"_qs)->currentText(), u"Payee"_qs);
        // Select All on an empty list changes nothing.
        s.press("cmdSelectAll");
        QCOMPARE(s.total->text(), QString());
    }

    // Click, Ctrl-click and Shift-click; the total follows every change and
    // the chosen rows keep the order they were chosen in.
    void selectionAndTotal()
    {
        TestSite site;
        DisburseFixture::populate(site);
        Screen s(site);
        s.click({ 11, -6 });
        QCOMPARE(s.total->text(), u"($12.50)"_qs);
        s.click({ 8, -4 }, Qt::ControlModifier);
        QCOMPARE(s.total->text(), u"$27.50"_qs);
        s.click({ 11, -6 }, Qt::ControlModifier);
        QCOMPARE(s.total->text(), u"$40.00"_qs);

        s.click({ 3, 8 });
        QCOMPARE(s.total->text(), u"$82.40"_qs);
        s.click({ 8, -4 }, Qt::ShiftModifier); // check 3, both rows of check 1, check 8
        QCOMPARE(s.total->text(), u"$3,122.40"_qs);
        s.click({ 11, -6 }, Qt::ControlModifier);
        QCOMPARE(s.total->text(), u"$3,109.90"_qs);
        const QList<Key> chosen = s.chosen();
        QCOMPARE(chosen.size(), 5);
        QCOMPARE(chosen[0], (Key { 3, 8 }));
        QCOMPARE(chosen[1].first + chosen[2].first, 2); // the two rows of check 1
        QCOMPARE(chosen[3], (Key { 8, -4 }));
        QCOMPARE(chosen[4], (Key { 11, -6 }));

        // Sorting again keeps the choice and the total.
        s.form.findChild<QComboBox *>(u"optSortBy"_qs)->setCurrentText(u"Amount"_qs);
        QCOMPARE(s.model->row(0).CkID, 11);
        QCOMPARE(s.total->text(), u"$3,109.90"_qs);
        QCOMPARE(s.highlighted(), 5);
        QCOMPARE(s.chosen().size(), 5);

        s.press("cmdSelectAll");
        QCOMPARE(s.total->text(), u"$3,610.90"_qs);
        QCOMPARE(s.highlighted(), 7);
        s.press("cmdDeSelectAll");
        QCOMPARE(s.total->text(), u"0"_qs);
        QCOMPARE(s.highlighted(), 0);
        QVERIFY(s.chosen().isEmpty());
    }

    // The distribution follows the order of choosing; after the run the
    // paid checks leave the list and the choice is emptied.
    void paysInChosenOrder()
    {
        TestSite site;
        DisburseFixture::populate(site);
        auto script = std::make_shared<ScriptedProcessorClient::Script>();
        script->replies.append({ true, 200, u"O%4,B8,0\nV8,B3,0\n"_qs });
        site.state->ClientFactory = ScriptedProcessorClient::factory(script);
        Screen s(site);
        s.click({ 8, -4 });
        s.click({ 3, 8 }, Qt::ControlModifier);
        s.press("cmdMakePaymentsNow");
        QCOMPARE(site.fileBytes(DistributionFile::LastUploadName),
            QByteArray("B8|O%4||40\r\nB3|V8|Repairs unit 4|82.4\r\n"));
        QCOMPARE(s.total->text(), u"0"_qs);
        QCOMPARE(s.model->rowCount(), 5);
        QCOMPARE(s.rowOf({ 8, -4 }), -1);
        QCOMPARE(site.prompter.texts().last(), DistributionRun::completeText());
    }

    void showLast_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QStringList>("rows");
        QTest::addColumn<QStringList>("notices");
        QTest::addColumn<QStringList>("titles");
        QTest::addColumn<bool>("kept");
        // The last line of the file is not counted.
        QTest::newRow("three lines")
            << QByteArray("B1|O1|Rent|10\r\nB2|O%2|Draw|20.5\r\nB3|V3|Fix|30\r\n")
            << QStringList { u"B1|O1|Rent|10"_qs, u"B2|O%2|Draw|20.5"_qs } << QStringList()
            << QStringList() << true;
        QTest::newRow("one line") << QByteArray("B1|O1|Rent|10\r\n") << QStringList()
                                  << QStringList { u"No payments were found."_qs }
                                  << QStringList { u"Dwellix Remitra"_qs } << false;
        // A blank piece ends the filling and drops one row at the end.
        QTest::newRow("blank line") << QByteArray("B1|O1|a|1\n\nB3|V3|c|3\nB4|V4|d|4\nB5|V5|e|5\n")
                                    << QStringList { u"B1|O1|a|1"_qs, u"|||"_qs, u"|||"_qs }
                                    << QStringList() << QStringList() << true;
        QTest::newRow("empty file")
            << QByteArray("") << QStringList()
            << QStringList { u"Unexpected error in payment file: 9 - Subscript out of range"_qs }
            << QStringList { u"Payment File Download"_qs } << true;
        QTest::newRow("short line")
            << QByteArray("B1|O1\r\nB2|O2|x|2\r\n") << QStringList { u"B1|O1||"_qs }
            << QStringList() << QStringList() << true;
    }

    void showLast()
    {
        QFETCH(QByteArray, file);
        TestSite site;
        site.writeFile(DistributionFile::LastUploadName, file);
        frmShowLast form(*site.state);
        QCOMPARE(form.windowTitle(), u"Last Batch Processed"_qs);
        auto *grid = form.findChild<QTableWidget *>(u"gridShowLast"_qs);
        QCOMPARE(grid->columnCount(), 7);
        QTEST(cells(grid), "rows");
        QTEST(site.prompter.texts(), "notices");
        QTEST(site.prompter.titles(), "titles");
        QTEST(!site.fileBytes(DistributionFile::LastUploadName).isNull(), "kept");
    }

    void showLastWithoutFile()
    {
        TestSite site;
        frmShowLast form(*site.state);
        QCOMPARE(form.findChild<QTableWidget *>(u"gridShowLast"_qs)->rowCount(), 0);
        QVERIFY(site.prompter.shown().isEmpty());
    }
};

QTEST_MAIN(TestScreens)
#include "tst_screens.moc"
