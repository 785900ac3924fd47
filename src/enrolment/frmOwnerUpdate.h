#pragma once

#include "enrolment/QtEnrolmentDialog.h"

// Owner enrolment: lists every owner and lets the user set its Remitra flag
// (Y, N or D). Closing after a flag was typed writes and sends the owner
// file. Modal.
class frmOwnerUpdate : public QtEnrolmentDialog
{
    Q_OBJECT

public:
    frmOwnerUpdate(ProgramState &state, QWidget *parent = nullptr);
};
