// How the screens behave as desktop windows: whole controls at every size,
// keyboard order, Esc, placement, grids that show their texts, message boxes
// over their own window and the status of a long wait. Every screen is opened
// on a demo portfolio.

#include "RentSupport.h"
#include "TestSupport.h"

#include "DemoSite.h"

#include "app/LoginDialog.h"
#include "app/MainMenuWindow.h"
#include "core/QtPrompter.h"
#include "disburse/DistributionFile.h"
#include "disburse/LastBatchWindow.h"
#include "disburse/PaymentSelectionWindow.h"
#include "enrolment/OwnerEnrolmentDialog.h"
#include "enrolment/TenantEnrolmentDialog.h"
#include "enrolment/VendorEnrolmentDialog.h"
#include "history/HistoryWindow.h"
#include "rent/RentReviewDialog.h"
#include "viewer/TransferFileViewer.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QTableView>
#include <QTest>
#include <QTimer>
#include <QToolTip>

namespace {

template <typename Screen> std::unique_ptr<QWidget> make(ProgramState &state)
{
    return std::make_unique<Screen>(state);
}

// Every screen, by its form name.
const std::pair<const char *, std::unique_ptr<QWidget> (*)(ProgramState &)> kScreens[] = {
    { "frmRemitraMain", make<MainMenuWindow> }, { "frmLogin", make<LoginDialog> },
    { "frmDownload", make<RentReviewDialog> }, { "frmTenantUpdate", make<TenantEnrolmentDialog> },
    { "frmOwnerUpdate", make<OwnerEnrolmentDialog> },
    { "frmVendorUpdate", make<VendorEnrolmentDialog> },
    { "frmMakePayments", make<PaymentSelectionWindow> }, { "frmShowLast", make<LastBatchWindow> },
    { "frmHistory", make<HistoryWindow> }, { "frmViewFiles", make<TransferFileViewer> }
};

// A site with the demo portfolio, twelve rent payments waiting and a last
// distribution of three lines.
struct DesktopSite
{
    DesktopSite()
    {
        DemoSite::fillPortfolio(site.db(), 60);
        QStringList lines;
        for (const QVariantMap &row :
            site.rows(u"SELECT TPropID, TenantID FROM Tenants ORDER BY TenantID LIMIT 12"_qs))
            lines << RentSupport::line(
                row[u"TPropID"_qs].toInt(), row[u"TenantID"_qs].toInt(), u"1234.56"_qs);
        RentSupport::writePaymentFile(site, lines);
        site.writeFile(DistributionFile::LastUploadName,
            "B1|O1|Owner distribution|1163\r\nB2|V502|Service call|233.75\r\nB3|V3|x|1\r\n");
    }

    std::unique_ptr<QWidget> open(const QString &screen)
    {
        for (const auto &[name, make] : kScreens)
            if (screen == QLatin1String(name))
                return make(*site.state);
        return nullptr;
    }

    TestSite site;
};

QRect inWindow(const QWidget &w)
{
    return QRect(w.mapTo(w.window(), QPoint()), w.size());
}

bool related(const QWidget *a, const QWidget *b)
{
    return a->isAncestorOf(b) || b->isAncestorOf(a);
}

// What is wrong with the window's controls at its present size: controls
// that overlap, texts that do not fit, controls below their least size.
QStringList cutOrOverlapping(QWidget &window)
{
    QList<QWidget *> controls;
    for (QWidget *w : window.findChildren<QWidget *>()) {
        if (w->isWindow() || !w->isVisibleTo(&window))
            continue;
        const bool control = qobject_cast<QPushButton *>(w) || qobject_cast<QCheckBox *>(w)
            || qobject_cast<QRadioButton *>(w) || qobject_cast<QLabel *>(w)
            || qobject_cast<QLineEdit *>(w) || qobject_cast<QComboBox *>(w)
            || qobject_cast<QGroupBox *>(w)
            || (qobject_cast<QAbstractItemView *>(w) && !qobject_cast<QHeaderView *>(w));
        if (control)
            controls << w;
    }
    QStringList problems;
    auto name = [](const QWidget *w) {
        return w->objectName().isEmpty() ? QString::fromLatin1(w->metaObject()->className())
                + u" \""_qs + w->property("text").toString() + u'"'
                                         : w->objectName();
    };
    for (QWidget *w : std::as_const(controls)) {
        QSize least = w->minimumSizeHint().expandedTo(w->minimumSize());
        if (qobject_cast<QAbstractButton *>(w))
            least.setWidth(w->sizeHint().width()); // the caption whole
        if (auto *label = qobject_cast<QLabel *>(w)) {
            if (label->text().isEmpty())
                continue;
            least = label->wordWrap() ? QSize(0, label->heightForWidth(label->width()))
                                      : label->sizeHint();
        }
        if (qobject_cast<QAbstractItemView *>(w))
            least = w->minimumSize();
        if (w->width() < least.width() || w->height() < least.height())
            problems << u"%1 is %2x%3, needs %4x%5"_qs.arg(name(w))
                            .arg(w->width())
                            .arg(w->height())
                            .arg(least.width())
                            .arg(least.height());
    }
    for (int i = 0; i < controls.size(); ++i) {
        for (int j = i + 1; j < controls.size(); ++j) {
            if (!related(controls[i], controls[j])
                && inWindow(*controls[i]).intersects(inWindow(*controls[j])))
                problems << name(controls[i]) + u" overlaps "_qs + name(controls[j]);
        }
    }
    return problems;
}

// The named controls in the order Tab visits them, from `first` on.
QStringList tabOrder(QWidget &window, const QString &first)
{
    QStringList order;
    for (QWidget *w = window.nextInFocusChain(); w != &window; w = w->nextInFocusChain()) {
        if (w->window() == &window && (w->focusPolicy() & Qt::TabFocus) && w->isVisibleTo(&window))
            order << (w->objectName().isEmpty() ? QString::fromLatin1(w->metaObject()->className())
                                                : w->objectName());
    }
    const qsizetype start = order.indexOf(first);
    return start < 0 ? order : order.mid(start) + order.mid(0, start);
}

void showActive(QWidget &window)
{
    window.show();
    window.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window));
}

// Runs `act` on the message box once it is shown.
void onNextBox(const std::function<void(QMessageBox &)> &act)
{
    QTimer::singleShot(0, [act] {
        auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        if (!box) {
            onNextBox(act);
            return;
        }
        act(*box);
    });
}

} // namespace

class TestDesktop : public QObject
{
    Q_OBJECT

private slots:
    void eachScreenAsAWindow_data()
    {
        QTest::addColumn<QString>("screen");
        QTest::addColumn<bool>("centred");
        QTest::addColumn<bool>("escapeCloses");
        const std::tuple<const char *, bool, bool> screens[]
            = { { "frmRemitraMain", false, false }, { "frmLogin", true, false },
                  { "frmDownload", true, false }, { "frmTenantUpdate", true, false },
                  { "frmOwnerUpdate", false, false }, { "frmVendorUpdate", false, false },
                  { "frmMakePayments", true, false }, { "frmShowLast", true, true },
                  { "frmViewFiles", false, true }, { "frmHistory", true, true } };
        for (const auto &[screen, centred, escape] : screens)
            QTest::newRow(screen) << QString::fromLatin1(screen) << centred << escape;
    }
    // Whole controls at opening and at the least size, placement in the
    // middle of the screen, and Esc leaving the viewers.
    void eachScreenAsAWindow()
    {
        QFETCH(QString, screen);
        QFETCH(bool, centred);
        QFETCH(bool, escapeCloses);
        DesktopSite s;
        std::unique_ptr<QWidget> window = s.open(screen);
        showActive(*window);
        if (centred) {
            // Within the frame's few pixels, which are not known before the
            // first window is shown.
            const QPoint middle = window->screen()->availableGeometry().center();
            const QPoint centre = window->frameGeometry().center();
            QVERIFY2((centre - middle).manhattanLength() <= 6,
                qPrintable(u"centre %1,%2"_qs.arg(centre.x()).arg(centre.y())));
        }
        window->layout()->activate();
        QCOMPARE(cutOrOverlapping(*window), QStringList());
        window->resize(1, 1);
        window->layout()->activate();
        QCOMPARE(window->size(), window->minimumSize());
        QCOMPARE(cutOrOverlapping(*window), QStringList());
        if (escapeCloses) {
            QTest::keyClick(window.get(), Qt::Key_Escape);
            QVERIFY(!window->isVisible());
            QCOMPARE(s.site.prompter.shown().size(), 0);
        }
    }

    void tabFollowsTheLayout_data()
    {
        QTest::addColumn<QString>("screen");
        QTest::addColumn<QStringList>("order");
        QTest::newRow("main menu")
            << u"frmRemitraMain"_qs
            << QStringList { u"cmdUploadAll"_qs, u"cmdDownloadPayment"_qs, u"cmdTenantUpdate"_qs,
                   u"cmdOwnerUpdate"_qs, u"cmdVendorUpdate"_qs, u"cmdMakePayments"_qs,
                   u"cmdLogin"_qs, u"cmdViewFiles"_qs, u"cmdHistory"_qs, u"cmdExit"_qs };
        QTest::newRow("login") << u"frmLogin"_qs
                               << QStringList { u"txtUserName"_qs, u"txtPassword"_qs, u"txtURL"_qs,
                                      u"cmdSave"_qs, u"cmdCancel"_qs };
        QTest::newRow("review") << u"frmDownload"_qs
                                << QStringList { u"gridACHDownload"_qs, u"chkPostMgmtFees"_qs,
                                       u"chkCreateDeposit"_qs, u"txtCreateDeposit"_qs,
                                       u"optRemark0"_qs, u"optRemark1"_qs, u"optRemark2"_qs,
                                       u"txtRemark"_qs, u"cmdUpdate"_qs, u"cmdDeleteAll"_qs,
                                       u"cmdPrintScreen"_qs, u"cmdExit"_qs };
        const QStringList list = { u"optDisplay"_qs, u"optSortBy"_qs, u"txtSearch"_qs,
            u"gridACH"_qs, u"chkSelectAll"_qs };
        QTest::newRow("tenants") << u"frmTenantUpdate"_qs
                                 << list + QStringList { u"cmdExport"_qs, u"cmdExit"_qs };
        QTest::newRow("vendors") << u"frmVendorUpdate"_qs << list + QStringList { u"cmdExit"_qs };
        QTest::newRow("payments") << u"frmMakePayments"_qs
                                  << QStringList { u"gridMakePayments"_qs, u"optSortBy"_qs,
                                         u"txtTotalSelected"_qs, u"cmdSelectAll"_qs,
                                         u"cmdDeSelectAll"_qs, u"cmdMakePaymentsNow"_qs,
                                         u"cmdShowLast"_qs, u"cmdExit"_qs };
        QTest::newRow("last batch")
            << u"frmShowLast"_qs << QStringList { u"gridShowLast"_qs, u"cmdExit"_qs };
        QTest::newRow("history") << u"frmHistory"_qs
                                 << QStringList { u"cboKind"_qs, u"chkDates"_qs, u"dtpFrom"_qs,
                                        u"qt_spinbox_lineedit"_qs, u"dtpTo"_qs,
                                        u"qt_spinbox_lineedit"_qs, u"gridRuns"_qs, u"tabDetails"_qs,
                                        u"qt_tabwidget_tabbar"_qs, u"gridLines"_qs,
                                        u"cmdViewFile"_qs, u"cmdReverse"_qs, u"cmdPutBack"_qs,
                                        u"cmdExportList"_qs, u"cmdExportRun"_qs, u"cmdPrint"_qs,
                                        u"cmdPdf"_qs, u"cmdExit"_qs };
        QStringList files;
        for (int i = 0; i < 9; ++i)
            files << u"optFiles_%1"_qs.arg(i);
        QTest::newRow("files") << u"frmViewFiles"_qs
                               << files
                + QStringList { u"lstFileContents"_qs, u"cmdDelete"_qs, u"cmdExit"_qs };
    }
    void tabFollowsTheLayout()
    {
        QFETCH(QString, screen);
        QFETCH(QStringList, order);
        DesktopSite s;
        std::unique_ptr<QWidget> window = s.open(screen);
        window->show();
        QCOMPARE(tabOrder(*window, order.first()), order);
    }

    void gridsShowTheirTexts()
    {
        DesktopSite s;
        // The Remitra flag is the last column of the tenant list.
        auto tenants = s.open(u"frmTenantUpdate"_qs);
        tenants->show();
        auto *gridACH = child<QTableView>(*tenants, "gridACH");
        const int flag = gridACH->model()->columnCount() - 1;
        QVERIFY(gridACH->columnViewportPosition(flag) + gridACH->columnWidth(flag)
            <= gridACH->viewport()->width());

        auto payments = s.open(u"frmMakePayments"_qs);
        payments->show();
        auto *grid = child<QTableView>(*payments, "gridMakePayments");
        QAbstractItemModel *model = grid->model();
        QVERIFY(model->rowCount() > 5);
        for (int r = 0; r < model->rowCount(); ++r) {
            for (int c = 0; c < model->columnCount(); ++c) {
                const QModelIndex cell = model->index(r, c);
                if (!grid->isColumnHidden(c))
                    QVERIFY2(grid->sizeHintForIndex(cell).width() <= grid->visualRect(cell).width(),
                        qPrintable(cell.data().toString()));
            }
        }
        // A payee cut by a narrowed column shows whole in its tooltip, before
        // the owner or vendor it was matched to.
        grid->setColumnWidth(0, 30);
        const QModelIndex payee = model->index(0, 0);
        const QPoint at = grid->visualRect(payee).center();
        QHelpEvent help(QEvent::ToolTip, at, grid->viewport()->mapToGlobal(at));
        QApplication::sendEvent(grid->viewport(), &help);
        QCOMPARE(QToolTip::text(),
            payee.data().toString() + u'\n' + payee.data(Qt::ToolTipRole).toString());
    }

    void aMessageBoxBelongsToTheWindowThatRaisedIt()
    {
        QWidget menu;
        menu.setWindowTitle(u"menu"_qs);
        QWidget payments(&menu, Qt::Window);
        payments.setWindowTitle(u"payments"_qs);
        menu.show();
        showActive(payments);
        QtPrompter prompter(&menu);
        QWidget *owner = nullptr;
        onNextBox([&](QMessageBox &box) {
            owner = box.parentWidget();
            box.button(QMessageBox::Ok)->click();
        });
        prompter.notice(u"There are no payments selected"_qs, u"Make Payments"_qs);
        QCOMPARE(owner, &payments);
        QTRY_COMPARE(QApplication::activeWindow(), &payments);
    }

    void theStatusShowsInTheWaitingWindow()
    {
        QWidget window;
        window.resize(600, 400);
        showActive(window);
        QtPrompter prompter;
        prompter.showStatus(u"Sending the portfolio: 60 tenants…"_qs, QString());
        QWidget *panel = prompter.statusPanel();
        QVERIFY(panel && panel->isVisible());
        QCOMPARE(panel->parentWidget(), &window);
        QVERIFY(window.rect().contains(panel->geometry()));
        prompter.showStatus(
            u"Sending the portfolio: 60 tenants…"_qs, u"Waiting for the processor… 12 s"_qs);
        QCOMPARE(prompter.statusPanel(), panel);
        QCOMPARE(
            child<QLabel>(*panel, "statusProgress")->text(), u"Waiting for the processor… 12 s"_qs);
        prompter.showStatus(QString(), QString());
        QVERIFY(!prompter.statusPanel());
    }
};

QTEST_MAIN(TestDesktop)
#include "tst_desktop.moc"
