#pragma once

#include <QString>
#include <QVariant>
#include <compare>
#include <cstdint>
#include <optional>

// Money as a 64-bit count of ten-thousandths, the host database's currency
// type. All money arithmetic goes through this type; never through double.
// Every conversion to currency rounds to 4 places half to even, as the
// host's own conversion does: 75.01125 becomes 75.0112, 75.01135 75.0114.
class Currency
{
public:
    static constexpr std::int64_t Scale = 10000;

    constexpr Currency() = default;
    static constexpr Currency fromRaw(std::int64_t tenThousandths)
    {
        Currency c;
        c.m_raw = tenThousandths;
        return c;
    }
    static constexpr Currency fromWhole(std::int64_t units) { return fromRaw(units * Scale); }

    // Parses "125.5", "-35", "$1,234.50", "(12.50)", " 7 ". Digits past the
    // fourth decimal are rounded half to even. Returns nullopt for text that
    // is not a number in full.
    static std::optional<Currency> parse(const QString &text);
    // A database value: integer, REAL (its shortest exact text, rounded to 4
    // places) or numeric text. Null and unreadable values give nullopt.
    static std::optional<Currency> fromVariant(const QVariant &value);

    constexpr std::int64_t raw() const { return m_raw; }
    constexpr bool isZero() const { return m_raw == 0; }
    constexpr bool isNegative() const { return m_raw < 0; }
    constexpr Currency abs() const { return fromRaw(m_raw < 0 ? -m_raw : m_raw); }

    constexpr Currency operator-() const { return fromRaw(-m_raw); }
    constexpr Currency operator+(Currency o) const { return fromRaw(m_raw + o.m_raw); }
    constexpr Currency operator-(Currency o) const { return fromRaw(m_raw - o.m_raw); }
    constexpr Currency &operator+=(Currency o) { m_raw += o.m_raw; return *this; }
    constexpr Currency &operator-=(Currency o) { m_raw -= o.m_raw; return *this; }
    constexpr auto operator<=>(const Currency &) const = default;

    // this x (rate / 100), for a percentage given as text such as "8" or
    // "7.25"; the exact product is rounded half to even to 4 places, never
    // to cents: 7.5% of 1000.15 is 75.0112. nullopt when the rate is not a
    // number.
    std::optional<Currency> percentOf(const QString &ratePercent) const;

    // Plain text form: no thousands separator, no trailing zeros, "-" for
    // negatives: 125.5, -35, 0, 12.3456.
    QString toPlainText() const;
    // "$##,##0.00": always two decimals, negatives with a leading "-".
    QString toDollars() const;
    // "$###,###0.00;($###,###0.00)": negatives in parentheses.
    QString toDollarsParen() const;
    // Value to bind into a REAL column.
    double toDatabaseValue() const;

private:
    std::int64_t m_raw = 0;
};
