#include "app/LoginDialog.h"

#include "app/ProgramState.h"
#include "app/QtCentre.h"
#include "app/QtGridFit.h"
#include "app/TopLevel.h"
#include "core/VbText.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

LoginDialog::LoginDialog(ProgramState &state, QWidget *parent)
    : QDialog(parent)
    , m_state(state)
{
    setObjectName(u"frmLogin"_qs);
    setWindowTitle(u"Remitra Login Page"_qs);
    setModal(true);

    m_labInstructions = new QLabel(
        u"You must enter all 3 items below the first time your access your account. Please type "
        "carefully and enter the User Name, Password, and URL that you have been assigned. DO NOT "
        "ENTER ANYTHING UNLESS YOUR ACCOUNT IS NEW OR HAS CHANGED."_qs,
        this);
    m_labInstructions->setObjectName(u"labInstructions"_qs);
    m_labInstructions->setWordWrap(true);

    m_labUserName = new QLabel(u"User Name: "_qs, this);
    m_labUserName->setObjectName(u"labUserName"_qs);
    m_txtUserName = new QLineEdit(this);
    m_txtUserName->setObjectName(u"txtUserName"_qs);
    m_txtUserName->setAccessibleName(u"User Name"_qs);
    m_labUserName->setBuddy(m_txtUserName);

    m_labPassword = new QLabel(u"Password:"_qs, this);
    m_labPassword->setObjectName(u"labPassword"_qs);
    m_txtPassword = new QLineEdit(this);
    m_txtPassword->setObjectName(u"txtPassword"_qs);
    m_txtPassword->setAccessibleName(u"Password"_qs);
    m_txtPassword->setEchoMode(QLineEdit::Password);
    m_labPassword->setBuddy(m_txtPassword);

    m_labURL = new QLabel(u"URL: "_qs, this);
    m_labURL->setObjectName(u"labURL"_qs);
    m_txtURL = new QLineEdit(this);
    m_txtURL->setObjectName(u"txtURL"_qs);
    m_txtURL->setAccessibleName(u"URL"_qs);
    m_txtURL->setMinimumWidth(380);
    m_labURL->setBuddy(m_txtURL);

    m_cmdSave = new QPushButton(u"&Save and Exit"_qs, this);
    m_cmdSave->setObjectName(u"cmdSave"_qs);
    m_cmdSave->setDefault(true);
    m_cmdCancel = new QPushButton(u"Cancel"_qs, this);
    m_cmdCancel->setObjectName(u"cmdCancel"_qs);

    auto *fields = new QGridLayout;
    fields->addWidget(m_labUserName, 0, 0);
    fields->addWidget(m_txtUserName, 0, 1);
    fields->addWidget(m_labPassword, 1, 0);
    fields->addWidget(m_txtPassword, 1, 1);
    fields->addWidget(m_labURL, 2, 0);
    fields->addWidget(m_txtURL, 2, 1);

    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_cmdSave);
    buttons->addWidget(m_cmdCancel);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_labInstructions);
    layout->addSpacing(8);
    layout->addLayout(fields);
    layout->addSpacing(8);
    layout->addLayout(buttons);
    // A taller window (maximised) keeps the controls together at the top.
    layout->addStretch(1);
    setMinimumWidth(520);
    QtGridFit::keepControlsWhole(*this);

    setTabOrder(m_txtUserName, m_txtPassword);
    setTabOrder(m_txtPassword, m_txtURL);
    setTabOrder(m_txtURL, m_cmdSave);
    setTabOrder(m_cmdSave, m_cmdCancel);
    m_txtUserName->setFocus();

    connect(m_cmdSave, &QPushButton::clicked, this, &LoginDialog::saveAndExit);
    connect(m_cmdCancel, &QPushButton::clicked, this, &LoginDialog::cancel);
}

void LoginDialog::showModal(ProgramState &state, QWidget *parent)
{
    LoginDialog screen(state, parent);
    screen.exec();
}

void LoginDialog::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    if (!m_centred) {
        m_centred = true;
        centreOnScreen(*this);
    }
}

void LoginDialog::saveAndExit()
{
    TopLevel::run(m_state, [&] {
        m_state.login.url = VbText::trim(m_txtURL->text());
        m_state.login.user = VbText::trim(m_txtUserName->text());
        m_state.login.password = VbText::trim(m_txtPassword->text());
        m_state.login.missing = m_state.login.url.isEmpty() || m_state.login.user.isEmpty()
            || m_state.login.password.isEmpty();
        accept();
    });
}

void LoginDialog::cancel()
{
    reject();
}
