#pragma once

#include "core/Currency.h"

#include <QString>
#include <QVariant>

#include <utility>

// One entered check offered for electronic payment, with the payee it was
// matched to. IDField is minus the OwnerID for an owner, the VenID for a
// vendor. A check whose payee matches several payees gives several rows, so a
// row is known by its check and its payee together.
struct PaymentRow
{
    qint64 CkID = 0;
    QString CkPayee;
    QVariant CkDate; // as stored (ISO date text)
    Currency CkAmount; // a missing amount reads as 0
    QString CkRemark;
    QString CkInvoice;
    QString CkType;
    QVariant CkVendorID;
    QVariant CkNumber;
    qint64 IDField = 0;
    // Owner: last and first name of the first pair; vendor: name and contact.
    QString NameA;
    QString NameB;

    bool isOwner() const { return IDField < 0; }
    qint64 payeeId() const { return IDField < 0 ? -IDField : IDField; }

    using Key = std::pair<qint64, qint64>;
    Key key() const { return { CkID, IDField }; }
};
