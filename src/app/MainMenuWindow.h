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
class MainMenuWindow : public QWidget, private LoginScreen
{
    Q_OBJECT

public:
    explicit MainMenuWindow(ProgramState &state, QWidget *parent = nullptr);
    ~MainMenuWindow() override;

    // The start-up of the screen: centres it, shows the version and runs the
    // start-up job. False when the program ends without showing the menu.
    bool load();

    static QString notYetAvailableText();
    static QString notYetAvailableTitle();

private slots:
    void uploadAll();
    void downloadAndPostPayments();
    void changeTenants();
    void changeOwners();
    void changeVendors();
    void makePayments();
    void viewFiles();
    void showHistory();
    void resetLogIn();
    void exitScreen();

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
    void sendAllInfo();
    void openRentReview();
    void openTenantEnrolment();
    void openOwnerEnrolment();
    void openVendorEnrolment();
    void openPaymentSelection();
    void openFileViewer();
    void openHistory();

    ProgramState &m_state;
    QLabel *m_labIntro;
    QLabel *m_labVersion;
    QGroupBox *m_fraOption1;
    QLabel *m_Label1;
    QPushButton *m_cmdUploadAll;
    QGroupBox *m_fraOption2;
    QLabel *m_labStep2;
    QPushButton *m_cmdDownloadPayment;
    QGroupBox *m_fraOption3;
    QLabel *m_labStep3;
    QPushButton *m_cmdTenantUpdate;
    QPushButton *m_cmdOwnerUpdate;
    QPushButton *m_cmdVendorUpdate;
    QGroupBox *m_fraOption4;
    QLabel *m_labStep4;
    QPushButton *m_cmdMakePayments;
    QPushButton *m_cmdLogin;
    QPushButton *m_cmdViewFiles;
    QPushButton *m_cmdHistory;
    QPushButton *m_cmdExit;
};
