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
class frmDownload : public QDialog
{
    Q_OBJECT

public:
    frmDownload(ProgramState &state, QWidget *parent = nullptr);
    ~frmDownload() override;

    // How PrintScreen obtains its printer: the print dialog by default.
    // Returns false when the user cancelled.
    using PrinterChooser = std::function<bool(QPrinter &)>;
    void setPrinterChooser(PrinterChooser chooser) { m_choosePrinter = std::move(chooser); }

    bool posted() const { return m_posted; }
    int rowCount() const;
    const PaymentTableModel &model() const { return *m_model; }

public slots:
    void cmdUpdate_Click();
    void cmdDeleteAll_Click();
    void cmdPrintScreen_Click();
    void cmdExit_Click();
    void optRemark_Click();
    void txtCreateDeposit_LostFocus();
    // The grid's row deletion: the rows selected by their record selectors.
    void gridACHDownload_DeleteRows();
    // Leaving asks first while unposted payments are on screen.
    void reject() override;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void buildUi();
    void Form_Load();
    bool Form_Unload();
    void TransactionTotal();
    void PrintScreen();
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

    QLabel *labDeposits = nullptr;
    QTableView *gridACHDownload = nullptr;
    QLabel *labRemitraPayments = nullptr;
    QLabel *labTotal = nullptr;
    QLabel *labTransTotal = nullptr;
    QLabel *labDelete = nullptr;
    QCheckBox *chkPostMgmtFees = nullptr;
    QCheckBox *chkCreateDeposit = nullptr;
    QLineEdit *txtCreateDeposit = nullptr;
    QButtonGroup *optRemark = nullptr;
    QLineEdit *txtRemark = nullptr;
    QPushButton *cmdUpdate = nullptr;
    QPushButton *cmdDeleteAll = nullptr;
    QPushButton *cmdPrintScreen = nullptr;
    QPushButton *cmdExit = nullptr;
};
