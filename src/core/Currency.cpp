#include "core/Currency.h"

#include <QLocale>

namespace {

__extension__ typedef __int128 Wide;

// Parses an unsigned decimal "123.4567..." into ten-thousandths, rounding
// half away from zero at the fifth decimal.
std::optional<std::int64_t> parseUnsignedDecimal(QStringView text)
{
    if (text.isEmpty())
        return std::nullopt;
    std::int64_t whole = 0;
    std::int64_t frac = 0;
    int fracDigits = 0;
    bool roundUp = false;
    bool seenDot = false;
    bool seenDigit = false;
    for (QChar ch : text) {
        if (ch == u'.') {
            if (seenDot)
                return std::nullopt;
            seenDot = true;
            continue;
        }
        if (!ch.isDigit() || ch.unicode() > u'9')
            return std::nullopt;
        seenDigit = true;
        const int d = ch.unicode() - u'0';
        if (!seenDot) {
            if (whole > (INT64_MAX / Currency::Scale - 9) / 10)
                return std::nullopt;
            whole = whole * 10 + d;
        } else if (fracDigits < 4) {
            frac = frac * 10 + d;
            ++fracDigits;
        } else if (fracDigits == 4) {
            roundUp = d >= 5;
            ++fracDigits;
        }
    }
    if (!seenDigit)
        return std::nullopt;
    for (int i = std::min(fracDigits, 4); i < 4; ++i)
        frac *= 10;
    return whole * Currency::Scale + frac + (roundUp ? 1 : 0);
}

QString groupThousands(std::int64_t whole)
{
    QString digits = QString::number(whole);
    for (int i = digits.size() - 3; i > 0; i -= 3)
        digits.insert(i, u',');
    return digits;
}

// Rounds |raw| (ten-thousandths) to cents, half away from zero, and renders
// "1,234.50" without sign.
QString centsText(std::int64_t raw)
{
    std::int64_t a = raw < 0 ? -raw : raw;
    std::int64_t cents = (a + 50) / 100;
    return groupThousands(cents / 100) + u'.'
           + QStringLiteral("%1").arg(cents % 100, 2, 10, QChar(u'0'));
}

} // namespace

std::optional<Currency> Currency::parse(const QString &input)
{
    QString text = input.trimmed();
    bool negative = false;
    if (text.startsWith(u'(') && text.endsWith(u')')) {
        negative = true;
        text = text.mid(1, text.size() - 2).trimmed();
    }
    if (text.startsWith(u'-')) {
        negative = !negative;
        text = text.mid(1).trimmed();
    } else if (text.startsWith(u'+')) {
        text = text.mid(1).trimmed();
    }
    if (text.startsWith(u'$'))
        text = text.mid(1);
    text.remove(u',');
    auto raw = parseUnsignedDecimal(text);
    if (!raw)
        return std::nullopt;
    return fromRaw(negative ? -*raw : *raw);
}

std::optional<Currency> Currency::fromVariant(const QVariant &value)
{
    if (value.isNull() || !value.isValid())
        return std::nullopt;
    switch (value.typeId()) {
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::UInt:
    case QMetaType::ULongLong:
        return fromWhole(value.toLongLong());
    case QMetaType::Double: {
        // REAL columns hold values rounded to 4 places; the shortest
        // round-trip text of the double recovers them exactly.
        return parse(QString::number(value.toDouble(), 'f', 6));
    }
    default:
        return parse(value.toString());
    }
}

std::optional<Currency> Currency::percentOf(const QString &ratePercent) const
{
    auto rate = parse(ratePercent);
    if (!rate)
        return std::nullopt;
    // this * rate / 100, where both carry 4 decimals: raw*rateRaw / (Scale*100)
    Wide product = static_cast<Wide>(m_raw) * rate->raw();
    const Wide divisor = static_cast<Wide>(Scale) * 100;
    const bool neg = product < 0;
    if (neg)
        product = -product;
    Wide q = (product + divisor / 2) / divisor;
    return fromRaw(static_cast<std::int64_t>(neg ? -q : q));
}

Currency Currency::multipliedBy(Currency rate) const
{
    Wide product = static_cast<Wide>(m_raw) * rate.raw();
    const bool neg = product < 0;
    if (neg)
        product = -product;
    Wide q = (product + Scale / 2) / Scale;
    return fromRaw(static_cast<std::int64_t>(neg ? -q : q));
}

QString Currency::toPlainText() const
{
    std::int64_t a = m_raw < 0 ? -m_raw : m_raw;
    QString text = QString::number(a / Scale);
    std::int64_t frac = a % Scale;
    if (frac != 0) {
        QString f = QStringLiteral("%1").arg(frac, 4, 10, QChar(u'0'));
        while (f.endsWith(u'0'))
            f.chop(1);
        text += u'.' + f;
    }
    return m_raw < 0 ? u'-' + text : text;
}

QString Currency::toDollars() const
{
    const bool neg = m_raw < 0 && (-m_raw + 50) / 100 != 0;
    return (neg ? QStringLiteral("-$") : QStringLiteral("$")) + centsText(m_raw);
}

QString Currency::toDollarsParen() const
{
    const bool neg = m_raw < 0 && (-m_raw + 50) / 100 != 0;
    const QString body = u'$' + centsText(m_raw);
    return neg ? u'(' + body + u')' : body;
}

double Currency::toDatabaseValue() const
{
    return static_cast<double>(m_raw) / Scale;
}
