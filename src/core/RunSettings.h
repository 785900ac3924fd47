#pragma once

#include <QString>

#include <array>

// The small parts of a run's state that jobs take on their own, so that a
// signature says what a job reads or changes.

// Where the processor is and who logs in to it, as kept between runs.
struct ProcessorLogin
{
    QString url;
    QString user;
    QString password;
    // Set when the stored entry was incomplete at start-up and the user
    // cancelled the login screen.
    bool missing = false;
};

// The names of the transfer files in the program's folder, built from the
// site code and the date once the host database is open.
struct TransferFileNames
{
    QString setupUpload;
    QString tenantUpload;
    QString paymentDownload;
    QString ownerUpload;
    QString vendorUpload;
    QString disbursementUpload;
};

// The account settings read from IDFILE.DAT (see loadIdFile): the rent,
// late fee and management fee categories ("text;account id;posting code")
// and the default remarks of rent and late fees.
struct AccountSettings
{
    std::array<QString, 6> idItems;
};

// What the last processor call answered: its status code and its flag text
// ("True" or "False").
struct ProcessorResult
{
    qint16 code = 0;
    QString text;
};
