#include "viewer/TransferFileViewer.h"

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

QPointer<TransferFileViewer> TransferFileViewer::s_instance;

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

TransferFileViewer::TransferFileViewer(ProgramState &state, QWidget *parent)
    : QWidget(parent, Qt::Window)
    , m_state(state)
{
    setObjectName(u"frmViewFiles"_qs);
    setWindowTitle(u"Remitra Files"_qs);

    m_labHeading = new QLabel(this);
    m_labHeading->setObjectName(u"labHeading"_qs);
    m_labHeading->setWordWrap(true);

    m_optFiles = new QGroupBox(u"File List:"_qs, this);
    m_optFiles->setObjectName(u"optFiles"_qs);
    m_optFiles->setAccessibleName(u"File List"_qs);
    new QVBoxLayout(m_optFiles);
    m_choices = new QButtonGroup(this);

    m_labShown = new QLabel(this);
    m_labShown->setObjectName(u"labShown"_qs);
    m_labShown->setWordWrap(true);
    m_labShown->hide();

    m_lstFileContents = new QListWidget(this);
    m_lstFileContents->setObjectName(u"lstFileContents"_qs);
    m_lstFileContents->setAccessibleName(u"File contents"_qs);
    m_lstFileContents->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    m_lstFileContents->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);

    m_cmdDelete = new QPushButton(u"&DELETE the selected file"_qs, this);
    m_cmdDelete->setObjectName(u"cmdDelete"_qs);
    m_cmdExit = new QPushButton(u"&Exit"_qs, this);
    m_cmdExit->setObjectName(u"cmdExit"_qs);

    auto *buttons = new QHBoxLayout;
    buttons->addWidget(m_cmdDelete);
    buttons->addStretch();
    buttons->addWidget(m_cmdExit);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_labHeading);
    layout->addWidget(m_optFiles);
    layout->addWidget(m_labShown);
    layout->addWidget(m_lstFileContents, 1);
    layout->addLayout(buttons);

    connect(m_choices, &QButtonGroup::idClicked, this, &TransferFileViewer::chooseFile);
    connect(m_cmdDelete, &QPushButton::clicked, this, &TransferFileViewer::deleteFile);
    connect(m_cmdExit, &QPushButton::clicked, this, &TransferFileViewer::exitScreen);
    // Esc leaves the viewer as Exit does.
    auto *escape = new QShortcut(QKeySequence(Qt::Key_Escape), this);
    connect(escape, &QShortcut::activated, this, &TransferFileViewer::exitScreen);

    load();
    // The choices are made after the other controls; keep the tab order
    // that of the layout.
    QWidget *previous = m_choices->button(8);
    for (QWidget *next : { static_cast<QWidget *>(m_lstFileContents),
             static_cast<QWidget *>(m_cmdDelete), static_cast<QWidget *>(m_cmdExit) }) {
        setTabOrder(previous, next);
        previous = next;
    }
    m_lstFileContents->setMinimumHeight(
        m_lstFileContents->fontMetrics().lineSpacing() * 4 + 2 * m_lstFileContents->frameWidth());
    QtGridFit::keepControlsWhole(*this);
    resize(760, 560);
}

TransferFileViewer *TransferFileViewer::open(ProgramState &state, QWidget *parent)
{
    if (!s_instance) {
        s_instance = new TransferFileViewer(state, parent);
        s_instance->setAttribute(Qt::WA_DeleteOnClose);
    }
    s_instance->show();
    s_instance->raise();
    s_instance->activateWindow();
    return s_instance;
}

TransferFileViewer *TransferFileViewer::openFile(
    ProgramState &state, const QString &relativePath, QWidget *parent)
{
    TransferFileViewer *viewer = open(state, parent);
    viewer->showGivenFile(relativePath);
    return viewer;
}

void TransferFileViewer::showGivenFile(const QString &relativePath)
{
    TopLevel::run(m_state, [&] {
        // No choice of the list is the file shown now.
        m_choices->setExclusive(false);
        if (QAbstractButton *checked = m_choices->checkedButton())
            checked->setChecked(false);
        m_choices->setExclusive(true);
        m_lstFileContents->clear();
        m_currentName = relativePath;
        m_labShown->setText(u"Shown: "_qs + QDir::toNativeSeparators(relativePath));
        m_labShown->show();
        // A file shown from History is never deleted here: it may be the
        // archived copy that payments can be put back from.
        m_fileExists = false;
        m_cmdDelete->setEnabled(false);
        if (!TransferFile::exists(m_state.pathOf(m_currentName))) {
            m_state.prompter().notice(kMissing, kNoticeTitle);
            return;
        }
        showFile();
    });
}

QStringList TransferFileViewer::fileNames() const
{
    return { m_state.files.setupUpload, m_state.files.tenantUpload, m_state.files.ownerUpload,
        m_state.files.vendorUpload, m_state.files.paymentDownload,
        u"DX_Quenta_PaymentFile_LastDownload.txt"_qs, m_state.files.disbursementUpload,
        u"DX_Quenta_Distribution_LastUpload.txt"_qs, u"DX_Quenta_Distribution_Response.txt"_qs };
}

void TransferFileViewer::load()
{
    m_labHeading->setText(
        u"These files are the files that are transferred to and from the payment processor."_qs
        + u" They are for viewing only, but if there is a problem within a file,"_qs
        + u" you can delete that file if instructed by a technician."_qs);
    const Choice choices[9] = {
        { m_state.files.setupUpload,
            u"This is the SETUP data (all Dwellix info) uploaded to the payment processor."_qs },
        { m_state.files.tenantUpload,
            u"These are the Remitra TENANTS uploaded to the payment processor."_qs },
        { m_state.files.ownerUpload,
            u"These are the Remitra OWNERS uploaded to the payment processor."_qs },
        { m_state.files.vendorUpload,
            u"These are the Remitra VENDORS uploaded to the payment processor."_qs },
        { m_state.files.paymentDownload,
            u"These are the CURRENT (not yet processed )TENANT PAYMENTS downloaded from the payment processor."_qs },
        { u"DX_Quenta_PaymentFile_LastDownload"_qs,
            u"These are the PREVIOUS TENANT PAYMENTS downloaded from the payment processor."_qs },
        { m_state.files.disbursementUpload,
            u"These are the OWNER and VENDOR PAYMENTS uploaded to the payment processor."_qs },
        { u"DX_Quenta_Distribution_LastUpload"_qs,
            u"These are the PREVIOUS OWNER and VENDOR PAYMENTS uploaded to the payment processor."_qs },
        { u"DX_Quenta_Distribution_Response"_qs,
            u"These are the responses for the OWNER and VENDOR PAYMENTS returned from the payment processor."_qs },
    };
    for (int i = 0; i < 9; ++i) {
        // "&" in a name would otherwise become a mnemonic.
        QString text = choices[i].shown + u" - "_qs + choices[i].description;
        auto *option = new QRadioButton(text.replace(u'&', u"&&"_qs), m_optFiles);
        option->setObjectName(u"optFiles_%1"_qs.arg(i));
        m_optFiles->layout()->addWidget(option);
        m_choices->addButton(option, i);
    }
}

void TransferFileViewer::chooseFile(int index)
{
    TopLevel::run(m_state, [&] {
        m_lstFileContents->clear();
        m_labShown->hide();
        m_cmdDelete->setEnabled(true);
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

void TransferFileViewer::checkFile()
{
    m_fileExists = TransferFile::exists(m_state.pathOf(m_currentName));
    if (!m_fileExists)
        m_state.prompter().notice(kMissing, kNoticeTitle);
}

void TransferFileViewer::showFile()
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
    m_lstFileContents->addItems(text.split(u'\n'));
}

QString TransferFileViewer::moneyWarning() const
{
    if (m_currentName == m_state.files.paymentDownload) {
        return m_currentName
            + u" holds rent payments that Quenta Payment Services has already handed over and "
              "that are not posted to the Dwellix ledgers yet. Quenta Payment Services will not "
              "send them again: once the file is deleted, they can only be posted by hand (a "
              "copy stays in the \"archive\" folder).\r\rDo you still want to delete it?"_qs;
    }
    const bool distributionFile = m_currentName == m_state.files.disbursementUpload
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

void TransferFileViewer::deleteFile()
{
    TopLevel::run(m_state, [&] {
        if (!m_fileExists)
            return;
        const QString warning = moneyWarning();
        if (!warning.isEmpty()) {
            const Prompter::Answer keep = m_state.prompter().ask(warning, kDeleteTitle);
            m_state.msgAnswer = keep == Prompter::Answer::Yes ? u"6"_qs : u"7"_qs;
            if (keep != Prompter::Answer::Yes)
                return;
        }
        const Prompter::Answer answer = m_state.prompter().ask(
            u"Are you SURE you want to delete the file: "_qs + m_currentName + u"?"_qs,
            kDeleteTitle);
        m_state.msgAnswer = answer == Prompter::Answer::Yes ? u"6"_qs : u"7"_qs;
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

void TransferFileViewer::exitScreen()
{
    close();
}
