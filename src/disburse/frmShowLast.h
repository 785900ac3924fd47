#pragma once

#include <QWidget>

class ProgramState;
class QPushButton;
class QTableWidget;

// "Last Batch Processed": the lines of the last distribution sent, one row
// each (check, payee, remark, amount). Read-only; loaded when created.
class frmShowLast : public QWidget
{
    Q_OBJECT

public:
    frmShowLast(ProgramState &state, QWidget *parent = nullptr);

public slots:
    void cmdExit_Click();

private:
    void Form_Load();

    ProgramState &m_state;
    QTableWidget *gridShowLast;
    QPushButton *cmdExit;
};
