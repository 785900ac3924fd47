#pragma once

#include <QDate>
#include <QString>
#include <QVariant>

// The text rules the transfer files and the host database depend on. A null
// text (QString() / a null QVariant) is distinct from the empty text "".
namespace VbText {

// Leading-number parse: skips leading blanks, reads an optional sign, digits
// and one decimal point, and stops at the first other character. Text that
// does not begin with a number is 0; "000123" is 123; "12abc" is 12.
double val(const QString &text);
// Val truncated towards zero into a 32-bit id (ids are whole numbers).
qint64 valId(const QString &text);

// Removes leading and trailing blanks (spaces only; tabs and other white
// space are kept). Null stays null.
QString trim(const QString &text);
QString lTrim(const QString &text);
QString rTrim(const QString &text);

// Text of a database value: null gives a null QString.
QString text(const QVariant &value);
// Trim of a database value: Null stays null.
QString trimV(const QVariant &value);

// Null-propagating join ("a + b" on texts): null when either side is null.
QString joinNull(const QString &a, const QString &b);
inline QString joinNull(const QString &a, const QString &b, const QString &c)
{
    return joinNull(joinNull(a, b), c);
}

// True when the text reads as a number in full (blanks around allowed, one
// sign, digits with an optional decimal point, optional leading "$" and
// thousands commas). The empty text is not numeric.
bool isNumeric(const QString &text);

// left(text, n) / mid(text, start1, n): 1-based, clamped, null-propagating.
QString left(const QString &text, qsizetype n);
QString mid(const QString &text, qsizetype start1, qsizetype n = -1);

// The system's short date form (QLocale::system(), ShortFormat) with the
// year always in four digits, so that no reader can take 24 for 1924: en_US
// gives "3/1/2024", the C locale "1 Mar 2024". Every screen, message and
// file shows dates in this one form. An invalid date gives "".
QString shortDate(const QDate &date);
// The Qt date format behind shortDate().
QString shortDateFormat();
// A Qt date format with every year field written in four digits ("M/d/yy"
// gives "M/d/yyyy"); quoted text is left alone.
QString withFourDigitYear(const QString &format);
// Reads a date in that form, in the system's own short form (a two-digit
// year is 1930 to 2029), M/D/YYYY, or ISO YYYY-MM-DD.
QDate parseDate(const QString &text);

} // namespace VbText
