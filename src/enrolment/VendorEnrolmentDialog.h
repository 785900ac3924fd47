#pragma once

#include "enrolment/EnrolmentDialog.h"

// Vendor enrolment: lists every vendor and lets the user set its Remitra flag
// (Y, N or D). Closing after a flag was typed writes and sends the vendor
// file. Modal.
class VendorEnrolmentDialog : public EnrolmentDialog
{
    Q_OBJECT

public:
    VendorEnrolmentDialog(ProgramState &state, QWidget *parent = nullptr);
};
