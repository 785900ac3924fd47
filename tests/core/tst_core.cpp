// Money, the host's text rules, transfer files and the busy pointer.

#include "TestSupport.h"

#include "core/Currency.h"
#include "core/RuntimeError.h"
#include "core/TransferFile.h"
#include "core/VbText.h"

#include <QDir>
#include <QFile>
#include <QLocale>
#include <QTemporaryDir>
#include <QTest>

class TestCore : public QObject
{
    Q_OBJECT

private slots:
    void currencyParse_data()
    {
        QTest::addColumn<QString>("input");
        QTest::addColumn<QString>("plain"); // null: rejected
        const std::pair<const char16_t *, const char16_t *> rows[] = { { u"125.50", u"125.5" },
            { u"-35", u"-35" }, { u"0.00", u"0" }, { u"12.3456", u"12.3456" }, { u"1.00005", u"1" },
            { u"1.00015", u"1.0002" }, { u"-2.00025", u"-2.0002" }, { u"1.000050001", u"1.0001" },
            { u"$1,234.50", u"1234.5" }, { u"($12.50)", u"-12.5" }, { u"  7 ", u"7" },
            { u".5", u"0.5" }, { u"0.0005", u"0.0005" }, { u"-0.05", u"-0.05" },
            { u"100.0300", u"100.03" }, { u"", nullptr }, { u"abc", nullptr }, { u"12abc", nullptr },
            { u"1.2.3", nullptr }, { u"-", nullptr }, { u".", nullptr } };
        for (const auto &[input, plain] : rows)
            QTest::newRow(QString::fromUtf16(input).toUtf8().constData())
                << QString::fromUtf16(input) << (plain ? QString::fromUtf16(plain) : QString());
    }
    void currencyParse()
    {
        QFETCH(QString, input);
        QFETCH(QString, plain);
        const auto c = Currency::parse(input);
        QCOMPARE(c.has_value(), !plain.isNull());
        if (c)
            QCOMPARE(c->toPlainText(), plain);
    }

    void currencyDisplayAndArithmetic()
    {
        QCOMPARE(Currency::fromRaw(12345000).toDollars(), u"$1,234.50"_qs);
        QCOMPARE(Currency::fromRaw(-50000).toDollars(), u"-$5.00"_qs);
        QCOMPARE(Currency().toDollars(), u"$0.00"_qs);
        QCOMPARE(Currency::fromRaw(12345678900).toDollarsParen(), u"$1,234,567.89"_qs);
        QCOMPARE(Currency::fromRaw(-125000).toDollarsParen(), u"($12.50)"_qs);
        // Fractions of a cent round half away from zero for display only.
        QCOMPARE(Currency::fromRaw(12345).toDollars() + Currency::fromRaw(12350).toDollars(),
            u"$1.23$1.24"_qs);
        QCOMPARE(Currency::fromRaw(-40).toDollarsParen(), u"$0.00"_qs);

        const Currency rent = *Currency::parse(u"1000"_qs);
        QCOMPARE(rent.percentOf(u"8"_qs)->toPlainText(), u"80"_qs);
        // Four places kept, no rounding to cents; a half goes to the even
        // digit, as in the host's conversion to currency, and the rate is
        // taken as written (not rounded first).
        QCOMPARE(
            Currency::parse(u"333.33"_qs)->percentOf(u"7.25"_qs)->toPlainText(), u"24.1664"_qs);
        QCOMPARE(
            Currency::parse(u"1000.15"_qs)->percentOf(u"7.5"_qs)->toPlainText(), u"75.0112"_qs);
        QCOMPARE(
            Currency::parse(u"1000.17"_qs)->percentOf(u"7.5"_qs)->toPlainText(), u"75.0128"_qs);
        QCOMPARE(Currency::parse(u"100"_qs)->percentOf(u"0.00015"_qs)->toPlainText(), u"0.0002"_qs);
        QCOMPARE(
            Currency::parse(u"-1000.15"_qs)->percentOf(u" 7.5"_qs)->toPlainText(), u"-75.0112"_qs);
        QCOMPARE((rent - *Currency::parse(u"1000.0001"_qs)).toPlainText(), u"-0.0001"_qs);
        QVERIFY(!rent.percentOf(u"x"_qs).has_value());
        // Database REALs come back exact to four places and do not drift in sums.
        QCOMPARE(Currency::fromVariant(QVariant(0.1 + 0.2))->toPlainText(), u"0.3"_qs);
        QCOMPARE(Currency::fromVariant(QVariant(2.00025))->toPlainText(), u"2.0002"_qs);
        QVERIFY(!Currency::fromVariant(QVariant()).has_value());
        Currency total;
        for (int i = 0; i < 10000; ++i)
            total += *Currency::fromVariant(QVariant(0.01));
        QCOMPARE(total.toPlainText(), u"100"_qs);
    }

    void vbText()
    {
        // Val reads the leading number, skipping blanks anywhere.
        const std::pair<const char16_t *, double> vals[]
            = { { u"000123", 123 }, { u"12abc", 12 }, { u"abc12", 0 }, { u"", 0 },
                  { u"  -4.5x", -4.5 }, { u"1 2", 12 }, { u"1.2.3", 1.2 }, { u"50%", 50 } };
        for (const auto &[text, value] : vals)
            QCOMPARE(VbText::val(QString::fromUtf16(text)), value);

        QCOMPARE(VbText::trim(u"  a b \t "_qs), u"a b \t"_qs); // blanks only
        QVERIFY(VbText::trim(QString()).isNull());
        QVERIFY(!VbText::trim(u"   "_qs).isNull());
        QVERIFY(VbText::trimV(QVariant()).isNull());
        QVERIFY(VbText::joinNull(u"a"_qs, QString()).isNull());
        QCOMPARE(VbText::joinNull(u"a"_qs, u" "_qs, u"b"_qs), u"a b"_qs);
        QVERIFY(VbText::isNumeric(u" 12.5 "_qs) && VbText::isNumeric(u"-3"_qs));
        QVERIFY(!VbText::isNumeric(u""_qs) && !VbText::isNumeric(u"12a"_qs));
        QCOMPARE(VbText::left(u"Late Fee Payment"_qs, 8), u"Late Fee"_qs);
        QCOMPARE(VbText::mid(u"O%12"_qs, 3) + VbText::mid(u"ab"_qs, 5), u"12"_qs);

        // Dates show the system's short form with a four-digit year, which
        // reads back; a two-digit year is read in the 1930-2029 window.
        const QDate d(2026, 3, 7);
        QCOMPARE(VbText::shortDate(d), u"7 Mar 2026"_qs); // the C locale of the tests
        QCOMPARE(VbText::withFourDigitYear(u"M/d/yy"_qs), u"M/d/yyyy"_qs);
        QCOMPARE(VbText::withFourDigitYear(u"dd.MM.yy 'yy'"_qs), u"dd.MM.yyyy 'yy'"_qs);
        QCOMPARE(VbText::withFourDigitYear(u"d MMM yyyy"_qs), u"d MMM yyyy"_qs);
        QCOMPARE(QLocale(u"en_US"_qs)
                     .toString(d,
                         VbText::withFourDigitYear(
                             QLocale(u"en_US"_qs).dateFormat(QLocale::ShortFormat))),
            u"3/7/2026"_qs);
        QCOMPARE(VbText::parseDate(VbText::shortDate(d)), d);
        QCOMPARE(VbText::parseDate(u"3/7/26"_qs), d);
        QCOMPARE(VbText::parseDate(u"3/7/31"_qs), QDate(1931, 3, 7));
        QCOMPARE(VbText::parseDate(u"3/7/2026"_qs), d);
        QCOMPARE(VbText::parseDate(u"2026-03-07"_qs), d);
        QVERIFY(!VbText::parseDate(u"soon"_qs).isValid());
    }

    void ansiRoundTripAndEuro()
    {
        const QString text = u"caf\u00e9 \u20ac5 \u201cq\u201d"_qs;
        const QByteArray bytes = TransferFile::toAnsi(text);
        QCOMPARE(bytes,
            QByteArray("caf\xe9 \x80"
                       "5 \x93q\x94"));
        QCOMPARE(TransferFile::fromAnsi(bytes), text);
        QCOMPARE(TransferFile::toAnsi(u"\u4e2d"_qs), QByteArray("?"));
    }

    void writesWholeFilesOrNothing()
    {
        QTemporaryDir dir;
        const QString p = TransferFile::path(dir.path(), u"out.txt"_qs);
        TransferFile::writeAtomic(p, u"old"_qs);
        {
            TransferFile::LineWriter w(p);
            w.writeLine(u"a|b"_qs);
            // not committed: the old file stays
        }
        QCOMPARE(TransferFile::readWhole(p), u"old"_qs);
        {
            TransferFile::LineWriter w(p);
            for (int i = 0; i < 20000; ++i)
                w.writeLine(u"line %1 \u00e9"_qs.arg(i));
            w.commit();
        }
        QFile f(p);
        QVERIFY(f.open(QIODevice::ReadOnly));
        const QByteArray all = f.readAll();
        QVERIFY(all.startsWith("line 0 \xe9\r\nline 1 "));
        QVERIFY(all.endsWith("line 19999 \xe9\r\n"));
        QCOMPARE(all.count('\n'), 20000);
        // No temporary files left behind.
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files), QStringList { u"out.txt"_qs });

        // Reading: 53 when missing, the bytes as they are otherwise.
        const QString x = dir.filePath(u"x.txt"_qs);
        QCOMPARE(raisedError([&] { TransferFile::readWhole(x); }), 53);
        TransferFile::writeAtomic(x, u""_qs);
        QCOMPARE(TransferFile::readWhole(x), u""_qs);
        TransferFile::writeAtomic(x, u"a\r\nb\n"_qs);
        QCOMPARE(TransferFile::readWhole(x), u"a\r\nb\n"_qs);
        QCOMPARE(raisedError([&] {
            TransferFile::writeAtomic(dir.filePath(u"no/such/dir.txt"_qs), u"x"_qs);
        }),
            76);
        TransferFile::renameReplacing(x, p);
        QVERIFY(!TransferFile::exists(x));
        QCOMPARE(TransferFile::readWhole(p), u"a\r\nb\n"_qs);
    }

    void busyCursorRestoredOnThrow()
    {
        ScriptedPrompter p;
        QCOMPARE(raisedError([&] {
            BusyCursor busy(p);
            BusyCursor inner(p);
            QCOMPARE(p.busyDepth(), 2);
            throw RuntimeError::overflow();
        }),
            6);
        QCOMPARE(p.busyDepth(), 0);
    }
};

QTEST_GUILESS_MAIN(TestCore)
#include "tst_core.moc"
