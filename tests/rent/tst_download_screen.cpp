#include "RentSupport.h"

#include "rent/DownloadPrintLayout.h"
#include "rent/PaymentFile.h"
#include "rent/PaymentRowDelegate.h"
#include "rent/PaymentTableModel.h"
#include "rent/frmDownload.h"

#include <QCheckBox>
#include <QFile>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPrinter>
#include <QProcess>
#include <QPushButton>
#include <QRadioButton>
#include <QStandardPaths>
#include <QTableView>
#include <QTemporaryDir>
#include <QTest>

using RentSupport::line;

namespace {

void useFixture(TestSite &site, const QString &fixture)
{
    QFile f(testData(u"rent/"_qs + fixture));
    QVERIFY(f.open(QIODevice::ReadOnly));
    site.writeFile(site.state->PaymentDownloadName, f.readAll());
}

template <typename T>
T *child(QWidget &screen, const char *name)
{
    T *w = screen.findChild<T *>(QString::fromLatin1(name));
    if (!w)
        qFatal("no control %s", name);
    return w;
}

QString labelText(QWidget &screen, const char *name)
{
    return child<QLabel>(screen, name)->text();
}

// Selects a row by its record selector (row header), as the user does.
void clickRecordSelector(QTableView *grid, int row)
{
    QHeaderView *header = grid->verticalHeader();
    const QPoint at(header->width() / 2, header->sectionViewportPosition(row) + header->sectionSize(row) / 2);
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, at);
}

} // namespace

class TestDownloadScreen : public QObject
{
    Q_OBJECT

private slots:
    void showsThePaymentsWithTheirTexts()
    {
        TestSite site;
        RentSupport::seedPortfolio(site);
        useFixture(site, u"normal.txt"_qs);
        frmDownload screen(*site.state, nullptr);
        QCOMPARE(screen.windowTitle(), u"Remitra Payment Download"_qs);
        QVERIFY(screen.isModal());
        QCOMPARE(labelText(screen, "labRemitraPayments"), u"Number of Remitra Payments: 5"_qs);
        QCOMPARE(labelText(screen, "labTotal"), u"Total of Remitra Payments:"_qs);
        QCOMPARE(labelText(screen, "labTransTotal"), u"$2,325.49"_qs);
        QVERIFY(labelText(screen, "labDeposits").contains(u"have been retreived from the Payment"_qs));
        QVERIFY(labelText(screen, "labDelete").endsWith(u"after you update the Dwellix Ledgers. "_qs));
        QCOMPARE(child<QCheckBox>(screen, "chkPostMgmtFees")->text(),
                 u"Post a managment fee on each rent income transaction."_qs);
        QCOMPARE(child<QGroupBox>(screen, "fraPostMgmtFees")->title(), u"Post Management Fees"_qs);
        QCOMPARE(child<QGroupBox>(screen, "frmCreateDeposit")->title(), u"Create Deposit:"_qs);
        QCOMPARE(child<QGroupBox>(screen, "optRemark")->title(), u"Transaction Remark Choices:"_qs);
        QCOMPARE(child<QRadioButton>(screen, "optRemark0")->text(),
                 u"Use standard 'default' REMARK entered under 'Preferences'."_qs);
        QCOMPARE(child<QRadioButton>(screen, "optRemark1")->text(),
                 u"Use the 'Method' column entry for the Remark."_qs);
        QCOMPARE(child<QRadioButton>(screen, "optRemark2")->text(), u"Use this Remark: "_qs);
        QVERIFY(child<QCheckBox>(screen, "chkCreateDeposit")->isChecked());
        QVERIFY(!child<QLineEdit>(screen, "txtRemark")->isEnabled());
        QCOMPARE(child<QPushButton>(screen, "cmdUpdate")->text(), u"Update Dwellix Ledgers NOW"_qs);
        QCOMPARE(child<QPushButton>(screen, "cmdDeleteAll")->text(), u"&Delete ALL"_qs);
        QCOMPARE(child<QPushButton>(screen, "cmdPrintScreen")->text(), u"&Print Screen"_qs);
        QCOMPARE(child<QPushButton>(screen, "cmdExit")->text(), u"&Exit"_qs);

        auto *grid = child<QTableView>(screen, "gridACHDownload");
        QAbstractItemModel *m = grid->model();
        QCOMPARE(m->columnCount(), 12);
        QStringList captions;
        for (int c = 0; c < 12; ++c)
            captions << m->headerData(c, Qt::Horizontal).toString();
        QCOMPARE(captions, (QStringList{u"OID"_qs, u"PID"_qs, u"UID"_qs, u"TID"_qs,
                                        u"Rental Unit Address"_qs, u"Tenant Name"_qs, u"Amount"_qs,
                                        u"Date"_qs, u"Check #"_qs, u"Deposit Date"_qs, u"Method"_qs,
                                        u"Trans Type"_qs}));
        QCOMPARE(m->index(1, PaymentTableModel::Amount).data().toString(), u"($125.50)"_qs);
        QCOMPARE(m->index(4, PaymentTableModel::OID).data().toString(),
                 u"(Owner not found - cannot post!)"_qs);
        QVERIFY(site.prompter.shown().isEmpty());
    }

    void withoutPaymentsTheCommandsAreOff_data()
    {
        QTest::addColumn<QString>("fixture");
        QTest::addColumn<int>("messages");
        QTest::newRow("nothing to process") << u"single_line.txt"_qs << 1;
        QTest::newRow("no payment file") << QString() << 0;
    }

    void withoutPaymentsTheCommandsAreOff()
    {
        QFETCH(QString, fixture);
        QFETCH(int, messages);
        TestSite site;
        RentSupport::seedPortfolio(site);
        if (!fixture.isEmpty())
            useFixture(site, fixture);
        frmDownload screen(*site.state, nullptr);
        QCOMPARE(site.prompter.shown().size(), messages);
        for (const char *name : {"cmdUpdate", "cmdDeleteAll", "cmdPrintScreen"})
            QVERIFY2(!child<QPushButton>(screen, name)->isEnabled(), name);
        QVERIFY(child<QPushButton>(screen, "cmdExit")->isEnabled());
        QVERIFY(site.fileBytes(site.state->PaymentDownloadName).isNull());
        QCOMPARE(screen.rowCount(), 0);
    }

    void anAmountThatCannotBeReadLeavesTheTotalOpen()
    {
        TestSite site;
        RentSupport::seedPortfolio(site);
        useFixture(site, u"bad_amount.txt"_qs);
        frmDownload screen(*site.state, nullptr);
        QCOMPARE(site.prompter.texts(),
                 QStringList{u"Unexpected error in payment file: 13 - Type mismatch"_qs});
        QCOMPARE(screen.rowCount(), 2);
        QCOMPARE(labelText(screen, "labRemitraPayments"), u"Number of Remitra Payments: 2"_qs);
        QCOMPARE(labelText(screen, "labTransTotal"), QString());
    }

    void remarkChoiceEnablesOwnRemark()
    {
        TestSite site;
        RentSupport::seedPortfolio(site);
        useFixture(site, u"normal.txt"_qs);
        frmDownload screen(*site.state, nullptr);
        screen.show();
        auto *own = child<QLineEdit>(screen, "txtRemark");
        QTest::mouseClick(child<QRadioButton>(screen, "optRemark2"), Qt::LeftButton);
        QVERIFY(own->isEnabled());
        QTest::mouseClick(child<QRadioButton>(screen, "optRemark1"), Qt::LeftButton);
        QVERIFY(!own->isEnabled());
    }

    void depositNumberMustBeANumber()
    {
        TestSite site;
        RentSupport::seedPortfolio(site);
        useFixture(site, u"normal.txt"_qs);
        frmDownload screen(*site.state, nullptr);
        screen.show();
        QVERIFY(QTest::qWaitForWindowActive(&screen));
        auto *box = child<QLineEdit>(screen, "txtCreateDeposit");
        box->setFocus();
        QTest::keyClicks(box, u"12a"_qs);
        QTest::keyClick(box, Qt::Key_Tab);
        QCOMPARE(site.prompter.texts(),
                 QStringList{u"Please enter a number only for the Deposit Number"_qs});
        QCOMPARE(site.prompter.titles(), QStringList{u"Create Deposit"_qs});
        QVERIFY(box->hasFocus());

        site.prompter.clear();
        box->setText(u" 2045 "_qs);
        QTest::keyClick(box, Qt::Key_Tab);
        QVERIFY(site.prompter.shown().isEmpty());
        QVERIFY(!box->hasFocus());
    }

    void deletingRowsByTheirRecordSelector()
    {
        TestSite site;
        RentSupport::seedPortfolio(site);
        RentSupport::writePaymentFile(site, {line(10, 100, u"10"_qs), line(20, 200, u"20.5"_qs)});
        frmDownload screen(*site.state, nullptr);
        screen.show();
        auto *grid = child<QTableView>(screen, "gridACHDownload");

        // A cell selection alone deletes nothing.
        QTest::mouseClick(grid->viewport(), Qt::LeftButton, {},
                          grid->visualRect(grid->model()->index(0, 3)).center());
        QTest::keyClick(grid, Qt::Key_Delete);
        QCOMPARE(screen.rowCount(), 2);

        clickRecordSelector(grid, 0);
        QTest::keyClick(grid, Qt::Key_Delete);
        QCOMPARE(screen.rowCount(), 1);
        QCOMPARE(labelText(screen, "labRemitraPayments"), u"Number of Remitra Payments: 1"_qs);
        QCOMPARE(labelText(screen, "labTransTotal"), u"$20.50"_qs);
        QCOMPARE(grid->model()->index(0, PaymentTableModel::TID).data().toString(), u"T200"_qs);
        QVERIFY(!site.fileBytes(site.state->PaymentDownloadName).isNull());

        // The last row gone, the file is moved aside as "Delete ALL" does.
        clickRecordSelector(grid, 0);
        QTest::keyClick(grid, Qt::Key_Delete);
        QCOMPARE(labelText(screen, "labRemitraPayments"), u"Number of Remitra Payments: 0"_qs);
        QVERIFY(site.fileBytes(site.state->PaymentDownloadName).isNull());
        QVERIFY(!site.fileBytes(PaymentFile::LastDownloadName).isNull());
        QVERIFY(site.prompter.shown().isEmpty());
        // Nothing left to post: leaving asks nothing.
        QTest::mouseClick(child<QPushButton>(screen, "cmdExit"), Qt::LeftButton);
        QVERIFY(!screen.isVisible());
    }

    void deleteAllAsksFirst()
    {
        TestSite site;
        RentSupport::seedPortfolio(site);
        useFixture(site, u"normal.txt"_qs);
        site.writeFile(PaymentFile::LastDownloadName, "older");
        const QByteArray file = site.fileBytes(site.state->PaymentDownloadName);
        frmDownload screen(*site.state, nullptr);
        screen.show();
        auto *deleteAll = child<QPushButton>(screen, "cmdDeleteAll");

        site.prompter.queueAnswer(Prompter::Answer::No);
        QTest::mouseClick(deleteAll, Qt::LeftButton);
        QCOMPARE(screen.rowCount(), 5);
        QCOMPARE(site.state->MsgAnswer, u"7"_qs);
        QCOMPARE(site.prompter.titles(), QStringList{u"Remitra"_qs});
        QVERIFY(site.prompter.texts().first().startsWith(
            u"Are you SURE you want to permanently erase all of the Remitra downloads?"_qs));

        site.prompter.queueAnswer(Prompter::Answer::Yes);
        QTest::mouseClick(deleteAll, Qt::LeftButton);
        QCOMPARE(screen.rowCount(), 0);
        QCOMPARE(labelText(screen, "labRemitraPayments"), u"Number of Remitra Payments: 0"_qs);
        QVERIFY(site.fileBytes(site.state->PaymentDownloadName).isNull());
        QCOMPARE(site.fileBytes(PaymentFile::LastDownloadName), file);
    }

    void leavingWithoutPostingAsks()
    {
        TestSite site;
        RentSupport::seedPortfolio(site);
        useFixture(site, u"normal.txt"_qs);
        frmDownload screen(*site.state, nullptr);
        screen.show();
        site.prompter.queueAnswers({Prompter::Answer::No, Prompter::Answer::Yes});
        QTest::mouseClick(child<QPushButton>(screen, "cmdExit"), Qt::LeftButton);
        QVERIFY(screen.isVisible());
        QCOMPARE(site.prompter.texts(),
                 QStringList{u"You are trying to leave without updating your TENANT LEDGERS. Are "
                             "you SURE you want to exit WITHOUT POSTING these transactions?"_qs});
        QCOMPARE(site.prompter.titles(), QStringList{u"Remitra Transaction Posting"_qs});
        QTest::keyClick(&screen, Qt::Key_Escape);
        QVERIFY(!screen.isVisible());
        QCOMPARE(site.state->MsgAnswer, u"6"_qs);
    }

    void updatePostsAndCloses()
    {
        TestSite site;
        RentSupport::seedPortfolio(site);
        useFixture(site, u"normal.txt"_qs);
        // The unmatched tenant of the fixture would stop the posting.
        site.insert(u"Tenants"_qs, {{u"TenantID"_qs, 999}, {u"TPropID"_qs, 99}, {u"TCurrBal"_qs, 0}});
        frmDownload screen(*site.state, nullptr);
        screen.show();
        QTest::mouseClick(child<QCheckBox>(screen, "chkPostMgmtFees"), Qt::LeftButton);
        child<QLineEdit>(screen, "txtCreateDeposit")->setText(u"77"_qs);
        QTest::mouseClick(child<QRadioButton>(screen, "optRemark2"), Qt::LeftButton);
        QTest::keyClicks(child<QLineEdit>(screen, "txtRemark"), u"Remitra November"_qs);
        QTest::mouseClick(child<QPushButton>(screen, "cmdUpdate"), Qt::LeftButton);

        QCOMPARE(site.prompter.texts(), QStringList{u"Your Dwellix Ledgers are now updated."_qs});
        QVERIFY(screen.posted());
        QVERIFY(!screen.isVisible());
        QCOMPARE(screen.result(), int(QDialog::Accepted));
        QVERIFY(!child<QPushButton>(screen, "cmdUpdate")->isEnabled());
        QVERIFY(site.fileBytes(site.state->PaymentDownloadName).isNull());
        QVERIFY(!site.fileBytes(PaymentFile::LastDownloadName).isNull());
        // Five payments, fees for owners 1 (8% of 1250) and 2 (flat 25).
        QCOMPARE(site.scalar(u"SELECT count(*) FROM Transactions WHERE TransType = 'I'"_qs).toInt(), 5);
        QCOMPARE(site.scalar(u"SELECT sum(TransAmount) FROM Transactions WHERE TransType = 'E'"_qs)
                     .toDouble(),
                 -125.0);
        QCOMPARE(site.scalar(u"SELECT count(*) FROM Transactions WHERE TransRemark = 'Remitra November'"_qs)
                     .toInt(),
                 5);
        QCOMPARE(site.scalar(u"SELECT CkAmount FROM CheckDepPrinted WHERE CkNumber = 77"_qs).toDouble(),
                 2325.49);
    }

    void aStoppedPostingKeepsTheScreenAndMarksWhatWentIn()
    {
        TestSite site;
        RentSupport::seedPortfolio(site);
        useFixture(site, u"normal.txt"_qs);
        frmDownload screen(*site.state, nullptr);
        screen.show();
        auto *grid = child<QTableView>(screen, "gridACHDownload");
        QTest::mouseClick(child<QCheckBox>(screen, "chkCreateDeposit"), Qt::LeftButton);
        QTest::mouseClick(child<QPushButton>(screen, "cmdUpdate"), Qt::LeftButton);

        // Tenant 999 of the fifth row is unknown: the run stops there.
        QCOMPARE(site.prompter.shown().size(), 1);
        QVERIFY(site.prompter.texts().first().startsWith(u"Not found: Tenant ID #999\n"_qs));
        QVERIFY(screen.isVisible());
        QVERIFY(!screen.posted());
        QVERIFY(child<QPushButton>(screen, "cmdUpdate")->isEnabled());
        QVERIFY(!site.fileBytes(site.state->PaymentDownloadName).isNull());
        const QModelIndex first = grid->model()->index(0, PaymentTableModel::Amount);
        QVERIFY(first.data(PaymentTableModel::PostedRole).toBool());
        QVERIFY(first.data(Qt::ToolTipRole).toString().startsWith(u"This payment looks already posted"_qs));

        // The tint is on screen.
        grid->scrollTo(first);
        const QImage shot = grid->viewport()->grab().toImage();
        const QRect cell = grid->visualRect(grid->model()->index(0, PaymentTableModel::Date));
        QCOMPARE(QColor(shot.pixel(cell.right() - 2, cell.center().y())), QColor(255, 236, 179));
        QVERIFY(qobject_cast<PaymentRowDelegate *>(grid->itemDelegate()));
    }

    void printsToAPdf()
    {
        TestSite site;
        RentSupport::seedPortfolio(site);
        useFixture(site, u"normal.txt"_qs);
        frmDownload screen(*site.state, nullptr);
        QTemporaryDir out;
        const QString pdf = out.filePath(u"screen.pdf"_qs);
        screen.setPrinterChooser([&](QPrinter &printer) {
            printer.setOutputFormat(QPrinter::PdfFormat);
            printer.setOutputFileName(pdf);
            return true;
        });
        QTest::mouseClick(child<QPushButton>(screen, "cmdPrintScreen"), Qt::LeftButton);
        QCOMPARE(site.prompter.texts(), QStringList{u"Screen Printed"_qs});

        const QString pdftotext = QStandardPaths::findExecutable(u"pdftotext"_qs);
        if (pdftotext.isEmpty())
            QSKIP("pdftotext is not installed");
        QProcess p;
        p.start(pdftotext, {u"-layout"_qs, pdf, u"-"_qs});
        QVERIFY(p.waitForFinished(30000));
        const QString text = QString::fromUtf8(p.readAllStandardOutput());
        QVERIFY2(text.contains(u"Remitra Download Transactions"_qs), qPrintable(text));
        QVERIFY(text.contains(u"Dep Date"_qs));
        QVERIFY(text.contains(u"Avery, Ann"_qs));
        QVERIFY(text.contains(u"($125.50)"_qs));
        QVERIFY(text.contains(u"Total Amount: $2,325.49"_qs));
    }

    void cancelledPrintingPrintsNothing()
    {
        TestSite site;
        RentSupport::seedPortfolio(site);
        useFixture(site, u"normal.txt"_qs);
        frmDownload screen(*site.state, nullptr);
        screen.setPrinterChooser([](QPrinter &) { return false; });
        QTest::mouseClick(child<QPushButton>(screen, "cmdPrintScreen"), Qt::LeftButton);
        QVERIFY(site.prompter.shown().isEmpty());
    }

    void printLayoutHasFixedColumns()
    {
        PaymentRow a;
        a.owner = u"O1"_qs;
        a.tenantName = u"A very long tenant name that does not fit"_qs;
        a.amount = Currency::parse(u"1234.5"_qs);
        a.date = u"11/02/2026"_qs;
        a.transType = u"Rent\r"_qs;
        PaymentRow b = a;
        b.amount = Currency::parse(u"-5"_qs);
        b.tenantName = u"B"_qs;
        const QStringList lines = DownloadPrintLayout::lines({a, b}, Currency::parse(u"1239.5"_qs),
                                                             QDateTime(QDate(2026, 11, 22), QTime(9, 5)));
        QCOMPARE(lines.first(), u"Remitra Download Transactions"_qs);
        QCOMPARE(lines.at(1), u"Printed 2026-11-22 09:05"_qs);
        const QString headings = lines.at(3);
        QVERIFY(headings.contains(u"Dep Date"_qs));
        const qsizetype date = headings.indexOf(u"Date "_qs);
        // Columns line up whatever the cell texts are.
        QCOMPARE(lines.at(5).indexOf(u"11/02/2026"_qs), date);
        QCOMPARE(lines.at(6).indexOf(u"11/02/2026"_qs), date);
        QCOMPARE(lines.at(5).indexOf(u"$1,234.50"_qs) + 9, lines.at(6).indexOf(u"($5.00)"_qs) + 7);
        QVERIFY(!lines.join(u'\n').contains(u'\r'));
        QCOMPARE(lines.last(), u"Total Amount: $1,239.50"_qs);
    }
};

QTEST_MAIN(TestDownloadScreen)
#include "tst_download_screen.moc"
