#include "app/MainMenuWindow.h"

#include "app/Credentials.h"
#include "app/LoginDialog.h"
#include "app/ProgramState.h"
#include "app/QtCentre.h"
#include "app/QtGridFit.h"
#include "app/Startup.h"
#include "app/TopLevel.h"
#include "core/Prompter.h"
#include "disburse/PaymentSelectionWindow.h"
#include "enrolment/OwnerEnrolmentDialog.h"
#include "enrolment/TenantEnrolmentDialog.h"
#include "enrolment/VendorEnrolmentDialog.h"
#include "history/HistoryWindow.h"
#include "processor/ProcessorCall.h"
#include "processor/RentDownload.h"
#include "rent/RentReviewDialog.h"
#include "uploads/UploadAll.h"
#include "viewer/TransferFileViewer.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>

namespace {

QLabel *explanation(const QString &name, const QString &text, QWidget *parent)
{
    auto *label = new QLabel(text, parent);
    label->setObjectName(name);
    label->setWordWrap(true);
    label->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    return label;
}

// A frame's caption does not wrap: the frame is kept at least as wide.
void keepTitleWhole(QGroupBox &box)
{
    box.setMinimumWidth(box.fontMetrics().horizontalAdvance(box.title()) + 32);
}

QPushButton *button(const QString &name, const QString &caption, QWidget *parent)
{
    auto *b = new QPushButton(caption, parent);
    b->setObjectName(name);
    b->setAutoDefault(false);
    return b;
}

QGroupBox *frame(const QString &name, const QString &caption, QLabel *label,
    std::initializer_list<QPushButton *> buttons, QWidget *parent)
{
    auto *box = new QGroupBox(caption, parent);
    box->setObjectName(name);
    keepTitleWhole(*box);
    auto *layout = new QVBoxLayout(box);
    layout->addWidget(label, 1);
    auto *row = new QHBoxLayout;
    row->addStretch();
    for (QPushButton *b : buttons) {
        b->setParent(box);
        row->addWidget(b);
    }
    row->addStretch();
    layout->addLayout(row);
    return box;
}

} // namespace

MainMenuWindow::MainMenuWindow(ProgramState &state, QWidget *parent)
    : QWidget(parent)
    , m_state(state)
{
    setObjectName(u"frmRemitraMain"_qs);
    setWindowTitle(u"Remitra Main Menu"_qs);

    m_labIntro = new QLabel(u"Welcome to Dwellix Remitra! Choose from one of the options below to "
                            "upload your information and download any payments that have been "
                            "received."_qs,
        this);
    m_labIntro->setObjectName(u"labIntro"_qs);
    m_labIntro->setWordWrap(true);
    QFont introFont = m_labIntro->font();
    introFont.setBold(true);
    introFont.setPointSizeF(introFont.pointSizeF() * 1.15);
    m_labIntro->setFont(introFont);

    m_labVersion = new QLabel(this);
    m_labVersion->setObjectName(u"labVersion"_qs);
    m_labVersion->setAccessibleName(u"Version"_qs);

    m_Label1 = explanation(u"Label1"_qs,
        u"Use this step ONLY if you are setting up Remitra for the first time OR if "
        "you have added or deleted any Owners, Properties, Units, or Tenants in "
        "the Dwellix Program."_qs,
        this);
    m_cmdUploadAll = button(u"cmdUploadAll"_qs, u"&Upload All Info NOW"_qs, this);
    m_fraOption1
        = frame(u"fraOption1"_qs, u"Upload ALL Dwellix Owners, Properties, Units, and Tenants"_qs,
            m_Label1, { m_cmdUploadAll }, this);

    m_labStep2 = explanation(u"labStep2"_qs,
        u"Use this step each time you want to download any Tenant rent payments that have been "
        "made. This will enable you to post the payments automatically to the Dwellix ledgers, "
        "plus you can optionally charge management fees on those payments and create a register "
        "entry."_qs,
        this);
    m_cmdDownloadPayment
        = button(u"cmdDownloadPayment"_qs, u"&Download and Post Rent Payments"_qs, this);
    m_fraOption2 = frame(u"fraOption2"_qs, u"Check for any Tenant rent payments"_qs, m_labStep2,
        { m_cmdDownloadPayment }, this);

    m_labStep3 = explanation(u"labStep3"_qs,
        u"Perform this step to activate or change the Owners, Tenants, or Vendors that use Remitra "
        "service. You must use this section in order to activate any users of the Remitra "
        "system."_qs,
        this);
    m_cmdTenantUpdate = button(u"cmdTenantUpdate"_qs, u"&Activate or Change TENANTS"_qs, this);
    m_cmdOwnerUpdate = button(u"cmdOwnerUpdate"_qs, u"&Activate or Change OWNERS"_qs, this);
    m_cmdVendorUpdate = button(u"cmdVendorUpdate"_qs, u"&Activate or Change VENDORS"_qs, this);
    m_fraOption3
        = new QGroupBox(u"Activate your Owners, Tenants, or Vendors to use Remitra "_qs, this);
    m_fraOption3->setObjectName(u"fraOption3"_qs);
    keepTitleWhole(*m_fraOption3);
    {
        auto *layout = new QVBoxLayout(m_fraOption3);
        m_labStep3->setParent(m_fraOption3);
        layout->addWidget(m_labStep3, 1);
        for (QPushButton *b : { m_cmdTenantUpdate, m_cmdOwnerUpdate, m_cmdVendorUpdate }) {
            b->setParent(m_fraOption3);
            layout->addWidget(b);
        }
    }

    m_labStep4 = explanation(u"labStep4"_qs,
        u"Use this step to transfer any checks in the Entered Check File to the bank accounts of "
        "Owners or Vendors automatically. To do this, you must have already set up the bank "
        "accounts for transfer and have set the appropriate Owners or Vendors for payment using "
        "Remitra."_qs,
        this);
    m_cmdMakePayments
        = button(u"cmdMakePayments"_qs, u"Make Payments to Owners and Vendors"_qs, this);
    m_fraOption4 = frame(u"fraOption4"_qs,
        u"Pay Owners and Vendors from Dwellix straight to their bank accounts"_qs, m_labStep4,
        { m_cmdMakePayments }, this);

    m_cmdLogin = button(u"cmdLogin"_qs, u"Reset Log in"_qs, this);
    m_cmdViewFiles = button(u"cmdViewFiles"_qs, u"View Files"_qs, this);
    // Outside the four frames, beside the other viewer.
    m_cmdHistory = button(u"cmdHistory"_qs, u"&History"_qs, this);
    m_cmdHistory->setToolTip(u"Every exchange with Quenta Payment Services and every posting, "
                             "with its files; a rent posting can be reversed from there."_qs);
    m_cmdExit = button(u"cmdExit"_qs, u"&Exit"_qs, this);

    auto *frames = new QGridLayout;
    frames->setHorizontalSpacing(12);
    frames->setVerticalSpacing(12);
    frames->addWidget(m_fraOption1, 0, 0);
    frames->addWidget(m_fraOption2, 0, 1);
    frames->addWidget(m_fraOption3, 1, 0);
    frames->addWidget(m_fraOption4, 1, 1);
    frames->setColumnStretch(0, 1);
    frames->setColumnStretch(1, 1);

    auto *bottom = new QHBoxLayout;
    bottom->addWidget(m_cmdLogin);
    bottom->addWidget(m_cmdViewFiles);
    bottom->addWidget(m_cmdHistory);
    bottom->addStretch();
    bottom->addWidget(m_labVersion);
    bottom->addSpacing(12);
    bottom->addWidget(m_cmdExit);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(16, 16, 16, 12);
    layout->setSpacing(12);
    layout->addWidget(m_labIntro);
    layout->addLayout(frames, 1);
    layout->addLayout(bottom);
    setMinimumWidth(860);
    QtGridFit::keepControlsWhole(*this);

    // Keyboard order follows the layout: the frames left to right, top to
    // bottom, then the bottom row.
    setTabOrder(m_cmdUploadAll, m_cmdDownloadPayment);
    setTabOrder(m_cmdDownloadPayment, m_cmdTenantUpdate);
    setTabOrder(m_cmdTenantUpdate, m_cmdOwnerUpdate);
    setTabOrder(m_cmdOwnerUpdate, m_cmdVendorUpdate);
    setTabOrder(m_cmdVendorUpdate, m_cmdMakePayments);
    setTabOrder(m_cmdMakePayments, m_cmdLogin);
    setTabOrder(m_cmdLogin, m_cmdViewFiles);
    setTabOrder(m_cmdViewFiles, m_cmdHistory);
    setTabOrder(m_cmdHistory, m_cmdExit);

    connect(m_cmdUploadAll, &QPushButton::clicked, this, &MainMenuWindow::uploadAll);
    connect(m_cmdDownloadPayment, &QPushButton::clicked, this,
        &MainMenuWindow::downloadAndPostPayments);
    connect(m_cmdTenantUpdate, &QPushButton::clicked, this, &MainMenuWindow::changeTenants);
    connect(m_cmdOwnerUpdate, &QPushButton::clicked, this, &MainMenuWindow::changeOwners);
    connect(m_cmdVendorUpdate, &QPushButton::clicked, this, &MainMenuWindow::changeVendors);
    connect(m_cmdMakePayments, &QPushButton::clicked, this, &MainMenuWindow::makePayments);
    connect(m_cmdViewFiles, &QPushButton::clicked, this, &MainMenuWindow::viewFiles);
    connect(m_cmdHistory, &QPushButton::clicked, this, &MainMenuWindow::showHistory);
    connect(m_cmdLogin, &QPushButton::clicked, this, &MainMenuWindow::resetLogIn);
    connect(m_cmdExit, &QPushButton::clicked, this, &MainMenuWindow::exitScreen);
}

MainMenuWindow::~MainMenuWindow() = default;

bool MainMenuWindow::load()
{
    // The explanations wrap: the height follows from the width.
    const int width = std::max(sizeHint().width(), 940);
    resize(width, heightForWidth(width));
    centreOnScreen(*this);
    m_labVersion->setText(Startup::versionText());
    return Startup::run(m_state, *this) == Startup::Outcome::ShowMainMenu;
}

QString MainMenuWindow::notYetAvailableText()
{
    return u"This function is for direct ACH disbursement of payments to Owners or Vendors, and "
           "will be available soon.  This will save you the time and money of having to create "
           "paper checks and mailing them. We will let you know when this substantial addition is "
           "available, and will provide you with a free update to the Remitra software."_qs;
}

QString MainMenuWindow::notYetAvailableTitle()
{
    return u"Dwellix Remitra"_qs;
}

void MainMenuWindow::showLogin(ProgramState &state)
{
    LoginDialog::showModal(state, this);
}

bool MainMenuWindow::loginPresent()
{
    if (m_state.login.missing) {
        Credentials::showLoginNotice(m_state);
        return false;
    }
    // A log in completed after start-up: the transfer files have no names
    // yet, and nothing may reach the processor until Remitra starts again.
    return ProcessorCall::checkFileNames(m_state);
}

bool MainMenuWindow::disbursementAllowed()
{
    if (!m_state.disbursementEnabled) {
        m_state.prompter().notice(notYetAvailableText(), notYetAvailableTitle());
        return false;
    }
    return loginPresent();
}

void MainMenuWindow::uploadAll()
{
    TopLevel::run(m_state, [&] {
        if (loginPresent())
            sendAllInfo();
    });
}

void MainMenuWindow::downloadAndPostPayments()
{
    TopLevel::run(m_state, [&] {
        if (!loginPresent())
            return;
        downloadPaymentFile(m_state);
        // The review screen opens whatever the download gave: it also shows
        // a file that was already waiting.
        openRentReview();
    });
}

void MainMenuWindow::changeTenants()
{
    TopLevel::run(m_state, [&] {
        if (loginPresent())
            openTenantEnrolment();
    });
}

void MainMenuWindow::changeOwners()
{
    TopLevel::run(m_state, [&] {
        if (disbursementAllowed())
            openOwnerEnrolment();
    });
}

void MainMenuWindow::changeVendors()
{
    TopLevel::run(m_state, [&] {
        if (disbursementAllowed())
            openVendorEnrolment();
    });
}

void MainMenuWindow::makePayments()
{
    TopLevel::run(m_state, [&] {
        if (disbursementAllowed())
            openPaymentSelection();
    });
}

void MainMenuWindow::viewFiles()
{
    TopLevel::run(m_state, [&] { openFileViewer(); });
}

void MainMenuWindow::showHistory()
{
    TopLevel::run(m_state, [&] { openHistory(); });
}

void MainMenuWindow::resetLogIn()
{
    TopLevel::run(m_state, [&] { Credentials::resetLogIn(m_state, *this); });
}

void MainMenuWindow::exitScreen()
{
    TopLevel::run(m_state, [&] { close(); });
}

void MainMenuWindow::closeEvent(QCloseEvent *event)
{
    // Closing the main menu ends the run, whatever other screens are open.
    event->accept();
    QCoreApplication::quit();
}

// The jobs and screens of the commands. The modal screens are made afresh
// for each opening, as a screen unloaded on closing is loaded again; the
// modeless ones keep their single instance.
void MainMenuWindow::sendAllInfo()
{
    if (::uploadAll(m_state))
        m_cmdExit->setFocus();
}

void MainMenuWindow::openRentReview()
{
    RentReviewDialog review(m_state, this);
    review.exec();
}

void MainMenuWindow::openTenantEnrolment()
{
    TenantEnrolmentDialog screen(m_state, this);
    screen.exec();
}

void MainMenuWindow::openOwnerEnrolment()
{
    OwnerEnrolmentDialog screen(m_state, this);
    screen.exec();
}

void MainMenuWindow::openVendorEnrolment()
{
    VendorEnrolmentDialog screen(m_state, this);
    screen.exec();
}

void MainMenuWindow::openPaymentSelection()
{
    PaymentSelectionWindow::open(m_state, this);
}

void MainMenuWindow::openFileViewer()
{
    TransferFileViewer::open(m_state, this);
}

void MainMenuWindow::openHistory()
{
    HistoryWindow::open(m_state, this);
}
