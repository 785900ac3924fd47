#pragma once

#include "core/VbText.h"

#include <QString>
#include <QVariant>

// What the user chose on the review screen before pressing
// "Update Dwellix Ledgers NOW".
struct PostingChoices
{
    enum Remark { NoRemarkChoice = -1, DefaultRemark = 0, MethodRemark = 1, OwnRemark = 2 };

    bool postMgmtFees = false; // chkPostMgmtFees
    bool createDeposit = true; // chkCreateDeposit
    QString depositNumber; // txtCreateDeposit
    int remark = NoRemarkChoice; // optRemark list index (-1: nothing chosen)
    QString remarkText; // txtRemark

    // The remark of a ledger line: the method column or the own text, trimmed
    // and cut to 60 characters, or the default text; Null when no choice.
    QVariant remarkFor(const QString &method, const QString &defaultText) const
    {
        switch (remark) {
        case MethodRemark:
            return VbText::left(VbText::trim(method), 60);
        case OwnRemark:
            return VbText::left(VbText::trim(remarkText), 60);
        case DefaultRemark:
            return defaultText;
        default:
            return QVariant();
        }
    }
};
