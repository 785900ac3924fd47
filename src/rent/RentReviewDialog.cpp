#include "rent/RentReviewDialog.h"

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

// The message box result kept in state.msgAnswer: "6" Yes, "7" No.
QString answerText(Prompter::Answer answer)
{
    return answer == Prompter::Answer::Yes ? u"6"_qs : u"7"_qs;
}

} // namespace

RentReviewDialog::RentReviewDialog(ProgramState &state, QWidget *parent)
    : QDialog(parent)
    , m_state(state)
{
    m_choosePrinter = [this](QPrinter &printer) {
        QPrintDialog dialog(&printer, this);
        return dialog.exec() == QDialog::Accepted;
    };
    buildUi();
    load();
}

RentReviewDialog::~RentReviewDialog() = default;

void RentReviewDialog::buildUi()
{
    setObjectName(u"frmDownload"_qs);
    setWindowTitle(u"Remitra Payment Download"_qs);
    setModal(true);

    m_labDeposits = new QLabel(kDeposits, this);
    m_labDeposits->setObjectName(u"labDeposits"_qs);
    m_labDeposits->setWordWrap(true);

    m_model = new PaymentTableModel(this);
    m_gridACHDownload = new QTableView(this);
    m_gridACHDownload->setObjectName(u"gridACHDownload"_qs);
    m_gridACHDownload->setAccessibleName(u"Remitra payments"_qs);
    m_gridACHDownload->setModel(m_model);
    m_gridACHDownload->setItemDelegate(new RentPaymentDelegate(m_gridACHDownload));
    m_gridACHDownload->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_gridACHDownload->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_gridACHDownload->setSelectionBehavior(QAbstractItemView::SelectItems);
    m_gridACHDownload->verticalHeader()->setSectionsClickable(true);
    m_gridACHDownload->horizontalHeader()->setStretchLastSection(true);
    m_gridACHDownload->setWordWrap(false);
    m_gridACHDownload->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 8);
    m_gridACHDownload->installEventFilter(this);
    m_gridACHDownload->setMinimumHeight(QtGridFit::heightForRows(*m_gridACHDownload, 4));
    QtGridFit::showClippedText(*m_gridACHDownload);

    m_labRemitraPayments = new QLabel(kCountLabel, this);
    m_labRemitraPayments->setObjectName(u"labRemitraPayments"_qs);
    m_labTotal = new QLabel(u"Total of Remitra Payments:"_qs, this);
    m_labTotal->setObjectName(u"labTotal"_qs);
    m_labTransTotal = new QLabel(this);
    m_labTransTotal->setObjectName(u"labTransTotal"_qs);
    m_labTotal->setBuddy(m_labTransTotal);

    m_labDelete = new QLabel(kDeleteNote, this);
    m_labDelete->setObjectName(u"labDelete"_qs);
    m_labDelete->setWordWrap(true);

    auto *fraPostMgmtFees = new QGroupBox(u"Post Management Fees"_qs, this);
    fraPostMgmtFees->setObjectName(u"fraPostMgmtFees"_qs);
    m_chkPostMgmtFees = new QCheckBox(
        u"Post a managment fee on each rent income transaction."_qs, fraPostMgmtFees);
    m_chkPostMgmtFees->setObjectName(u"chkPostMgmtFees"_qs);
    (new QVBoxLayout(fraPostMgmtFees))->addWidget(m_chkPostMgmtFees);

    auto *depositFrame = new QGroupBox(u"Create Deposit:"_qs, this);
    depositFrame->setObjectName(u"frmCreateDeposit"_qs);
    m_chkCreateDeposit
        = new QCheckBox(u"Yes, create a deposit using this deposit number:"_qs, depositFrame);
    m_chkCreateDeposit->setObjectName(u"chkCreateDeposit"_qs);
    m_txtCreateDeposit = new QLineEdit(depositFrame);
    m_txtCreateDeposit->setObjectName(u"txtCreateDeposit"_qs);
    m_txtCreateDeposit->setAccessibleName(u"Deposit number"_qs);
    m_txtCreateDeposit->installEventFilter(this);
    auto *depositRow = new QHBoxLayout(depositFrame);
    depositRow->addWidget(m_chkCreateDeposit);
    depositRow->addWidget(m_txtCreateDeposit);

    auto *fraRemark = new QGroupBox(u"Transaction Remark Choices:"_qs, this);
    fraRemark->setObjectName(u"optRemark"_qs);
    fraRemark->setAccessibleName(u"Transaction Remark Choices"_qs);
    m_optRemark = new QButtonGroup(this);
    const QString choices[] = { u"Use standard 'default' REMARK entered under 'Preferences'."_qs,
        u"Use the 'Method' column entry for the Remark."_qs, u"Use this Remark: "_qs };
    auto *remarkLayout = new QVBoxLayout(fraRemark);
    QRadioButton *ownRemark = nullptr;
    for (int i = 0; i < 3; ++i) {
        auto *option = new QRadioButton(choices[i], fraRemark);
        option->setObjectName(u"optRemark"_qs + QString::number(i));
        m_optRemark->addButton(option, i);
        if (i < 2)
            remarkLayout->addWidget(option);
        else
            ownRemark = option;
    }
    m_txtRemark = new QLineEdit(fraRemark);
    m_txtRemark->setObjectName(u"txtRemark"_qs);
    m_txtRemark->setAccessibleName(u"Remark"_qs);
    m_txtRemark->setEnabled(false);
    auto *ownRow = new QHBoxLayout;
    ownRow->addWidget(ownRemark);
    ownRow->addWidget(m_txtRemark, 1);
    remarkLayout->addLayout(ownRow);
    connect(m_optRemark, &QButtonGroup::idClicked, this, [this] { chooseRemark(); });

    m_cmdUpdate = new QPushButton(u"Update Dwellix Ledgers NOW"_qs, this);
    m_cmdUpdate->setObjectName(u"cmdUpdate"_qs);
    m_cmdDeleteAll = new QPushButton(u"&Delete ALL"_qs, this);
    m_cmdDeleteAll->setObjectName(u"cmdDeleteAll"_qs);
    m_cmdPrintScreen = new QPushButton(u"&Print Screen"_qs, this);
    m_cmdPrintScreen->setObjectName(u"cmdPrintScreen"_qs);
    m_cmdExit = new QPushButton(u"&Exit"_qs, this);
    m_cmdExit->setObjectName(u"cmdExit"_qs);
    for (QPushButton *b : { m_cmdUpdate, m_cmdDeleteAll, m_cmdPrintScreen, m_cmdExit })
        b->setAutoDefault(false);
    connect(m_cmdUpdate, &QPushButton::clicked, this, &RentReviewDialog::postToLedgers);
    connect(m_cmdDeleteAll, &QPushButton::clicked, this, &RentReviewDialog::deleteAllRows);
    connect(m_cmdPrintScreen, &QPushButton::clicked, this, &RentReviewDialog::printScreen);
    connect(m_cmdExit, &QPushButton::clicked, this, &RentReviewDialog::exitScreen);

    auto *totals = new QHBoxLayout;
    totals->addWidget(m_labRemitraPayments);
    totals->addStretch(1);
    totals->addWidget(m_labTotal);
    totals->addWidget(m_labTransTotal);

    auto *options = new QHBoxLayout;
    auto *left = new QVBoxLayout;
    left->addWidget(fraPostMgmtFees);
    left->addWidget(depositFrame);
    options->addLayout(left, 1);
    options->addWidget(fraRemark, 1);

    auto *buttons = new QHBoxLayout;
    buttons->addWidget(m_cmdUpdate);
    buttons->addWidget(m_cmdDeleteAll);
    buttons->addWidget(m_cmdPrintScreen);
    buttons->addStretch(1);
    buttons->addWidget(m_cmdExit);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_labDeposits);
    layout->addWidget(m_gridACHDownload, 1);
    layout->addLayout(totals);
    layout->addWidget(m_labDelete);
    layout->addLayout(options);
    layout->addLayout(buttons);

    // Tab order follows the layout, top to bottom, left to right.
    QWidget *order[] = { m_gridACHDownload, m_chkPostMgmtFees, m_chkCreateDeposit,
        m_txtCreateDeposit, m_optRemark->button(0), m_optRemark->button(1), m_optRemark->button(2),
        m_txtRemark, m_cmdUpdate, m_cmdDeleteAll, m_cmdPrintScreen, m_cmdExit };
    for (std::size_t i = 1; i < std::size(order); ++i)
        setTabOrder(order[i - 1], order[i]);

    QtGridFit::keepControlsWhole(*this);
    resize(1100, 720);
    centreOnScreen(*this);
}

int RentReviewDialog::rowCount() const
{
    return m_model->rowCount();
}

void RentReviewDialog::showCount(const QString &text)
{
    m_labRemitraPayments->setText(text);
}

void RentReviewDialog::disableCommands()
{
    m_cmdUpdate->setEnabled(false);
    m_cmdDeleteAll->setEnabled(false);
    m_cmdPrintScreen->setEnabled(false);
}

void RentReviewDialog::load()
{
    // A deposit is proposed by default.
    m_chkCreateDeposit->setChecked(true);
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
    QtGridFit::fitColumns(*m_gridACHDownload, 500);
    showCount(kCountLabel + u' ' + QString::number(rowCount()));
    m_total = loaded.total;
    if (m_total)
        m_labTransTotal->setText(m_total->toDollars());
}

void RentReviewDialog::showTransactionTotal()
{
    m_total.reset();
    m_total = PaymentFile::transactionTotal(m_model->rows());
    m_labTransTotal->setText(m_total->toDollars());
}

PostingChoices RentReviewDialog::choices() const
{
    PostingChoices c;
    c.postMgmtFees = m_chkPostMgmtFees->isChecked();
    c.createDeposit = m_chkCreateDeposit->isChecked();
    c.depositNumber = m_txtCreateDeposit->text();
    c.remark = m_optRemark->checkedId();
    c.remarkText = m_txtRemark->text();
    return c;
}

void RentReviewDialog::postToLedgers()
{
    TopLevel::run(m_state, [this] {
        if (UpdateLedgers::run(m_state, m_model->rows(), choices(), m_fileSha)) {
            m_cmdUpdate->setEnabled(false);
            m_cmdExit->setFocus();
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

void RentReviewDialog::deleteAllRows()
{
    TopLevel::run(m_state, [this] {
        const Prompter::Answer answer = m_state.prompter().ask(kDeleteAllQuestion, u"Remitra"_qs);
        m_state.msgAnswer = answerText(answer);
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
        showTransactionTotal();
        // The file is gone: nothing is left to post, delete or print.
        disableCommands();
    });
}

void RentReviewDialog::deleteSelectedRows()
{
    const QModelIndexList selected = m_gridACHDownload->selectionModel()->selectedRows();
    if (selected.isEmpty())
        return;
    TopLevel::run(m_state, [this, selected] {
        QList<int> rows;
        for (const QModelIndex &index : selected)
            rows << index.row();
        std::sort(rows.begin(), rows.end(), std::greater<int>());
        for (int row : rows)
            m_model->removeRow(row);
        m_gridACHDownload->clearSelection();
        if (rowCount() > 0) {
            showCount(kCountLabel + u' ' + QString::number(rowCount()));
            showTransactionTotal();
            return;
        }
        showCount(kCountLabel + u" 0"_qs);
        showTransactionTotal();
        PaymentFile::moveAside(m_state);
        disableCommands();
    });
}

void RentReviewDialog::chooseRemark()
{
    m_txtRemark->setEnabled(m_optRemark->checkedId() == PostingChoices::OwnRemark);
}

void RentReviewDialog::checkDepositNumber()
{
    const QString text = VbText::trim(m_txtCreateDeposit->text());
    if (text.isEmpty() || VbText::isNumeric(text))
        return;
    m_checkingDeposit = true;
    m_state.prompter().notice(
        u"Please enter a number only for the Deposit Number"_qs, u"Create Deposit"_qs);
    m_txtCreateDeposit->setFocus();
    m_checkingDeposit = false;
}

void RentReviewDialog::printScreen()
{
    TopLevel::run(m_state, [this] { printRows(); });
}

void RentReviewDialog::printRows()
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

void RentReviewDialog::exitScreen()
{
    close();
}

bool RentReviewDialog::unload()
{
    if (m_posted || rowCount() == 0)
        return true;
    const Prompter::Answer answer
        = m_state.prompter().ask(kLeaveQuestion, u"Remitra Transaction Posting"_qs);
    m_state.msgAnswer = answerText(answer);
    return answer == Prompter::Answer::Yes;
}

void RentReviewDialog::reject()
{
    if (unload())
        QDialog::reject();
}

bool RentReviewDialog::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_gridACHDownload && event->type() == QEvent::KeyPress) {
        const auto *key = static_cast<QKeyEvent *>(event);
        if (key->key() == Qt::Key_Delete && key->modifiers() == Qt::NoModifier) {
            deleteSelectedRows();
            return true;
        }
        // Shift+Space selects the current row, as its record selector does.
        if (key->key() == Qt::Key_Space && key->modifiers() == Qt::ShiftModifier) {
            const QModelIndex current = m_gridACHDownload->currentIndex();
            if (current.isValid())
                m_gridACHDownload->selectRow(current.row());
            return true;
        }
    }
    if (watched == m_txtCreateDeposit && event->type() == QEvent::FocusOut && !m_checkingDeposit) {
        const Qt::FocusReason reason = static_cast<QFocusEvent *>(event)->reason();
        // Leaving the box for another control of this screen, not another window.
        if (reason != Qt::ActiveWindowFocusReason && reason != Qt::PopupFocusReason)
            checkDepositNumber();
    }
    return QDialog::eventFilter(watched, event);
}
