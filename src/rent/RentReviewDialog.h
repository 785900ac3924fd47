#pragma once

#include "core/Currency.h"
#include "rent/PostingChoices.h"

#include <QDialog>

#include <functional>
#include <optional>

class ProgramState;
class PaymentTableModel;
class QButtonGroup;
class QCheckBox;
class QLabel;
class QLineEdit;
class QPrinter;
class QPushButton;
class QTableView;

// "Remitra Payment Download": the review screen of a downloaded payment file.
// Shows the payments matched to their owners, units and tenants, lets the
// user delete rows, print the screen, choose fees, deposit and remark, and
// posts them into the ledgers. Modal; the work is done by the rent jobs.
class RentReviewDialog : public QDialog
{
    Q_OBJECT

public:
    RentReviewDialog(ProgramState &state, QWidget *parent = nullptr);
    ~RentReviewDialog() override;

    // How printRows obtains its printer: the print dialog by default.
    // Returns false when the user cancelled.
    using PrinterChooser = std::function<bool(QPrinter &)>;
    void setPrinterChooser(PrinterChooser chooser) { m_choosePrinter = std::move(chooser); }

    bool posted() const { return m_posted; }
    int rowCount() const;
    const PaymentTableModel &model() const { return *m_model; }

public slots:
    void postToLedgers();
    void deleteAllRows();
    void printScreen();
    void exitScreen();
    void chooseRemark();
    void checkDepositNumber();
    // The grid's row deletion: the rows selected by their record selectors.
    void deleteSelectedRows();
    // Leaving asks first while unposted payments are on screen.
    void reject() override;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void buildUi();
    void load();
    bool unload();
    void showTransactionTotal();
    void printRows();
    void showCount(const QString &text);
    void disableCommands();
    PostingChoices choices() const;

    ProgramState &m_state;
    PaymentTableModel *m_model = nullptr;
    std::optional<Currency> m_total;
    bool m_posted = false;
    QString m_fileSha; // of the payment file the rows were read from
    bool m_checkingDeposit = false;
    PrinterChooser m_choosePrinter;

    QLabel *m_labDeposits = nullptr;
    QTableView *m_gridACHDownload = nullptr;
    QLabel *m_labRemitraPayments = nullptr;
    QLabel *m_labTotal = nullptr;
    QLabel *m_labTransTotal = nullptr;
    QLabel *m_labDelete = nullptr;
    QCheckBox *m_chkPostMgmtFees = nullptr;
    QCheckBox *m_chkCreateDeposit = nullptr;
    QLineEdit *m_txtCreateDeposit = nullptr;
    QButtonGroup *m_optRemark = nullptr;
    QLineEdit *m_txtRemark = nullptr;
    QPushButton *m_cmdUpdate = nullptr;
    QPushButton *m_cmdDeleteAll = nullptr;
    QPushButton *m_cmdPrintScreen = nullptr;
    QPushButton *m_cmdExit = nullptr;
};
