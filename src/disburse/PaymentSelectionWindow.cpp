#include "disburse/PaymentSelectionWindow.h"

#include "app/ProgramState.h"
#include "app/QtCentre.h"
#include "app/QtGridFit.h"
#include "app/TopLevel.h"
#include "core/Prompter.h"
#include "disburse/DistributionRun.h"
#include "disburse/LastBatchWindow.h"
#include "disburse/PaymentListDelegate.h"
#include "disburse/PaymentListModel.h"
#include "disburse/UnfinishedRun.h"
#include "hostdb/DisburseList.h"

#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSet>
#include <QTableView>
#include <QVBoxLayout>

PaymentSelectionWindow::PaymentSelectionWindow(ProgramState &state, QWidget *parent)
    : QWidget(parent, Qt::Window)
    , m_state(state)
{
    setObjectName(u"frmMakePayments"_qs);
    setWindowTitle(u"Make Payments"_qs);

    auto *labMakePayments = new QLabel(
        u"The payments that you choose will be transferred to the Remitra system and uploaded to "
        "the proper Owner or Vendor checking account. If the transfer is successful, the checks "
        "will then be removed from the 'Entered Check' file in the Dwellix program."_qs,
        this);
    labMakePayments->setObjectName(u"labMakePayments"_qs);
    labMakePayments->setWordWrap(true);

    auto *labGridSelect = new QLabel(
        u"You must select the items to pay. Choose the 'Select All' button, use 'Ctrl-Click' to "
        "choose multiple items, or 'Shift-Click' to choose a group of items."_qs,
        this);
    labGridSelect->setObjectName(u"labGridSelect"_qs);
    labGridSelect->setWordWrap(true);

    m_model = new PaymentListModel(this);
    m_gridMakePayments = new QTableView(this);
    m_gridMakePayments->setObjectName(u"gridMakePayments"_qs);
    m_gridMakePayments->setAccessibleName(u"Entered checks to pay"_qs);
    m_gridMakePayments->setModel(m_model);
    m_gridMakePayments->setItemDelegate(new PaymentListDelegate(m_gridMakePayments));
    m_gridMakePayments->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_gridMakePayments->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_gridMakePayments->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_gridMakePayments->setColumnHidden(PaymentListModel::IDField, true);
    m_gridMakePayments->verticalHeader()->setVisible(false);
    m_gridMakePayments->horizontalHeader()->setSectionResizeMode(
        PaymentListModel::Remark, QHeaderView::Stretch);
    m_gridMakePayments->setWordWrap(false);
    m_gridMakePayments->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 8);
    m_gridMakePayments->setMinimumHeight(QtGridFit::heightForRows(*m_gridMakePayments, 4));
    QtGridFit::showClippedText(*m_gridMakePayments);
    // The other columns as wide as their texts, each time the list is read.
    connect(m_model, &QAbstractItemModel::modelReset, m_gridMakePayments,
        [this] { QtGridFit::fitColumns(*m_gridMakePayments, 500); });
    connect(m_gridMakePayments->selectionModel(), &QItemSelectionModel::selectionChanged, this,
        &PaymentSelectionWindow::updateSelection);

    m_optSortBy = new QComboBox(this);
    m_optSortBy->setObjectName(u"optSortBy"_qs);
    m_optSortBy->addItems(DisburseList::sortItems());
    auto *labSortBy = new QLabel(u"Sort &By:"_qs, this);
    labSortBy->setBuddy(m_optSortBy);

    m_txtTotalSelected = new QLineEdit(this);
    m_txtTotalSelected->setObjectName(u"txtTotalSelected"_qs);
    m_txtTotalSelected->setReadOnly(true);
    m_txtTotalSelected->setAlignment(Qt::AlignRight);
    auto *labMakePaymentsTotal = new QLabel(u"Total Amount to be Paid:"_qs, this);
    labMakePaymentsTotal->setObjectName(u"labMakePaymentsTotal"_qs);
    labMakePaymentsTotal->setBuddy(m_txtTotalSelected);
    m_txtTotalSelected->setAccessibleName(u"Total Amount to be Paid"_qs);

    auto button = [this](const QString &name, const QString &caption) {
        auto *b = new QPushButton(caption, this);
        b->setObjectName(name);
        return b;
    };
    m_cmdSelectAll = button(u"cmdSelectAll"_qs, u"&Select All"_qs);
    m_cmdDeSelectAll = button(u"cmdDeSelectAll"_qs, u"De-Select All"_qs);
    m_cmdMakePaymentsNow = button(u"cmdMakePaymentsNow"_qs, u"&Make all SELECTED payments now"_qs);
    m_cmdShowLast = button(u"cmdShowLast"_qs, u"Show &Last Batch"_qs);
    m_cmdExit = button(u"cmdExit"_qs, u"&Exit"_qs);

    auto *controls = new QGridLayout;
    controls->addWidget(labSortBy, 0, 0);
    controls->addWidget(m_optSortBy, 0, 1);
    controls->addWidget(labMakePaymentsTotal, 0, 3);
    controls->addWidget(m_txtTotalSelected, 0, 4);
    controls->setColumnStretch(2, 1);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(m_cmdSelectAll);
    buttons->addWidget(m_cmdDeSelectAll);
    buttons->addStretch();
    buttons->addWidget(m_cmdMakePaymentsNow);
    buttons->addWidget(m_cmdShowLast);
    buttons->addWidget(m_cmdExit);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(labMakePayments);
    layout->addWidget(labGridSelect);
    layout->addWidget(m_gridMakePayments, 1);
    layout->addLayout(controls);
    layout->addLayout(buttons);
    QtGridFit::keepControlsWhole(*this);
    resize(820, 520);
    centreOnScreen(*this);

    setTabOrder(m_gridMakePayments, m_optSortBy);
    setTabOrder(m_optSortBy, m_txtTotalSelected);
    setTabOrder(m_txtTotalSelected, m_cmdSelectAll);
    setTabOrder(m_cmdSelectAll, m_cmdDeSelectAll);
    setTabOrder(m_cmdDeSelectAll, m_cmdMakePaymentsNow);
    setTabOrder(m_cmdMakePaymentsNow, m_cmdShowLast);
    setTabOrder(m_cmdShowLast, m_cmdExit);

    connect(m_cmdSelectAll, &QPushButton::clicked, this, &PaymentSelectionWindow::selectAll);
    connect(m_cmdDeSelectAll, &QPushButton::clicked, this, &PaymentSelectionWindow::deselectAll);
    connect(m_cmdMakePaymentsNow, &QPushButton::clicked, this,
        &PaymentSelectionWindow::paySelectedChecks);
    connect(m_cmdShowLast, &QPushButton::clicked, this, &PaymentSelectionWindow::showLastBatch);
    connect(m_cmdExit, &QPushButton::clicked, this, &PaymentSelectionWindow::exitScreen);

    TopLevel::run(m_state, [this] { load(); });
    connect(m_optSortBy, &QComboBox::currentTextChanged, this, &PaymentSelectionWindow::sortList);
}

PaymentSelectionWindow *PaymentSelectionWindow::open(ProgramState &state, QWidget *parent)
{
    static QPointer<PaymentSelectionWindow> instance;
    if (!instance) {
        instance = new PaymentSelectionWindow(state, parent);
        instance->setAttribute(Qt::WA_DeleteOnClose);
    }
    instance->show();
    instance->raise();
    instance->activateWindow();
    return instance;
}

void PaymentSelectionWindow::load()
{
    // A run that was paid but not posted is finished before anything else is
    // shown, so its checks do not appear here to be paid again; checks sent
    // without a recorded answer are named, so nobody pays them another way.
    UnfinishedRun::settle(m_state, m_stopRejections);
    UnfinishedRun::reportUnanswered(m_state);
    m_optSortBy->setCurrentText(u"Payee"_qs);
    loadList();
}

void PaymentSelectionWindow::loadList()
{
    m_quiet = true;
    m_model->setRows(DisburseList::load(m_state.db(), m_optSortBy->currentText()));
    m_quiet = false;
    reselect();
}

// Selects again the rows chosen before the list was read anew. Rows that
// have left the list leave the choice, and the total follows.
void PaymentSelectionWindow::reselect()
{
    QItemSelection selection;
    QList<PaymentRow::Key> kept;
    for (const PaymentRow::Key &key : std::as_const(m_selection)) {
        const int r = m_model->find(key);
        if (r < 0)
            continue;
        kept.append(key);
        selection.select(
            m_model->index(r, 0), m_model->index(r, PaymentListModel::ColumnCount - 1));
    }
    m_quiet = true;
    m_gridMakePayments->selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
    m_quiet = false;
    if (kept.size() != m_selection.size()) {
        m_selection = kept;
        showTotal();
    }
}

void PaymentSelectionWindow::sortList()
{
    TopLevel::run(m_state, [this] { loadList(); });
}

void PaymentSelectionWindow::updateSelection(
    const QItemSelection &selected, const QItemSelection &deselected)
{
    if (m_quiet)
        return;
    QSet<int> gone;
    for (const QModelIndex &index : deselected.indexes()) {
        if (index.column() == 0)
            gone.insert(index.row());
    }
    if (!gone.isEmpty()) {
        QSet<PaymentRow::Key> goneKeys;
        for (int r : std::as_const(gone))
            goneKeys.insert(m_model->row(r).key());
        m_selection.removeIf([&](const PaymentRow::Key &k) { return goneKeys.contains(k); });
    }
    QList<int> added;
    for (const QModelIndex &index : selected.indexes()) {
        if (index.column() == 0)
            added.append(index.row());
    }
    std::sort(added.begin(), added.end());
    for (int r : std::as_const(added)) {
        const PaymentRow::Key key = m_model->row(r).key();
        if (!m_selection.contains(key))
            m_selection.append(key);
    }
    showTotal();
}

void PaymentSelectionWindow::showTotal()
{
    Currency total;
    for (const PaymentRow::Key &key : std::as_const(m_selection)) {
        const int r = m_model->find(key);
        if (r >= 0)
            total += m_model->row(r).CkAmount;
    }
    m_txtTotalSelected->setText(total.toDollarsParen());
}

QList<PaymentRow> PaymentSelectionWindow::selectedRows() const
{
    QList<PaymentRow> rows;
    rows.reserve(m_selection.size());
    for (const PaymentRow::Key &key : m_selection) {
        const int r = m_model->find(key);
        if (r >= 0)
            rows.append(m_model->row(r));
    }
    return rows;
}

void PaymentSelectionWindow::selectAll()
{
    TopLevel::run(m_state, [this] {
        if (m_model->rowCount() < 1)
            return;
        BusyCursor busy(m_state.prompter());
        m_selection.clear();
        loadList();
        m_quiet = true;
        m_gridMakePayments->selectAll();
        m_quiet = false;
        for (const PaymentRow &row : m_model->rows())
            m_selection.append(row.key());
        showTotal();
    });
}

void PaymentSelectionWindow::emptySelection()
{
    m_quiet = true;
    m_gridMakePayments->clearSelection();
    m_quiet = false;
    m_selection.clear();
    m_txtTotalSelected->setText(u"0"_qs);
}

void PaymentSelectionWindow::deselectAll()
{
    emptySelection();
}

void PaymentSelectionWindow::paySelectedChecks()
{
    TopLevel::run(m_state, [this] {
        DistributionRun run(m_state, m_stopRejections);
        const bool changed = run.makePaymentsNow(selectedRows(), [this] { emptySelection(); });
        // Checks that Dwellix changed since the list was read leave the
        // selection: they are chosen again, if at all, as they are now.
        for (const PaymentRow::Key &key : run.staleRows())
            m_selection.removeAll(key);
        if (changed)
            loadList();
        if (!run.staleRows().isEmpty())
            showTotal();
    });
}

void PaymentSelectionWindow::showLastBatch()
{
    if (m_showLast) {
        m_showLast->raise();
        m_showLast->activateWindow();
        return;
    }
    m_showLast = new LastBatchWindow(m_state, this);
    m_showLast->setAttribute(Qt::WA_DeleteOnClose);
    m_showLast->show();
}

void PaymentSelectionWindow::exitScreen()
{
    close();
}
