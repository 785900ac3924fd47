#include "history/frmHistory.h"

#include "app/ProgramState.h"
#include "app/QtCentre.h"
#include "app/QtGridFit.h"
#include "app/TopLevel.h"
#include "core/Prompter.h"
#include "history/HistoryExport.h"
#include "history/HistoryMarkDelegate.h"
#include "history/HistoryPrintLayout.h"
#include "history/HistoryTableModel.h"
#include "history/RunText.h"
#include "rent/DownloadPrinter.h"
#include "rent/ReversePosting.h"
#include "viewer/frmViewFiles.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QDir>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLabel>
#include <QPrintDialog>
#include <QPrinter>
#include <QPushButton>
#include <QShortcut>
#include <QTabWidget>
#include <QTableView>
#include <QVBoxLayout>

QPointer<frmHistory> frmHistory::s_instance;

namespace {

const QString kTitle = u"Remitra History"_qs;

QTableView *grid(
    const QString &name, const QString &accessible, HistoryTableModel *model, QWidget *parent)
{
    auto *view = new QTableView(parent);
    view->setObjectName(name);
    view->setAccessibleName(accessible);
    view->setModel(model);
    view->setItemDelegate(new HistoryMarkDelegate(view));
    view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    view->setSelectionBehavior(QAbstractItemView::SelectRows);
    view->setSelectionMode(QAbstractItemView::SingleSelection);
    view->verticalHeader()->setVisible(false);
    view->horizontalHeader()->setStretchLastSection(true);
    view->setWordWrap(false);
    view->verticalHeader()->setDefaultSectionSize(view->fontMetrics().height() + 8);
    view->setMinimumHeight(QtGridFit::heightForRows(*view, 3));
    QtGridFit::showClippedText(*view);
    QObject::connect(model, &QAbstractItemModel::modelReset, view,
        [view] { QtGridFit::fitColumns(*view, 200, 360); });
    return view;
}

QLabel *buddyLabel(const QString &caption, QWidget *buddy, QWidget *parent)
{
    auto *label = new QLabel(caption, parent);
    label->setBuddy(buddy);
    return label;
}

} // namespace

frmHistory::frmHistory(ProgramState &state, QWidget *parent)
    : QWidget(parent, Qt::Window)
    , m_state(state)
{
    m_chooseFile = [this](const QString &caption, const QString &name, const QString &filter) {
        return QFileDialog::getSaveFileName(
            this, caption, QDir(m_state.folder()).filePath(name), filter);
    };
    m_choosePrinter = [this](QPrinter &printer) {
        QPrintDialog dialog(&printer, this);
        return dialog.exec() == QDialog::Accepted;
    };
    buildUi();
    TopLevel::run(m_state, [this] { reload(); });
}

frmHistory *frmHistory::open(ProgramState &state, QWidget *parent)
{
    if (!s_instance) {
        s_instance = new frmHistory(state, parent);
        s_instance->setAttribute(Qt::WA_DeleteOnClose);
    } else {
        TopLevel::run(state, [] { s_instance->reload(); });
    }
    s_instance->show();
    s_instance->raise();
    s_instance->activateWindow();
    return s_instance;
}

void frmHistory::buildUi()
{
    setObjectName(u"frmHistory"_qs);
    setWindowTitle(kTitle);

    cboKind = new QComboBox(this);
    cboKind->setObjectName(u"cboKind"_qs);
    cboKind->addItem(u"All kinds"_qs);
    for (Journal::Kind kind : Journal::kinds())
        cboKind->addItem(Journal::kindCaption(kind), Journal::kindName(kind));
    auto *labKind = buddyLabel(u"&Kind:"_qs, cboKind, this);
    labKind->setObjectName(u"labKind"_qs);

    chkDates = new QCheckBox(u"Filter by d&ates"_qs, this);
    chkDates->setObjectName(u"chkDates"_qs);
    dtpFrom = new QDateEdit(QDate::currentDate().addMonths(-1), this);
    dtpFrom->setObjectName(u"dtpFrom"_qs);
    dtpTo = new QDateEdit(QDate::currentDate(), this);
    dtpTo->setObjectName(u"dtpTo"_qs);
    for (QDateEdit *edit : { dtpFrom, dtpTo }) {
        edit->setCalendarPopup(true);
        edit->setEnabled(false);
        // Tall enough for its text box's least height in every style.
        edit->setMinimumHeight(edit->sizeHint().height() + 2);
    }
    auto *labFrom = buddyLabel(u"&From:"_qs, dtpFrom, this);
    labFrom->setObjectName(u"labFrom"_qs);
    auto *labTo = buddyLabel(u"&To:"_qs, dtpTo, this);
    labTo->setObjectName(u"labTo"_qs);

    m_runModel = new HistoryTableModel(this);
    gridRuns = grid(u"gridRuns"_qs, u"Runs"_qs, m_runModel, this);
    auto *labRuns = buddyLabel(u"Runs, newest first:"_qs, gridRuns, this);
    labRuns->setObjectName(u"labRuns"_qs);

    labRun = new QLabel(this);
    labRun->setObjectName(u"labRun"_qs);
    labRun->setWordWrap(true);
    labRun->setTextInteractionFlags(Qt::TextSelectableByMouse);

    tabDetails = new QTabWidget(this);
    tabDetails->setObjectName(u"tabDetails"_qs);
    tabDetails->setAccessibleName(u"Details of the run"_qs);
    m_lineModel = new HistoryTableModel(this);
    m_rowModel = new HistoryTableModel(this);
    m_messageModel = new HistoryTableModel(this);
    m_fileModel = new HistoryTableModel(this);
    gridLines = grid(u"gridLines"_qs, u"Lines of the run"_qs, m_lineModel, tabDetails);
    gridRows = grid(u"gridRows"_qs, u"Rows the run wrote in Dwellix"_qs, m_rowModel, tabDetails);
    gridMessages
        = grid(u"gridMessages"_qs, u"Messages the user saw"_qs, m_messageModel, tabDetails);
    gridFiles = grid(u"gridFiles"_qs, u"Files of the run"_qs, m_fileModel, tabDetails);
    tabDetails->addTab(gridLines, u"Lines"_qs);
    tabDetails->addTab(gridRows, u"Rows Posted"_qs);
    tabDetails->addTab(gridMessages, u"Messages"_qs);
    tabDetails->addTab(gridFiles, u"Files"_qs);

    labShown = new QLabel(this);
    labShown->setObjectName(u"labShown"_qs);
    labShown->setWordWrap(true);

    auto button = [this](const QString &name, const QString &caption, const QString &tip) {
        auto *b = new QPushButton(caption, this);
        b->setObjectName(name);
        b->setAutoDefault(false);
        b->setToolTip(tip);
        return b;
    };
    cmdViewFile = button(u"cmdViewFile"_qs, u"&View File"_qs,
        u"Shows the run's file (the chosen one on the Files page) in the file viewer."_qs);
    cmdReverse = button(u"cmdReverse"_qs, u"&Reverse Posting"_qs,
        u"Takes this rent posting out of the Dwellix ledgers and puts its payments back for "
        "review."_qs);
    cmdPutBack = button(u"cmdPutBack"_qs, u"Put &Back Payment File"_qs,
        u"Puts the payment file of this reversed posting back for review."_qs);
    cmdExportList = button(
        u"cmdExportList"_qs, u"Export &List..."_qs, u"Saves the runs listed as a CSV file."_qs);
    cmdExportRun = button(u"cmdExportRun"_qs, u"Export R&un..."_qs,
        u"Saves the details of this run as a CSV file."_qs);
    cmdPrint = button(u"cmdPrint"_qs, u"&Print Run..."_qs, u"Prints the details of this run."_qs);
    cmdPdf = button(u"cmdPdf"_qs, u"Save Run as P&DF..."_qs,
        u"Saves the details of this run as a PDF file."_qs);
    cmdExit = button(u"cmdExit"_qs, u"&Exit"_qs, {});

    auto *filters = new QHBoxLayout;
    filters->addWidget(labKind);
    filters->addWidget(cboKind);
    filters->addSpacing(16);
    filters->addWidget(chkDates);
    filters->addWidget(labFrom);
    filters->addWidget(dtpFrom);
    filters->addWidget(labTo);
    filters->addWidget(dtpTo);
    filters->addStretch(1);

    auto *runCommands = new QHBoxLayout;
    runCommands->addWidget(cmdViewFile);
    runCommands->addWidget(cmdReverse);
    runCommands->addWidget(cmdPutBack);
    runCommands->addStretch(1);
    auto *outputs = new QHBoxLayout;
    outputs->addWidget(cmdExportList);
    outputs->addWidget(cmdExportRun);
    outputs->addWidget(cmdPrint);
    outputs->addWidget(cmdPdf);
    outputs->addStretch(1);
    outputs->addWidget(cmdExit);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(filters);
    layout->addWidget(labRuns);
    layout->addWidget(gridRuns, 2);
    layout->addWidget(labRun);
    layout->addWidget(tabDetails, 3);
    layout->addWidget(labShown);
    layout->addLayout(runCommands);
    layout->addLayout(outputs);

    QWidget *order[] = { cboKind, chkDates, dtpFrom, dtpTo, gridRuns, tabDetails, cmdViewFile,
        cmdReverse, cmdPutBack, cmdExportList, cmdExportRun, cmdPrint, cmdPdf, cmdExit };
    for (std::size_t i = 1; i < std::size(order); ++i)
        setTabOrder(order[i - 1], order[i]);

    connect(cboKind, &QComboBox::currentIndexChanged, this, &frmHistory::cboKind_Click);
    connect(chkDates, &QCheckBox::toggled, this, [this](bool on) {
        dtpFrom->setEnabled(on);
        dtpTo->setEnabled(on);
        cboKind_Click();
    });
    connect(dtpFrom, &QDateEdit::dateChanged, this, &frmHistory::cboKind_Click);
    connect(dtpTo, &QDateEdit::dateChanged, this, &frmHistory::cboKind_Click);
    connect(gridRuns->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
        [this](const QModelIndex &current) {
            TopLevel::run(m_state, [&] { showRun(current.row()); });
        });
    connect(cmdViewFile, &QPushButton::clicked, this, &frmHistory::cmdViewFile_Click);
    connect(cmdReverse, &QPushButton::clicked, this, &frmHistory::cmdReverse_Click);
    connect(cmdPutBack, &QPushButton::clicked, this, &frmHistory::cmdPutBack_Click);
    connect(cmdExportList, &QPushButton::clicked, this, &frmHistory::cmdExportList_Click);
    connect(cmdExportRun, &QPushButton::clicked, this, &frmHistory::cmdExportRun_Click);
    connect(cmdPrint, &QPushButton::clicked, this, &frmHistory::cmdPrint_Click);
    connect(cmdPdf, &QPushButton::clicked, this, &frmHistory::cmdPdf_Click);
    connect(cmdExit, &QPushButton::clicked, this, &frmHistory::cmdExit_Click);
    // Esc leaves the screen as Exit does, like the other viewers.
    auto *escape = new QShortcut(QKeySequence(Qt::Key_Escape), this);
    connect(escape, &QShortcut::activated, this, &frmHistory::cmdExit_Click);

    QtGridFit::keepControlsWhole(*this);
    resize(1000, 680);
    centreOnScreen(*this);
}

Journal::Filter frmHistory::filter() const
{
    Journal::Filter f;
    if (cboKind->currentIndex() > 0)
        f.kind = Journal::kindOf(cboKind->currentData().toString());
    if (chkDates->isChecked()) {
        f.from = dtpFrom->date();
        f.to = dtpTo->date();
    }
    return f;
}

void frmHistory::reload()
{
    const qint64 chosen = m_current ? m_current->id : 0;
    m_runs = Journal(m_state.store()).runs(filter());
    m_current.reset();
    m_runModel->setTable(RunText::runList(m_runs));
    if (!(chosen && selectRun(chosen)) && !m_runs.isEmpty())
        selectRun(m_runs.first().id);
    if (m_runs.isEmpty())
        showRun(-1);
}

bool frmHistory::selectRun(qint64 runId)
{
    for (int r = 0; r < m_runs.size(); ++r) {
        if (m_runs[r].id != runId)
            continue;
        gridRuns->selectionModel()->setCurrentIndex(m_runModel->index(r, 0),
            QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
        // The same row chosen again after a reload: its details afresh.
        if (!m_current || m_current->id != runId)
            showRun(r);
        return true;
    }
    return false;
}

void frmHistory::showRun(int row)
{
    if (row < 0 || row >= m_runs.size()) {
        m_current.reset();
        const Journal::Filter f = filter();
        const bool filtered = f.kind || f.from.isValid();
        labRun->setText(!m_runs.isEmpty() ? QString()
                : filtered                ? u"No run of this kind or in these dates."_qs
                                          : u"No runs are recorded yet."_qs);
        for (HistoryTableModel *model : { m_lineModel, m_rowModel, m_messageModel, m_fileModel })
            model->setTable({});
        labShown->clear();
        updateCommands();
        return;
    }
    Journal journal(m_state.store());
    m_current = journal.run(m_runs[row].id);
    if (!m_current)
        return;
    const qint64 id = m_current->id;
    labRun->setText(RunText::heading(*m_current));
    m_lineModel->setTable(RunText::lines(journal.lines(id, ShownAtMost)));
    m_rowModel->setTable(RunText::rows(journal.rows(id, ShownAtMost)));
    m_messageModel->setTable(RunText::messages(journal.messages(id)));
    m_fileModel->setTable(RunText::files(journal.files(id)));
    const qint64 lines = journal.lineCount(id);
    const qint64 rows = journal.rowCount(id);
    labShown->setText(lines > ShownAtMost || rows > ShownAtMost
            ? u"The details show the first %1 of %2 lines and %3 rows; export the run to see "
              "them all."_qs.arg(ShownAtMost)
                  .arg(lines)
                  .arg(rows)
            : QString());
    updateCommands();
}

void frmHistory::updateCommands()
{
    const bool run = m_current.has_value();
    const bool posting = run && m_current->kind == Journal::Kind::RentPosting;
    cmdViewFile->setEnabled(run && m_fileModel->rowCount() > 0);
    cmdReverse->setEnabled(posting
        && (m_current->result.state == Journal::Posted
            || m_current->result.state == Journal::Stopped));
    cmdPutBack->setEnabled(posting && ReversePosting::canPutBack(m_state, *m_current));
    cmdExportList->setEnabled(!m_runs.isEmpty());
    cmdExportRun->setEnabled(run);
    cmdPrint->setEnabled(run);
    cmdPdf->setEnabled(run);
}

void frmHistory::cboKind_Click()
{
    TopLevel::run(m_state, [this] { reload(); });
}

void frmHistory::cmdViewFile_Click()
{
    TopLevel::run(m_state, [this] {
        if (!m_current)
            return;
        const QList<Journal::File> files = Journal(m_state.store()).files(m_current->id);
        if (files.isEmpty())
            return;
        int chosen = gridFiles->currentIndex().isValid() ? gridFiles->currentIndex().row() : 0;
        const Journal::File &file = files.value(chosen, files.first());
        // The archived copy is the file as it was; the named one may have
        // been replaced since.
        frmViewFiles::openFile(
            m_state, file.archive.isEmpty() ? file.name : file.archive, parentWidget());
    });
}

void frmHistory::cmdReverse_Click()
{
    TopLevel::run(m_state, [this] {
        if (!m_current)
            return;
        const qint64 id = m_current->id;
        ReversePosting::run(m_state, id);
        m_current.reset();
        reload();
        selectRun(id);
    });
}

void frmHistory::cmdPutBack_Click()
{
    TopLevel::run(m_state, [this] {
        if (!m_current)
            return;
        const qint64 id = m_current->id;
        ReversePosting::putBack(m_state, id);
        m_current.reset();
        reload();
        selectRun(id);
    });
}

void frmHistory::cmdExportList_Click()
{
    TopLevel::run(m_state, [this] {
        const QString path = m_chooseFile(
            u"Export the list of runs"_qs, u"remitra-history.csv"_qs, u"CSV files (*.csv)"_qs);
        if (path.isEmpty())
            return;
        HistoryExport::writeTable(path, m_runModel->table());
        m_state.prompter().notice(u"The list of %1 run(s) was saved to %2."_qs.arg(m_runs.size())
                                      .arg(QDir::toNativeSeparators(path)),
            kTitle);
    });
}

void frmHistory::cmdExportRun_Click()
{
    TopLevel::run(m_state, [this] {
        if (!m_current)
            return;
        const QString path = m_chooseFile(u"Export the run"_qs,
            u"remitra-run-%1.csv"_qs.arg(m_current->id), u"CSV files (*.csv)"_qs);
        if (path.isEmpty())
            return;
        Journal journal(m_state.store());
        HistoryExport::writeRun(path, journal, m_current->id);
        m_state.prompter().notice(u"The details of run %1 were saved to %2."_qs.arg(m_current->id)
                                      .arg(QDir::toNativeSeparators(path)),
            kTitle);
    });
}

bool frmHistory::printTo(QPrinter &printer)
{
    QStringList body;
    body += HistoryPrintLayout::part(u"Lines"_qs, m_lineModel->table());
    body += HistoryPrintLayout::part(u"Rows posted"_qs, m_rowModel->table());
    body += HistoryPrintLayout::part(u"Messages"_qs, m_messageModel->table());
    body += HistoryPrintLayout::part(u"Files"_qs, m_fileModel->table());
    if (!labShown->text().isEmpty())
        body << labShown->text();
    return DownloadPrinter::print(printer,
        HistoryPrintLayout::heading(RunText::heading(*m_current), QDateTime::currentDateTime()),
        body, {});
}

void frmHistory::cmdPrint_Click()
{
    TopLevel::run(m_state, [this] {
        if (!m_current)
            return;
        QPrinter printer(QPrinter::HighResolution);
        printer.setPageOrientation(QPageLayout::Landscape);
        printer.setDocName(HistoryPrintLayout::Title);
        if (!m_choosePrinter || !m_choosePrinter(printer))
            return;
        if (!printTo(printer)) {
            m_state.prompter().notice(u"The printer could not be started."_qs, kTitle);
            return;
        }
        m_state.prompter().notice(u"Run details printed."_qs, kTitle);
    });
}

void frmHistory::cmdPdf_Click()
{
    TopLevel::run(m_state, [this] {
        if (!m_current)
            return;
        const QString path = m_chooseFile(u"Save the run as PDF"_qs,
            u"remitra-run-%1.pdf"_qs.arg(m_current->id), u"PDF files (*.pdf)"_qs);
        if (path.isEmpty())
            return;
        QPrinter printer(QPrinter::HighResolution);
        printer.setOutputFormat(QPrinter::PdfFormat);
        printer.setOutputFileName(path);
        printer.setPageOrientation(QPageLayout::Landscape);
        printer.setDocName(HistoryPrintLayout::Title);
        if (!printTo(printer)) {
            m_state.prompter().notice(u"The PDF file could not be written."_qs, kTitle);
            return;
        }
        m_state.prompter().notice(u"The details of run %1 were saved to %2."_qs.arg(m_current->id)
                                      .arg(QDir::toNativeSeparators(path)),
            kTitle);
    });
}

void frmHistory::cmdExit_Click()
{
    close();
}
