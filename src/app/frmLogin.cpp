#include "app/frmLogin.h"

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

frmLogin::frmLogin(ProgramState &state, QWidget *parent)
    : QDialog(parent)
    , m_state(state)
{
    setObjectName(u"frmLogin"_qs);
    setWindowTitle(u"Remitra Login Page"_qs);
    setModal(true);

    labInstructions = new QLabel(
        u"You must enter all 3 items below the first time your access your account. Please type "
        "carefully and enter the User Name, Password, and URL that you have been assigned. DO NOT "
        "ENTER ANYTHING UNLESS YOUR ACCOUNT IS NEW OR HAS CHANGED."_qs,
        this);
    labInstructions->setObjectName(u"labInstructions"_qs);
    labInstructions->setWordWrap(true);

    labUserName = new QLabel(u"User Name: "_qs, this);
    labUserName->setObjectName(u"labUserName"_qs);
    txtUserName = new QLineEdit(this);
    txtUserName->setObjectName(u"txtUserName"_qs);
    txtUserName->setAccessibleName(u"User Name"_qs);
    labUserName->setBuddy(txtUserName);

    labPassword = new QLabel(u"Password:"_qs, this);
    labPassword->setObjectName(u"labPassword"_qs);
    txtPassword = new QLineEdit(this);
    txtPassword->setObjectName(u"txtPassword"_qs);
    txtPassword->setAccessibleName(u"Password"_qs);
    txtPassword->setEchoMode(QLineEdit::Password);
    labPassword->setBuddy(txtPassword);

    labURL = new QLabel(u"URL: "_qs, this);
    labURL->setObjectName(u"labURL"_qs);
    txtURL = new QLineEdit(this);
    txtURL->setObjectName(u"txtURL"_qs);
    txtURL->setAccessibleName(u"URL"_qs);
    txtURL->setMinimumWidth(380);
    labURL->setBuddy(txtURL);

    cmdSave = new QPushButton(u"&Save and Exit"_qs, this);
    cmdSave->setObjectName(u"cmdSave"_qs);
    cmdSave->setDefault(true);
    cmdCancel = new QPushButton(u"Cancel"_qs, this);
    cmdCancel->setObjectName(u"cmdCancel"_qs);

    auto *fields = new QGridLayout;
    fields->addWidget(labUserName, 0, 0);
    fields->addWidget(txtUserName, 0, 1);
    fields->addWidget(labPassword, 1, 0);
    fields->addWidget(txtPassword, 1, 1);
    fields->addWidget(labURL, 2, 0);
    fields->addWidget(txtURL, 2, 1);

    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(cmdSave);
    buttons->addWidget(cmdCancel);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(labInstructions);
    layout->addSpacing(8);
    layout->addLayout(fields);
    layout->addSpacing(8);
    layout->addLayout(buttons);
    // A taller window (maximised) keeps the controls together at the top.
    layout->addStretch(1);
    setMinimumWidth(520);
    QtGridFit::keepControlsWhole(*this);

    setTabOrder(txtUserName, txtPassword);
    setTabOrder(txtPassword, txtURL);
    setTabOrder(txtURL, cmdSave);
    setTabOrder(cmdSave, cmdCancel);
    txtUserName->setFocus();

    connect(cmdSave, &QPushButton::clicked, this, &frmLogin::cmdSave_Click);
    connect(cmdCancel, &QPushButton::clicked, this, &frmLogin::cmdCancel_Click);
}

void frmLogin::showModal(ProgramState &state, QWidget *parent)
{
    frmLogin screen(state, parent);
    screen.exec();
}

void frmLogin::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    if (!m_centred) {
        m_centred = true;
        centreOnScreen(*this);
    }
}

void frmLogin::cmdSave_Click()
{
    TopLevel::run(m_state, [&] {
        m_state.ProcessorUrl = VbText::Trim(txtURL->text());
        m_state.ProcessorUser = VbText::Trim(txtUserName->text());
        m_state.ProcessorPassword = VbText::Trim(txtPassword->text());
        m_state.LoginMissing = m_state.ProcessorUrl.isEmpty() || m_state.ProcessorUser.isEmpty()
            || m_state.ProcessorPassword.isEmpty();
        accept();
    });
}

void frmLogin::cmdCancel_Click()
{
    reject();
}
