#pragma once

#include "hostdb/PaymentRow.h"

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
class LastBatchWindow;

// "Make Payments": the entered checks payable to enrolled owners and
// vendors. The user chooses some or all of them (click, Ctrl-click,
// Shift-click, "Select All"), sees their total, and pays them electronically.
// Modeless; one instance at a time (open()).
class PaymentSelectionWindow : public QWidget
{
    Q_OBJECT

public:
    PaymentSelectionWindow(ProgramState &state, QWidget *parent = nullptr);

    // Shows the screen, creating it when it is not open yet.
    static PaymentSelectionWindow *open(ProgramState &state, QWidget *parent = nullptr);

    // The chosen rows in the order they were chosen.
    QList<PaymentRow> selectedRows() const;
    bool stopRejectionMessages() const { return m_stopRejections; }

public slots:
    void sortList();
    void selectAll();
    void deselectAll();
    void paySelectedChecks();
    void showLastBatch();
    void exitScreen();

private:
    void load();
    void updateSelection(const QItemSelection &selected, const QItemSelection &deselected);
    void loadList();
    void reselect();
    void emptySelection();
    void showTotal();

    ProgramState &m_state;
    PaymentListModel *m_model;
    QTableView *m_gridMakePayments;
    QComboBox *m_optSortBy;
    QLineEdit *m_txtTotalSelected;
    QPushButton *m_cmdSelectAll;
    QPushButton *m_cmdDeSelectAll;
    QPushButton *m_cmdMakePaymentsNow;
    QPushButton *m_cmdShowLast;
    QPushButton *m_cmdExit;

    // The chosen rows by check and payee, in the order they were chosen.
    QList<PaymentRow::Key> m_selection;
    bool m_quiet = false; // selection changed by the program, not the user
    bool m_stopRejections = false;
    QPointer<LastBatchWindow> m_showLast;
};
