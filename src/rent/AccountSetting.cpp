#include "rent/AccountSetting.h"

#include "core/VbText.h"

AccountSetting AccountSetting::fromItem(const QString &item)
{
    AccountSetting s;
    s.item = item;
    s.text = defaultText(item);
    s.postingCode = u""_qs;
    const qsizetype first = item.indexOf(u';');
    if (first < 0)
        return s;
    const QString afterFirst = item.mid(first + 1);
    s.accountId = VbText::val(afterFirst);
    s.postingCode = VbText::trim(item.mid(item.lastIndexOf(u';') + 1));
    const qsizetype next = afterFirst.indexOf(u';');
    const QString accountPart = next < 0 ? afterFirst : afterFirst.left(next);
    s.valid = !VbText::trim(item).isEmpty() && VbText::isNumeric(accountPart);
    return s;
}

QString AccountSetting::defaultText(const QString &item)
{
    const qsizetype semi = item.indexOf(u';');
    const QString text = semi < 0 ? item : item.left(semi);
    return text.isNull() ? u""_qs : text;
}
