#pragma once

#include "disburse/PaymentRow.h"

#include <QList>
#include <QPointer>
#include <QWidget>

class ProgramState;
class PaymentListModel;
class QComboBox;
class QItemSelection;
class QLabel;
class QLineEdit;
class QPushButton;
class QTableView;
class frmShowLast;

// "Make Payments": the entered checks payable to enrolled owners and
// vendors. The user chooses some or all of them (click, Ctrl-click,
// Shift-click, "Select All"), sees their total, and pays them electronically.
// Modeless; one instance at a time (open()).
class frmMakePayments : public QWidget
{
    Q_OBJECT

public:
    frmMakePayments(ProgramState &state, QWidget *parent = nullptr);

    // Shows the screen, creating it when it is not open yet.
    static frmMakePayments *open(ProgramState &state, QWidget *parent = nullptr);

    // The chosen rows in the order they were chosen.
    QList<PaymentRow> selectedRows() const;
    bool stopRejectionMessages() const { return m_stopRejections; }

public slots:
    void optSortBy_Click();
    void cmdSelectAll_Click();
    void cmdDeSelectAll_Click();
    void cmdMakePaymentsNow_Click();
    void cmdShowLast_Click();
    void cmdExit_Click();

private:
    void Form_Load();
    void gridMakePayments_SelChange(
        const QItemSelection &selected, const QItemSelection &deselected);
    void loadList();
    void reselect();
    void emptySelection();
    void showTotal();

    ProgramState &m_state;
    PaymentListModel *m_model;
    QTableView *gridMakePayments;
    QComboBox *optSortBy;
    QLineEdit *txtTotalSelected;
    QPushButton *cmdSelectAll;
    QPushButton *cmdDeSelectAll;
    QPushButton *cmdMakePaymentsNow;
    QPushButton *cmdShowLast;
    QPushButton *cmdExit;

    // The chosen rows by check and payee, in the order they were chosen.
    QList<PaymentRow::Key> m_selection;
    bool m_quiet = false; // selection changed by the program, not the user
    bool m_stopRejections = false;
    QPointer<frmShowLast> m_showLast;
};
