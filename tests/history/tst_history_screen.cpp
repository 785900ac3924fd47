#include "RentSupport.h"
#include "UploadsFixture.h"

#include "history/HistoryWindow.h"
#include "hostdb/Journal.h"
#include "uploads/VendorFile.h"
#include "viewer/TransferFileViewer.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QTableView>
#include <QTest>

// The History screen over a site with a vendor upload and a rent posting:
// the list and its filters, a run's details, its file in the viewer,
// exports and PDF. The reversal from the screen: tests/e2e/tst_rent_e2e.
namespace {

struct Site
{
    Site()
    {
        UploadsFixture::addVendors(site);
        RentSupport::seedPortfolio(site);
        site.scriptProcessor();
        uploadVendorFile(*site.state);
        PostingChoices c;
        c.depositNumber = u"3"_qs;
        RentSupport::writePaymentFile(site,
            { RentSupport::line(10, 100, u"1000"_qs), RentSupport::line(20, 200, u"40.5"_qs) });
        RentSupport::post(site, RentSupport::load(site), c);
        site.prompter.clear();
    }

    TestSite site;
};

QStringList column(QTableView *grid, int column)
{
    QStringList texts;
    for (int r = 0; r < grid->model()->rowCount(); ++r)
        texts << grid->model()->index(r, column).data().toString();
    return texts;
}

} // namespace

class TestHistoryScreen : public QObject
{
    Q_OBJECT

private slots:
    void listFilterAndDetails()
    {
        Site s;
        HistoryWindow screen(*s.site.state);
        QCOMPARE(screen.windowTitle(), u"Remitra History"_qs);
        auto *runs = child<QTableView>(screen, "gridRuns");
        QCOMPARE(column(runs, 2), (QStringList { u"Rent posting"_qs, u"Vendor upload"_qs }));
        QCOMPARE(column(runs, 4).first(), u"$1,040.50"_qs);
        QCOMPARE(column(runs, 5), (QStringList { u"Posted"_qs, u"Successful (200)"_qs }));

        // The newest run is chosen: its lines, rows, messages and file.
        QCOMPARE(child<QTableView>(screen, "gridLines")->model()->rowCount(), 2);
        QCOMPARE(child<QTableView>(screen, "gridRows")->model()->rowCount(), 2 + 4 + 1 + 2);
        QCOMPARE(
            column(child<QTableView>(screen, "gridMessages"), 2), { ProductTexts::ledgersUpdated });
        QVERIFY(child<QPushButton>(screen, "cmdReverse")->isEnabled());

        auto *kind = child<QComboBox>(screen, "cboKind");
        kind->setCurrentText(u"Vendor upload"_qs);
        QCOMPARE(column(runs, 2), { u"Vendor upload"_qs });
        QVERIFY(!child<QPushButton>(screen, "cmdReverse")->isEnabled());
        kind->setCurrentIndex(0);
        child<QDateEdit>(screen, "dtpFrom")->setDate(QDate::currentDate().addDays(1));
        child<QDateEdit>(screen, "dtpTo")->setDate(QDate::currentDate().addDays(2));
        child<QCheckBox>(screen, "chkDates")->setChecked(true);
        QCOMPARE(runs->model()->rowCount(), 0);
        QCOMPARE(
            child<QLabel>(screen, "labRun")->text(), u"No run of this kind or in these dates."_qs);

        // Every input is named by a label (for keyboard and screen reader).
        for (const char *input : { "cboKind", "dtpFrom", "dtpTo", "gridRuns" }) {
            const auto labels = screen.findChildren<QLabel *>();
            QVERIFY2(std::any_of(labels.cbegin(), labels.cend(),
                         [&](QLabel *l) {
                             return l->buddy() && l->buddy()->objectName() == QLatin1String(input);
                         }),
                input);
        }
    }

    void exportsAndPdf()
    {
        Site s;
        HistoryWindow screen(*s.site.state);
        QStringList chosen;
        screen.setFileChooser([&](const QString &, const QString &name, const QString &) {
            chosen << name;
            return s.site.path(name);
        });
        QTest::mouseClick(child<QPushButton>(screen, "cmdExportList"), Qt::LeftButton);
        QTest::mouseClick(child<QPushButton>(screen, "cmdExportRun"), Qt::LeftButton);
        QTest::mouseClick(child<QPushButton>(screen, "cmdPdf"), Qt::LeftButton);
        const qint64 run = screen.currentRun()->id;
        QCOMPARE(chosen,
            (QStringList { u"remitra-history.csv"_qs, u"remitra-run-%1.csv"_qs.arg(run),
                u"remitra-run-%1.pdf"_qs.arg(run) }));
        const QList<QByteArray> list = s.site.fileBytes(chosen[0]).split('\n');
        QCOMPARE(list.first(), QByteArray("Run,Date,Kind,Count,Total,Result\r"));
        QVERIFY(list[1].endsWith(",Rent posting,2,\"$1,040.50\",Posted\r"));
        const QByteArray details = s.site.fileBytes(chosen[1]);
        for (const char *part : { "\r\nLines\r\n", "\r\nRows posted\r\n", "\r\nMessages\r\n",
                 "\r\nFiles\r\n", "Transactions,1,added" })
            QVERIFY2(details.contains(part), part);
        QVERIFY(s.site.fileBytes(chosen[2]).startsWith("%PDF"));
        QCOMPARE(s.site.prompter.titles(), QStringList(3, u"Remitra History"_qs));
    }

    // The run's file opens in the viewer, from its archived copy, which the
    // viewer does not offer to delete.
    void fileInTheViewer()
    {
        Site s;
        HistoryWindow screen(*s.site.state);
        const Journal::File file
            = Journal(s.site.state->store()).files(screen.currentRun()->id).first();
        QTest::mouseClick(child<QPushButton>(screen, "cmdViewFile"), Qt::LeftButton);
        QWidget *viewer = nullptr;
        for (QWidget *w : QApplication::topLevelWidgets())
            if (w->objectName() == u"frmViewFiles"_qs && w->isVisible())
                viewer = w;
        QVERIFY(viewer);
        auto *list = child<QListWidget>(*viewer, "lstFileContents");
        QCOMPARE(list->item(0)->text(), RentSupport::line(10, 100, u"1000"_qs) + u'\r');
        QVERIFY(!child<QPushButton>(*viewer, "cmdDelete")->isEnabled());
        QVERIFY(child<QLabel>(*viewer, "labShown")->text().contains(file.archive.section(u'/', 1)));
        viewer->close();
    }
};

QTEST_MAIN(TestHistoryScreen)
#include "tst_history_screen.moc"
