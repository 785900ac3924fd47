#include "enrolment/frmOwnerUpdate.h"

#include "app/ProgramState.h"
#include "app/QtCentre.h"
#include "app/TopLevel.h"
#include "enrolment/EnrolmentListWidget.h"
#include "uploads/OwnerFile.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

frmOwnerUpdate::frmOwnerUpdate(ProgramState &state, QWidget *parent)
    : QDialog(parent)
    , m_state(state)
{
    setObjectName(u"frmOwnerUpdate"_qs);
    setWindowTitle(u"Remitra Owner Update"_qs);
    setModal(true);
    resize(800, 600);

    EnrolmentTexts texts;
    texts.displayEnrolled = u"Remitra Owners Only"_qs;
    texts.displayAll = u"All Owners"_qs;
    texts.askTitle = u"Owner Update"_qs;
    texts.askActivate = u"Are you SURE you want to change ALL Owners to ACTIVATE REMITRA?"_qs;
    texts.askRemove = u"Are you SURE you want to REMOVE ALL Owners from REMITRA?"_qs;
    texts.editNotice
        = u"Please enter 'Y' if this Owner uses the Remitra Rent or 'N' if not. If you want "
          "to permanently DELETE this Owner from Remitra enter a 'D'."_qs;
    texts.gridName = u"Owners"_qs;
    texts.countLabel = u"Owners listed: %1"_qs;
    m_list = new EnrolmentListWidget(state, EnrolmentListWidget::Roster::Owners, texts, this);

    m_cmdExit = new QPushButton(u"E&xit"_qs, this);
    m_cmdExit->setObjectName(u"cmdExit"_qs);
    m_cmdExit->setAutoDefault(false);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(m_cmdExit);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_list, 1);
    layout->addLayout(buttons);
    connect(m_cmdExit, &QPushButton::clicked, this, &frmOwnerUpdate::cmdExit_Click);

    m_list->load();
}

void frmOwnerUpdate::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    if (!m_centred) {
        m_centred = true;
        centreOnScreen(*this);
    }
}

void frmOwnerUpdate::cmdExit_Click()
{
    close();
}

void frmOwnerUpdate::done(int result)
{
    Form_Unload();
    QDialog::done(result);
}

void frmOwnerUpdate::Form_Unload()
{
    if (m_unloaded)
        return;
    m_unloaded = true;
    m_list->commitPendingEdit();
    if (m_list->changed())
        TopLevel::run(m_state, [&] { UploadOwnerFile(m_state); });
}
