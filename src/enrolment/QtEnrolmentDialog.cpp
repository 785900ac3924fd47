#include "enrolment/QtEnrolmentDialog.h"

#include "app/ProgramState.h"
#include "app/QtCentre.h"
#include "app/TopLevel.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

QtEnrolmentDialog::QtEnrolmentDialog(ProgramState &state, EnrolmentListWidget::Roster roster,
    const EnrolmentTexts &texts, QWidget *parent)
    : QDialog(parent)
    , m_state(state)
{
    setModal(true);
    m_list = new EnrolmentListWidget(state, roster, texts, this);

    auto *cmdExit = new QPushButton(u"E&xit"_qs, this);
    cmdExit->setObjectName(u"cmdExit"_qs);
    cmdExit->setAutoDefault(false);
    m_buttons = new QHBoxLayout;
    m_buttons->addStretch(1);
    m_buttons->addWidget(cmdExit);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_list, 1);
    layout->addLayout(m_buttons);
    connect(cmdExit, &QPushButton::clicked, this, &QtEnrolmentDialog::cmdExit_Click);

    m_list->load();
}

QPushButton *QtEnrolmentDialog::addButton(const QString &caption, const QString &name)
{
    auto *button = new QPushButton(caption, this);
    button->setObjectName(name);
    button->setAutoDefault(false);
    m_buttons->insertWidget(m_buttons->count() - 2, button);
    return button;
}

void QtEnrolmentDialog::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    if (!m_centred) {
        m_centred = true;
        centreOnScreen(*this);
    }
}

void QtEnrolmentDialog::cmdExit_Click()
{
    close();
}

void QtEnrolmentDialog::done(int result)
{
    Form_Unload();
    QDialog::done(result);
}

void QtEnrolmentDialog::Form_Unload()
{
    if (m_unloaded)
        return;
    m_unloaded = true;
    m_list->commitPendingEdit();
    if (m_list->changed())
        TopLevel::run(m_state, [&] { sendChanges(); });
}
