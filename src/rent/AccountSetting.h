#pragma once

#include <QString>

// An account category setting of the host's preferences, as read from the
// identification file: "category text;account id;posting code".
struct AccountSetting
{
    QString item; // the setting as it stands
    QString text; // the category text: everything before the first ";"
    double accountId = 0; // Val of the text after the first ";"
    QString postingCode; // the text after the last ";", trimmed ("U", "T" or "B")
    bool valid = false; // not blank, and its account part is a number

    static AccountSetting fromItem(const QString &item);
    // The remark text of an account default setting: its text before any ";".
    static QString defaultText(const QString &item);
};
