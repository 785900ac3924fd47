#include "enrolment/VendorEnrolmentDialog.h"

#include "uploads/VendorFile.h"

namespace {

EnrolmentTexts vendorTexts()
{
    EnrolmentTexts texts;
    texts.displayEnrolled = u"Remitra Vendors Only"_qs;
    texts.displayAll = u"All Vendors"_qs;
    texts.askTitle = u"Vendor Update"_qs;
    texts.askActivate = u"Are you SURE you want to change ALL Vendors to ACTIVATE REMITRA?"_qs;
    texts.askRemove = u"Are you SURE you want to REMOVE ALL Vendors from REMITRA?"_qs;
    texts.editNotice
        = u"Please enter 'Y' if this Vendor uses the Remitra Rent or 'N' if not. If you want "
          "to permanently DELETE this Vendor from Remitra, enter a 'D'."_qs;
    texts.gridName = u"Vendors"_qs;
    texts.countLabel = u"Vendors listed: %1"_qs;
    return texts;
}

} // namespace

VendorEnrolmentDialog::VendorEnrolmentDialog(ProgramState &state, QWidget *parent)
    : EnrolmentDialog(state, EnrolmentListWidget::Roster::Vendors, vendorTexts(), parent)
{
    setObjectName(u"frmVendorUpdate"_qs);
    setWindowTitle(u"Remitra Vendor Update"_qs);
    resize(800, 600);
}
