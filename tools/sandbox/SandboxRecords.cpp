#include "SandboxRecords.h"

#include <QJsonArray>

namespace {

QStringList linesOf(const QString &text)
{
    QStringList out;
    for (QString line : text.split(u'\n')) {
        if (line.endsWith(u'\r'))
            line.chop(1);
        if (!line.trimmed().isEmpty())
            out << line;
    }
    return out;
}

QString field(const QStringList &fields, int index)
{
    return index < fields.size() ? fields.at(index) : QString();
}

QJsonArray toArray(const QStringList &list)
{
    return QJsonArray::fromStringList(list);
}

QStringList fromArray(const QJsonValue &value)
{
    QStringList out;
    for (const QJsonValue &v : value.toArray())
        out << v.toString();
    return out;
}

} // namespace

int SandboxRecords::recordSetup(const QString &text)
{
    const QStringList lines = linesOf(text);
    for (const QString &line : lines) {
        const QStringList f = line.split(u'|');
        owners.insert(field(f, 1), field(f, 2));
        properties.insert(field(f, 3), field(f, 4));
        units.insert(field(f, 14), field(f, 15));
    }
    return int(lines.size());
}

int SandboxRecords::recordTenants(const QString &text)
{
    const QStringList lines = linesOf(text);
    for (const QString &line : lines) {
        const QStringList f = line.split(u'|');
        Tenant t;
        t.owner = field(f, 1);
        t.property = field(f, 2);
        t.unit = field(f, 3);
        t.balance = field(f, 5);
        t.firstName = field(f, 9);
        t.lastName = field(f, 10);
        t.action = field(f, 15);
        if (t.action == u"delete"_qs)
            tenants.remove(field(f, 4));
        else
            tenants.insert(field(f, 4), t);
    }
    return int(lines.size());
}

int SandboxRecords::recordPayees(const QString &text)
{
    const QStringList lines = linesOf(text);
    for (const QString &line : lines) {
        const QStringList f = line.split(u'|');
        const QString key = field(f, 0);
        const QString action = f.last();
        if (action == u"delete"_qs)
            payees.remove(key);
        else
            payees.insert(key, Payee { field(f, 1), field(f, 2), action });
    }
    return int(lines.size());
}

QString SandboxRecords::answerPayments(const QString &text)
{
    QString out;
    for (const QString &line : linesOf(text)) {
        const QStringList f = line.split(u'|');
        const QString check = field(f, 0);
        const QString payee = field(f, 1);
        // The amount is the last field; a remark may itself hold a "|".
        const std::optional<Currency> amount = Currency::parse(f.last());
        QString answer;
        const auto it = payees.constFind(payee);
        if (it == payees.constEnd() || it->action != u"activate"_qs)
            answer = payee + u',' + check + u",4,Payee is not set up for electronic payment"_qs;
        else if (!amount || (paymentLimit && *amount > *paymentLimit))
            answer = payee + u',' + check + u',' + QString::number(limitCode) + u',' + limitReason;
        else
            answer = payee + u',' + check + u",0,Accepted"_qs;
        if (answer.section(u',', 2, 2) == u"0"_qs) {
            if (paidChecks.contains(check))
                duplicates.append(line);
            paidChecks.insert(check);
        }
        payments.append({ line, answer });
        out += answer + u"\r\n"_qs;
    }
    return out;
}

QStringList SandboxRecords::queueRent(
    const QString &amount, const QString &transType, const QDate &date)
{
    const QString when = date.toString(u"M/d/yyyy"_qs);
    QStringList lines;
    for (auto it = tenants.cbegin(); it != tenants.cend(); ++it) {
        if (it->action != u"activate"_qs)
            continue;
        QString pay = amount;
        if (pay.isEmpty()) {
            const std::optional<Currency> balance = Currency::parse(it->balance);
            if (!balance || *balance <= Currency())
                continue;
            pay = balance->toPlainText();
        }
        lines << it->property + u',' + it->unit + u',' + it.key() + u',' + pay + u',' + when + u','
                + QString::number(nextCheck++) + u',' + when + u",ACH,"_qs + transType;
    }
    queued += lines;
    return lines;
}

void SandboxRecords::queueLines(const QStringList &lines)
{
    queued += lines;
}

QString SandboxRecords::deliverPayments()
{
    QString out;
    for (const QString &line : std::as_const(queued))
        out += line + u"\r\n"_qs;
    delivered += queued;
    queued.clear();
    return out;
}

QJsonObject SandboxRecords::toJson() const
{
    QJsonObject json;
    auto plainMap = [](const QMap<QString, QString> &map) {
        QJsonObject o;
        for (auto it = map.cbegin(); it != map.cend(); ++it)
            o.insert(it.key(), it.value());
        return o;
    };
    json.insert(u"owners"_qs, plainMap(owners));
    json.insert(u"properties"_qs, plainMap(properties));
    json.insert(u"units"_qs, plainMap(units));
    QJsonObject t;
    for (auto it = tenants.cbegin(); it != tenants.cend(); ++it) {
        t.insert(it.key(),
            QJsonObject { { u"owner"_qs, it->owner }, { u"property"_qs, it->property },
                { u"unit"_qs, it->unit }, { u"balance"_qs, it->balance },
                { u"firstName"_qs, it->firstName }, { u"lastName"_qs, it->lastName },
                { u"action"_qs, it->action } });
    }
    json.insert(u"tenants"_qs, t);
    QJsonObject p;
    for (auto it = payees.cbegin(); it != payees.cend(); ++it) {
        p.insert(it.key(),
            QJsonObject {
                { u"kind"_qs, it->kind }, { u"name"_qs, it->name }, { u"action"_qs, it->action } });
    }
    json.insert(u"payees"_qs, p);
    json.insert(u"queued"_qs, toArray(queued));
    json.insert(u"delivered"_qs, toArray(delivered));
    QJsonArray pay;
    for (const Payment &payment : payments)
        pay.append(QJsonObject { { u"line"_qs, payment.line }, { u"answer"_qs, payment.answer } });
    json.insert(u"payments"_qs, pay);
    json.insert(u"duplicates"_qs, toArray(duplicates));
    json.insert(u"nextCheck"_qs, nextCheck);
    return json;
}

void SandboxRecords::fromJson(const QJsonObject &json)
{
    auto plainMap = [](const QJsonValue &v) {
        QMap<QString, QString> map;
        const QJsonObject o = v.toObject();
        for (auto it = o.begin(); it != o.end(); ++it)
            map.insert(it.key(), it.value().toString());
        return map;
    };
    owners = plainMap(json.value(u"owners"_qs));
    properties = plainMap(json.value(u"properties"_qs));
    units = plainMap(json.value(u"units"_qs));
    tenants.clear();
    const QJsonObject t = json.value(u"tenants"_qs).toObject();
    for (auto it = t.begin(); it != t.end(); ++it) {
        const QJsonObject o = it.value().toObject();
        tenants.insert(it.key(),
            Tenant { o.value(u"owner"_qs).toString(), o.value(u"property"_qs).toString(),
                o.value(u"unit"_qs).toString(), o.value(u"balance"_qs).toString(),
                o.value(u"firstName"_qs).toString(), o.value(u"lastName"_qs).toString(),
                o.value(u"action"_qs).toString() });
    }
    payees.clear();
    const QJsonObject p = json.value(u"payees"_qs).toObject();
    for (auto it = p.begin(); it != p.end(); ++it) {
        const QJsonObject o = it.value().toObject();
        payees.insert(it.key(),
            Payee { o.value(u"kind"_qs).toString(), o.value(u"name"_qs).toString(),
                o.value(u"action"_qs).toString() });
    }
    queued = fromArray(json.value(u"queued"_qs));
    delivered = fromArray(json.value(u"delivered"_qs));
    payments.clear();
    paidChecks.clear();
    for (const QJsonValue &v : json.value(u"payments"_qs).toArray()) {
        const QJsonObject o = v.toObject();
        payments.append({ o.value(u"line"_qs).toString(), o.value(u"answer"_qs).toString() });
        if (payments.last().answer.section(u',', 2, 2) == u"0"_qs)
            paidChecks.insert(payments.last().line.section(u'|', 0, 0));
    }
    duplicates = fromArray(json.value(u"duplicates"_qs));
    nextCheck = json.value(u"nextCheck"_qs).toInt(5001);
}
