#include "core/Currency.h"
#include "core/VbText.h"

#include <QTest>

class TestMoneyText : public QObject
{
    Q_OBJECT

private slots:
    void currencyParseAndPlainText_data()
    {
        QTest::addColumn<QString>("input");
        QTest::addColumn<QString>("plain");
        QTest::newRow("decimal") << u"125.50"_qs << u"125.5"_qs;
        QTest::newRow("negative whole") << u"-35"_qs << u"-35"_qs;
        QTest::newRow("zero") << u"0.00"_qs << u"0"_qs;
        QTest::newRow("four places") << u"12.3456"_qs << u"12.3456"_qs;
        QTest::newRow("fifth place rounds up") << u"1.00005"_qs << u"1.0001"_qs;
        QTest::newRow("dollar and commas") << u"$1,234.50"_qs << u"1234.5"_qs;
        QTest::newRow("parenthesised negative") << u"($12.50)"_qs << u"-12.5"_qs;
        QTest::newRow("blanks") << u"  7 "_qs << u"7"_qs;
        QTest::newRow("leading dot") << u".5"_qs << u"0.5"_qs;
    }
    void currencyParseAndPlainText()
    {
        QFETCH(QString, input);
        QFETCH(QString, plain);
        auto c = Currency::parse(input);
        QVERIFY(c.has_value());
        QCOMPARE(c->toPlainText(), plain);
    }

    void currencyRejectsNonNumbers()
    {
        for (const QString &bad : {u""_qs, u"abc"_qs, u"12abc"_qs, u"1.2.3"_qs, u"-"_qs, u"."_qs})
            QVERIFY2(!Currency::parse(bad).has_value(), qPrintable(bad));
    }

    void currencyDisplayForms()
    {
        QCOMPARE(Currency::fromRaw(12345000).toDollars(), u"$1,234.50"_qs);
        QCOMPARE(Currency::fromRaw(-50000).toDollars(), u"-$5.00"_qs);
        QCOMPARE(Currency().toDollars(), u"$0.00"_qs);
        QCOMPARE(Currency::fromRaw(12345678900).toDollarsParen(), u"$1,234,567.89"_qs);
        QCOMPARE(Currency::fromRaw(-125000).toDollarsParen(), u"($12.50)"_qs);
        // Fractions of a cent round half away from zero for display only.
        QCOMPARE(Currency::fromRaw(12345).toDollars(), u"$1.23"_qs);
        QCOMPARE(Currency::fromRaw(12350).toDollars(), u"$1.24"_qs);
        QCOMPARE(Currency::fromRaw(-40).toDollarsParen(), u"$0.00"_qs);
    }

    void currencyArithmeticAndRates()
    {
        const Currency rent = *Currency::parse(u"1000"_qs);
        QCOMPARE(rent.percentOf(u"8"_qs)->toPlainText(), u"80"_qs);
        // Four places kept, no rounding to cents.
        QCOMPARE(Currency::parse(u"333.33"_qs)->percentOf(u"7.25"_qs)->toPlainText(), u"24.1664"_qs);
        QCOMPARE((-rent).abs(), rent);
        QCOMPARE((rent - *Currency::parse(u"1000.0001"_qs)).toPlainText(), u"-0.0001"_qs);
        QVERIFY(!rent.percentOf(u"x"_qs).has_value());
        // Database REALs come back exact to four places.
        QCOMPARE(Currency::fromVariant(QVariant(0.1 + 0.2))->toPlainText(), u"0.3"_qs);
        QCOMPARE(Currency::fromVariant(QVariant(-125.5))->toPlainText(), u"-125.5"_qs);
        QCOMPARE(Currency::fromVariant(QVariant(42))->toPlainText(), u"42"_qs);
        QVERIFY(!Currency::fromVariant(QVariant()).has_value());
        // Sums of many REAL-read amounts do not drift.
        Currency total;
        for (int i = 0; i < 10000; ++i)
            total += *Currency::fromVariant(QVariant(0.01));
        QCOMPARE(total.toPlainText(), u"100"_qs);
    }

    void valLeadingNumber_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<double>("value");
        QTest::newRow("zeros") << u"000123"_qs << 123.0;
        QTest::newRow("trailing letters") << u"12abc"_qs << 12.0;
        QTest::newRow("letters first") << u"abc12"_qs << 0.0;
        QTest::newRow("empty") << u""_qs << 0.0;
        QTest::newRow("blanks and sign") << u"  -4.5x"_qs << -4.5;
        QTest::newRow("inner blank") << u"1 2"_qs << 12.0;
        QTest::newRow("second dot stops") << u"1.2.3"_qs << 1.2;
        QTest::newRow("percent") << u"50%"_qs << 50.0;
    }
    void valLeadingNumber()
    {
        QFETCH(QString, text);
        QFETCH(double, value);
        QCOMPARE(VbText::Val(text), value);
    }

    void trimJoinAndNumeric()
    {
        QCOMPARE(VbText::Trim(u"  a b \t "_qs), u"a b \t"_qs); // blanks only
        QVERIFY(VbText::Trim(QString()).isNull());
        QVERIFY(!VbText::Trim(u"   "_qs).isNull());
        QVERIFY(VbText::TrimV(QVariant()).isNull());
        QVERIFY(VbText::joinNull(u"a"_qs, QString()).isNull());
        QCOMPARE(VbText::joinNull(u"a"_qs, u" "_qs, u"b"_qs), u"a b"_qs);
        QVERIFY(VbText::IsNumeric(u" 12.5 "_qs));
        QVERIFY(VbText::IsNumeric(u"-3"_qs));
        QVERIFY(!VbText::IsNumeric(u""_qs));
        QVERIFY(!VbText::IsNumeric(u"12a"_qs));
        QCOMPARE(VbText::Left(u"Late Fee Payment"_qs, 8), u"Late Fee"_qs);
        QCOMPARE(VbText::Mid(u"O%12"_qs, 3), u"12"_qs);
        QCOMPARE(VbText::Mid(u"ab"_qs, 5), u""_qs);
    }

    void datesRoundTrip()
    {
        const QDate d(2026, 3, 7);
        QCOMPARE(VbText::parseDate(VbText::shortDate(d)), d);
        QCOMPARE(VbText::parseDate(u"3/7/2026"_qs), d);
        QCOMPARE(VbText::parseDate(u"2026-03-07"_qs), d);
        QVERIFY(!VbText::parseDate(u"soon"_qs).isValid());
    }
};

QTEST_GUILESS_MAIN(TestMoneyText)
#include "tst_money_text.moc"
