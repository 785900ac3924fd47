// The processor's answer to a distribution: reading the lines and finding the
// verdict for each payee and check.
#include "FuzzSite.h"

#include "core/TransferFile.h"
#include "disburse/ResponseMatcher.h"

#include <QRegularExpression>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString text
        = TransferFile::fromAnsi(QByteArray(reinterpret_cast<const char *>(data), qsizetype(size)));
    const ResponseMatcher matcher(text);
    if (matcher.countedLines() < 0)
        __builtin_trap();
    // The fixture's ids, and every number in the text as payee and check.
    QList<qint64> ids = { 0, 1, 2, 3, 5, -1 };
    static const QRegularExpression number(u"-?\\d{1,19}"_qs);
    auto it = number.globalMatch(text);
    for (int n = 0; it.hasNext() && n < 16; ++n)
        ids << it.next().captured().toLongLong();
    for (qint64 payee : ids)
        for (qint64 check : ids)
            (void)matcher.verdict(payee, check);
    return 0;
}
