#pragma once

#include <QHash>
#include <QList>
#include <QString>

#include <utility>

// The processor's answer to a distribution, one line per payment:
//   payee ("O", "O%" or "V" + id), check ("B" + CkID), result, reason
// separated by commas. Result 0 (or no number at all) accepts the payment;
// any other number rejects it, "4" meaning the payee is not set up.
//
// Only the counted lines are examined: the text is split at LF, the count is
// the number of pieces less two (a response ending in a line break ends in
// LF CR LF once stored), and the first piece that is blank within that range
// shortens the range by one line at its end.
class ResponseMatcher
{
public:
    explicit ResponseMatcher(const QString &responseText);

    // Number of lines examined.
    int countedLines() const { return m_counted; }

    struct Verdict
    {
        bool accepted = false;
        // From the last rejecting line before any acceptance (empty when no
        // line rejected the check).
        QString payeeField;
        QString reason;
    };
    // Lines for the check are taken in file order: the first accepting line
    // wins and nothing after it is read; each rejecting line before it
    // records its reason. The payee's id and the check's id are compared,
    // not the letters in front of them.
    Verdict verdict(qint64 payeeId, qint64 ckId) const;

    static QString notSetUpReason();

private:
    struct Line
    {
        QString payee;
        QString result;
        QString reason;
    };
    using Key = std::pair<double, double>;
    QList<Line> m_lines;
    QHash<Key, QList<int>> m_byPayment;
    int m_counted = 0;
};
