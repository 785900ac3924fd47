#pragma once

#include <QString>
#include <QVariant>

// Field rules shared by the transfer file builders. A Null database value is
// written as nothing, but it is not "empty": a test for the empty text is not
// met by Null, so the joiner of a name or street pair stays in the field and
// a Null name never makes a row "delete".
namespace FieldRules {

// Trimmed text of a database value; Null stays null (and writes as nothing).
QString text(const QVariant &value);
// The value as the database gives it, untrimmed (keys); Null gives "".
QString raw(const QVariant &value);
// True only for the empty text: Null is not empty.
bool isEmpty(const QString &text);

// Trim(first) + joiner + Trim(second); Trim(first) alone when Trim(second)
// is empty.
QString pairUnlessSecondEmpty(const QVariant &first, const QVariant &second, const QString &joiner);
// Trim(first) + " " + Trim(last); Trim(last) alone when Trim(first) is empty.
QString personName(const QVariant &first, const QVariant &last);

// The action of an enrolment flag: Trim(flag) "D" gives "delete", "Y"
// "activate", anything else (lower case, Null, blanks) "deactivate".
QString flagAction(const QVariant &flag);

// Currency in the plain text form (125.5, -35, 0); Null gives "".
QString plainCurrency(const QVariant &value);
// A stored date in the system's short date form; Null gives "".
QString shortDate(const QVariant &value);

} // namespace FieldRules
