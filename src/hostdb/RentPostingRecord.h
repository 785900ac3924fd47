#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QSqlQuery>
#include <QString>

class RemitraStore;

// Which payments of a rent payment file have reached the Dwellix ledgers or
// a deposit, kept in Remitra's own store by the file's SHA-256 and the line
// number of each payment. The posting writes its record in its own
// transaction, so the record and the ledgers never disagree; with it a
// payment file is never posted twice: not after a posting that stopped
// half-way, and not after the program ended between the posting and the
// moving aside of the file.
class RentPostingRecord
{
public:
    explicit RentPostingRecord(const RemitraStore &store);

    // What a line still lacks after a posting that stopped at it: its income
    // line is written, but not the unit's balance (there was no unit then)
    // and the tenant's, or not the tenant's balance, or not the management
    // fee.
    enum class Missing { Nothing, UnitAndTenantBalance, TenantBalance, ManagementFee };

    struct Line
    {
        QString postedAt; // "" when the payment is not in the ledgers
        Missing missing = Missing::Nothing;
        QString depositedAt; // "" when no deposit holds it
    };
    // The recorded lines of a file, by line number.
    QHash<int, Line> lines(const QString &fileSha256);
    // When every payment of the file was posted; "" when not (yet).
    QString completedAt(const QString &fileSha256);

    // Inside the caller's transaction.
    void recordPosted(const QString &fileSha256, int line, Missing missing);
    void recordDeposited(const QString &fileSha256, int line);
    // The same for many lines, in one statement each.
    void recordPosted(const QString &fileSha256, const QList<std::pair<int, Missing>> &lines);
    void recordDeposited(const QString &fileSha256, const QList<int> &lines);
    void recordComplete(const QString &fileSha256);
    // A reversed posting: its lines are no longer in the ledgers (nor in a
    // deposit), and the file is not complete any more.
    void forget(
        const QString &fileSha256, const QList<int> &postedLines, const QList<int> &depositedLines);

    static QString missingText(Missing missing);
    static Missing missingOf(const QString &text);

    static QString sha256(const QByteArray &bytes);

private:
    const RemitraStore &m_store;
    QSqlQuery m_lines, m_complete, m_posted, m_deposited, m_setComplete;
};
