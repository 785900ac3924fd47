#include "disburse/LastBatchWindow.h"

#include "app/QtCentre.h"
#include "app/QtGridFit.h"
#include "app/TopLevel.h"
#include "disburse/LastBatch.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QPushButton>
#include <QShortcut>
#include <QTableWidget>
#include <QVBoxLayout>

LastBatchWindow::LastBatchWindow(ProgramState &state, QWidget *parent)
    : QWidget(parent, Qt::Window)
    , m_state(state)
{
    setObjectName(u"frmShowLast"_qs);
    setWindowTitle(u"Last Batch Processed"_qs);

    m_gridShowLast = new QTableWidget(0, 7, this);
    m_gridShowLast->setObjectName(u"gridShowLast"_qs);
    m_gridShowLast->setAccessibleName(u"Payments of the last batch"_qs);
    m_gridShowLast->setHorizontalHeaderLabels(
        { u"Check"_qs, u"Payee"_qs, u"Remark"_qs, u"Amount"_qs, QString(), QString(), QString() });
    m_gridShowLast->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_gridShowLast->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_gridShowLast->horizontalHeader()->setSectionResizeMode(2, QHeaderView::Stretch);
    m_gridShowLast->verticalHeader()->setVisible(false);
    m_gridShowLast->setWordWrap(false);
    m_gridShowLast->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 8);
    m_gridShowLast->setMinimumHeight(QtGridFit::heightForRows(*m_gridShowLast, 4));
    QtGridFit::showClippedText(*m_gridShowLast);

    m_cmdExit = new QPushButton(u"&Exit"_qs, this);
    m_cmdExit->setObjectName(u"cmdExit"_qs);
    connect(m_cmdExit, &QPushButton::clicked, this, &LastBatchWindow::exitScreen);
    // Esc leaves the viewer as Exit does.
    auto *escape = new QShortcut(QKeySequence(Qt::Key_Escape), this);
    connect(escape, &QShortcut::activated, this, &LastBatchWindow::exitScreen);

    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_cmdExit);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_gridShowLast);
    layout->addLayout(buttons);
    QtGridFit::keepControlsWhole(*this);
    resize(640, 400);
    centreOnScreen(*this);

    TopLevel::run(m_state, [this] { load(); });
    // Check, payee and amount as wide as their texts; the three unused
    // columns narrow.
    QtGridFit::fitColumns(*m_gridShowLast, 500);
    for (int c = 4; c < 7; ++c)
        m_gridShowLast->setColumnWidth(c, 24);
}

void LastBatchWindow::load()
{
    const QList<QStringList> rows = LastBatch::load(m_state);
    m_gridShowLast->setRowCount(int(rows.size()));
    for (int r = 0; r < rows.size(); ++r) {
        for (int c = 0; c < rows[r].size(); ++c) {
            auto *item = new QTableWidgetItem(rows[r][c]);
            if (c == 3)
                item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
            m_gridShowLast->setItem(r, c, item);
        }
    }
}

void LastBatchWindow::exitScreen()
{
    close();
}
