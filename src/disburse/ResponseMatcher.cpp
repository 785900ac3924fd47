#include "disburse/ResponseMatcher.h"

#include "core/VbText.h"

namespace {

// The id after the kind letter; an owner's second pair is "O%" + id.
double payeeNumber(const QString &field)
{
    if (field.size() >= 2 && field[1] == u'%')
        return VbText::val(field.mid(2));
    return VbText::val(field.mid(1));
}

} // namespace

ResponseMatcher::ResponseMatcher(const QString &responseText)
{
    const QStringList pieces = responseText.split(u'\n');
    int count = int(pieces.size()) - 2;
    if (count < 0)
        count = 0;
    for (int i = 0; i < count; ++i) {
        if (VbText::trim(pieces[i]).isEmpty()) {
            --count;
            break;
        }
    }
    m_counted = count;

    m_lines.reserve(count);
    m_byPayment.reserve(count);
    for (int i = 0; i < count; ++i) {
        const QStringList fields = pieces[i].split(u',');
        // A line without a result field (a blank one among them) answers
        // nothing.
        if (fields.size() < 3)
            continue;
        const Key key { payeeNumber(fields[0]), VbText::val(fields[1].mid(1)) };
        m_byPayment[key].append(int(m_lines.size()));
        m_lines.append(Line { fields[0], fields[2], fields.size() > 3 ? fields[3] : QString() });
    }
}

QString ResponseMatcher::notSetUpReason()
{
    return u"This Vendor or Owner is not set up with Quenta Property Pay. All Owners or Vendors "
           "that are using the Remitra system must be set up with a valid Bank Account Number and "
           "Bank Routing Number within the Quenta Property Pay Manager's Toolbox."_qs;
}

ResponseMatcher::Verdict ResponseMatcher::verdict(qint64 payeeId, qint64 ckId) const
{
    Verdict v;
    const auto it = m_byPayment.constFind(Key { double(payeeId), double(ckId) });
    if (it == m_byPayment.cend())
        return v;
    for (int index : *it) {
        const Line &line = m_lines[index];
        if (VbText::val(line.result) == 0) {
            v.accepted = true;
            return v;
        }
        v.payeeField = line.payee;
        v.reason = u"Reason for Rejection: (Error "_qs + line.result + u") "_qs
            + (line.result == u"4"_qs ? notSetUpReason() : line.reason);
    }
    return v;
}
