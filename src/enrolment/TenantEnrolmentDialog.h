#pragma once

#include "enrolment/EnrolmentDialog.h"

// Tenant enrolment: lists every tenant of the portfolio with its owner,
// property and unit and lets the user set its Remitra flag (Y, N or D).
// Closing after a flag was typed sends the whole tenant upload; Export writes
// the enrolled tenants to a CSV file for mail merge. Modal.
class TenantEnrolmentDialog : public EnrolmentDialog
{
    Q_OBJECT

public:
    TenantEnrolmentDialog(ProgramState &state, QWidget *parent = nullptr);

public slots:
    void exportCsv();
};
