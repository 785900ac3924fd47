#pragma once

#include "app/LoginScreen.h"

#include <QWidget>

class ProgramState;
class QGroupBox;
class QLabel;
class QPushButton;

// "Remitra Main Menu": the program's first screen and its menu. Loading it
// runs the start-up; every button checks the state first (the login notice
// while credentials are missing, and for the owner, vendor and payment
// buttons first the not-yet-available notice while disbursement is off),
// then runs its job or opens its screen.
class frmRemitraMain : public QWidget, private LoginScreen
{
    Q_OBJECT

public:
    explicit frmRemitraMain(ProgramState &state, QWidget *parent = nullptr);
    ~frmRemitraMain() override;

    // The start-up of the screen: centres it, shows the version and runs the
    // start-up job. False when the program ends without showing the menu.
    bool Form_Load();

    static QString notYetAvailableText();
    static QString notYetAvailableTitle();

private slots:
    void cmdUploadAll_Click();
    void cmdDownloadPayment_Click();
    void cmdTenantUpdate_Click();
    void cmdOwnerUpdate_Click();
    void cmdVendorUpdate_Click();
    void cmdMakePayments_Click();
    void cmdViewFiles_Click();
    void cmdHistory_Click();
    void cmdLogin_Click();
    void cmdExit_Click();

private:
    // LoginScreen: the login screen, modal over this one.
    void showLogin(ProgramState &state) override;
    void closeEvent(QCloseEvent *event) override;

    // The login check shared by every command that needs the processor;
    // true when the command may go on.
    bool loginPresent();
    // The check of the owner, vendor and payment commands: disbursement
    // first, then the login.
    bool disbursementAllowed();

    // Where the jobs and screens of the commands are started.
    void runUploadAll();
    void openDownload();
    void openTenantUpdate();
    void openOwnerUpdate();
    void openVendorUpdate();
    void openMakePayments();
    void openViewFiles();
    void openHistory();

    ProgramState &m_state;
    QLabel *labIntro;
    QLabel *labVersion;
    QGroupBox *fraOption1;
    QLabel *Label1;
    QPushButton *cmdUploadAll;
    QGroupBox *fraOption2;
    QLabel *labStep2;
    QPushButton *cmdDownloadPayment;
    QGroupBox *fraOption3;
    QLabel *labStep3;
    QPushButton *cmdTenantUpdate;
    QPushButton *cmdOwnerUpdate;
    QPushButton *cmdVendorUpdate;
    QGroupBox *fraOption4;
    QLabel *labStep4;
    QPushButton *cmdMakePayments;
    QPushButton *cmdLogin;
    QPushButton *cmdViewFiles;
    QPushButton *cmdHistory;
    QPushButton *cmdExit;
};
