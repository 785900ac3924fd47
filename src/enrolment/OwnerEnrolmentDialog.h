#pragma once

#include "enrolment/EnrolmentDialog.h"

// Owner enrolment: lists every owner and lets the user set its Remitra flag
// (Y, N or D). Closing after a flag was typed writes and sends the owner
// file. Modal.
class OwnerEnrolmentDialog : public EnrolmentDialog
{
    Q_OBJECT

public:
    OwnerEnrolmentDialog(ProgramState &state, QWidget *parent = nullptr);
};
