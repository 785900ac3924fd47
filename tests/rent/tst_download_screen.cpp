#include "RentSupport.h"

#include "rent/DownloadPrintLayout.h"
#include "rent/PaymentFile.h"
#include "rent/PaymentTableModel.h"
#include "rent/RentReviewDialog.h"

#include <QCheckBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPrinter>
#include <QProcess>
#include <QTableView>
#include <QTemporaryDir>
#include <QTest>

using RentSupport::line;

namespace {

QString textOf(QWidget &screen, const char *name)
{
    return child<QLabel>(screen, name)->text();
}

// Selects a row by its record selector (row header) and presses Delete.
void deleteRow(QTableView *grid, int row)
{
    QHeaderView *header = grid->verticalHeader();
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {},
        QPoint(header->width() / 2, header->sectionViewportPosition(row) + 3));
    QTest::keyClick(grid, Qt::Key_Delete);
}

// A seeded site with the five-payment file.
void normalSite(TestSite &site)
{
    RentSupport::seedPortfolio(site);
    RentSupport::useFixture(site, u"normal.txt"_qs);
}

} // namespace

class TestDownloadScreen : public QObject
{
    Q_OBJECT

private slots:
    void showsThePaymentsWithTheirTexts()
    {
        TestSite site;
        normalSite(site);
        RentReviewDialog screen(*site.state, nullptr);
        QCOMPARE(textOf(screen, "labRemitraPayments"), u"Number of Remitra Payments: 5"_qs);
        QCOMPARE(textOf(screen, "labTransTotal"), u"$2,325.49"_qs);
        QVERIFY(child<QCheckBox>(screen, "chkCreateDeposit")->isChecked());
        QVERIFY(!child(screen, "txtRemark")->isEnabled());
        QAbstractItemModel *m = child<QTableView>(screen, "gridACHDownload")->model();
        QCOMPARE(m->index(1, PaymentTableModel::Amount).data().toString(), u"($125.50)"_qs);
        QVERIFY(site.prompter.shown().isEmpty());

        // Only the own remark is typed; a deposit number must be a number.
        screen.show();
        QVERIFY(QTest::qWaitForWindowActive(&screen));
        click(screen, "optRemark2");
        QVERIFY(child(screen, "txtRemark")->isEnabled());
        click(screen, "optRemark1");
        QVERIFY(!child(screen, "txtRemark")->isEnabled());

        auto *box = child<QLineEdit>(screen, "txtCreateDeposit");
        box->setFocus();
        QTest::keyClicks(box, u"12a"_qs);
        QTest::keyClick(box, Qt::Key_Tab);
        QCOMPARE(site.prompter.texts(),
            QStringList { u"Please enter a number only for the Deposit Number"_qs });
        QCOMPARE(site.prompter.titles(), QStringList { u"Create Deposit"_qs });
        QVERIFY(box->hasFocus());
        box->setText(u" 2045 "_qs);
        QTest::keyClick(box, Qt::Key_Tab);
        QCOMPARE(site.prompter.shown().size(), 1);
        QVERIFY(!box->hasFocus());

        // Without payments (nothing to process, or no file) only Exit is on.
        for (const QString &fixture : { u"single_line.txt"_qs, QString() }) {
            TestSite empty;
            if (!fixture.isEmpty())
                RentSupport::useFixture(empty, fixture);
            RentReviewDialog off(*empty.state, nullptr);
            QCOMPARE(empty.prompter.shown().size(), fixture.isEmpty() ? 0 : 1);
            for (const char *name : { "cmdUpdate", "cmdDeleteAll", "cmdPrintScreen" })
                QVERIFY2(!child(off, name)->isEnabled(), name);
            QVERIFY(child(off, "cmdExit")->isEnabled());
        }
    }

    // Rows go one by one through their record selector or all at once; both
    // ask nothing more once the list is empty and the file moved aside.
    void deletingRowsAndLeaving()
    {
        TestSite site;
        RentSupport::seedPortfolio(site);
        RentSupport::writePaymentFile(site, { line(10, 100, u"10"_qs), line(20, 200, u"20.5"_qs) });
        const QByteArray file = site.fileBytes(site.state->files.paymentDownload);
        RentReviewDialog screen(*site.state, nullptr);
        screen.show();
        auto *grid = child<QTableView>(screen, "gridACHDownload");
        // A selected cell is not a selected row: nothing is deleted.
        QTest::mouseClick(grid->viewport(), Qt::LeftButton, {},
            grid->visualRect(grid->model()->index(0, 3)).center());
        QTest::keyClick(grid, Qt::Key_Delete);
        QCOMPARE(screen.rowCount(), 2);
        deleteRow(grid, 0);
        QCOMPARE(textOf(screen, "labRemitraPayments"), u"Number of Remitra Payments: 1"_qs);
        QCOMPARE(textOf(screen, "labTransTotal"), u"$20.50"_qs);
        QCOMPARE(grid->model()->index(0, PaymentTableModel::TID).data().toString(), u"T200"_qs);

        site.prompter.queueAnswers({ Prompter::Answer::No, Prompter::Answer::No });
        click(screen, "cmdDeleteAll");
        QCOMPARE(screen.rowCount(), 1);
        QCOMPARE(site.state->msgAnswer, u"7"_qs);
        click(screen, "cmdExit");
        QVERIFY(screen.isVisible());
        QCOMPARE(site.prompter.titles(),
            (QStringList { u"Remitra"_qs, u"Remitra Transaction Posting"_qs }));
        QVERIFY(site.prompter.texts()[0].startsWith(
            u"Are you SURE you want to permanently erase all"_qs));
        QVERIFY(site.prompter.texts()[1].startsWith(
            u"You are trying to leave without updating your TENANT LEDGERS."_qs));
        QVERIFY(!site.fileBytes(site.state->files.paymentDownload).isNull());

        deleteRow(grid, 0);
        QCOMPARE(textOf(screen, "labRemitraPayments"), u"Number of Remitra Payments: 0"_qs);
        QVERIFY(site.fileBytes(site.state->files.paymentDownload).isNull());
        QCOMPARE(site.fileBytes(PaymentFile::LastDownloadName), file);
        QVERIFY(!child(screen, "cmdUpdate")->isEnabled());
        QTest::keyClick(&screen, Qt::Key_Escape);
        QVERIFY(!screen.isVisible());
        QCOMPARE(site.prompter.shown().size(), 2);

        RentSupport::useFixture(site, u"normal.txt"_qs);
        RentReviewDialog all(*site.state, nullptr);
        all.show();
        site.prompter.queueAnswer(Prompter::Answer::Yes);
        click(all, "cmdDeleteAll");
        QCOMPARE(all.rowCount(), 0);
        QCOMPARE(textOf(all, "labRemitraPayments"), u"Number of Remitra Payments: 0"_qs);
        QVERIFY(site.fileBytes(site.state->files.paymentDownload).isNull());
        QVERIFY(site.fileBytes(PaymentFile::LastDownloadName) != file);
        QVERIFY(!child(all, "cmdUpdate")->isEnabled());
        click(all, "cmdExit");
        QVERIFY(!all.isVisible());
        QCOMPARE(site.prompter.shown().size(), 3);
    }

    void aStoppedPostingStaysAndTintsWhatWentIn()
    {
        TestSite site;
        normalSite(site);
        RentReviewDialog screen(*site.state, nullptr);
        screen.show();
        auto *grid = child<QTableView>(screen, "gridACHDownload");
        click(screen, "chkCreateDeposit");
        click(screen, "cmdUpdate");
        // Line 5's tenant 999 is unknown: the run stops there.
        QCOMPARE(site.prompter.shown().size(), 1);
        QVERIFY(site.prompter.texts().first().startsWith(u"Not found: Tenant ID #999\n"_qs));
        QVERIFY(screen.isVisible() && !screen.posted());
        QVERIFY(child(screen, "cmdUpdate")->isEnabled());
        QVERIFY(!site.fileBytes(site.state->files.paymentDownload).isNull());

        const QModelIndex first = grid->model()->index(0, PaymentTableModel::Date);
        QVERIFY(first.data(Qt::ToolTipRole)
                    .toString()
                    .startsWith(u"Remitra posted this payment to the Dwellix ledgers on "_qs));
        const QImage shot = grid->viewport()->grab().toImage();
        const QRect cell = grid->visualRect(first);
        QCOMPARE(QColor(shot.pixel(cell.right() - 2, cell.center().y())), QColor(255, 236, 179));
    }

    void printsToAPdf()
    {
        TestSite site;
        normalSite(site);
        RentReviewDialog screen(*site.state, nullptr);
        QTemporaryDir out;
        const QString pdf = out.filePath(u"screen.pdf"_qs);
        screen.setPrinterChooser([&](QPrinter &printer) {
            printer.setOutputFileName(pdf);
            return true;
        });
        click(screen, "cmdPrintScreen");
        QCOMPARE(site.prompter.texts(), QStringList { u"Screen Printed"_qs });

        QProcess p;
        p.start(u"pdftotext"_qs, { u"-layout"_qs, pdf, u"-"_qs });
        QVERIFY2(p.waitForFinished(30000), "pdftotext (poppler-utils) is needed");
        const QString text = QString::fromUtf8(p.readAllStandardOutput());
        for (const QString &expected : { u"Remitra Download Transactions"_qs, u"Dep Date"_qs,
                 u"Avery, Ann"_qs, u"($125.50)"_qs, u"Total Amount: $2,325.49"_qs })
            QVERIFY2(text.contains(expected), qPrintable(expected));

        // The columns line up whatever the cells hold.
        const QStringList lines
            = DownloadPrintLayout::lines(screen.model().rows(), {}, QDateTime());
        const qsizetype date = lines.at(3).indexOf(u"Date "_qs);
        for (int row = 5; row < 10; ++row)
            QCOMPARE(lines.at(row).indexOf(u"/2026"_qs) - 5, date);
        QCOMPARE(lines.last(), u"Total Amount: "_qs);
    }
};

QTEST_MAIN(TestDownloadScreen)
#include "tst_download_screen.moc"
