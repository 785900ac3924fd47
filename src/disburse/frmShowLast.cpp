#include "disburse/frmShowLast.h"

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

frmShowLast::frmShowLast(ProgramState &state, QWidget *parent)
    : QWidget(parent, Qt::Window)
    , m_state(state)
{
    setObjectName(u"frmShowLast"_qs);
    setWindowTitle(u"Last Batch Processed"_qs);

    gridShowLast = new QTableWidget(0, 7, this);
    gridShowLast->setObjectName(u"gridShowLast"_qs);
    gridShowLast->setAccessibleName(u"Payments of the last batch"_qs);
    gridShowLast->setHorizontalHeaderLabels(
        { u"Check"_qs, u"Payee"_qs, u"Remark"_qs, u"Amount"_qs, QString(), QString(), QString() });
    gridShowLast->setEditTriggers(QAbstractItemView::NoEditTriggers);
    gridShowLast->setSelectionBehavior(QAbstractItemView::SelectRows);
    gridShowLast->horizontalHeader()->setSectionResizeMode(2, QHeaderView::Stretch);
    gridShowLast->verticalHeader()->setVisible(false);
    gridShowLast->setWordWrap(false);
    gridShowLast->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 8);
    gridShowLast->setMinimumHeight(QtGridFit::heightForRows(*gridShowLast, 4));
    QtGridFit::showClippedText(*gridShowLast);

    cmdExit = new QPushButton(u"&Exit"_qs, this);
    cmdExit->setObjectName(u"cmdExit"_qs);
    connect(cmdExit, &QPushButton::clicked, this, &frmShowLast::cmdExit_Click);
    // Esc leaves the viewer as Exit does.
    auto *escape = new QShortcut(QKeySequence(Qt::Key_Escape), this);
    connect(escape, &QShortcut::activated, this, &frmShowLast::cmdExit_Click);

    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(cmdExit);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(gridShowLast);
    layout->addLayout(buttons);
    QtGridFit::keepControlsWhole(*this);
    resize(640, 400);
    centreOnScreen(*this);

    TopLevel::run(m_state, [this] { Form_Load(); });
    // Check, payee and amount as wide as their texts; the three unused
    // columns narrow.
    QtGridFit::fitColumns(*gridShowLast, 500);
    for (int c = 4; c < 7; ++c)
        gridShowLast->setColumnWidth(c, 24);
}

void frmShowLast::Form_Load()
{
    const QList<QStringList> rows = LastBatch::load(m_state);
    gridShowLast->setRowCount(int(rows.size()));
    for (int r = 0; r < rows.size(); ++r) {
        for (int c = 0; c < rows[r].size(); ++c) {
            auto *item = new QTableWidgetItem(rows[r][c]);
            if (c == 3)
                item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
            gridShowLast->setItem(r, c, item);
        }
    }
}

void frmShowLast::cmdExit_Click()
{
    close();
}
