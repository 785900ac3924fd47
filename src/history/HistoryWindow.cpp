#include "history/HistoryWindow.h"

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
#include "viewer/TransferFileViewer.h"

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

QPointer<HistoryWindow> HistoryWindow::s_instance;

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

HistoryWindow::HistoryWindow(ProgramState &state, QWidget *parent)
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

HistoryWindow *HistoryWindow::open(ProgramState &state, QWidget *parent)
{
    if (!s_instance) {
        s_instance = new HistoryWindow(state, parent);
        s_instance->setAttribute(Qt::WA_DeleteOnClose);
    } else {
        TopLevel::run(state, [] { s_instance->reload(); });
    }
    s_instance->show();
    s_instance->raise();
    s_instance->activateWindow();
    return s_instance;
}

void HistoryWindow::buildUi()
{
    setObjectName(u"frmHistory"_qs);
    setWindowTitle(kTitle);

    m_cboKind = new QComboBox(this);
    m_cboKind->setObjectName(u"cboKind"_qs);
    m_cboKind->addItem(u"All kinds"_qs);
    for (Journal::Kind kind : Journal::kinds())
        m_cboKind->addItem(Journal::kindCaption(kind), Journal::kindName(kind));
    auto *labKind = buddyLabel(u"&Kind:"_qs, m_cboKind, this);
    labKind->setObjectName(u"labKind"_qs);

    m_chkDates = new QCheckBox(u"Filter by d&ates"_qs, this);
    m_chkDates->setObjectName(u"chkDates"_qs);
    m_dtpFrom = new QDateEdit(QDate::currentDate().addMonths(-1), this);
    m_dtpFrom->setObjectName(u"dtpFrom"_qs);
    m_dtpTo = new QDateEdit(QDate::currentDate(), this);
    m_dtpTo->setObjectName(u"dtpTo"_qs);
    for (QDateEdit *edit : { m_dtpFrom, m_dtpTo }) {
        edit->setCalendarPopup(true);
        edit->setEnabled(false);
        // Tall enough for its text box's least height in every style.
        edit->setMinimumHeight(edit->sizeHint().height() + 2);
    }
    auto *labFrom = buddyLabel(u"&From:"_qs, m_dtpFrom, this);
    labFrom->setObjectName(u"labFrom"_qs);
    auto *labTo = buddyLabel(u"&To:"_qs, m_dtpTo, this);
    labTo->setObjectName(u"labTo"_qs);

    m_runModel = new HistoryTableModel(this);
    m_gridRuns = grid(u"gridRuns"_qs, u"Runs"_qs, m_runModel, this);
    auto *labRuns = buddyLabel(u"Runs, newest first:"_qs, m_gridRuns, this);
    labRuns->setObjectName(u"labRuns"_qs);

    m_labRun = new QLabel(this);
    m_labRun->setObjectName(u"labRun"_qs);
    m_labRun->setWordWrap(true);
    m_labRun->setTextInteractionFlags(Qt::TextSelectableByMouse);

    m_tabDetails = new QTabWidget(this);
    m_tabDetails->setObjectName(u"tabDetails"_qs);
    m_tabDetails->setAccessibleName(u"Details of the run"_qs);
    m_lineModel = new HistoryTableModel(this);
    m_rowModel = new HistoryTableModel(this);
    m_messageModel = new HistoryTableModel(this);
    m_fileModel = new HistoryTableModel(this);
    m_gridLines = grid(u"gridLines"_qs, u"Lines of the run"_qs, m_lineModel, m_tabDetails);
    m_gridRows
        = grid(u"gridRows"_qs, u"Rows the run wrote in Dwellix"_qs, m_rowModel, m_tabDetails);
    m_gridMessages
        = grid(u"gridMessages"_qs, u"Messages the user saw"_qs, m_messageModel, m_tabDetails);
    m_gridFiles = grid(u"gridFiles"_qs, u"Files of the run"_qs, m_fileModel, m_tabDetails);
    m_tabDetails->addTab(m_gridLines, u"Lines"_qs);
    m_tabDetails->addTab(m_gridRows, u"Rows Posted"_qs);
    m_tabDetails->addTab(m_gridMessages, u"Messages"_qs);
    m_tabDetails->addTab(m_gridFiles, u"Files"_qs);

    m_labShown = new QLabel(this);
    m_labShown->setObjectName(u"labShown"_qs);
    m_labShown->setWordWrap(true);

    auto button = [this](const QString &name, const QString &caption, const QString &tip) {
        auto *b = new QPushButton(caption, this);
        b->setObjectName(name);
        b->setAutoDefault(false);
        b->setToolTip(tip);
        return b;
    };
    m_cmdViewFile = button(u"cmdViewFile"_qs, u"&View File"_qs,
        u"Shows the run's file (the chosen one on the Files page) in the file viewer."_qs);
    m_cmdReverse = button(u"cmdReverse"_qs, u"&Reverse Posting"_qs,
        u"Takes this rent posting out of the Dwellix ledgers and puts its payments back for "
        "review."_qs);
    m_cmdPutBack = button(u"cmdPutBack"_qs, u"Put &Back Payment File"_qs,
        u"Puts the payment file of this reversed posting back for review."_qs);
    m_cmdExportList = button(
        u"cmdExportList"_qs, u"Export &List..."_qs, u"Saves the runs listed as a CSV file."_qs);
    m_cmdExportRun = button(u"cmdExportRun"_qs, u"Export R&un..."_qs,
        u"Saves the details of this run as a CSV file."_qs);
    m_cmdPrint = button(u"cmdPrint"_qs, u"&Print Run..."_qs, u"Prints the details of this run."_qs);
    m_cmdPdf = button(u"cmdPdf"_qs, u"Save Run as P&DF..."_qs,
        u"Saves the details of this run as a PDF file."_qs);
    m_cmdExit = button(u"cmdExit"_qs, u"&Exit"_qs, {});

    auto *filters = new QHBoxLayout;
    filters->addWidget(labKind);
    filters->addWidget(m_cboKind);
    filters->addSpacing(16);
    filters->addWidget(m_chkDates);
    filters->addWidget(labFrom);
    filters->addWidget(m_dtpFrom);
    filters->addWidget(labTo);
    filters->addWidget(m_dtpTo);
    filters->addStretch(1);

    auto *runCommands = new QHBoxLayout;
    runCommands->addWidget(m_cmdViewFile);
    runCommands->addWidget(m_cmdReverse);
    runCommands->addWidget(m_cmdPutBack);
    runCommands->addStretch(1);
    auto *outputs = new QHBoxLayout;
    outputs->addWidget(m_cmdExportList);
    outputs->addWidget(m_cmdExportRun);
    outputs->addWidget(m_cmdPrint);
    outputs->addWidget(m_cmdPdf);
    outputs->addStretch(1);
    outputs->addWidget(m_cmdExit);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(filters);
    layout->addWidget(labRuns);
    layout->addWidget(m_gridRuns, 2);
    layout->addWidget(m_labRun);
    layout->addWidget(m_tabDetails, 3);
    layout->addWidget(m_labShown);
    layout->addLayout(runCommands);
    layout->addLayout(outputs);

    QWidget *order[] = { m_cboKind, m_chkDates, m_dtpFrom, m_dtpTo, m_gridRuns, m_tabDetails,
        m_cmdViewFile, m_cmdReverse, m_cmdPutBack, m_cmdExportList, m_cmdExportRun, m_cmdPrint,
        m_cmdPdf, m_cmdExit };
    for (std::size_t i = 1; i < std::size(order); ++i)
        setTabOrder(order[i - 1], order[i]);

    connect(m_cboKind, &QComboBox::currentIndexChanged, this, &HistoryWindow::chooseKind);
    connect(m_chkDates, &QCheckBox::toggled, this, [this](bool on) {
        m_dtpFrom->setEnabled(on);
        m_dtpTo->setEnabled(on);
        chooseKind();
    });
    connect(m_dtpFrom, &QDateEdit::dateChanged, this, &HistoryWindow::chooseKind);
    connect(m_dtpTo, &QDateEdit::dateChanged, this, &HistoryWindow::chooseKind);
    connect(m_gridRuns->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
        [this](const QModelIndex &current) {
            TopLevel::run(m_state, [&] { showRun(current.row()); });
        });
    connect(m_cmdViewFile, &QPushButton::clicked, this, &HistoryWindow::viewFile);
    connect(m_cmdReverse, &QPushButton::clicked, this, &HistoryWindow::reversePosting);
    connect(m_cmdPutBack, &QPushButton::clicked, this, &HistoryWindow::putBackPaymentFile);
    connect(m_cmdExportList, &QPushButton::clicked, this, &HistoryWindow::exportList);
    connect(m_cmdExportRun, &QPushButton::clicked, this, &HistoryWindow::exportRun);
    connect(m_cmdPrint, &QPushButton::clicked, this, &HistoryWindow::printRun);
    connect(m_cmdPdf, &QPushButton::clicked, this, &HistoryWindow::saveRunAsPdf);
    connect(m_cmdExit, &QPushButton::clicked, this, &HistoryWindow::exitScreen);
    // Esc leaves the screen as Exit does, like the other viewers.
    auto *escape = new QShortcut(QKeySequence(Qt::Key_Escape), this);
    connect(escape, &QShortcut::activated, this, &HistoryWindow::exitScreen);

    QtGridFit::keepControlsWhole(*this);
    resize(1000, 680);
    centreOnScreen(*this);
}

Journal::Filter HistoryWindow::filter() const
{
    Journal::Filter f;
    if (m_cboKind->currentIndex() > 0)
        f.kind = Journal::kindOf(m_cboKind->currentData().toString());
    if (m_chkDates->isChecked()) {
        f.from = m_dtpFrom->date();
        f.to = m_dtpTo->date();
    }
    return f;
}

void HistoryWindow::reload()
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

bool HistoryWindow::selectRun(qint64 runId)
{
    for (int r = 0; r < m_runs.size(); ++r) {
        if (m_runs[r].id != runId)
            continue;
        m_gridRuns->selectionModel()->setCurrentIndex(m_runModel->index(r, 0),
            QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
        // The same row chosen again after a reload: its details afresh.
        if (!m_current || m_current->id != runId)
            showRun(r);
        return true;
    }
    return false;
}

void HistoryWindow::showRun(int row)
{
    if (row < 0 || row >= m_runs.size()) {
        m_current.reset();
        const Journal::Filter f = filter();
        const bool filtered = f.kind || f.from.isValid();
        m_labRun->setText(!m_runs.isEmpty() ? QString()
                : filtered                  ? u"No run of this kind or in these dates."_qs
                                            : u"No runs are recorded yet."_qs);
        for (HistoryTableModel *model : { m_lineModel, m_rowModel, m_messageModel, m_fileModel })
            model->setTable({});
        m_labShown->clear();
        updateCommands();
        return;
    }
    Journal journal(m_state.store());
    m_current = journal.run(m_runs[row].id);
    if (!m_current)
        return;
    const qint64 id = m_current->id;
    m_labRun->setText(RunText::heading(*m_current));
    m_lineModel->setTable(RunText::lines(journal.lines(id, ShownAtMost)));
    m_rowModel->setTable(RunText::rows(journal.rows(id, ShownAtMost)));
    m_messageModel->setTable(RunText::messages(journal.messages(id)));
    m_fileModel->setTable(RunText::files(journal.files(id)));
    const qint64 lines = journal.lineCount(id);
    const qint64 rows = journal.rowCount(id);
    m_labShown->setText(lines > ShownAtMost || rows > ShownAtMost
            ? u"The details show the first %1 of %2 lines and %3 rows; export the run to see "
              "them all."_qs.arg(ShownAtMost)
                  .arg(lines)
                  .arg(rows)
            : QString());
    updateCommands();
}

void HistoryWindow::updateCommands()
{
    const bool run = m_current.has_value();
    const bool posting = run && m_current->kind == Journal::Kind::RentPosting;
    m_cmdViewFile->setEnabled(run && m_fileModel->rowCount() > 0);
    m_cmdReverse->setEnabled(posting
        && (m_current->result.state == Journal::Posted
            || m_current->result.state == Journal::Stopped));
    m_cmdPutBack->setEnabled(posting && ReversePosting::canPutBack(m_state, *m_current));
    m_cmdExportList->setEnabled(!m_runs.isEmpty());
    m_cmdExportRun->setEnabled(run);
    m_cmdPrint->setEnabled(run);
    m_cmdPdf->setEnabled(run);
}

void HistoryWindow::chooseKind()
{
    TopLevel::run(m_state, [this] { reload(); });
}

void HistoryWindow::viewFile()
{
    TopLevel::run(m_state, [this] {
        if (!m_current)
            return;
        const QList<Journal::File> files = Journal(m_state.store()).files(m_current->id);
        if (files.isEmpty())
            return;
        int chosen = m_gridFiles->currentIndex().isValid() ? m_gridFiles->currentIndex().row() : 0;
        const Journal::File &file = files.value(chosen, files.first());
        // The archived copy is the file as it was; the named one may have
        // been replaced since.
        TransferFileViewer::openFile(
            m_state, file.archive.isEmpty() ? file.name : file.archive, parentWidget());
    });
}

void HistoryWindow::reversePosting()
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

void HistoryWindow::putBackPaymentFile()
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

void HistoryWindow::exportList()
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

void HistoryWindow::exportRun()
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

bool HistoryWindow::printTo(QPrinter &printer)
{
    QStringList body;
    body += HistoryPrintLayout::part(u"Lines"_qs, m_lineModel->table());
    body += HistoryPrintLayout::part(u"Rows posted"_qs, m_rowModel->table());
    body += HistoryPrintLayout::part(u"Messages"_qs, m_messageModel->table());
    body += HistoryPrintLayout::part(u"Files"_qs, m_fileModel->table());
    if (!m_labShown->text().isEmpty())
        body << m_labShown->text();
    return DownloadPrinter::print(printer,
        HistoryPrintLayout::heading(RunText::heading(*m_current), QDateTime::currentDateTime()),
        body, {});
}

void HistoryWindow::printRun()
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

void HistoryWindow::saveRunAsPdf()
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

void HistoryWindow::exitScreen()
{
    close();
}
