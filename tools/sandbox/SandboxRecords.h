#pragma once

#include "core/Currency.h"

#include <QDate>
#include <QJsonObject>
#include <QList>
#include <QMap>
#include <QSet>
#include <QString>
#include <QStringList>

// What the simulated processor knows about one customer: the portfolio and
// tenants from the setup and tenant uploads, the payees from the owner and
// vendor files, rent payments waiting to be downloaded, and the distribution
// lines it has answered. Kept in a JSON file between runs when asked.
class SandboxRecords
{
public:
    struct Tenant
    {
        QString owner, property, unit, balance, firstName, lastName, action;
    };
    struct Payee
    {
        QString kind, name, action;
    };
    struct Payment
    {
        QString line, answer;
    };

    // Upload lines, each a "|"-separated record (see the upload formats).
    // Return the number of lines taken.
    int recordSetup(const QString &text);
    int recordTenants(const QString &text);
    int recordPayees(const QString &text);

    // The answer lines for a distribution upload, each ended by CR LF:
    // "<payee>,<check>,<result>,<reason>". A payee that is not registered as
    // active gets result 4; an amount above the limit (when one is set) gets
    // the rejection code; anything else 0. A check accepted before is paid
    // again, as a processor that trusts its customer would, and its line is
    // kept in `duplicates`: a customer program must never send it.
    QString answerPayments(const QString &text);

    // Queues one rent payment per active tenant: the given amount, or the
    // tenant's balance when none is given (tenants with nothing owing are
    // skipped). Returns the queued lines.
    QStringList queueRent(const QString &amount, const QString &transType, const QDate &date);
    void queueLines(const QStringList &lines);
    // The waiting payment lines as a payment file (each ended by CR LF), now
    // marked delivered; "" when none wait.
    QString deliverPayments();

    QJsonObject toJson() const;
    void fromJson(const QJsonObject &json);

    std::optional<Currency> paymentLimit;
    int limitCode = 7;
    QString limitReason = QStringLiteral("Amount exceeds the payment limit");

    QMap<QString, QString> owners; // "O7" -> name
    QMap<QString, QString> properties; // "P3" -> name
    QMap<QString, QString> units; // "U12" -> address
    QMap<QString, Tenant> tenants; // "T12"
    QMap<QString, Payee> payees; // "O7", "O%7", "V8"
    QStringList queued;
    QStringList delivered;
    QList<Payment> payments;
    QStringList duplicates; // lines of checks that were paid a second time
    QSet<QString> paidChecks; // "B<id>" of every accepted line
    int nextCheck = 5001;
};
