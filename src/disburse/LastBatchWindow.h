#pragma once

#include <QWidget>

class ProgramState;
class QPushButton;
class QTableWidget;

// "Last Batch Processed": the lines of the last distribution sent, one row
// each (check, payee, remark, amount). Read-only; loaded when created.
class LastBatchWindow : public QWidget
{
    Q_OBJECT

public:
    LastBatchWindow(ProgramState &state, QWidget *parent = nullptr);

public slots:
    void exitScreen();

private:
    void load();

    ProgramState &m_state;
    QTableWidget *m_gridShowLast;
    QPushButton *m_cmdExit;
};
