#include "core/VbText.h"

#include <QHash>
#include <QLocale>

#include <cmath>

namespace VbText {

double val(const QString &text)
{
    qsizetype i = 0;
    const qsizetype n = text.size();
    auto skipBlanks = [&] {
        while (
            i < n && (text[i] == u' ' || text[i] == u'\t' || text[i] == u'\n' || text[i] == u'\r'))
            ++i;
    };
    skipBlanks();
    bool negative = false;
    if (i < n && (text[i] == u'-' || text[i] == u'+')) {
        negative = text[i] == u'-';
        ++i;
    }
    double value = 0;
    bool seenDot = false;
    double scale = 0.1;
    for (; i < n; ++i) {
        const QChar ch = text[i];
        if (ch == u' ' || ch == u'\t')
            continue; // the runtime's Val ignores blanks between digits
        if (ch == u'.' && !seenDot) {
            seenDot = true;
            continue;
        }
        if (ch < u'0' || ch > u'9')
            break;
        const int d = ch.unicode() - u'0';
        if (!seenDot) {
            value = value * 10 + d;
        } else {
            value += d * scale;
            scale /= 10;
        }
    }
    return negative ? -value : value;
}

qint64 valId(const QString &text)
{
    const double v = val(text);
    if (!std::isfinite(v) || std::fabs(v) > 9.0e18)
        return 0;
    return static_cast<qint64>(std::trunc(v));
}

QString lTrim(const QString &text)
{
    if (text.isNull())
        return {};
    qsizetype i = 0;
    while (i < text.size() && text[i] == u' ')
        ++i;
    return text.mid(i);
}

QString rTrim(const QString &text)
{
    if (text.isNull())
        return {};
    qsizetype n = text.size();
    while (n > 0 && text[n - 1] == u' ')
        --n;
    return text.left(n);
}

QString trim(const QString &text)
{
    if (text.isNull())
        return {};
    QString t = rTrim(lTrim(text));
    if (t.isNull())
        return QStringLiteral("");
    return t;
}

QString text(const QVariant &value)
{
    if (value.isNull() || !value.isValid())
        return {};
    QString t = value.toString();
    if (t.isNull())
        return QStringLiteral("");
    return t;
}

QString trimV(const QVariant &value)
{
    return trim(text(value));
}

QString joinNull(const QString &a, const QString &b)
{
    if (a.isNull() || b.isNull())
        return {};
    return a + b;
}

bool isNumeric(const QString &input)
{
    QString t = input.trimmed();
    if (t.startsWith(u'-') || t.startsWith(u'+'))
        t = t.mid(1).trimmed();
    if (t.startsWith(u'$'))
        t = t.mid(1);
    t.remove(u',');
    if (t.isEmpty() || t == QStringLiteral("."))
        return false;
    bool seenDot = false;
    for (QChar ch : t) {
        if (ch == u'.') {
            if (seenDot)
                return false;
            seenDot = true;
        } else if (ch < u'0' || ch > u'9') {
            return false;
        }
    }
    return true;
}

QString left(const QString &text, qsizetype n)
{
    if (text.isNull())
        return {};
    return text.left(std::max<qsizetype>(0, n));
}

QString mid(const QString &text, qsizetype start1, qsizetype n)
{
    if (text.isNull())
        return {};
    const qsizetype from = std::max<qsizetype>(0, start1 - 1);
    if (from >= text.size())
        return QStringLiteral("");
    return n < 0 ? text.mid(from) : text.mid(from, n);
}

QString withFourDigitYear(const QString &format)
{
    QString out;
    bool quoted = false;
    for (qsizetype i = 0; i < format.size(); ++i) {
        const QChar c = format.at(i);
        if (c == u'\'') {
            quoted = !quoted;
        } else if (!quoted && c == u'y') {
            while (i + 1 < format.size() && format.at(i + 1) == u'y')
                ++i;
            out += u"yyyy"_qs;
            continue;
        }
        out += c;
    }
    return out;
}

QString shortDateFormat()
{
    // Worked out again only when the system's format changes.
    thread_local QString system;
    thread_local QString fourDigits;
    const QString format = QLocale::system().dateFormat(QLocale::ShortFormat);
    if (format != system || fourDigits.isEmpty()) {
        system = format;
        fourDigits = withFourDigitYear(format);
    }
    return fourDigits;
}

QString shortDate(const QDate &date)
{
    if (!date.isValid())
        return QStringLiteral("");
    return QLocale::system().toString(date, shortDateFormat());
}

namespace {

// A year read from two digits: 1930 to 2029, as the host reads them.
QDate withCentury(const QDate &d)
{
    const int yy = d.year() % 100;
    return QDate(yy < 30 ? 2000 + yy : 1900 + yy, d.month(), d.day());
}

QDate readDate(const QString &input)
{
    const QString text = input.trimmed();
    if (text.isEmpty())
        return {};
    QDate d = QDate::fromString(text, Qt::ISODate);
    if (d.isValid())
        return d;
    const QLocale locale = QLocale::system();
    d = locale.toDate(text, shortDateFormat());
    if (d.isValid() && d.year() >= 100)
        return d;
    // The system's own short form, which may carry two-digit years.
    const QString native = locale.dateFormat(QLocale::ShortFormat);
    d = locale.toDate(text, native);
    if (d.isValid())
        return native.contains(u"yyyy"_qs) && d.year() >= 100 ? d : withCentury(d);
    const QStringList parts = text.split(u'/');
    if (parts.size() == 3) {
        bool okM = false, okD = false, okY = false;
        int m = parts[0].trimmed().toInt(&okM);
        int day = parts[1].trimmed().toInt(&okD);
        int y = parts[2].trimmed().toInt(&okY);
        if (okM && okD && okY) {
            if (y < 100)
                y += y < 30 ? 2000 : 1900;
            return QDate(y, m, day);
        }
    }
    return {};
}

} // namespace

QDate parseDate(const QString &input)
{
    // A payment file repeats a handful of dates thousands of times, and
    // reading the system's short form is costly; the answers are kept for
    // as long as the system's short date format stays the same.
    struct Known
    {
        QString format;
        QHash<QString, QDate> dates;
    };
    thread_local Known known;
    const QString format = QLocale::system().dateFormat(QLocale::ShortFormat);
    if (format != known.format || known.dates.size() >= 4096) {
        known.format = format;
        known.dates.clear();
    }
    auto it = known.dates.constFind(input);
    if (it == known.dates.cend())
        it = known.dates.insert(input, readDate(input));
    return it.value();
}

} // namespace VbText
