#include "core/Currency.h"

#include <QLocale>

namespace {

__extension__ typedef __int128 Wide;

// A decimal number read exactly as written: digits / 10^scale. Digits past
// the nineteenth significant one are not kept; `sticky` tells whether any of
// them was other than zero, so that rounding still sees a value just above a
// half as above it.
struct Decimal
{
    Wide digits = 0;
    int scale = 0;
    bool sticky = false;
};

constexpr int kKeptDigits = 19;

Wide powerOfTen(int n)
{
    Wide p = 1;
    while (n-- > 0)
        p *= 10;
    return p;
}

// Digits with at most one decimal point; nothing else.
std::optional<Decimal> parseDecimal(QStringView text)
{
    Decimal d;
    int kept = 0;
    bool seenDot = false;
    bool seenDigit = false;
    for (QChar ch : text) {
        if (ch == u'.') {
            if (seenDot)
                return std::nullopt;
            seenDot = true;
            continue;
        }
        if (ch < u'0' || ch > u'9')
            return std::nullopt;
        seenDigit = true;
        const int digit = ch.unicode() - u'0';
        if (kept == 0 && digit == 0 && !seenDot)
            continue; // leading zeros
        if (kept < kKeptDigits) {
            d.digits = d.digits * 10 + digit;
            if (seenDot)
                ++d.scale;
            if (d.digits != 0)
                ++kept;
        } else if (!seenDot) {
            return std::nullopt; // too large for any currency value
        } else if (digit != 0) {
            d.sticky = true;
        }
    }
    if (!seenDigit)
        return std::nullopt;
    return d;
}

// numerator / denominator (denominator > 0) rounded half to even, the
// rounding of the host's conversion to currency. `sticky` marks a numerator
// that is a little more than written.
Wide divideHalfEven(Wide numerator, Wide denominator, bool sticky = false)
{
    const bool negative = numerator < 0;
    if (negative)
        numerator = -numerator;
    Wide quotient = numerator / denominator;
    const Wide twice = (numerator % denominator) * 2;
    if (twice > denominator || (twice == denominator && (sticky || quotient % 2 != 0)))
        ++quotient;
    return negative ? -quotient : quotient;
}

// A decimal in ten-thousandths; nullopt when it does not fit the currency
// range.
std::optional<std::int64_t> toRaw(const Decimal &d)
{
    // Up to four decimals the value is exact: no division, no rounding.
    const Wide scaled = d.scale <= 4 && !d.sticky
        ? d.digits * powerOfTen(4 - d.scale)
        : divideHalfEven(d.digits * Currency::Scale, powerOfTen(d.scale), d.sticky);
    if (scaled > INT64_MAX || scaled < -INT64_MAX)
        return std::nullopt;
    return static_cast<std::int64_t>(scaled);
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
    const auto decimal = parseDecimal(text);
    if (!decimal)
        return std::nullopt;
    const auto raw = toRaw(*decimal);
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
        // round-trip text of the double recovers them exactly, and rounds
        // any other value once, by the same rule as every conversion.
        return parse(QString::number(value.toDouble(), 'f', QLocale::FloatingPointShortest));
    }
    default:
        return parse(value.toString());
    }
}

std::optional<Currency> Currency::percentOf(const QString &ratePercent) const
{
    // The rate is taken exactly as written (not first rounded to 4 places),
    // so the product is rounded once.
    QString text = ratePercent.trimmed();
    bool negative = false;
    if (text.startsWith(u'-')) {
        negative = true;
        text = text.mid(1).trimmed();
    } else if (text.startsWith(u'+')) {
        text = text.mid(1).trimmed();
    }
    const auto rate = parseDecimal(text);
    if (!rate)
        return std::nullopt;
    const Wide product = static_cast<Wide>(m_raw) * rate->digits;
    const Wide q = divideHalfEven(product, powerOfTen(rate->scale) * 100, rate->sticky);
    if (q > INT64_MAX || q < -INT64_MAX)
        return std::nullopt;
    return fromRaw(static_cast<std::int64_t>(negative ? -q : q));
}

QString Currency::toPlainText() const
{
    // Written by hand: postings and the journal write this for every row.
    const std::uint64_t a = m_raw < 0 ? 0 - std::uint64_t(m_raw) : std::uint64_t(m_raw);
    char buffer[32];
    char *end = buffer + sizeof buffer;
    char *p = end;
    std::uint64_t frac = a % Scale;
    if (frac != 0) {
        int digits = 4;
        while (frac % 10 == 0) {
            frac /= 10;
            --digits;
        }
        for (int i = 0; i < digits; ++i, frac /= 10)
            *--p = char('0' + frac % 10);
        *--p = '.';
    }
    std::uint64_t whole = a / Scale;
    do {
        *--p = char('0' + whole % 10);
        whole /= 10;
    } while (whole != 0);
    if (m_raw < 0)
        *--p = '-';
    return QString::fromLatin1(p, end - p);
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
