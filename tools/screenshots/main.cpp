// Opens Remitra's screens on a demo site, as a user would come to them, and
// saves a picture of each. The processor is the sandbox the demo site's
// settings point at; messages are answered without being shown.
//
//   remitra-screenshots --folder SITE --settings INI --out DIR [--every-size]
//
// Without --every-size: the main menu, the review screen, the tenant
// enrolment screen, Make Payments and History (with the rent posting chosen)
// at their opening sizes (DIR/<screen>.png).
// With it: every screen at its opening, minimum and maximised sizes
// (DIR/<screen>-<size>.png), for looking over the layouts.

#include "app/LoginDialog.h"
#include "app/MainMenuWindow.h"
#include "app/ProgramState.h"
#include "app/QtIdentity.h"
#include "core/RuntimeError.h"
#include "core/ScriptedPrompter.h"
#include "disburse/PaymentSelectionWindow.h"
#include "enrolment/OwnerEnrolmentDialog.h"
#include "enrolment/TenantEnrolmentDialog.h"
#include "enrolment/VendorEnrolmentDialog.h"
#include "history/HistoryWindow.h"
#include "hostdb/Journal.h"
#include "processor/HttpProcessorClient.h"
#include "processor/RentDownload.h"
#include "rent/PaymentFile.h"
#include "rent/RentReviewDialog.h"
#include "rent/UpdateLedgers.h"
#include "uploads/UploadAll.h"
#include "viewer/TransferFileViewer.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QElapsedTimer>
#include <QItemSelectionModel>
#include <QPixmap>
#include <QScreen>
#include <QTableView>
#include <QThread>

#include <cstdio>

namespace {

struct Options
{
    QString folder;
    QString settings;
    QString out;
    bool everySize = false;
};

// Lets the window manager place, frame and size the window and the screen
// paint it: events are handled until the geometry has not changed for a
// while.
void settle(QWidget &window)
{
    QElapsedTimer total;
    total.start();
    QElapsedTimer still;
    still.start();
    QRect last = window.frameGeometry();
    while (total.elapsed() < 3000) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
        QThread::msleep(20);
        if (window.frameGeometry() != last) {
            last = window.frameGeometry();
            still.restart();
        } else if (still.elapsed() > 400) {
            break;
        }
    }
}

// The window with its frame when a window manager framed it (taken from the
// screen), else its contents alone.
QPixmap picture(QWidget &window)
{
    const QRect frame = window.frameGeometry();
    QScreen *screen = window.screen();
    if (screen && frame != window.geometry() && QGuiApplication::platformName() == u"xcb"_qs)
        return screen->grabWindow(0, frame.x(), frame.y(), frame.width(), frame.height());
    return window.grab();
}

class Camera
{
public:
    explicit Camera(Options options)
        : m_options(std::move(options))
    {
    }

    void take(QWidget &window, const QString &name)
    {
        window.show();
        window.raise();
        window.activateWindow();
        settle(window);
        if (!m_options.everySize) {
            save(window, name);
            return;
        }
        save(window, name + u"-default"_qs);
        const QSize opening = window.size();
        // The smallest size the window allows.
        window.resize(1, 1);
        settle(window);
        save(window, name + u"-minimum"_qs);
        window.showMaximized();
        settle(window);
        save(window, name + u"-maximised"_qs);
        window.showNormal();
        window.resize(opening);
        settle(window);
    }

    bool everySize() const { return m_options.everySize; }

private:
    void save(QWidget &window, const QString &name)
    {
        const QString path = QDir(m_options.out).filePath(name + u".png"_qs);
        const QPixmap shot = picture(window);
        if (!shot.save(path))
            std::fprintf(stderr, "remitra-screenshots: cannot write %s\n", qPrintable(path));
        const QRect frame = window.frameGeometry();
        std::printf("%s: window %dx%d at %d,%d (frame %dx%d), minimum %dx%d\n", qPrintable(path),
            window.width(), window.height(), frame.x(), frame.y(), frame.width(), frame.height(),
            window.minimumWidth(), window.minimumHeight());
        std::fflush(stdout);
    }

    Options m_options;
};

Options parse(const QApplication &app)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(u"Pictures of Remitra's screens on a demo site."_qs);
    parser.addHelpOption();
    const QCommandLineOption folder(u"folder"_qs, u"The demo site."_qs, u"DIR"_qs);
    const QCommandLineOption settings(u"settings"_qs, u"Its settings INI."_qs, u"FILE"_qs);
    const QCommandLineOption out(u"out"_qs, u"Where the pictures go."_qs, u"DIR"_qs);
    const QCommandLineOption everySize(
        u"every-size"_qs, u"Every screen at its opening, minimum and maximised sizes."_qs);
    parser.addOptions({ folder, settings, out, everySize });
    parser.process(app);
    if (!parser.isSet(folder) || !parser.isSet(settings) || !parser.isSet(out))
        parser.showHelp(2);
    return { QFileInfo(parser.value(folder)).absoluteFilePath(),
        QFileInfo(parser.value(settings)).absoluteFilePath(),
        QFileInfo(parser.value(out)).absoluteFilePath(), parser.isSet(everySize) };
}

QWidget *topLevel(const QString &name)
{
    for (QWidget *w : QApplication::topLevelWidgets()) {
        if (w->objectName() == name && w->isVisible())
            return w;
    }
    return nullptr;
}

// The first rows of Make Payments chosen, as Ctrl-clicks would.
void chooseRows(PaymentSelectionWindow &screen, int count)
{
    auto *grid = screen.findChild<QTableView *>(u"gridMakePayments"_qs);
    if (!grid || !grid->model())
        return;
    QAbstractItemModel *model = grid->model();
    count = qMin(count, model->rowCount());
    for (int r = 0; r < count; ++r)
        grid->selectionModel()->select(
            model->index(r, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
}

void run(const Options &options)
{
    QDir().mkpath(options.out);
    Camera camera(options);
    ScriptedPrompter prompter;
    ProgramState state(prompter, options.folder);
    state.settingsFile = options.settings;
    state.clientFactory = [] { return std::make_unique<HttpProcessorClient>(30); };
    state.endProgram = [] {};

    MainMenuWindow mainMenu(state);
    if (!mainMenu.load())
        throw RuntimeError(0, u"the main menu did not open: "_qs + prompter.texts().join(u"; "_qs));
    camera.take(mainMenu, u"main-menu"_qs);

    // The demo's sandbox makes every enrolled tenant pay once the tenants
    // are uploaded.
    uploadAll(state);
    downloadPaymentFile(state);
    {
        RentReviewDialog review(state, &mainMenu);
        camera.take(review, u"review"_qs);
    }
    // The payments are posted, with fees and a deposit, for History.
    {
        const PaymentFile::LoadResult loaded = PaymentFile::load(state);
        PostingChoices choices;
        choices.postMgmtFees = true;
        choices.depositNumber = u"1001"_qs;
        choices.remark = PostingChoices::MethodRemark;
        UpdateLedgers::run(state, loaded.rows, choices, loaded.fileSha256);
    }
    {
        TenantEnrolmentDialog tenants(state, &mainMenu);
        camera.take(tenants, u"tenant-enrolment"_qs);
    }
    if (camera.everySize()) {
        OwnerEnrolmentDialog owners(state, &mainMenu);
        camera.take(owners, u"owner-enrolment"_qs);
        VendorEnrolmentDialog vendors(state, &mainMenu);
        camera.take(vendors, u"vendor-enrolment"_qs);
        LoginDialog login(state, &mainMenu);
        camera.take(login, u"login"_qs);
    }

    PaymentSelectionWindow *payments = PaymentSelectionWindow::open(state, &mainMenu);
    chooseRows(*payments, 3);
    camera.take(*payments, u"make-payments"_qs);
    if (camera.everySize()) {
        payments->paySelectedChecks();
        payments->showLastBatch();
        if (QWidget *last = topLevel(u"frmShowLast"_qs))
            camera.take(*last, u"last-batch"_qs);
        TransferFileViewer *files = TransferFileViewer::open(state, &mainMenu);
        if (auto *choice = files->findChild<QAbstractButton *>(u"optFiles_0"_qs))
            choice->click();
        camera.take(*files, u"view-files"_qs);
    }

    HistoryWindow *history = HistoryWindow::open(state, &mainMenu);
    const QList<Journal::Run> runs = Journal(state.store()).runs();
    for (const Journal::Run &run : runs) {
        if (run.kind == Journal::Kind::RentPosting) {
            history->selectRun(run.id);
            break;
        }
    }
    camera.take(*history, u"history"_qs);
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QtIdentity::apply(app);
    const Options options = parse(app);
    try {
        run(options);
    } catch (const RuntimeError &error) {
        std::fprintf(stderr, "remitra-screenshots: %s\n", qPrintable(error.description()));
        return 1;
    }
    return 0;
}
