#include "enrolment/frmTenantUpdate.h"

#include "app/ProgramState.h"
#include "app/QtCentre.h"
#include "app/TopLevel.h"
#include "core/Prompter.h"
#include "enrolment/EnrolmentListWidget.h"
#include "enrolment/TenantCsvExport.h"
#include "uploads/TenantUpload.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

frmTenantUpdate::frmTenantUpdate(ProgramState &state, QWidget *parent)
    : QDialog(parent)
    , m_state(state)
{
    setObjectName(u"frmTenantUpdate"_qs);
    setWindowTitle(u"Remitra Tenant Update"_qs);
    setModal(true);
    resize(1000, 640);

    EnrolmentTexts texts;
    texts.displayEnrolled = u"Remitra Tenants Only"_qs;
    texts.displayAll = u"All Tenants"_qs;
    texts.askTitle = u"Tenant Update"_qs;
    texts.askActivate = u"Are you SURE you want to change ALL Tenants to ACTIVATE REMITRA?"_qs;
    texts.askRemove = u"Are you SURE you want to REMOVE ALL Tenants from REMITRA?"_qs;
    texts.editNotice
        = u"Please enter 'Y' if this Tenant uses the Remitra Rent or 'N' if not. If you want "
          "to permanently DELETE this Tenant from Remitra, enter a 'D'."_qs;
    texts.gridName = u"Tenants"_qs;
    texts.countLabel = u"Tenants listed: %1"_qs;
    m_list = new EnrolmentListWidget(state, EnrolmentListWidget::Roster::Tenants, texts, this);

    m_cmdExport = new QPushButton(u"&Export"_qs, this);
    m_cmdExport->setObjectName(u"cmdExport"_qs);
    m_cmdExport->setAutoDefault(false);
    m_cmdExit = new QPushButton(u"E&xit"_qs, this);
    m_cmdExit->setObjectName(u"cmdExit"_qs);
    m_cmdExit->setAutoDefault(false);

    auto *buttons = new QHBoxLayout;
    buttons->addWidget(m_cmdExport);
    buttons->addStretch(1);
    buttons->addWidget(m_cmdExit);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_list, 1);
    layout->addLayout(buttons);

    connect(m_cmdExport, &QPushButton::clicked, this, &frmTenantUpdate::cmdExport_Click);
    connect(m_cmdExit, &QPushButton::clicked, this, &frmTenantUpdate::cmdExit_Click);

    m_list->load();
}

void frmTenantUpdate::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    if (!m_centred) {
        m_centred = true;
        centreOnScreen(*this);
    }
}

void frmTenantUpdate::cmdExport_Click()
{
    TopLevel::run(m_state, [&] {
        const Prompter::Answer answer = m_state.prompter().ask(
            u"This will create an export file in CSV format (comma separated values) for all "
            "Remitra tenants selected. You can use this file in Excel and Word to create a "
            "merge letter informing your Tenants of their TID login and the benefits of the "
            "Remitra service. The file name that will be created is 'RemitraExport.csv' and "
            "will be found in your Dwellix folder.\r\rDo you want to create the file now?"_qs,
            u"Remitra Export"_qs);
        m_state.MsgAnswer = answer == Prompter::Answer::Yes ? u"6"_qs : u"7"_qs;
        if (answer != Prompter::Answer::Yes)
            return;
        // A flag still being typed is saved before the file is read.
        m_list->commitPendingEdit();
        m_list->GridSQL();
        ExportTenantsCsv(m_state);
    });
}

void frmTenantUpdate::cmdExit_Click()
{
    close();
}

void frmTenantUpdate::done(int result)
{
    Form_Unload();
    QDialog::done(result);
}

void frmTenantUpdate::Form_Unload()
{
    if (m_unloaded)
        return;
    m_unloaded = true;
    m_list->commitPendingEdit();
    if (!m_list->changed())
        return;
    TopLevel::run(m_state, [&] {
        BuildTenantUpload(m_state);
        SendTenantUpload(m_state);
    });
}
