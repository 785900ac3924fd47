#pragma once

#include "enrolment/QtEnrolmentDialog.h"

// Vendor enrolment: lists every vendor and lets the user set its Remitra flag
// (Y, N or D). Closing after a flag was typed writes and sends the vendor
// file. Modal.
class frmVendorUpdate : public QtEnrolmentDialog
{
    Q_OBJECT

public:
    frmVendorUpdate(ProgramState &state, QWidget *parent = nullptr);
};
