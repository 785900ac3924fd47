#include "RentSupport.h"

#include "rent/PaymentFile.h"

#include <QTest>

using PaymentFile::LoadStatus;

class TestPaymentFile : public QObject
{
    Q_OBJECT

private slots:
    void loadBranches_data()
    {
        QTest::addColumn<QString>("fixture");
        QTest::addColumn<LoadStatus>("status");
        QTest::addColumn<int>("rows");
        QTest::addColumn<QString>("message"); // "text|title", empty for none
        QTest::addColumn<bool>("fileKept");
        const QString none = u""_qs;
        const QString noPayments = u"There were no tenant payments found to process, or there was "
                                   "invalid data in the payment file. Please try again later.|"
                                   "Dwellix Remitra"_qs;
        QTest::newRow("five payments")
            << u"normal.txt"_qs << LoadStatus::Loaded << 5 << none << true;
        QTest::newRow("one line, no line feed")
            << u"single_line.txt"_qs << LoadStatus::NoPayments << 0 << noPayments << false;
        QTest::newRow("empty") << u"empty.txt"_qs << LoadStatus::NoPayments << 0 << noPayments
                               << false;
        QTest::newRow("first line no payment")
            << u"not_payment.txt"_qs << LoadStatus::NoPayments << 0 << noPayments << false;
        QTest::newRow("ends at a line not starting with P")
            << u"stops.txt"_qs << LoadStatus::Loaded << 1 << none << true;
        // Pieces minus two: the last of two LF-ended lines is not counted.
        QTest::newRow("two LF-ended lines")
            << u"two_lines_lf.txt"_qs << LoadStatus::Loaded << 1 << none << true;
        QTest::newRow("too few fields")
            << u"malformed.txt"_qs << LoadStatus::Malformed << 0
            << u"There is a problem in the Remitra Payment File. Please contact support for "
               "assistance.|Remitra"_qs
            << true;
        // The rows stay; only their total fails.
        QTest::newRow("amount not a number")
            << u"bad_amount.txt"_qs << LoadStatus::Failed << 2
            << u"Unexpected error in payment file: 13 - Type mismatch|Payment File Download"_qs
            << true;
        QTest::newRow("no file") << QString() << LoadStatus::FileMissing << 0 << none << false;
    }

    void loadBranches()
    {
        QFETCH(QString, fixture);
        QFETCH(LoadStatus, status);
        QFETCH(int, rows);
        QFETCH(QString, message);
        QFETCH(bool, fileKept);
        TestSite site;
        RentSupport::seedPortfolio(site);
        if (!fixture.isEmpty())
            RentSupport::useFixture(site, fixture);
        const auto result = PaymentFile::load(*site.state);
        QCOMPARE(result.status, status);
        QCOMPARE(int(result.rows.size()), rows);
        QStringList shown;
        for (const auto &s : site.prompter.shown())
            shown << s.text + u'|' + s.title;
        QCOMPARE(shown.join(u'\n'), message);
        QCOMPARE(!site.fileBytes(site.state->files.paymentDownload).isNull(), fileKept);
        QCOMPARE(site.prompter.busyDepth(), 0);
    }

    // Rows are matched to owners, units and tenants; those already in the
    // ledger (same tenant, amount, date and check number) carry a note.
    void matchesLedgerRecords()
    {
        TestSite site;
        RentSupport::seedPortfolio(site);
        RentSupport::useFixture(site, u"normal.txt"_qs);
        auto income = [&](int tenant, double amount, const char *date, const QVariant &check) {
            site.insert(u"Transactions"_qs,
                { { u"TransTID"_qs, tenant }, { u"TransType"_qs, u"I"_qs },
                    { u"TransAmount"_qs, amount }, { u"TransDate"_qs, QString::fromLatin1(date) },
                    { u"TransCheckNumber"_qs, check } });
        };
        income(100, 1250, "2026-11-02", 123); // line 1 (check 000123)
        income(200, 800, "2026-11-05", 5); // line 3 has no check number
        income(300, 99.99, "2026-11-05", {}); // line 4: Null matches Null
        const auto result = PaymentFile::load(*site.state);
        const RentPayments &r = result.rows;
        QCOMPARE(r.size(), std::size_t(5));
        const QStringList first = { r[0].owner, r[0].property, r[0].unit, r[0].tenant, r[0].address,
            r[0].tenantName, r[0].checkNumber, r[0].depositDate, r[0].method };
        QCOMPARE(first,
            (QStringList { u"O1"_qs, u"P10"_qs, u"U100"_qs, u"T100"_qs, u"Unit 100"_qs,
                u"Avery, Ann"_qs, u"000123"_qs, u"11/03/2026"_qs, u"ACH"_qs }));
        // The carriage return stays on the type; its leading words still count.
        QCOMPARE(r[0].transType, u"Rent\r"_qs);
        QVERIFY(r[0].isRent() && r[1].isLateFee());
        // Blank and Null first names give the last name alone.
        QCOMPARE(r[1].tenantName + r[3].tenantName, u"BakerDunn"_qs);
        // Check numbers: nine of twelve digits kept; letters first: empty.
        QCOMPARE(QStringList({ r[1].checkNumber, r[2].checkNumber, r[4].checkNumber }),
            (QStringList { u"123456789"_qs, u""_qs, u"42"_qs }));
        QCOMPARE(r[4].owner, u"(Owner not found - cannot post!)"_qs);
        QCOMPARE(r[4].address, u"(not found - cannot post!)"_qs);
        QCOMPARE(r[4].tenantName, u"(not found - cannot post!)"_qs);
        // 1250 + |-125.50| + 800 + 99.99 + 50
        QCOMPARE(result.total->toDollars(), u"$2,325.49"_qs);

        QVERIFY(r[0].postedNote.contains(u"$1,250.00"_qs));
        QVERIFY(r[0].postedNote.contains(u"with check number 123"_qs));
        QVERIFY(
            r[1].postedNote.isEmpty() && r[2].postedNote.isEmpty() && r[4].postedNote.isEmpty());
        QVERIFY(r[3].postedNote.contains(u"without a check number"_qs));
    }
};

QTEST_GUILESS_MAIN(TestPaymentFile)
#include "tst_paymentfile.moc"
