#include "uploads/FieldRules.h"

#include "core/Currency.h"
#include "core/VbText.h"

namespace FieldRules {

QString text(const QVariant &value)
{
    return VbText::trimV(value);
}

QString raw(const QVariant &value)
{
    const QString t = VbText::text(value);
    return t.isNull() ? QStringLiteral("") : t;
}

bool isEmpty(const QString &text)
{
    return !text.isNull() && text.isEmpty();
}

QString pairUnlessSecondEmpty(const QVariant &first, const QVariant &second, const QString &joiner)
{
    const QString a = text(first);
    const QString b = text(second);
    if (isEmpty(b))
        return a;
    return a + joiner + b;
}

QString personName(const QVariant &first, const QVariant &last)
{
    const QString f = text(first);
    const QString l = text(last);
    if (isEmpty(f))
        return l;
    return f + u' ' + l;
}

QString flagAction(const QVariant &flag)
{
    const QString f = text(flag);
    if (f == u"D"_qs)
        return u"delete"_qs;
    if (f == u"Y"_qs)
        return u"activate"_qs;
    return u"deactivate"_qs;
}

QString plainCurrency(const QVariant &value)
{
    const auto amount = Currency::fromVariant(value);
    return amount ? amount->toPlainText() : QStringLiteral("");
}

QString shortDate(const QVariant &value)
{
    const QString stored = VbText::text(value);
    if (stored.isNull())
        return QStringLiteral("");
    const QDate date = VbText::parseDate(stored);
    return date.isValid() ? VbText::shortDate(date) : stored;
}

} // namespace FieldRules
