#include "app/frmRemitraMain.h"

#include "app/Credentials.h"
#include "app/ProgramState.h"
#include "app/QtCentre.h"
#include "app/QtGridFit.h"
#include "app/Startup.h"
#include "app/TopLevel.h"
#include "app/frmLogin.h"
#include "core/Prompter.h"
#include "disburse/frmMakePayments.h"
#include "enrolment/frmOwnerUpdate.h"
#include "enrolment/frmTenantUpdate.h"
#include "enrolment/frmVendorUpdate.h"
#include "history/frmHistory.h"
#include "processor/ProcessorCall.h"
#include "processor/RentDownload.h"
#include "rent/frmDownload.h"
#include "uploads/UploadAll.h"
#include "viewer/frmViewFiles.h"

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

frmRemitraMain::frmRemitraMain(ProgramState &state, QWidget *parent)
    : QWidget(parent)
    , m_state(state)
{
    setObjectName(u"frmRemitraMain"_qs);
    setWindowTitle(u"Remitra Main Menu"_qs);

    labIntro = new QLabel(u"Welcome to Dwellix Remitra! Choose from one of the options below to "
                          "upload your information and download any payments that have been "
                          "received."_qs,
        this);
    labIntro->setObjectName(u"labIntro"_qs);
    labIntro->setWordWrap(true);
    QFont introFont = labIntro->font();
    introFont.setBold(true);
    introFont.setPointSizeF(introFont.pointSizeF() * 1.15);
    labIntro->setFont(introFont);

    labVersion = new QLabel(this);
    labVersion->setObjectName(u"labVersion"_qs);
    labVersion->setAccessibleName(u"Version"_qs);

    Label1 = explanation(u"Label1"_qs,
        u"Use this step ONLY if you are setting up Remitra for the first time OR if "
        "you have added or deleted any Owners, Properties, Units, or Tenants in "
        "the Dwellix Program."_qs,
        this);
    cmdUploadAll = button(u"cmdUploadAll"_qs, u"&Upload All Info NOW"_qs, this);
    fraOption1
        = frame(u"fraOption1"_qs, u"Upload ALL Dwellix Owners, Properties, Units, and Tenants"_qs,
            Label1, { cmdUploadAll }, this);

    labStep2 = explanation(u"labStep2"_qs,
        u"Use this step each time you want to download any Tenant rent payments that have been "
        "made. This will enable you to post the payments automatically to the Dwellix ledgers, "
        "plus you can optionally charge management fees on those payments and create a register "
        "entry."_qs,
        this);
    cmdDownloadPayment
        = button(u"cmdDownloadPayment"_qs, u"&Download and Post Rent Payments"_qs, this);
    fraOption2 = frame(u"fraOption2"_qs, u"Check for any Tenant rent payments"_qs, labStep2,
        { cmdDownloadPayment }, this);

    labStep3 = explanation(u"labStep3"_qs,
        u"Perform this step to activate or change the Owners, Tenants, or Vendors that use Remitra "
        "service. You must use this section in order to activate any users of the Remitra "
        "system."_qs,
        this);
    cmdTenantUpdate = button(u"cmdTenantUpdate"_qs, u"&Activate or Change TENANTS"_qs, this);
    cmdOwnerUpdate = button(u"cmdOwnerUpdate"_qs, u"&Activate or Change OWNERS"_qs, this);
    cmdVendorUpdate = button(u"cmdVendorUpdate"_qs, u"&Activate or Change VENDORS"_qs, this);
    fraOption3
        = new QGroupBox(u"Activate your Owners, Tenants, or Vendors to use Remitra "_qs, this);
    fraOption3->setObjectName(u"fraOption3"_qs);
    keepTitleWhole(*fraOption3);
    {
        auto *layout = new QVBoxLayout(fraOption3);
        labStep3->setParent(fraOption3);
        layout->addWidget(labStep3, 1);
        for (QPushButton *b : { cmdTenantUpdate, cmdOwnerUpdate, cmdVendorUpdate }) {
            b->setParent(fraOption3);
            layout->addWidget(b);
        }
    }

    labStep4 = explanation(u"labStep4"_qs,
        u"Use this step to transfer any checks in the Entered Check File to the bank accounts of "
        "Owners or Vendors automatically. To do this, you must have already set up the bank "
        "accounts for transfer and have set the appropriate Owners or Vendors for payment using "
        "Remitra."_qs,
        this);
    cmdMakePayments
        = button(u"cmdMakePayments"_qs, u"Make Payments to Owners and Vendors"_qs, this);
    fraOption4 = frame(u"fraOption4"_qs,
        u"Pay Owners and Vendors from Dwellix straight to their bank accounts"_qs, labStep4,
        { cmdMakePayments }, this);

    cmdLogin = button(u"cmdLogin"_qs, u"Reset Log in"_qs, this);
    cmdViewFiles = button(u"cmdViewFiles"_qs, u"View Files"_qs, this);
    // Outside the four frames, beside the other viewer.
    cmdHistory = button(u"cmdHistory"_qs, u"&History"_qs, this);
    cmdHistory->setToolTip(u"Every exchange with Quenta Payment Services and every posting, "
                           "with its files; a rent posting can be reversed from there."_qs);
    cmdExit = button(u"cmdExit"_qs, u"&Exit"_qs, this);

    auto *frames = new QGridLayout;
    frames->setHorizontalSpacing(12);
    frames->setVerticalSpacing(12);
    frames->addWidget(fraOption1, 0, 0);
    frames->addWidget(fraOption2, 0, 1);
    frames->addWidget(fraOption3, 1, 0);
    frames->addWidget(fraOption4, 1, 1);
    frames->setColumnStretch(0, 1);
    frames->setColumnStretch(1, 1);

    auto *bottom = new QHBoxLayout;
    bottom->addWidget(cmdLogin);
    bottom->addWidget(cmdViewFiles);
    bottom->addWidget(cmdHistory);
    bottom->addStretch();
    bottom->addWidget(labVersion);
    bottom->addSpacing(12);
    bottom->addWidget(cmdExit);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(16, 16, 16, 12);
    layout->setSpacing(12);
    layout->addWidget(labIntro);
    layout->addLayout(frames, 1);
    layout->addLayout(bottom);
    setMinimumWidth(860);
    QtGridFit::keepControlsWhole(*this);

    // Keyboard order follows the layout: the frames left to right, top to
    // bottom, then the bottom row.
    setTabOrder(cmdUploadAll, cmdDownloadPayment);
    setTabOrder(cmdDownloadPayment, cmdTenantUpdate);
    setTabOrder(cmdTenantUpdate, cmdOwnerUpdate);
    setTabOrder(cmdOwnerUpdate, cmdVendorUpdate);
    setTabOrder(cmdVendorUpdate, cmdMakePayments);
    setTabOrder(cmdMakePayments, cmdLogin);
    setTabOrder(cmdLogin, cmdViewFiles);
    setTabOrder(cmdViewFiles, cmdHistory);
    setTabOrder(cmdHistory, cmdExit);

    connect(cmdUploadAll, &QPushButton::clicked, this, &frmRemitraMain::cmdUploadAll_Click);
    connect(
        cmdDownloadPayment, &QPushButton::clicked, this, &frmRemitraMain::cmdDownloadPayment_Click);
    connect(cmdTenantUpdate, &QPushButton::clicked, this, &frmRemitraMain::cmdTenantUpdate_Click);
    connect(cmdOwnerUpdate, &QPushButton::clicked, this, &frmRemitraMain::cmdOwnerUpdate_Click);
    connect(cmdVendorUpdate, &QPushButton::clicked, this, &frmRemitraMain::cmdVendorUpdate_Click);
    connect(cmdMakePayments, &QPushButton::clicked, this, &frmRemitraMain::cmdMakePayments_Click);
    connect(cmdViewFiles, &QPushButton::clicked, this, &frmRemitraMain::cmdViewFiles_Click);
    connect(cmdHistory, &QPushButton::clicked, this, &frmRemitraMain::cmdHistory_Click);
    connect(cmdLogin, &QPushButton::clicked, this, &frmRemitraMain::cmdLogin_Click);
    connect(cmdExit, &QPushButton::clicked, this, &frmRemitraMain::cmdExit_Click);
}

frmRemitraMain::~frmRemitraMain() = default;

bool frmRemitraMain::Form_Load()
{
    // The explanations wrap: the height follows from the width.
    const int width = std::max(sizeHint().width(), 940);
    resize(width, heightForWidth(width));
    centreOnScreen(*this);
    labVersion->setText(Startup::versionText());
    return Startup::run(m_state, *this) == Startup::Outcome::ShowMainMenu;
}

QString frmRemitraMain::notYetAvailableText()
{
    return u"This function is for direct ACH disbursement of payments to Owners or Vendors, and "
           "will be available soon.  This will save you the time and money of having to create "
           "paper checks and mailing them. We will let you know when this substantial addition is "
           "available, and will provide you with a free update to the Remitra software."_qs;
}

QString frmRemitraMain::notYetAvailableTitle()
{
    return u"Dwellix Remitra"_qs;
}

void frmRemitraMain::showLogin(ProgramState &state)
{
    frmLogin::showModal(state, this);
}

bool frmRemitraMain::loginPresent()
{
    if (m_state.LoginMissing) {
        Credentials::showLoginNotice(m_state);
        return false;
    }
    // A log in completed after start-up: the transfer files have no names
    // yet, and nothing may reach the processor until Remitra starts again.
    return ProcessorCall::checkFileNames(m_state);
}

bool frmRemitraMain::disbursementAllowed()
{
    if (!m_state.DisbursementEnabled) {
        m_state.prompter().notice(notYetAvailableText(), notYetAvailableTitle());
        return false;
    }
    return loginPresent();
}

void frmRemitraMain::cmdUploadAll_Click()
{
    TopLevel::run(m_state, [&] {
        if (loginPresent())
            runUploadAll();
    });
}

void frmRemitraMain::cmdDownloadPayment_Click()
{
    TopLevel::run(m_state, [&] {
        if (!loginPresent())
            return;
        DownloadPaymentFile(m_state);
        // The review screen opens whatever the download gave: it also shows
        // a file that was already waiting.
        openDownload();
    });
}

void frmRemitraMain::cmdTenantUpdate_Click()
{
    TopLevel::run(m_state, [&] {
        if (loginPresent())
            openTenantUpdate();
    });
}

void frmRemitraMain::cmdOwnerUpdate_Click()
{
    TopLevel::run(m_state, [&] {
        if (disbursementAllowed())
            openOwnerUpdate();
    });
}

void frmRemitraMain::cmdVendorUpdate_Click()
{
    TopLevel::run(m_state, [&] {
        if (disbursementAllowed())
            openVendorUpdate();
    });
}

void frmRemitraMain::cmdMakePayments_Click()
{
    TopLevel::run(m_state, [&] {
        if (disbursementAllowed())
            openMakePayments();
    });
}

void frmRemitraMain::cmdViewFiles_Click()
{
    TopLevel::run(m_state, [&] { openViewFiles(); });
}

void frmRemitraMain::cmdHistory_Click()
{
    TopLevel::run(m_state, [&] { openHistory(); });
}

void frmRemitraMain::cmdLogin_Click()
{
    TopLevel::run(m_state, [&] { Credentials::resetLogIn(m_state, *this); });
}

void frmRemitraMain::cmdExit_Click()
{
    TopLevel::run(m_state, [&] { close(); });
}

void frmRemitraMain::closeEvent(QCloseEvent *event)
{
    // Closing the main menu ends the run, whatever other screens are open.
    event->accept();
    QCoreApplication::quit();
}

// The jobs and screens of the commands. The modal screens are made afresh
// for each opening, as a screen unloaded on closing is loaded again; the
// modeless ones keep their single instance.
void frmRemitraMain::runUploadAll()
{
    if (UploadAll(m_state))
        cmdExit->setFocus();
}

void frmRemitraMain::openDownload()
{
    frmDownload review(m_state, this);
    review.exec();
}

void frmRemitraMain::openTenantUpdate()
{
    frmTenantUpdate screen(m_state, this);
    screen.exec();
}

void frmRemitraMain::openOwnerUpdate()
{
    frmOwnerUpdate screen(m_state, this);
    screen.exec();
}

void frmRemitraMain::openVendorUpdate()
{
    frmVendorUpdate screen(m_state, this);
    screen.exec();
}

void frmRemitraMain::openMakePayments()
{
    frmMakePayments::open(m_state, this);
}

void frmRemitraMain::openViewFiles()
{
    frmViewFiles::open(m_state, this);
}

void frmRemitraMain::openHistory()
{
    frmHistory::open(m_state, this);
}
