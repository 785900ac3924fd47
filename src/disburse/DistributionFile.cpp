#include "disburse/DistributionFile.h"

#include "core/TransferFile.h"
#include "core/VbText.h"
#include "hostdb/DisburseLookup.h"

namespace DistributionFile {

QString line(const PaymentRow &row, bool secondPair)
{
    QString payee;
    if (row.isOwner())
        payee = (secondPair ? u"O%"_qs : u"O"_qs) + QString::number(row.payeeId());
    else
        payee = u"V"_qs + QString::number(row.IDField);
    return u"B"_qs + QString::number(row.CkID) + u'|' + payee + u'|' + VbText::trim(row.CkRemark)
        + u'|' + row.CkAmount.abs().toPlainText();
}

void write(const HostDb &db, const QString &path, const QList<PaymentRow> &rows)
{
    DisburseLookup lookup(db);
    QList<qint64> owners;
    for (const PaymentRow &row : rows) {
        if (row.isOwner())
            owners.append(row.payeeId());
    }
    lookup.prefetchOwners(owners);
    TransferFile::LineWriter out(path);
    for (const PaymentRow &row : rows) {
        const bool second = row.isOwner() && lookup.paysSecondPair(row.payeeId(), row.CkPayee);
        out.writeLine(line(row, second));
    }
    out.commit();
}

QList<SentLine> parse(const QString &text)
{
    QList<SentLine> sent;
    for (const QString &raw : text.split(u'\n')) {
        const QStringList fields = raw.split(u'|');
        if (fields.size() < 2 || !fields[0].startsWith(u'B'))
            continue;
        const QString &payee = fields[1];
        SentLine s;
        s.CkID = VbText::valId(fields[0].mid(1));
        if (payee.startsWith(u"O%"_qs))
            s.IDField = -VbText::valId(payee.mid(2));
        else if (payee.startsWith(u'O'))
            s.IDField = -VbText::valId(payee.mid(1));
        else if (payee.startsWith(u'V'))
            s.IDField = VbText::valId(payee.mid(1));
        if (s.CkID > 0 && s.IDField != 0)
            sent.append(s);
    }
    return sent;
}

} // namespace DistributionFile
