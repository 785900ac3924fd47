#include "RentSupport.h"

#include "hostdb/RentLookup.h"
#include "rent/PaymentFile.h"

#include <QFile>
#include <QTest>

using PaymentFile::LoadStatus;

class TestPaymentFile : public QObject
{
    Q_OBJECT

    static void useFixture(TestSite &site, const QString &fixture)
    {
        QFile f(testData(u"rent/"_qs + fixture));
        QVERIFY(f.open(QIODevice::ReadOnly));
        site.writeFile(site.state->PaymentDownloadName, f.readAll());
    }

private slots:
    void loadBranches_data()
    {
        QTest::addColumn<QString>("fixture");
        QTest::addColumn<int>("status");
        QTest::addColumn<int>("rows");
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("title");
        QTest::addColumn<bool>("fileKept");

        const QString none;
        const QString noPayments = u"There were no tenant payments found to process, or there was "
                                   "invalid data in the payment file. Please try again later."_qs;
        QTest::newRow("five payments") << u"normal.txt"_qs << int(LoadStatus::Loaded) << 5 << none
                                       << none << true;
        QTest::newRow("one line without line feed")
            << u"single_line.txt"_qs << int(LoadStatus::NoPayments) << 0 << noPayments
            << u"Dwellix Remitra"_qs << false;
        QTest::newRow("empty file") << u"empty.txt"_qs << int(LoadStatus::NoPayments) << 0
                                    << noPayments << u"Dwellix Remitra"_qs << false;
        QTest::newRow("first line no payment")
            << u"not_payment.txt"_qs << int(LoadStatus::NoPayments) << 0 << noPayments
            << u"Dwellix Remitra"_qs << false;
        // The reading ends at the first line that is no payment.
        QTest::newRow("stops at a non-payment line")
            << u"stops.txt"_qs << int(LoadStatus::Loaded) << 1 << none << none << true;
        // Two lines each ended by a line feed give one candidate.
        QTest::newRow("last line uncounted")
            << u"two_lines_lf.txt"_qs << int(LoadStatus::Loaded) << 1 << none << none << true;
        QTest::newRow("too few fields")
            << u"malformed.txt"_qs << int(LoadStatus::Malformed) << 0
            << u"There is a problem in the Remitra Payment File. Please contact support for "
               "assistance."_qs
            << u"Remitra"_qs << true;
        // The rows are shown; their total cannot be taken.
        QTest::newRow("amount not a number")
            << u"bad_amount.txt"_qs << int(LoadStatus::Failed) << 2
            << u"Unexpected error in payment file: 13 - Type mismatch"_qs
            << u"Payment File Download"_qs << true;
        QTest::newRow("no payment file") << QString() << int(LoadStatus::FileMissing) << 0 << none
                                         << none << false;
    }

    void loadBranches()
    {
        QFETCH(QString, fixture);
        QFETCH(int, status);
        QFETCH(int, rows);
        QFETCH(QString, message);
        QFETCH(QString, title);
        QFETCH(bool, fileKept);

        TestSite site;
        RentSupport::seedPortfolio(site);
        if (!fixture.isEmpty())
            useFixture(site, fixture);
        const auto result = PaymentFile::load(*site.state);
        QCOMPARE(int(result.status), status);
        QCOMPARE(int(result.rows.size()), rows);
        if (message.isNull()) {
            QVERIFY2(site.prompter.shown().isEmpty(), qPrintable(site.prompter.texts().join(u'|')));
        } else {
            QCOMPARE(site.prompter.texts(), QStringList{message});
            QCOMPARE(site.prompter.titles(), QStringList{title});
        }
        QCOMPARE(!site.fileBytes(site.state->PaymentDownloadName).isNull(), fileKept);
        QCOMPARE(site.prompter.busyDepth(), 0);
    }

    void matchesOwnersUnitsAndTenants()
    {
        TestSite site;
        RentSupport::seedPortfolio(site);
        useFixture(site, u"normal.txt"_qs);
        const auto result = PaymentFile::load(*site.state);
        QCOMPARE(result.status, LoadStatus::Loaded);
        const PaymentRows &r = result.rows;
        QCOMPARE(r.size(), std::size_t(5));

        QCOMPARE(r[0].owner, u"O1"_qs);
        QCOMPARE(r[0].property, u"P10"_qs);
        QCOMPARE(r[0].unit, u"U100"_qs);
        QCOMPARE(r[0].tenant, u"T100"_qs);
        QCOMPARE(r[0].address, u"Unit 100"_qs);
        QCOMPARE(r[0].tenantName, u"Avery, Ann"_qs);
        QCOMPARE(r[0].amount, Currency::parse(u"1250"_qs));
        QCOMPARE(r[0].checkNumber, u"000123"_qs);
        QCOMPARE(r[0].depositDate, u"11/03/2026"_qs);
        QCOMPARE(r[0].method, u"ACH"_qs);
        // The carriage return before the line feed stays on the last field.
        QCOMPARE(r[0].transType, u"Rent\r"_qs);
        QVERIFY(r[0].isRent());

        // Blank first name: the last name alone. Twelve-digit check: nine kept.
        QCOMPARE(r[1].tenantName, u"Baker"_qs);
        QCOMPARE(r[1].checkNumber, u"123456789"_qs);
        QVERIFY(r[1].isLateFee());
        QCOMPARE(r[1].line, 2);

        // A check number beginning with letters is dropped.
        QCOMPARE(r[2].checkNumber, QString(u""_qs));
        QCOMPARE(r[2].owner, u"O2"_qs);
        // A Null first name counts as blank too.
        QCOMPARE(r[3].tenantName, u"Dunn"_qs);
        QCOMPARE(r[3].amountText, u" 99.99 "_qs);

        QCOMPARE(r[4].owner, PaymentFile::OwnerNotFound);
        QCOMPARE(r[4].address, PaymentFile::NotFound);
        QCOMPARE(r[4].tenantName, PaymentFile::NotFound);
        QCOMPARE(r[4].checkNumber, u"42"_qs);

        // Absolute amounts: 1250 + 125.50 + 800 + 99.99 + 50.
        QVERIFY(result.total);
        QCOMPARE(result.total->toDollars(), u"$2,325.49"_qs);
        for (const PaymentRow &row : r)
            QVERIFY(row.postedNote.isEmpty());
    }

    void candidateCountRule()
    {
        auto count = [](const char *text) {
            return PaymentFile::candidateCount(QString::fromLatin1(text).split(u'\n'));
        };
        QCOMPARE(count("P1,a\nP2,b\n"), 1);
        QCOMPARE(count("P1,a\nP2,b\n\r\n"), 2);
        QCOMPARE(count("P1,a"), -1);
        QCOMPARE(count("PX,a\nP2\n\n"), 0);  // "P" must be followed by a digit
        QCOMPARE(count("p1,a\nP2\n\n"), 0);  // upper-case "P" only
    }

    void paymentsAlreadyInTheLedgerAreMarked()
    {
        TestSite site;
        RentSupport::seedPortfolio(site);
        useFixture(site, u"normal.txt"_qs);
        // The first payment of the file, posted before (check 000123 = 123).
        site.insert(u"Transactions"_qs, {{u"TransTID"_qs, 100}, {u"TransType"_qs, u"I"_qs},
                                         {u"TransAmount"_qs, 1250.0}, {u"TransDate"_qs, u"2026-11-02"_qs},
                                         {u"TransCheckNumber"_qs, 123}});
        // Same payment with another check number: not the same.
        site.insert(u"Transactions"_qs, {{u"TransTID"_qs, 200}, {u"TransType"_qs, u"I"_qs},
                                         {u"TransAmount"_qs, 800.0}, {u"TransDate"_qs, u"2026-11-05"_qs},
                                         {u"TransCheckNumber"_qs, 5}});
        // No check number on either side matches.
        site.insert(u"Transactions"_qs, {{u"TransTID"_qs, 300}, {u"TransType"_qs, u"I"_qs},
                                         {u"TransAmount"_qs, 99.99}, {u"TransDate"_qs, u"2026-11-05"_qs}});
        const auto result = PaymentFile::load(*site.state);
        QCOMPARE(result.status, LoadStatus::Loaded);
        const PaymentRows &r = result.rows;
        QVERIFY(r[0].postedNote.contains(u"$1,250.00"_qs));
        QVERIFY(r[0].postedNote.contains(u"check number 123"_qs));
        QVERIFY(r[1].postedNote.isEmpty());
        QVERIFY(r[2].postedNote.isEmpty());
        QVERIFY(r[3].postedNote.contains(u"without a check number"_qs));
        QVERIFY(r[4].postedNote.isEmpty());
    }

    void movingAsideReplacesTheLastDownload()
    {
        TestSite site;
        site.writeFile(PaymentFile::LastDownloadName, "old");
        site.writeFile(site.state->PaymentDownloadName, "new\r\n");
        PaymentFile::moveAside(*site.state);
        QVERIFY(site.fileBytes(site.state->PaymentDownloadName).isNull());
        QCOMPARE(site.fileBytes(PaymentFile::LastDownloadName), QByteArray("new\r\n"));
    }
};

QTEST_GUILESS_MAIN(TestPaymentFile)
#include "tst_paymentfile.moc"
