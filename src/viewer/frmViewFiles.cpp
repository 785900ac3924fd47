#include "viewer/frmViewFiles.h"

#include "app/ProgramState.h"
#include "app/QtGridFit.h"
#include "app/TopLevel.h"
#include "core/Prompter.h"
#include "core/RuntimeError.h"
#include "core/TransferFile.h"
#include "disburse/DistributionFile.h"
#include "disburse/UnfinishedRun.h"

#include <QButtonGroup>
#include <QDir>
#include <QFontDatabase>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QShortcut>
#include <QVBoxLayout>

QPointer<frmViewFiles> frmViewFiles::s_instance;

namespace {

const QString kMissing = u"The file you chose does not exist in the Dwellix folder"_qs;
const QString kNoticeTitle = u"Remitra Notice"_qs;
const QString kEmpty = u"There is no data in this file."_qs;
const QString kEmptyTitle = u"Dwellix Remitra"_qs;
const QString kDeleteTitle = u"Delete File"_qs;

struct Choice
{
    QString shown; // the name written in the choice
    QString description;
};

} // namespace

frmViewFiles::frmViewFiles(ProgramState &state, QWidget *parent)
    : QWidget(parent, Qt::Window)
    , m_state(state)
{
    setObjectName(u"frmViewFiles"_qs);
    setWindowTitle(u"Remitra Files"_qs);

    labHeading = new QLabel(this);
    labHeading->setObjectName(u"labHeading"_qs);
    labHeading->setWordWrap(true);

    optFiles = new QGroupBox(u"File List:"_qs, this);
    optFiles->setObjectName(u"optFiles"_qs);
    optFiles->setAccessibleName(u"File List"_qs);
    new QVBoxLayout(optFiles);
    m_choices = new QButtonGroup(this);

    labShown = new QLabel(this);
    labShown->setObjectName(u"labShown"_qs);
    labShown->setWordWrap(true);
    labShown->hide();

    lstFileContents = new QListWidget(this);
    lstFileContents->setObjectName(u"lstFileContents"_qs);
    lstFileContents->setAccessibleName(u"File contents"_qs);
    lstFileContents->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    lstFileContents->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);

    cmdDelete = new QPushButton(u"&DELETE the selected file"_qs, this);
    cmdDelete->setObjectName(u"cmdDelete"_qs);
    cmdExit = new QPushButton(u"&Exit"_qs, this);
    cmdExit->setObjectName(u"cmdExit"_qs);

    auto *buttons = new QHBoxLayout;
    buttons->addWidget(cmdDelete);
    buttons->addStretch();
    buttons->addWidget(cmdExit);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(labHeading);
    layout->addWidget(optFiles);
    layout->addWidget(labShown);
    layout->addWidget(lstFileContents, 1);
    layout->addLayout(buttons);

    connect(m_choices, &QButtonGroup::idClicked, this, &frmViewFiles::optFiles_Click);
    connect(cmdDelete, &QPushButton::clicked, this, &frmViewFiles::cmdDelete_Click);
    connect(cmdExit, &QPushButton::clicked, this, &frmViewFiles::cmdExit_Click);
    // Esc leaves the viewer as Exit does.
    auto *escape = new QShortcut(QKeySequence(Qt::Key_Escape), this);
    connect(escape, &QShortcut::activated, this, &frmViewFiles::cmdExit_Click);

    Form_Load();
    // The choices are made after the other controls; keep the tab order
    // that of the layout.
    QWidget *previous = m_choices->button(8);
    for (QWidget *next : { static_cast<QWidget *>(lstFileContents),
             static_cast<QWidget *>(cmdDelete), static_cast<QWidget *>(cmdExit) }) {
        setTabOrder(previous, next);
        previous = next;
    }
    lstFileContents->setMinimumHeight(
        lstFileContents->fontMetrics().lineSpacing() * 4 + 2 * lstFileContents->frameWidth());
    QtGridFit::keepControlsWhole(*this);
    resize(760, 560);
}

frmViewFiles *frmViewFiles::open(ProgramState &state, QWidget *parent)
{
    if (!s_instance) {
        s_instance = new frmViewFiles(state, parent);
        s_instance->setAttribute(Qt::WA_DeleteOnClose);
    }
    s_instance->show();
    s_instance->raise();
    s_instance->activateWindow();
    return s_instance;
}

frmViewFiles *frmViewFiles::openFile(
    ProgramState &state, const QString &relativePath, QWidget *parent)
{
    frmViewFiles *viewer = open(state, parent);
    viewer->showGivenFile(relativePath);
    return viewer;
}

void frmViewFiles::showGivenFile(const QString &relativePath)
{
    TopLevel::run(m_state, [&] {
        // No choice of the list is the file shown now.
        m_choices->setExclusive(false);
        if (QAbstractButton *checked = m_choices->checkedButton())
            checked->setChecked(false);
        m_choices->setExclusive(true);
        lstFileContents->clear();
        m_currentName = relativePath;
        labShown->setText(u"Shown: "_qs + QDir::toNativeSeparators(relativePath));
        labShown->show();
        // A file shown from History is never deleted here: it may be the
        // archived copy that payments can be put back from.
        m_fileExists = false;
        cmdDelete->setEnabled(false);
        if (!TransferFile::exists(m_state.pathOf(m_currentName))) {
            m_state.prompter().notice(kMissing, kNoticeTitle);
            return;
        }
        showFile();
    });
}

QStringList frmViewFiles::fileNames() const
{
    return { m_state.SetupUploadName, m_state.TenantUploadName, m_state.OwnerUploadName,
        m_state.VendorUploadName, m_state.PaymentDownloadName,
        u"DX_Quenta_PaymentFile_LastDownload.txt"_qs, m_state.DisbursementUploadName,
        u"DX_Quenta_Distribution_LastUpload.txt"_qs, u"DX_Quenta_Distribution_Response.txt"_qs };
}

void frmViewFiles::Form_Load()
{
    labHeading->setText(
        u"These files are the files that are transferred to and from the payment processor."_qs
        + u" They are for viewing only, but if there is a problem within a file,"_qs
        + u" you can delete that file if instructed by a technician."_qs);
    const Choice choices[9] = {
        { m_state.SetupUploadName,
            u"This is the SETUP data (all Dwellix info) uploaded to the payment processor."_qs },
        { m_state.TenantUploadName,
            u"These are the Remitra TENANTS uploaded to the payment processor."_qs },
        { m_state.OwnerUploadName,
            u"These are the Remitra OWNERS uploaded to the payment processor."_qs },
        { m_state.VendorUploadName,
            u"These are the Remitra VENDORS uploaded to the payment processor."_qs },
        { m_state.PaymentDownloadName,
            u"These are the CURRENT (not yet processed )TENANT PAYMENTS downloaded from the payment processor."_qs },
        { u"DX_Quenta_PaymentFile_LastDownload"_qs,
            u"These are the PREVIOUS TENANT PAYMENTS downloaded from the payment processor."_qs },
        { m_state.DisbursementUploadName,
            u"These are the OWNER and VENDOR PAYMENTS uploaded to the payment processor."_qs },
        { u"DX_Quenta_Distribution_LastUpload"_qs,
            u"These are the PREVIOUS OWNER and VENDOR PAYMENTS uploaded to the payment processor."_qs },
        { u"DX_Quenta_Distribution_Response"_qs,
            u"These are the responses for the OWNER and VENDOR PAYMENTS returned from the payment processor."_qs },
    };
    for (int i = 0; i < 9; ++i) {
        // "&" in a name would otherwise become a mnemonic.
        QString text = choices[i].shown + u" - "_qs + choices[i].description;
        auto *option = new QRadioButton(text.replace(u'&', u"&&"_qs), optFiles);
        option->setObjectName(u"optFiles_%1"_qs.arg(i));
        optFiles->layout()->addWidget(option);
        m_choices->addButton(option, i);
    }
}

void frmViewFiles::optFiles_Click(int index)
{
    TopLevel::run(m_state, [&] {
        lstFileContents->clear();
        labShown->hide();
        cmdDelete->setEnabled(true);
        if (index >= 0 && index < 9) {
            m_currentName = fileNames().at(index);
            checkFile();
            if (m_fileExists)
                showFile();
        } else if (!m_currentName.isEmpty()) {
            // No choice: the current file again, without checking it.
            showFile();
        }
    });
}

void frmViewFiles::checkFile()
{
    m_fileExists = TransferFile::exists(m_state.pathOf(m_currentName));
    if (!m_fileExists)
        m_state.prompter().notice(kMissing, kNoticeTitle);
}

void frmViewFiles::showFile()
{
    // Read in one piece; a file that vanished since the check raises the
    // file-not-found error.
    const QString text = TransferFile::readWhole(m_state.pathOf(m_currentName));
    if (text.isEmpty()) {
        m_state.prompter().notice(kEmpty, kEmptyTitle);
        return;
    }
    // Split at line feeds only: a carriage return stays at the end of its
    // line, and a final line feed gives a last, empty entry.
    lstFileContents->addItems(text.split(u'\n'));
}

QString frmViewFiles::moneyWarning() const
{
    if (m_currentName == m_state.PaymentDownloadName) {
        return m_currentName
            + u" holds rent payments that Quenta Payment Services has already handed over and "
              "that are not posted to the Dwellix ledgers yet. Quenta Payment Services will not "
              "send them again: once the file is deleted, they can only be posted by hand (a "
              "copy stays in the \"archive\" folder).\r\rDo you still want to delete it?"_qs;
    }
    const bool distributionFile = m_currentName == m_state.DisbursementUploadName
        || m_currentName == DistributionFile::ResponseName;
    if (distributionFile && UnfinishedRun::present(m_state)) {
        return m_currentName
            + u" belongs to a payment distribution that is not finished: Quenta Payment "
              "Services may have paid some of its checks, and Remitra has not posted them yet "
              "or has no answer for them. Remitra keeps its own record of the distribution, "
              "so it will still post them once, but this file is the copy you and support can "
              "look at.\r\rDo you still want to delete it?"_qs;
    }
    return {};
}

void frmViewFiles::cmdDelete_Click()
{
    TopLevel::run(m_state, [&] {
        if (!m_fileExists)
            return;
        const QString warning = moneyWarning();
        if (!warning.isEmpty()) {
            const Prompter::Answer keep = m_state.prompter().ask(warning, kDeleteTitle);
            m_state.MsgAnswer = keep == Prompter::Answer::Yes ? u"6"_qs : u"7"_qs;
            if (keep != Prompter::Answer::Yes)
                return;
        }
        const Prompter::Answer answer = m_state.prompter().ask(
            u"Are you SURE you want to delete the file: "_qs + m_currentName + u"?"_qs,
            kDeleteTitle);
        m_state.MsgAnswer = answer == Prompter::Answer::Yes ? u"6"_qs : u"7"_qs;
        if (answer != Prompter::Answer::Yes)
            return;
        if (!TransferFile::remove(m_state.pathOf(m_currentName)))
            throw RuntimeError::permissionDenied();
        // The file is gone: a second click has nothing left to delete. The
        // list keeps its lines until another choice is made.
        m_fileExists = false;
        m_state.prompter().notice(u"File Deleted!"_qs, kDeleteTitle);
    });
}

void frmViewFiles::cmdExit_Click()
{
    close();
}
