#pragma once

#include <QDialog>

class ProgramState;
class QLabel;
class QLineEdit;
class QPushButton;

// "Remitra Login Page": asks for the processor user name, password and URL.
// The boxes always open empty. "Save and Exit" puts the trimmed entries into
// the state and sets LoginMissing; "Cancel" changes nothing. Nothing is
// written to the settings store here.
class frmLogin : public QDialog
{
    Q_OBJECT

public:
    explicit frmLogin(ProgramState &state, QWidget *parent = nullptr);

    // Shows the screen modally over parent, centred on the screen.
    static void showModal(ProgramState &state, QWidget *parent);

private slots:
    void cmdSave_Click();
    void cmdCancel_Click();

private:
    void showEvent(QShowEvent *event) override;

    ProgramState &m_state;
    QLabel *labInstructions;
    QLabel *labUserName;
    QLineEdit *txtUserName;
    QLabel *labPassword;
    QLineEdit *txtPassword;
    QLabel *labURL;
    QLineEdit *txtURL;
    QPushButton *cmdSave;
    QPushButton *cmdCancel;
    bool m_centred = false;
};
