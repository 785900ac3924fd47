#pragma once

#include <QString>

// Notices and titles of the upload jobs, as the user sees them.
namespace UploadTexts {

inline QString loginNotice()
{
    return u"You must have a valid LOGIN entry in the User Name, Password, and URL. Please correct "
           "that and try again."_qs;
}
inline QString loginTitle()
{
    return u"Login Message"_qs;
}

} // namespace UploadTexts
