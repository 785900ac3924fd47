#pragma once

#include "core/Currency.h"
#include "core/VbText.h"

#include <QHash>
#include <QString>
#include <QVariant>

#include <cmath>
#include <optional>
#include <vector>

// One payment of the payment file as the review screen shows it (its twelve
// grid columns, in order) and as the posting reads it back.
struct RentPayment
{
    int line = 0; // 1-based line of the payment file it came from
    QString owner; // "O" + owner id, or the owner-not-found text
    QString property; // field 0 as in the file ("P12")
    QString unit; // field 1 as in the file
    QString tenant; // field 2 as in the file
    QString address; // the unit's address, or the not-found text
    QString tenantName; // "Last, First" / "Last", or the not-found text
    QString amountText; // field 3 as in the file
    std::optional<Currency> amount; // field 3 read as money; nullopt when unreadable
    QString date; // field 4
    QString checkNumber; // first 9 characters of the trimmed field 5 when numeric, else ""
    QString depositDate; // field 6
    QString method; // field 7
    QString transType; // field 8; a carriage return before the line feed stays here
    QString postedNote; // set when the ledger seems to hold this payment already

    // A late fee: the type's first 8 characters are "Late Fee" (case matters).
    bool isLateFee() const { return transType.left(8) == u"Late Fee"_qs; }
    // Rent that may carry a management fee: the type begins with "Rent".
    bool isRent() const { return transType.left(4) == u"Rent"_qs; }

    // The check number as the ledger stores it: Null when the cell is blank,
    // else the number its first 9 characters read as.
    QVariant checkValue() const
    {
        const QString trimmed = VbText::trim(checkNumber);
        if (trimmed.isEmpty())
            return QVariant();
        return QVariant(longValue(VbText::val(VbText::left(trimmed, 9))));
    }
    // The payment date as the host database stores it (ISO); "" when the
    // text is not a date.
    QString isoDate() const
    {
        const QDate d = VbText::parseDate(date);
        return d.isValid() ? d.toString(Qt::ISODate) : QString(u""_qs);
    }

    // The id in a cell: its first character (the kind letter) dropped, then
    // trimmed and read as a number.
    static double cellId(const QString &cell)
    {
        return VbText::val(VbText::trim(VbText::mid(cell, 2)));
    }
    double ownerId() const { return cellId(owner); }
    double propertyId() const { return cellId(property); }
    double unitId() const { return cellId(unit); }
    double tenantId() const { return cellId(tenant); }

    // A key to bind against an INTEGER id column: whole numbers as integers,
    // anything else as a real that matches no id.
    static QVariant key(double id)
    {
        if (std::isfinite(id) && std::fabs(id) < 9.0e15 && id == std::trunc(id))
            return QVariant(static_cast<qint64>(id));
        return QVariant(id);
    }
    // A number stored into a long id field: rounded to the nearest whole
    // number, halves to even.
    static qint64 longValue(double id)
    {
        if (!std::isfinite(id) || std::fabs(id) > 2.0e9)
            return 0;
        return static_cast<qint64>(std::nearbyint(id));
    }
    // Text of an id for messages: "12", "12.5".
    static QString idText(double id) { return QString::number(id, 'g', 15); }
};

using RentPayments = std::vector<RentPayment>;

// Payment dates as ISO dates, each distinct date worked out once: a file
// holds far fewer dates than payments.
class IsoDates
{
public:
    const QString &of(const RentPayment &row)
    {
        auto known = m_known.constFind(row.date);
        if (known == m_known.cend())
            known = m_known.insert(row.date, row.isoDate());
        return known.value();
    }

private:
    QHash<QString, QString> m_known;
};
