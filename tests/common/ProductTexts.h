#pragma once

#include <QString>

// The product's messages that many tests expect, written out once.
namespace ProductTexts {

inline const QString success = QStringLiteral("Successful connection to Quenta Payment Services!");
inline const QString noneFound = QStringLiteral("There were no Remita Tenant transactions found");
inline const QString ledgersUpdated = QStringLiteral("Your Dwellix Ledgers are now updated.");

// The error message shown for a processor status code.
inline QString forStatus(int code)
{
    const QString reset = QStringLiteral(
        "Please reset your URL, User Name and Password from the main Remitra screen");
    const QString cannot = QStringLiteral("The action could not be performed because ");
    switch (code) {
    case 401:
        return cannot + u"of the authorization failed for the user name, URL, or password. "_qs
            + reset;
    case 403:
        return cannot + u"of a wrong user name, URL or password. "_qs + reset + u'.';
    case 404:
        return cannot + u"the URL was not found. "_qs + reset;
    case 501:
        return cannot + u"the server is unavailable or busy. Please try again later."_qs;
    case 503:
        return cannot
            + u"of a technical problem with the Internet server. Please notify us of this error."_qs;
    default:
        return cannot + u"of the following error: "_qs + QString::number(code)
            + u"\r\rPlease notify us of this error."_qs;
    }
}

} // namespace ProductTexts
