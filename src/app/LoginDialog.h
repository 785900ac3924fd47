#pragma once

#include <QDialog>

class ProgramState;
class QLabel;
class QLineEdit;
class QPushButton;

// "Remitra Login Page": asks for the processor user name, password and URL.
// The boxes always open empty. "Save and Exit" puts the trimmed entries into
// the state and sets login.missing; "Cancel" changes nothing. Nothing is
// written to the settings store here.
class LoginDialog : public QDialog
{
    Q_OBJECT

public:
    explicit LoginDialog(ProgramState &state, QWidget *parent = nullptr);

    // Shows the screen modally over parent, centred on the screen.
    static void showModal(ProgramState &state, QWidget *parent);

private slots:
    void saveAndExit();
    void cancel();

private:
    void showEvent(QShowEvent *event) override;

    ProgramState &m_state;
    QLabel *m_labInstructions;
    QLabel *m_labUserName;
    QLineEdit *m_txtUserName;
    QLabel *m_labPassword;
    QLineEdit *m_txtPassword;
    QLabel *m_labURL;
    QLineEdit *m_txtURL;
    QPushButton *m_cmdSave;
    QPushButton *m_cmdCancel;
    bool m_centred = false;
};
