#pragma once

#include <QDialog>

class EnrolmentListWidget;
class ProgramState;
class QPushButton;

// Tenant enrolment: lists every tenant of the portfolio with its owner,
// property and unit and lets the user set its Remitra flag (Y, N or D).
// Closing after a flag was typed sends the whole tenant upload. Modal.
class frmTenantUpdate : public QDialog
{
    Q_OBJECT

public:
    frmTenantUpdate(ProgramState &state, QWidget *parent = nullptr);

public slots:
    void cmdExport_Click();
    void cmdExit_Click();
    void done(int result) override;

protected:
    void showEvent(QShowEvent *event) override;

private:
    void Form_Unload();

    ProgramState &m_state;
    EnrolmentListWidget *m_list;
    QPushButton *m_cmdExport;
    QPushButton *m_cmdExit;
    bool m_unloaded = false;
    bool m_centred = false;
};
