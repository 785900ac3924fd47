#pragma once

#include <QDialog>

class EnrolmentListWidget;
class ProgramState;
class QPushButton;

// Vendor enrolment: lists every vendor and lets the user set its Remitra flag
// (Y, N or D). Closing after a flag was typed writes and sends the vendor
// file. Modal.
class frmVendorUpdate : public QDialog
{
    Q_OBJECT

public:
    frmVendorUpdate(ProgramState &state, QWidget *parent = nullptr);

public slots:
    void cmdExit_Click();
    void done(int result) override;

protected:
    void showEvent(QShowEvent *event) override;

private:
    void Form_Unload();

    ProgramState &m_state;
    EnrolmentListWidget *m_list;
    QPushButton *m_cmdExit;
    bool m_unloaded = false;
    bool m_centred = false;
};
