#include "enrolment/OwnerEnrolmentDialog.h"

#include "uploads/OwnerFile.h"

namespace {

EnrolmentTexts ownerTexts()
{
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
    return texts;
}

} // namespace

OwnerEnrolmentDialog::OwnerEnrolmentDialog(ProgramState &state, QWidget *parent)
    : EnrolmentDialog(state, EnrolmentListWidget::Roster::Owners, ownerTexts(), parent)
{
    setObjectName(u"frmOwnerUpdate"_qs);
    setWindowTitle(u"Remitra Owner Update"_qs);
    resize(800, 600);
}
