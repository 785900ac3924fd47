#include "enrolment/TenantEnrolmentDialog.h"

#include "app/ProgramState.h"
#include "app/TopLevel.h"
#include "core/Prompter.h"
#include "enrolment/TenantCsvExport.h"
#include "uploads/TenantUpload.h"

#include <QPushButton>

namespace {

EnrolmentTexts tenantTexts()
{
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
    return texts;
}

} // namespace

TenantEnrolmentDialog::TenantEnrolmentDialog(ProgramState &state, QWidget *parent)
    : EnrolmentDialog(state, EnrolmentListWidget::Roster::Tenants, tenantTexts(), parent)
{
    setObjectName(u"frmTenantUpdate"_qs);
    setWindowTitle(u"Remitra Tenant Update"_qs);
    resize(1000, 640);
    QPushButton *cmdExport = addButton(u"&Export"_qs, u"cmdExport"_qs);
    connect(cmdExport, &QPushButton::clicked, this, &TenantEnrolmentDialog::exportCsv);
}

void TenantEnrolmentDialog::exportCsv()
{
    TopLevel::run(m_state, [&] {
        const Prompter::Answer answer = m_state.prompter().ask(
            u"This will create an export file in CSV format (comma separated values) for all "
            "Remitra tenants selected. You can use this file in Excel and Word to create a "
            "merge letter informing your Tenants of their TID login and the benefits of the "
            "Remitra service. The file name that will be created is 'RemitraExport.csv' and "
            "will be found in your Dwellix folder.\r\rDo you want to create the file now?"_qs,
            u"Remitra Export"_qs);
        m_state.msgAnswer = answer == Prompter::Answer::Yes ? u"6"_qs : u"7"_qs;
        if (answer != Prompter::Answer::Yes)
            return;
        // A flag still being typed is saved before the file is read.
        m_list->commitPendingEdit();
        m_list->gridSql();
        exportTenantsCsv(m_state);
    });
}
