#include "disburse/frmMakePayments.h"

#include "app/ProgramState.h"
#include "app/QtCentre.h"
#include "app/QtGridFit.h"
#include "app/TopLevel.h"
#include "core/Prompter.h"
#include "disburse/DistributionRun.h"
#include "disburse/PaymentListDelegate.h"
#include "disburse/PaymentListModel.h"
#include "disburse/UnfinishedRun.h"
#include "disburse/frmShowLast.h"
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

frmMakePayments::frmMakePayments(ProgramState &state, QWidget *parent)
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
    gridMakePayments = new QTableView(this);
    gridMakePayments->setObjectName(u"gridMakePayments"_qs);
    gridMakePayments->setAccessibleName(u"Entered checks to pay"_qs);
    gridMakePayments->setModel(m_model);
    gridMakePayments->setItemDelegate(new PaymentListDelegate(gridMakePayments));
    gridMakePayments->setSelectionBehavior(QAbstractItemView::SelectRows);
    gridMakePayments->setSelectionMode(QAbstractItemView::ExtendedSelection);
    gridMakePayments->setEditTriggers(QAbstractItemView::NoEditTriggers);
    gridMakePayments->setColumnHidden(PaymentListModel::IDField, true);
    gridMakePayments->verticalHeader()->setVisible(false);
    gridMakePayments->horizontalHeader()->setSectionResizeMode(
        PaymentListModel::Remark, QHeaderView::Stretch);
    gridMakePayments->setWordWrap(false);
    gridMakePayments->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 8);
    gridMakePayments->setMinimumHeight(QtGridFit::heightForRows(*gridMakePayments, 4));
    QtGridFit::showClippedText(*gridMakePayments);
    // The other columns as wide as their texts, each time the list is read.
    connect(m_model, &QAbstractItemModel::modelReset, gridMakePayments,
        [this] { QtGridFit::fitColumns(*gridMakePayments, 500); });
    connect(gridMakePayments->selectionModel(), &QItemSelectionModel::selectionChanged, this,
        &frmMakePayments::gridMakePayments_SelChange);

    optSortBy = new QComboBox(this);
    optSortBy->setObjectName(u"optSortBy"_qs);
    optSortBy->addItems(DisburseList::sortItems());
    auto *labSortBy = new QLabel(u"Sort &By:"_qs, this);
    labSortBy->setBuddy(optSortBy);

    txtTotalSelected = new QLineEdit(this);
    txtTotalSelected->setObjectName(u"txtTotalSelected"_qs);
    txtTotalSelected->setReadOnly(true);
    txtTotalSelected->setAlignment(Qt::AlignRight);
    auto *labMakePaymentsTotal = new QLabel(u"Total Amount to be Paid:"_qs, this);
    labMakePaymentsTotal->setObjectName(u"labMakePaymentsTotal"_qs);
    labMakePaymentsTotal->setBuddy(txtTotalSelected);
    txtTotalSelected->setAccessibleName(u"Total Amount to be Paid"_qs);

    auto button = [this](const QString &name, const QString &caption) {
        auto *b = new QPushButton(caption, this);
        b->setObjectName(name);
        return b;
    };
    cmdSelectAll = button(u"cmdSelectAll"_qs, u"&Select All"_qs);
    cmdDeSelectAll = button(u"cmdDeSelectAll"_qs, u"De-Select All"_qs);
    cmdMakePaymentsNow = button(u"cmdMakePaymentsNow"_qs, u"&Make all SELECTED payments now"_qs);
    cmdShowLast = button(u"cmdShowLast"_qs, u"Show &Last Batch"_qs);
    cmdExit = button(u"cmdExit"_qs, u"&Exit"_qs);

    auto *controls = new QGridLayout;
    controls->addWidget(labSortBy, 0, 0);
    controls->addWidget(optSortBy, 0, 1);
    controls->addWidget(labMakePaymentsTotal, 0, 3);
    controls->addWidget(txtTotalSelected, 0, 4);
    controls->setColumnStretch(2, 1);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(cmdSelectAll);
    buttons->addWidget(cmdDeSelectAll);
    buttons->addStretch();
    buttons->addWidget(cmdMakePaymentsNow);
    buttons->addWidget(cmdShowLast);
    buttons->addWidget(cmdExit);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(labMakePayments);
    layout->addWidget(labGridSelect);
    layout->addWidget(gridMakePayments, 1);
    layout->addLayout(controls);
    layout->addLayout(buttons);
    QtGridFit::keepControlsWhole(*this);
    resize(820, 520);
    centreOnScreen(*this);

    setTabOrder(gridMakePayments, optSortBy);
    setTabOrder(optSortBy, txtTotalSelected);
    setTabOrder(txtTotalSelected, cmdSelectAll);
    setTabOrder(cmdSelectAll, cmdDeSelectAll);
    setTabOrder(cmdDeSelectAll, cmdMakePaymentsNow);
    setTabOrder(cmdMakePaymentsNow, cmdShowLast);
    setTabOrder(cmdShowLast, cmdExit);

    connect(cmdSelectAll, &QPushButton::clicked, this, &frmMakePayments::cmdSelectAll_Click);
    connect(cmdDeSelectAll, &QPushButton::clicked, this, &frmMakePayments::cmdDeSelectAll_Click);
    connect(cmdMakePaymentsNow, &QPushButton::clicked, this,
        &frmMakePayments::cmdMakePaymentsNow_Click);
    connect(cmdShowLast, &QPushButton::clicked, this, &frmMakePayments::cmdShowLast_Click);
    connect(cmdExit, &QPushButton::clicked, this, &frmMakePayments::cmdExit_Click);

    TopLevel::run(m_state, [this] { Form_Load(); });
    connect(optSortBy, &QComboBox::currentTextChanged, this, &frmMakePayments::optSortBy_Click);
}

frmMakePayments *frmMakePayments::open(ProgramState &state, QWidget *parent)
{
    static QPointer<frmMakePayments> instance;
    if (!instance) {
        instance = new frmMakePayments(state, parent);
        instance->setAttribute(Qt::WA_DeleteOnClose);
    }
    instance->show();
    instance->raise();
    instance->activateWindow();
    return instance;
}

void frmMakePayments::Form_Load()
{
    // A run that was paid but not posted is finished before anything else is
    // shown, so its checks do not appear here to be paid again; checks sent
    // without a recorded answer are named, so nobody pays them another way.
    UnfinishedRun::settle(m_state, m_stopRejections);
    UnfinishedRun::reportUnanswered(m_state);
    optSortBy->setCurrentText(u"Payee"_qs);
    loadList();
}

void frmMakePayments::loadList()
{
    m_quiet = true;
    m_model->setRows(DisburseList::load(m_state.db(), optSortBy->currentText()));
    m_quiet = false;
    reselect();
}

// Selects again the rows chosen before the list was read anew. Rows that
// have left the list leave the choice, and the total follows.
void frmMakePayments::reselect()
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
    gridMakePayments->selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
    m_quiet = false;
    if (kept.size() != m_selection.size()) {
        m_selection = kept;
        showTotal();
    }
}

void frmMakePayments::optSortBy_Click()
{
    TopLevel::run(m_state, [this] { loadList(); });
}

void frmMakePayments::gridMakePayments_SelChange(
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

void frmMakePayments::showTotal()
{
    Currency total;
    for (const PaymentRow::Key &key : std::as_const(m_selection)) {
        const int r = m_model->find(key);
        if (r >= 0)
            total += m_model->row(r).CkAmount;
    }
    txtTotalSelected->setText(total.toDollarsParen());
}

QList<PaymentRow> frmMakePayments::selectedRows() const
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

void frmMakePayments::cmdSelectAll_Click()
{
    TopLevel::run(m_state, [this] {
        if (m_model->rowCount() < 1)
            return;
        BusyCursor busy(m_state.prompter());
        m_selection.clear();
        loadList();
        m_quiet = true;
        gridMakePayments->selectAll();
        m_quiet = false;
        for (const PaymentRow &row : m_model->rows())
            m_selection.append(row.key());
        showTotal();
    });
}

void frmMakePayments::emptySelection()
{
    m_quiet = true;
    gridMakePayments->clearSelection();
    m_quiet = false;
    m_selection.clear();
    txtTotalSelected->setText(u"0"_qs);
}

void frmMakePayments::cmdDeSelectAll_Click()
{
    emptySelection();
}

void frmMakePayments::cmdMakePaymentsNow_Click()
{
    TopLevel::run(m_state, [this] {
        DistributionRun run(m_state, m_stopRejections);
        const bool changed = run.MakePaymentsNow(selectedRows(), [this] { emptySelection(); });
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

void frmMakePayments::cmdShowLast_Click()
{
    if (m_showLast) {
        m_showLast->raise();
        m_showLast->activateWindow();
        return;
    }
    m_showLast = new frmShowLast(m_state, this);
    m_showLast->setAttribute(Qt::WA_DeleteOnClose);
    m_showLast->show();
}

void frmMakePayments::cmdExit_Click()
{
    close();
}
