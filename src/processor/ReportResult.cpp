#include "processor/ReportResult.h"

#include "core/Prompter.h"

void reportResult(Prompter &prompter, const ProcessorResult &result)
{
    const qint16 code = result.code;
    if (result.text == u"True"_qs && code == 200) {
        prompter.notice(
            u"Successful connection to Quenta Payment Services!"_qs, u"Dwellix Remitra"_qs);
        return;
    }
    prompter.resetBusy();
    QString text;
    switch (code) {
    case 401:
        text
            = u"The action could not be performed because of the authorization failed for the user "
              "name, URL, or password. Please reset your URL, User Name and Password from the main "
              "Remitra screen"_qs;
        break;
    case 403:
        text = u"The action could not be performed because of a wrong user name, URL or password. "
               "Please reset your URL, User Name and Password from the main Remitra screen."_qs;
        break;
    case 404:
        text
            = u"The action could not be performed because the URL was not found. Please reset your "
              "URL, User Name and Password from the main Remitra screen"_qs;
        break;
    case 501:
        text = u"The action could not be performed because the server is unavailable or busy. "
               u"Please "
               "try again later."_qs;
        break;
    case 503:
        text
            = u"The action could not be performed because of a technical problem with the Internet "
              "server. Please notify us of this error."_qs;
        break;
    default:
        text = u"The action could not be performed because of the following error: "_qs
            + QString::number(code) + u"\r\rPlease notify us of this error."_qs;
        break;
    }
    prompter.notice(text, u"Remitra error"_qs);
}
