#pragma once

#include "hostdb/Journal.h"

#include <QPointer>
#include <QWidget>

#include <functional>
#include <optional>

class HistoryTableModel;
class ProgramState;
class QCheckBox;
class QComboBox;
class QDateEdit;
class QLabel;
class QPrinter;
class QPushButton;
class QTabWidget;
class QTableView;

// "Remitra History": the journal's runs, newest first, filtered by kind and
// date; the details of the chosen run (its lines, the host rows it wrote,
// the messages the user saw, its files); its file in the transfer file
// viewer; export to CSV; printing or PDF of the details; and, for a rent
// posting, its reversal and the putting back of its payment file.
// Modeless; open() keeps a single instance and reads the journal afresh.
class HistoryWindow : public QWidget
{
    Q_OBJECT

public:
    HistoryWindow(ProgramState &state, QWidget *parent = nullptr);

    static HistoryWindow *open(ProgramState &state, QWidget *parent = nullptr);

    // Where exports and PDFs go: a save dialog by default. Returns "" when
    // the user cancelled.
    using FileChooser = std::function<QString(
        const QString &caption, const QString &name, const QString &filter)>;
    void setFileChooser(FileChooser chooser) { m_chooseFile = std::move(chooser); }
    // How printing obtains its printer: the print dialog by default.
    using PrinterChooser = std::function<bool(QPrinter &)>;
    void setPrinterChooser(PrinterChooser chooser) { m_choosePrinter = std::move(chooser); }

    // Reads the list again, keeping the chosen run when it is still listed.
    void reload();
    // Chooses the run in the list; false when it is not listed.
    bool selectRun(qint64 runId);
    std::optional<Journal::Run> currentRun() const { return m_current; }

    // Details are shown for this many lines and rows at most.
    static constexpr int ShownAtMost = 5000;

public slots:
    void chooseKind();
    void viewFile();
    void reversePosting();
    void putBackPaymentFile();
    void exportList();
    void exportRun();
    void printRun();
    void saveRunAsPdf();
    void exitScreen();

private:
    void buildUi();
    void showRun(int row);
    void updateCommands();
    Journal::Filter filter() const;
    bool printTo(QPrinter &printer);

    ProgramState &m_state;
    QList<Journal::Run> m_runs;
    std::optional<Journal::Run> m_current;
    FileChooser m_chooseFile;
    PrinterChooser m_choosePrinter;

    QComboBox *m_cboKind = nullptr;
    QCheckBox *m_chkDates = nullptr;
    QDateEdit *m_dtpFrom = nullptr;
    QDateEdit *m_dtpTo = nullptr;
    QTableView *m_gridRuns = nullptr;
    HistoryTableModel *m_runModel = nullptr;
    QLabel *m_labRun = nullptr;
    QTabWidget *m_tabDetails = nullptr;
    QTableView *m_gridLines = nullptr;
    QTableView *m_gridRows = nullptr;
    QTableView *m_gridMessages = nullptr;
    QTableView *m_gridFiles = nullptr;
    HistoryTableModel *m_lineModel = nullptr;
    HistoryTableModel *m_rowModel = nullptr;
    HistoryTableModel *m_messageModel = nullptr;
    HistoryTableModel *m_fileModel = nullptr;
    QLabel *m_labShown = nullptr;
    QPushButton *m_cmdViewFile = nullptr;
    QPushButton *m_cmdReverse = nullptr;
    QPushButton *m_cmdPutBack = nullptr;
    QPushButton *m_cmdExportList = nullptr;
    QPushButton *m_cmdExportRun = nullptr;
    QPushButton *m_cmdPrint = nullptr;
    QPushButton *m_cmdPdf = nullptr;
    QPushButton *m_cmdExit = nullptr;

    static QPointer<HistoryWindow> s_instance;
};
