#include "enrolment/EnrolmentListWidget.h"

#include "app/ProgramState.h"
#include "app/QtGridFit.h"
#include "app/TopLevel.h"
#include "core/Prompter.h"
#include "enrolment/EnrolmentFlagDelegate.h"
#include "enrolment/EnrolmentModel.h"
#include "hostdb/PendingUploadRecord.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QTableView>
#include <QTimer>
#include <QVBoxLayout>

namespace {

QListWidget *optionList(const QString &name, const QStringList &entries, QWidget *parent)
{
    auto *list = new QListWidget(parent);
    list->setObjectName(name);
    list->addItems(entries);
    list->setSelectionMode(QAbstractItemView::SingleSelection);
    list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list->setFixedHeight(
        list->sizeHintForRow(0) * int(entries.size()) + 2 * list->frameWidth() + 4);
    // Every entry whole, whatever the window's width.
    list->setMinimumWidth(list->sizeHintForColumn(0) + 2 * list->frameWidth() + 8);
    return list;
}

} // namespace

EnrolmentListWidget::EnrolmentListWidget(
    ProgramState &state, Roster roster, EnrolmentTexts texts, QWidget *parent)
    : QWidget(parent)
    , m_state(state)
    , m_roster(roster)
    , m_texts(std::move(texts))
{
    m_model = new EnrolmentModel(state.db(), roster, this);

    m_optDisplay
        = optionList(u"optDisplay"_qs, { m_texts.displayEnrolled, m_texts.displayAll }, this);
    m_optDisplay->setAccessibleName(u"Display"_qs);
    m_optSortBy = optionList(u"optSortBy"_qs, EnrolmentQueries::sortTexts(roster), this);
    m_optSortBy->setAccessibleName(u"Sort by"_qs);
    auto *labDisplay = new QLabel(u"&Display"_qs, this);
    labDisplay->setBuddy(m_optDisplay);
    auto *labSortBy = new QLabel(u"Sort &By"_qs, this);
    labSortBy->setBuddy(m_optSortBy);

    m_txtSearch = new QLineEdit(this);
    m_txtSearch->setObjectName(u"txtSearch"_qs);
    m_txtSearch->setClearButtonEnabled(true);
    m_txtSearch->setPlaceholderText(roster == Roster::Tenants ? u"Name or TID"_qs
            : roster == Roster::Owners                        ? u"Name or owner number"_qs
                                                              : u"Name or vendor number"_qs);
    m_txtSearch->setAccessibleName(u"Search"_qs);
    auto *labSearch = new QLabel(u"&Search:"_qs, this);
    labSearch->setBuddy(m_txtSearch);
    m_searchDelay = new QTimer(this);
    m_searchDelay->setSingleShot(true);
    m_searchDelay->setInterval(250);

    m_gridACH = new QTableView(this);
    m_gridACH->setObjectName(u"gridACH"_qs);
    m_gridACH->setAccessibleName(m_texts.gridName);
    m_gridACH->setModel(m_model);
    m_gridACH->setSelectionBehavior(QAbstractItemView::SelectItems);
    m_gridACH->setSelectionMode(QAbstractItemView::SingleSelection);
    m_gridACH->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed
        | QAbstractItemView::AnyKeyPressed | QAbstractItemView::SelectedClicked);
    m_gridACH->setTabKeyNavigation(false);
    m_gridACH->setWordWrap(false);
    m_gridACH->setAlternatingRowColors(true);
    // Fixed row heights and column widths: nothing measures every row, so
    // a long list opens and scrolls without reading all of it.
    m_gridACH->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    m_gridACH->verticalHeader()->setDefaultSectionSize(m_gridACH->fontMetrics().height() + 8);
    m_gridACH->verticalHeader()->hide();
    m_gridACH->horizontalHeader()->setSectionResizeMode(QHeaderView::Interactive);
    m_delegate = new EnrolmentFlagDelegate(this);
    m_gridACH->setItemDelegateForColumn(m_model->flagColumn(), m_delegate);
    m_gridACH->setMinimumHeight(QtGridFit::heightForRows(*m_gridACH, 4));
    QtGridFit::showClippedText(*m_gridACH);
    m_delegate->onTyped = [this](int row, const QString &typed) { checkTypedFlag(row, typed); };

    m_labCount = new QLabel(this);
    m_labCount->setObjectName(u"labCount"_qs);
    m_chkSelectAll = new QCheckBox(u"Select &All"_qs, this);
    m_chkSelectAll->setObjectName(u"chkSelectAll"_qs);

    auto *options = new QGridLayout;
    options->addWidget(labDisplay, 0, 0);
    options->addWidget(labSortBy, 0, 1);
    options->addWidget(m_optDisplay, 1, 0, Qt::AlignTop);
    options->addWidget(m_optSortBy, 1, 1, Qt::AlignTop);
    auto *searchRow = new QHBoxLayout;
    searchRow->addWidget(labSearch);
    searchRow->addWidget(m_txtSearch, 1);
    auto *footer = new QHBoxLayout;
    footer->addWidget(m_chkSelectAll);
    footer->addStretch(1);
    footer->addWidget(m_labCount);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(options);
    layout->addLayout(searchRow);
    layout->addWidget(m_gridACH, 1);
    layout->addLayout(footer);

    connect(
        m_optDisplay, &QListWidget::currentRowChanged, this, &EnrolmentListWidget::chooseDisplay);
    connect(m_optSortBy, &QListWidget::currentRowChanged, this, &EnrolmentListWidget::sortList);
    connect(m_chkSelectAll, &QCheckBox::clicked, this, &EnrolmentListWidget::selectAllRows);
    connect(m_txtSearch, &QLineEdit::textChanged, m_searchDelay, qOverload<>(&QTimer::start));
    connect(m_txtSearch, &QLineEdit::returnPressed, this, &EnrolmentListWidget::search);
    connect(m_searchDelay, &QTimer::timeout, this, &EnrolmentListWidget::search);
    connect(m_model, &QAbstractItemModel::modelReset, this, &EnrolmentListWidget::arrangeColumns);
}

void EnrolmentListWidget::load()
{
    m_loading = true;
    m_changed = false;
    m_optDisplay->setCurrentRow(1);
    m_optSortBy->setCurrentRow(1);
}

EnrolmentQueries::Listing EnrolmentListWidget::currentListing() const
{
    EnrolmentQueries::Listing listing;
    listing.enrolledOnly = m_optDisplay->currentRow() <= 0;
    if (QListWidgetItem *item = m_optSortBy->currentItem())
        listing.sortText = item->text();
    listing.search = m_txtSearch->text();
    return listing;
}

void EnrolmentListWidget::arrangeColumns()
{
    const QStringList names = m_model->names();
    for (int c = 0; c < names.size(); ++c) {
        const QString &name = names[c];
        const bool key = name == u"OID"_qs || name == u"PID"_qs
            || (m_roster != Roster::Tenants && name == u"TID"_qs);
        m_gridACH->setColumnHidden(c, key);
    }
    if (m_columnsSized)
        return; // the user's widths are kept from then on
    // Widths from the captions and the first block of rows, the one read to
    // show the list anyway; longer texts show whole in their tooltip.
    QtGridFit::fitColumns(*m_gridACH, EnrolmentModel::BlockRows, 260);
    m_columnsSized = true;
}

void EnrolmentListWidget::gridSql()
{
    // Listing again closes the editor: a flag being typed is taken first.
    commitPendingEdit();
    TopLevel::run(m_state, [&] {
        const EnrolmentQueries::Listing listing = currentListing();
        if (m_roster == Roster::Tenants) {
            const QStringList sorts = EnrolmentQueries::sortTexts(m_roster);
            if (sorts.contains(listing.sortText)) {
                m_model->setCaption(2, u"TID"_qs);
                m_model->setCaption(3, u"Owner Last"_qs);
                m_model->setCaption(4, u"Owner First"_qs);
                m_model->setCaption(5, u"Property Name"_qs);
                if (listing.sortText != u"Owner Name"_qs) {
                    m_model->setCaption(6, u"Rental Unit Address"_qs);
                    m_model->setCaption(7, u"Tenant Last"_qs);
                    m_model->setCaption(8, u"Tenant First"_qs);
                }
            }
        }
        BusyCursor busy(m_state.prompter());
        m_model->reload(listing);
        m_labCount->setText(m_texts.countLabel.arg(m_model->rowCount()));
    });
}

void EnrolmentListWidget::chooseDisplay()
{
    if (m_loading) {
        m_loading = false;
        return;
    }
    gridSql();
}

void EnrolmentListWidget::sortList()
{
    if (m_loading) {
        m_loading = false;
        return;
    }
    gridSql();
}

void EnrolmentListWidget::search()
{
    m_searchDelay->stop();
    if (m_model->listing().search != m_txtSearch->text())
        gridSql();
}

void EnrolmentListWidget::selectAllRows()
{
    TopLevel::run(m_state, [&] {
        const bool activate = m_chkSelectAll->isChecked();
        const Prompter::Answer answer = m_state.prompter().ask(
            activate ? m_texts.askActivate : m_texts.askRemove, m_texts.askTitle);
        m_state.msgAnswer = answer == Prompter::Answer::Yes ? u"6"_qs : u"7"_qs;
        if (answer != Prompter::Answer::Yes)
            return;
        commitPendingEdit();
        {
            BusyCursor busy(m_state.prompter());
            // The rows listed, as the listing was last read.
            EnrolmentQueries::setFlagForListed(
                m_state.db(), m_roster, m_model->listing(), activate ? u"Y"_qs : u"N"_qs);
        }
        gridSql();
    });
}

void EnrolmentListWidget::commitPendingEdit()
{
    m_delegate->commitOpenEditor();
}

void EnrolmentListWidget::checkTypedFlag(int row, const QString &typed)
{
    const QString flag = typed.toUpper();
    if (flag != u"Y"_qs && flag != u"N"_qs && flag != u"D"_qs) {
        // Shown once the editor has closed, so the message box does not
        // take the focus from an editor that is still committing.
        QMetaObject::invokeMethod(
            this, [this] { m_state.prompter().notice(m_texts.editNotice, u"Remitra Rent"_qs); },
            Qt::QueuedConnection);
        return;
    }
    TopLevel::run(m_state, [&] {
        // Owed first: a flag saved in Dwellix always reaches the processor,
        // even when this screen's upload on closing does not go through.
        PendingUploadRecord::mark(m_state.store(), m_roster);
        m_model->setFlag(row, flag);
        saveFlag();
    });
}

void EnrolmentListWidget::saveFlag()
{
    m_changed = true;
}
