#include "rent/frmDownload.h"

#include "app/ProgramState.h"
#include "app/QtCentre.h"
#include "app/QtGridFit.h"
#include "app/TopLevel.h"
#include "core/Prompter.h"
#include "core/VbText.h"
#include "hostdb/RentLookup.h"
#include "rent/DownloadPrintLayout.h"
#include "rent/DownloadPrinter.h"
#include "rent/DuplicateGuard.h"
#include "rent/PaymentFile.h"
#include "rent/PaymentTableModel.h"
#include "rent/RentPaymentDelegate.h"
#include "rent/UpdateLedgers.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QFocusEvent>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPrintDialog>
#include <QPrinter>
#include <QPushButton>
#include <QRadioButton>
#include <QTableView>
#include <QVBoxLayout>

#include <algorithm>

namespace {

const QString kCountLabel = u"Number of Remitra Payments:"_qs;
const QString kDeposits
    = u"Below are the Tenant deposits that have been retreived from the Payment Processor, but "
      "have not been transferred into the Dwellix Program. Press 'Update Dwellix Ledgers' to enter "
      "these transactions into the Dwellix."_qs;
const QString kDeleteNote
    = u"Note: to delete a single row, press the 'record selector' button to the left of the row, "
      "then press the delete key ON YOUR KEYBOARD. To delete ALL the rows shown, click on the "
      "'Delete ALL' button. You should not ever delete anything unless you are absolutely sure "
      "that you will post it manually later, or that it is a mistaken deposit and should not be "
      "posted. These transactions will be erased after you update the Dwellix Ledgers. "_qs;
const QString kDeleteAllQuestion
    = u"Are you SURE you want to permanently erase all of the Remitra downloads? These downloads "
      "have been processed, but have not been posted to the Dwellix. Be sure to print the screen "
      "before deleting."_qs;
const QString kLeaveQuestion
    = u"You are trying to leave without updating your TENANT LEDGERS. Are you SURE you want to "
      "exit WITHOUT POSTING these transactions?"_qs;

// The message box result kept in MsgAnswer: "6" Yes, "7" No.
QString answerText(Prompter::Answer answer)
{
    return answer == Prompter::Answer::Yes ? u"6"_qs : u"7"_qs;
}

} // namespace

frmDownload::frmDownload(ProgramState &state, QWidget *parent)
    : QDialog(parent)
    , m_state(state)
{
    m_choosePrinter = [this](QPrinter &printer) {
        QPrintDialog dialog(&printer, this);
        return dialog.exec() == QDialog::Accepted;
    };
    buildUi();
    Form_Load();
}

frmDownload::~frmDownload() = default;

void frmDownload::buildUi()
{
    setObjectName(u"frmDownload"_qs);
    setWindowTitle(u"Remitra Payment Download"_qs);
    setModal(true);

    labDeposits = new QLabel(kDeposits, this);
    labDeposits->setObjectName(u"labDeposits"_qs);
    labDeposits->setWordWrap(true);

    m_model = new PaymentTableModel(this);
    gridACHDownload = new QTableView(this);
    gridACHDownload->setObjectName(u"gridACHDownload"_qs);
    gridACHDownload->setAccessibleName(u"Remitra payments"_qs);
    gridACHDownload->setModel(m_model);
    gridACHDownload->setItemDelegate(new RentPaymentDelegate(gridACHDownload));
    gridACHDownload->setEditTriggers(QAbstractItemView::NoEditTriggers);
    gridACHDownload->setSelectionMode(QAbstractItemView::ExtendedSelection);
    gridACHDownload->setSelectionBehavior(QAbstractItemView::SelectItems);
    gridACHDownload->verticalHeader()->setSectionsClickable(true);
    gridACHDownload->horizontalHeader()->setStretchLastSection(true);
    gridACHDownload->setWordWrap(false);
    gridACHDownload->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 8);
    gridACHDownload->installEventFilter(this);
    gridACHDownload->setMinimumHeight(QtGridFit::heightForRows(*gridACHDownload, 4));
    QtGridFit::showClippedText(*gridACHDownload);

    labRemitraPayments = new QLabel(kCountLabel, this);
    labRemitraPayments->setObjectName(u"labRemitraPayments"_qs);
    labTotal = new QLabel(u"Total of Remitra Payments:"_qs, this);
    labTotal->setObjectName(u"labTotal"_qs);
    labTransTotal = new QLabel(this);
    labTransTotal->setObjectName(u"labTransTotal"_qs);
    labTotal->setBuddy(labTransTotal);

    labDelete = new QLabel(kDeleteNote, this);
    labDelete->setObjectName(u"labDelete"_qs);
    labDelete->setWordWrap(true);

    auto *fraPostMgmtFees = new QGroupBox(u"Post Management Fees"_qs, this);
    fraPostMgmtFees->setObjectName(u"fraPostMgmtFees"_qs);
    chkPostMgmtFees = new QCheckBox(
        u"Post a managment fee on each rent income transaction."_qs, fraPostMgmtFees);
    chkPostMgmtFees->setObjectName(u"chkPostMgmtFees"_qs);
    (new QVBoxLayout(fraPostMgmtFees))->addWidget(chkPostMgmtFees);

    auto *frmCreateDeposit = new QGroupBox(u"Create Deposit:"_qs, this);
    frmCreateDeposit->setObjectName(u"frmCreateDeposit"_qs);
    chkCreateDeposit
        = new QCheckBox(u"Yes, create a deposit using this deposit number:"_qs, frmCreateDeposit);
    chkCreateDeposit->setObjectName(u"chkCreateDeposit"_qs);
    txtCreateDeposit = new QLineEdit(frmCreateDeposit);
    txtCreateDeposit->setObjectName(u"txtCreateDeposit"_qs);
    txtCreateDeposit->setAccessibleName(u"Deposit number"_qs);
    txtCreateDeposit->installEventFilter(this);
    auto *depositRow = new QHBoxLayout(frmCreateDeposit);
    depositRow->addWidget(chkCreateDeposit);
    depositRow->addWidget(txtCreateDeposit);

    auto *fraRemark = new QGroupBox(u"Transaction Remark Choices:"_qs, this);
    fraRemark->setObjectName(u"optRemark"_qs);
    fraRemark->setAccessibleName(u"Transaction Remark Choices"_qs);
    optRemark = new QButtonGroup(this);
    const QString choices[] = { u"Use standard 'default' REMARK entered under 'Preferences'."_qs,
        u"Use the 'Method' column entry for the Remark."_qs, u"Use this Remark: "_qs };
    auto *remarkLayout = new QVBoxLayout(fraRemark);
    QRadioButton *ownRemark = nullptr;
    for (int i = 0; i < 3; ++i) {
        auto *option = new QRadioButton(choices[i], fraRemark);
        option->setObjectName(u"optRemark"_qs + QString::number(i));
        optRemark->addButton(option, i);
        if (i < 2)
            remarkLayout->addWidget(option);
        else
            ownRemark = option;
    }
    txtRemark = new QLineEdit(fraRemark);
    txtRemark->setObjectName(u"txtRemark"_qs);
    txtRemark->setAccessibleName(u"Remark"_qs);
    txtRemark->setEnabled(false);
    auto *ownRow = new QHBoxLayout;
    ownRow->addWidget(ownRemark);
    ownRow->addWidget(txtRemark, 1);
    remarkLayout->addLayout(ownRow);
    connect(optRemark, &QButtonGroup::idClicked, this, [this] { optRemark_Click(); });

    cmdUpdate = new QPushButton(u"Update Dwellix Ledgers NOW"_qs, this);
    cmdUpdate->setObjectName(u"cmdUpdate"_qs);
    cmdDeleteAll = new QPushButton(u"&Delete ALL"_qs, this);
    cmdDeleteAll->setObjectName(u"cmdDeleteAll"_qs);
    cmdPrintScreen = new QPushButton(u"&Print Screen"_qs, this);
    cmdPrintScreen->setObjectName(u"cmdPrintScreen"_qs);
    cmdExit = new QPushButton(u"&Exit"_qs, this);
    cmdExit->setObjectName(u"cmdExit"_qs);
    for (QPushButton *b : { cmdUpdate, cmdDeleteAll, cmdPrintScreen, cmdExit })
        b->setAutoDefault(false);
    connect(cmdUpdate, &QPushButton::clicked, this, &frmDownload::cmdUpdate_Click);
    connect(cmdDeleteAll, &QPushButton::clicked, this, &frmDownload::cmdDeleteAll_Click);
    connect(cmdPrintScreen, &QPushButton::clicked, this, &frmDownload::cmdPrintScreen_Click);
    connect(cmdExit, &QPushButton::clicked, this, &frmDownload::cmdExit_Click);

    auto *totals = new QHBoxLayout;
    totals->addWidget(labRemitraPayments);
    totals->addStretch(1);
    totals->addWidget(labTotal);
    totals->addWidget(labTransTotal);

    auto *options = new QHBoxLayout;
    auto *left = new QVBoxLayout;
    left->addWidget(fraPostMgmtFees);
    left->addWidget(frmCreateDeposit);
    options->addLayout(left, 1);
    options->addWidget(fraRemark, 1);

    auto *buttons = new QHBoxLayout;
    buttons->addWidget(cmdUpdate);
    buttons->addWidget(cmdDeleteAll);
    buttons->addWidget(cmdPrintScreen);
    buttons->addStretch(1);
    buttons->addWidget(cmdExit);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(labDeposits);
    layout->addWidget(gridACHDownload, 1);
    layout->addLayout(totals);
    layout->addWidget(labDelete);
    layout->addLayout(options);
    layout->addLayout(buttons);

    // Tab order follows the layout, top to bottom, left to right.
    QWidget *order[] = { gridACHDownload, chkPostMgmtFees, chkCreateDeposit, txtCreateDeposit,
        optRemark->button(0), optRemark->button(1), optRemark->button(2), txtRemark, cmdUpdate,
        cmdDeleteAll, cmdPrintScreen, cmdExit };
    for (std::size_t i = 1; i < std::size(order); ++i)
        setTabOrder(order[i - 1], order[i]);

    QtGridFit::keepControlsWhole(*this);
    resize(1100, 720);
    centreOnScreen(*this);
}

int frmDownload::rowCount() const
{
    return m_model->rowCount();
}

void frmDownload::showCount(const QString &text)
{
    labRemitraPayments->setText(text);
}

void frmDownload::disableCommands()
{
    cmdUpdate->setEnabled(false);
    cmdDeleteAll->setEnabled(false);
    cmdPrintScreen->setEnabled(false);
}

void frmDownload::Form_Load()
{
    // A deposit is proposed by default.
    chkCreateDeposit->setChecked(true);
    PaymentFile::LoadResult loaded = PaymentFile::load(m_state);
    switch (loaded.status) {
    case PaymentFile::LoadStatus::NoPayments:
    case PaymentFile::LoadStatus::FileMissing:
        disableCommands();
        return;
    case PaymentFile::LoadStatus::Malformed:
        return;
    case PaymentFile::LoadStatus::Loaded:
    case PaymentFile::LoadStatus::Failed:
        break;
    }
    if (loaded.status == PaymentFile::LoadStatus::Failed && loaded.rows.empty())
        return;
    m_fileSha = loaded.fileSha256;
    m_model->setRows(std::move(loaded.rows));
    QtGridFit::fitColumns(*gridACHDownload, 500);
    showCount(kCountLabel + u' ' + QString::number(rowCount()));
    m_total = loaded.total;
    if (m_total)
        labTransTotal->setText(m_total->toDollars());
}

void frmDownload::TransactionTotal()
{
    m_total.reset();
    m_total = PaymentFile::TransactionTotal(m_model->rows());
    labTransTotal->setText(m_total->toDollars());
}

PostingChoices frmDownload::choices() const
{
    PostingChoices c;
    c.postMgmtFees = chkPostMgmtFees->isChecked();
    c.createDeposit = chkCreateDeposit->isChecked();
    c.depositNumber = txtCreateDeposit->text();
    c.remark = optRemark->checkedId();
    c.remarkText = txtRemark->text();
    return c;
}

void frmDownload::cmdUpdate_Click()
{
    TopLevel::run(m_state, [this] {
        if (UpdateLedgers::run(m_state, m_model->rows(), choices(), m_fileSha)) {
            cmdUpdate->setEnabled(false);
            cmdExit->setFocus();
            m_posted = true;
            accept();
            return;
        }
        // The file and the rows stay; the rows a stop left in the ledger now
        // show as already posted.
        {
            RentLookup::ReadScope snapshot(m_state.db());
            RentLookup lookup(m_state.db());
            PaymentFile::markPosted(lookup, m_model->rows());
        }
        PaymentFile::markRecorded(m_state, m_fileSha, m_model->rows());
        DuplicateGuard::mark(m_state, m_fileSha, m_model->rows());
        m_model->refresh();
    });
}

void frmDownload::cmdDeleteAll_Click()
{
    TopLevel::run(m_state, [this] {
        const Prompter::Answer answer = m_state.prompter().ask(kDeleteAllQuestion, u"Remitra"_qs);
        m_state.MsgAnswer = answerText(answer);
        if (answer != Prompter::Answer::Yes)
            return;
        try {
            PaymentFile::moveAside(m_state);
        } catch (const RuntimeError &error) {
            m_state.prompter().notice(error.description(), u"Remitra"_qs);
            return;
        }
        m_model->clear();
        showCount(kCountLabel + u" 0"_qs);
        TransactionTotal();
        // The file is gone: nothing is left to post, delete or print.
        disableCommands();
    });
}

void frmDownload::gridACHDownload_DeleteRows()
{
    const QModelIndexList selected = gridACHDownload->selectionModel()->selectedRows();
    if (selected.isEmpty())
        return;
    TopLevel::run(m_state, [this, selected] {
        QList<int> rows;
        for (const QModelIndex &index : selected)
            rows << index.row();
        std::sort(rows.begin(), rows.end(), std::greater<int>());
        for (int row : rows)
            m_model->removeRow(row);
        gridACHDownload->clearSelection();
        if (rowCount() > 0) {
            showCount(kCountLabel + u' ' + QString::number(rowCount()));
            TransactionTotal();
            return;
        }
        showCount(kCountLabel + u" 0"_qs);
        TransactionTotal();
        PaymentFile::moveAside(m_state);
        disableCommands();
    });
}

void frmDownload::optRemark_Click()
{
    txtRemark->setEnabled(optRemark->checkedId() == PostingChoices::OwnRemark);
}

void frmDownload::txtCreateDeposit_LostFocus()
{
    const QString text = VbText::Trim(txtCreateDeposit->text());
    if (text.isEmpty() || VbText::IsNumeric(text))
        return;
    m_checkingDeposit = true;
    m_state.prompter().notice(
        u"Please enter a number only for the Deposit Number"_qs, u"Create Deposit"_qs);
    txtCreateDeposit->setFocus();
    m_checkingDeposit = false;
}

void frmDownload::cmdPrintScreen_Click()
{
    TopLevel::run(m_state, [this] { PrintScreen(); });
}

void frmDownload::PrintScreen()
{
    QPrinter printer(QPrinter::HighResolution);
    printer.setPageOrientation(QPageLayout::Landscape);
    printer.setDocName(DownloadPrintLayout::Title);
    if (!m_choosePrinter || !m_choosePrinter(printer))
        return;
    const bool printed = DownloadPrinter::print(printer,
        DownloadPrintLayout::heading(QDateTime::currentDateTime()),
        DownloadPrintLayout::body(m_model->rows()), DownloadPrintLayout::footer(m_total));
    if (!printed) {
        m_state.prompter().notice(u"The printer could not be started."_qs, u"Remitra"_qs);
        return;
    }
    m_state.prompter().notice(u"Screen Printed"_qs, u"Remitra"_qs);
}

void frmDownload::cmdExit_Click()
{
    close();
}

bool frmDownload::Form_Unload()
{
    if (m_posted || rowCount() == 0)
        return true;
    const Prompter::Answer answer
        = m_state.prompter().ask(kLeaveQuestion, u"Remitra Transaction Posting"_qs);
    m_state.MsgAnswer = answerText(answer);
    return answer == Prompter::Answer::Yes;
}

void frmDownload::reject()
{
    if (Form_Unload())
        QDialog::reject();
}

bool frmDownload::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == gridACHDownload && event->type() == QEvent::KeyPress) {
        const auto *key = static_cast<QKeyEvent *>(event);
        if (key->key() == Qt::Key_Delete && key->modifiers() == Qt::NoModifier) {
            gridACHDownload_DeleteRows();
            return true;
        }
        // Shift+Space selects the current row, as its record selector does.
        if (key->key() == Qt::Key_Space && key->modifiers() == Qt::ShiftModifier) {
            const QModelIndex current = gridACHDownload->currentIndex();
            if (current.isValid())
                gridACHDownload->selectRow(current.row());
            return true;
        }
    }
    if (watched == txtCreateDeposit && event->type() == QEvent::FocusOut && !m_checkingDeposit) {
        const Qt::FocusReason reason = static_cast<QFocusEvent *>(event)->reason();
        // Leaving the box for another control of this screen, not another window.
        if (reason != Qt::ActiveWindowFocusReason && reason != Qt::PopupFocusReason)
            txtCreateDeposit_LostFocus();
    }
    return QDialog::eventFilter(watched, event);
}
