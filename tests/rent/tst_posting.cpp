#include "RentSupport.h"

#include "core/RuntimeError.h"
#include "hostdb/HostDb.h"
#include "hostdb/RentLedger.h"
#include "rent/PaymentFile.h"
#include "rent/PostPayments.h"
#include "rent/UpdateLedgers.h"

#include <QDate>
#include <QDir>
#include <QTest>

using RentSupport::line;

namespace {

PaymentRows loadRows(TestSite &site, const QStringList &lines)
{
    RentSupport::writePaymentFile(site, lines);
    auto loaded = PaymentFile::load(*site.state);
    site.prompter.clear();
    return std::move(loaded.rows);
}

PostingChoices noDeposit()
{
    PostingChoices c;
    c.createDeposit = false;
    c.remark = PostingChoices::DefaultRemark;
    return c;
}

double balance(TestSite &site, const char *table, int tenant)
{
    const bool unit = QByteArray(table) == "Units";
    return site
        .scalar(unit ? u"SELECT UCurrBal FROM Units WHERE UTenantID = :t"_qs
                     : u"SELECT TCurrBal FROM Tenants WHERE TenantID = :t"_qs,
                {{u":t"_qs, tenant}})
        .toDouble();
}

int count(TestSite &site, const QString &table)
{
    return site.scalar(u"SELECT count(*) FROM "_qs + table).toInt();
}

} // namespace

class TestPosting : public QObject
{
    Q_OBJECT

private slots:
    void paymentsRaiseBalancesByPostingCode()
    {
        TestSite site;
        RentSupport::seedPortfolio(site);
        const PaymentRows rows = loadRows(
            site, {line(10, 100, u"-125.00"_qs, u"11/02/2026"_qs, u"000123"_qs),
                   line(10, 101, u"30"_qs, u"11/03/2026"_qs, u""_qs, u"Card"_qs, u"Late Fee"_qs),
                   line(20, 200, u"800"_qs, u"11/04/2026"_qs, u"77"_qs, u"ACH"_qs, u"Other"_qs)});
        QVERIFY(UpdateLedgers::run(*site.state, rows, noDeposit()));

        const auto t = site.rows(u"SELECT * FROM Transactions ORDER BY TransID"_qs);
        QCOMPARE(t.size(), 3);
        // Amounts are posted as absolute values; rent account, "B" code.
        QCOMPARE(t[0][u"TransAmount"_qs].toDouble(), 125.0);
        QCOMPARE(t[0][u"TransAccountID"_qs].toInt(), 4000);
        QCOMPARE(t[0][u"TransPostToID"_qs].toInt(), 100);
        QCOMPARE(t[0][u"TransDate"_qs].toString(), u"2026-11-02"_qs);
        QCOMPARE(t[0][u"TransCheckNumber"_qs].toInt(), 123);
        QCOMPARE(t[0][u"TransType"_qs].toString(), u"I"_qs);
        QCOMPARE(t[0][u"TransStatus"_qs].toString(), u"B"_qs);
        QCOMPARE(t[0][u"TransTax"_qs].toString(), u"N"_qs);
        QCOMPARE(t[0][u"TransRemark"_qs].toString(), u"Rent received"_qs);
        QCOMPARE((QList<int>{t[0][u"TransOID"_qs].toInt(), t[0][u"TransPID"_qs].toInt(),
                             t[0][u"TransUID"_qs].toInt(), t[0][u"TransTID"_qs].toInt()}),
                 (QList<int>{1, 10, 100, 100}));
        // Late fee: its own account, code "T", default remark; blank check is Null.
        QCOMPARE(t[1][u"TransAccountID"_qs].toInt(), 4100);
        QCOMPARE(t[1][u"TransStatus"_qs].toString(), u"T"_qs);
        QCOMPARE(t[1][u"TransRemark"_qs].toString(), u"Late fee"_qs);
        QVERIFY(t[1][u"TransCheckNumber"_qs].isNull());
        // Any other type is rent income.
        QCOMPARE(t[2][u"TransAccountID"_qs].toInt(), 4000);

        // "B" raises both balances, "T" the tenant's only.
        QCOMPARE(balance(site, "Tenants", 100), 125.0);
        QCOMPARE(balance(site, "Units", 100), 125.0);
        QCOMPARE(balance(site, "Tenants", 101), 30.0);
        QCOMPARE(balance(site, "Units", 101), 0.0);
        QCOMPARE(balance(site, "Tenants", 200), 800.0);
        QCOMPARE(balance(site, "Units", 200), 800.0);
        QCOMPARE(site.prompter.texts(), QStringList{u"Your Dwellix Ledgers are now updated."_qs});
        QCOMPARE(site.prompter.titles(), QStringList{u"Dwellix Remitra"_qs});
    }

    void postingCodeUChangesNoBalance()
    {
        TestSite site;
        RentSupport::seedPortfolio(site);
        site.state->IdItems[0] = u"Rent Income;4000;U"_qs;
        const PaymentRows rows = loadRows(site, {line(10, 100, u"50"_qs)});
        QVERIFY(UpdateLedgers::run(*site.state, rows, noDeposit()));
        QCOMPARE(count(site, u"Transactions"_qs), 1);
        QCOMPARE(balance(site, "Tenants", 100), 0.0);
        QCOMPARE(balance(site, "Units", 100), 0.0);
    }

    void managementFees()
    {
        TestSite site;
        RentSupport::seedPortfolio(site);
        site.db().execText(u"UPDATE Owners SET OMgmtFee = '7.125 %' WHERE OwnerID = 3"_qs, "test");
        const PaymentRows rows = loadRows(
            site, {line(10, 100, u"1000"_qs),                      // 8% -> -80
                   line(20, 200, u"-400"_qs, u"11/02/2026"_qs, u"5"_qs, u"ACH"_qs, u"Rent Payment"_qs), // flat 25
                   line(20, 200, u"10"_qs, u"11/02/2026"_qs, u"6"_qs, u"ACH"_qs, u"Late Fee"_qs),  // no fee
                   line(30, 300, u"333.33"_qs)});                  // 7.125% -> -23.7498
        PostingChoices choices = noDeposit();
        choices.postMgmtFees = true;
        QVERIFY(UpdateLedgers::run(*site.state, rows, choices));

        const auto fees = site.rows(u"SELECT * FROM Transactions WHERE TransType = 'E' ORDER BY TransID"_qs);
        QCOMPARE(fees.size(), 3);
        QCOMPARE(fees[0][u"TransAmount"_qs].toDouble(), -80.0);
        QCOMPARE(fees[1][u"TransAmount"_qs].toDouble(), -25.0);
        // Four decimal places, not rounded to cents.
        QCOMPARE(fees[2][u"TransAmount"_qs].toDouble(), -23.7498);
        QCOMPARE(fees[0][u"TransAccountID"_qs].toInt(), 6100);
        QCOMPARE(fees[0][u"TransRemark"_qs].toString(), u"Management Fee"_qs);
        QCOMPARE(fees[0][u"TransStatus"_qs].toString(), u"U"_qs);
        QVERIFY(fees[0][u"TransCheckNumber"_qs].isNull());
        QCOMPARE(fees[1][u"TransTID"_qs].toInt(), 200);
        QCOMPARE(fees[1][u"TransOID"_qs].toInt(), 2);

        // The fee lowers the unit only; the payment raised both.
        QCOMPARE(balance(site, "Units", 100), 920.0);
        QCOMPARE(balance(site, "Tenants", 100), 1000.0);
        QCOMPARE(balance(site, "Units", 200), 375.0);
        QCOMPARE(balance(site, "Tenants", 200), 410.0);
        QCOMPARE(balance(site, "Units", 300), 309.5802);
    }

    void managementFeeArithmetic()
    {
        const Currency rent = *Currency::parse(u"1000"_qs);
        QCOMPARE(PostPayments::managementFeeFor(u"8%"_qs, rent), Currency::parse(u"-80"_qs));
        QCOMPARE(PostPayments::managementFeeFor(u"-25"_qs, rent), Currency::parse(u"-25"_qs));
        QCOMPARE(PostPayments::managementFeeFor(u"$25.00"_qs, rent), Currency::parse(u"-25"_qs));
        QCOMPARE(PostPayments::managementFeeFor(u"8.5%%"_qs, -rent), Currency::parse(u"-85"_qs));
        QVERIFY(!PostPayments::managementFeeFor(u"eight%"_qs, rent));
        QVERIFY(!PostPayments::managementFeeFor(u"flat"_qs, rent));
    }

    void remarkChoices_data()
    {
        QTest::addColumn<int>("choice");
        QTest::addColumn<QString>("own");
        QTest::addColumn<QVariant>("rentRemark");
        QTest::addColumn<QVariant>("lateRemark");
        QTest::addColumn<QVariant>("splitRemark");
        const QString longMethod = u"  "_qs + QString(70, u'm') + u"  "_qs;
        QTest::newRow("none chosen") << -1 << QString() << QVariant() << QVariant() << QVariant();
        QTest::newRow("defaults") << 0 << QString() << QVariant(u"Rent received"_qs)
                                  << QVariant(u"Late fee"_qs) << QVariant(u"Rent received"_qs);
        QTest::newRow("method") << 1 << QString() << QVariant(QString(60, u'm'))
                                << QVariant(QString(60, u'm')) << QVariant(QString(60, u'm'));
        QTest::newRow("own text") << 2 << u"  November rent via Remitra  "_qs
                                  << QVariant(u"November rent via Remitra"_qs)
                                  << QVariant(u"November rent via Remitra"_qs)
                                  << QVariant(u"November rent via Remitra"_qs);
    }

    void remarkChoices()
    {
        QFETCH(int, choice);
        QFETCH(QString, own);
        QFETCH(QVariant, rentRemark);
        QFETCH(QVariant, lateRemark);
        QFETCH(QVariant, splitRemark);
        TestSite site;
        RentSupport::seedPortfolio(site);
        const QString method = QString(70, u'm');
        const PaymentRows rows
            = loadRows(site, {line(10, 100, u"10"_qs, u"11/02/2026"_qs, u"1"_qs, u"  "_qs + method),
                              line(10, 100, u"5"_qs, u"11/02/2026"_qs, u"2"_qs, method, u"Late Fee"_qs)});
        PostingChoices choices;
        choices.remark = choice;
        choices.remarkText = own;
        QVERIFY(UpdateLedgers::run(*site.state, rows, choices));
        const auto t = site.rows(u"SELECT TransRemark FROM Transactions ORDER BY TransID"_qs);
        QCOMPARE(t[0][u"TransRemark"_qs].isNull(), rentRemark.isNull());
        QCOMPARE(t[0][u"TransRemark"_qs].toString(), rentRemark.toString());
        QCOMPARE(t[1][u"TransRemark"_qs].toString(), lateRemark.toString());
        const auto s = site.rows(u"SELECT CkRemark FROM SplitPrintedChecks ORDER BY SplitID"_qs);
        QCOMPARE(s.size(), 2);
        QCOMPARE(s[1][u"CkRemark"_qs].isNull(), splitRemark.isNull());
        QCOMPARE(s[1][u"CkRemark"_qs].toString(), splitRemark.toString());
    }

    void tenantNotFoundStopsKeepingEarlierRows()
    {
        TestSite site;
        RentSupport::seedPortfolio(site);
        site.writeFile(PaymentFile::LastDownloadName, "older");
        const PaymentRows rows = loadRows(
            site, {line(10, 100, u"100"_qs),
                   line(10, 555, u"-60.5"_qs, u"11/02/2026"_qs, u"000777"_qs, u"Card"_qs),
                   line(20, 200, u"200"_qs)});
        PostingChoices choices = noDeposit();
        choices.remark = PostingChoices::MethodRemark;
        QVERIFY(!UpdateLedgers::run(*site.state, rows, choices));

        QCOMPARE(site.prompter.texts(),
                 QStringList{u"Not found: Tenant ID #555\nAmount: -60.5\nDate: 11/02/2026\n"
                             "Check Number: 000777\nRemark: Card\nThe above Remitra deposit does "
                             "not have a Tenant set up for Remitra, this must be corrected before "
                             "you can update any ledgers."_qs});
        QCOMPARE(site.prompter.titles(), QStringList{u"Remitra"_qs});
        // The first row and the stopping row's own line stay; the third is not posted.
        const auto t = site.rows(u"SELECT TransTID, TransAmount FROM Transactions ORDER BY TransID"_qs);
        QCOMPARE(t.size(), 2);
        QCOMPARE(t[1][u"TransTID"_qs].toInt(), 555);
        QCOMPARE(t[1][u"TransAmount"_qs].toDouble(), 60.5);
        QCOMPARE(balance(site, "Tenants", 100), 100.0);
        QCOMPARE(balance(site, "Tenants", 200), 0.0);
        // The payment file stays for another run.
        QVERIFY(!site.fileBytes(site.state->PaymentDownloadName).isNull());
        QCOMPARE(site.fileBytes(PaymentFile::LastDownloadName), QByteArray("older"));
    }

    void missingCategoriesWriteNothing_data()
    {
        QTest::addColumn<int>("item");
        QTest::addColumn<QString>("setting");
        QTest::addColumn<QString>("message");
        const QString rent = u"You do not have a valid Account Category set up for 'Rent Income'. "
                             "Nothing was posted to the Dwellix Ledgers. Please check your Account "
                             "Category and Account Default settings under 'Preferences' from the "
                             "Dwellix Main Menu."_qs;
        const QString late = u"You do not have a valid Account Category set up for 'Late Fee "
                             "Received'. Nothing was posted to the Dwellix Ledgers. Please check "
                             "your Account Category and Account Default settings under "
                             "'Preferences' from the Dwellix Main Menu."_qs;
        QTest::newRow("rent blank") << 0 << u"   "_qs << rent;
        QTest::newRow("rent without account") << 0 << u"Rent Income"_qs << rent;
        QTest::newRow("rent account not a number") << 0 << u"Rent Income;abc;B"_qs << rent;
        QTest::newRow("late blank") << 4 << QString() << late;
    }

    void missingCategoriesWriteNothing()
    {
        QFETCH(int, item);
        QFETCH(QString, setting);
        QFETCH(QString, message);
        TestSite site;
        RentSupport::seedPortfolio(site);
        site.state->IdItems[std::size_t(item)] = setting;
        const PaymentRows rows = loadRows(site, {line(10, 100, u"100"_qs)});
        QVERIFY(!UpdateLedgers::run(*site.state, rows, noDeposit()));
        QCOMPARE(site.prompter.texts(), QStringList{message});
        QCOMPARE(count(site, u"Transactions"_qs), 0);
        QCOMPARE(count(site, u"CheckDepPrinted"_qs), 0);
        QCOMPARE(balance(site, "Tenants", 100), 0.0);
        QVERIFY(!site.fileBytes(site.state->PaymentDownloadName).isNull());
    }

    void missingFeeCategoryStopsAtTheFirstRentRow()
    {
        TestSite site;
        RentSupport::seedPortfolio(site);
        site.state->IdItems[2] = u"Management Fee"_qs;
        const PaymentRows rows
            = loadRows(site, {line(10, 100, u"10"_qs, u"11/02/2026"_qs, u"1"_qs, u"ACH"_qs, u"Late Fee"_qs),
                              line(10, 100, u"1000"_qs), line(20, 200, u"500"_qs)});
        PostingChoices choices = noDeposit();
        choices.postMgmtFees = true;
        QVERIFY(!UpdateLedgers::run(*site.state, rows, choices));
        QCOMPARE(site.prompter.texts(),
                 QStringList{u"You do not have a valid Account Category set up for 'Management "
                             "Fee'. The management fee was not posted. Please check your Account "
                             "Category and Account Default settings under 'Preferences' from the "
                             "Dwellix Main Menu."_qs});
        // The late fee and the rent payment itself are in; no fee, no third row.
        QCOMPARE(count(site, u"Transactions"_qs), 2);
        QCOMPARE(balance(site, "Units", 100), 1000.0);
        QCOMPARE(balance(site, "Tenants", 200), 0.0);
    }

    void unreadableValuesStopBeforeWriting_data()
    {
        QTest::addColumn<QString>("second");
        QTest::addColumn<bool>("fees");
        QTest::addColumn<QString>("message");
        QTest::newRow("amount") << line(20, 200, u"twelve"_qs) << false
                                << u"The amount \"twelve\" on line 2 of the Remitra Payment File "
                                   "cannot be read. Nothing was posted to the Dwellix Ledgers."_qs;
        QTest::newRow("date") << line(20, 200, u"12"_qs, u"31/31/2026"_qs) << false
                              << u"The date \"31/31/2026\" on line 2 of the Remitra Payment File "
                                 "cannot be read. Nothing was posted to the Dwellix Ledgers."_qs;
        QTest::newRow("owner fee") << line(30, 300, u"12"_qs) << true
                                   << u"The management fee \"ten%\" of owner 3 (for the payment on "
                                      "line 2 of the Remitra Payment File) cannot be read. Nothing "
                                      "was posted to the Dwellix Ledgers."_qs;
    }

    void unreadableValuesStopBeforeWriting()
    {
        QFETCH(QString, second);
        QFETCH(bool, fees);
        QFETCH(QString, message);
        TestSite site;
        RentSupport::seedPortfolio(site);
        site.db().execText(u"UPDATE Owners SET OMgmtFee = 'ten%' WHERE OwnerID = 3"_qs, "test");
        const PaymentRows rows = loadRows(site, {line(10, 100, u"10"_qs), second});
        PostingChoices choices;
        choices.postMgmtFees = fees;
        QVERIFY(!UpdateLedgers::run(*site.state, rows, choices));
        QCOMPARE(site.prompter.texts(), QStringList{message});
        QCOMPARE(count(site, u"Transactions"_qs), 0);
        QCOMPARE(count(site, u"CheckDepPrinted"_qs), 0);
        QVERIFY(!QDir(site.path(u"backups"_qs)).exists());
    }

    void depositAndSplits()
    {
        TestSite site;
        RentSupport::seedPortfolio(site);
        const PaymentRows rows = loadRows(
            site, {line(10, 100, u"-1250.5"_qs, u"11/02/2026"_qs, u"123456789012"_qs),
                   line(10, 101, u"35"_qs, u"11/02/2026"_qs, u""_qs, u"Card"_qs, u"Late Fee"_qs),
                   line(20, 200, u"0.0001"_qs)});
        PostingChoices choices;
        choices.depositNumber = u"2045"_qs;
        choices.remark = PostingChoices::DefaultRemark;
        QVERIFY(UpdateLedgers::run(*site.state, rows, choices));

        const auto d = site.rows(u"SELECT * FROM CheckDepPrinted"_qs);
        QCOMPARE(d.size(), 1);
        const QVariantMap &dep = d[0];
        QCOMPARE(dep[u"CkPayee"_qs].toString(), u"DEPOSIT"_qs);
        QCOMPARE(dep[u"CkAccountID"_qs].toInt(), 0);
        QCOMPARE(dep[u"CkAmount"_qs].toDouble(), 1285.5001);
        QCOMPARE(dep[u"CkDate"_qs].toString(), QDate::currentDate().toString(Qt::ISODate));
        QCOMPARE(dep[u"CkInvoice"_qs].toString(), u""_qs);
        QCOMPARE(dep[u"CkRemark"_qs].toString(), u"REMITRA DEPOSIT"_qs);
        QCOMPARE(dep[u"CkStatus"_qs].toString(), u"P"_qs);
        QCOMPARE(dep[u"CkVendorID"_qs].toInt(), -1);
        QVERIFY(dep[u"CkPostTo"_qs].isNull());
        QCOMPARE(dep[u"CkNumber"_qs].toInt(), 2045);
        QCOMPARE(dep[u"CkType"_qs].toString(), u"D"_qs);
        QCOMPARE(dep[u"CkSplit"_qs].toString(), u"Y"_qs);
        QCOMPARE(dep[u"CkPostToText"_qs].toString(), u"Y"_qs);

        const auto s = site.rows(u"SELECT * FROM SplitPrintedChecks ORDER BY SplitID"_qs);
        QCOMPARE(s.size(), 3);
        for (const QVariantMap &split : s) {
            QCOMPARE(split[u"CkNumber"_qs], dep[u"CkID"_qs]);
            QCOMPARE(split[u"CkAccountID"_qs].toInt(), 4000); // rent income, late fees too
            QCOMPARE(split[u"CkStatus"_qs].toString(), u"P"_qs);
            QCOMPARE(split[u"CkType"_qs].toString(), u"D"_qs);
            QCOMPARE(split[u"CkRemark"_qs].toString(), u"Rent received"_qs);
        }
        QCOMPARE(s[0][u"CkCheckNumber"_qs].toInt(), 123456789);
        QCOMPARE(s[0][u"CkAmount"_qs].toDouble(), 1250.5);
        QCOMPARE(s[0][u"CkPostToID"_qs].toInt(), 100);
        QCOMPARE(s[0][u"CkPostTo"_qs].toString(), u"B"_qs);
        QVERIFY(s[1][u"CkCheckNumber"_qs].isNull());
        QCOMPARE(s[1][u"CkPostTo"_qs].toString(), u"T"_qs);
    }

    void blankDepositNumberIsZero()
    {
        TestSite site;
        RentSupport::seedPortfolio(site);
        const PaymentRows rows = loadRows(site, {line(10, 100, u"10"_qs)});
        QVERIFY(UpdateLedgers::run(*site.state, rows, PostingChoices{}));
        QCOMPARE(site.scalar(u"SELECT CkNumber FROM CheckDepPrinted"_qs).toInt(), 0);
    }

    void depositThatCannotBeFoundAgainKeepsZero()
    {
        TestSite site;
        RentSupport::seedPortfolio(site);
        // Another program retypes the deposit as soon as it is written.
        site.db().execText(u"CREATE TRIGGER retype AFTER INSERT ON CheckDepPrinted BEGIN "
                           "UPDATE CheckDepPrinted SET CkType = 'C' WHERE CkID = NEW.CkID; END"_qs,
                           "test");
        const PaymentRows rows = loadRows(site, {line(10, 100, u"10"_qs)});
        QVERIFY(UpdateLedgers::run(*site.state, rows, PostingChoices{}));
        QCOMPARE(site.prompter.texts(), (QStringList{u"Deposit Not found"_qs,
                                                     u"Your Dwellix Ledgers are now updated."_qs}));
        QCOMPARE(site.prompter.shown().first().icon, Prompter::Icon::None);
        QCOMPARE(site.scalar(u"SELECT CkAmount FROM CheckDepPrinted"_qs).toDouble(), 0.0);
        QCOMPARE(count(site, u"SplitPrintedChecks"_qs), 1);
    }

    void successMovesTheFileAsideAndKeepsTenBackups()
    {
        TestSite site;
        RentSupport::seedPortfolio(site);
        site.writeFile(PaymentFile::LastDownloadName, "older");
        QDir(site.folder()).mkpath(u"backups"_qs);
        for (int i = 0; i < 12; ++i)
            site.writeFile(u"backups/dxdatafl-20200101-0000%1-000.db"_qs.arg(i, 2, 10, QChar(u'0')), "x");
        site.writeFile(u"backups/notes.txt"_qs, "mine");
        const PaymentRows rows = loadRows(site, {line(10, 100, u"10"_qs)});
        const QByteArray file = site.fileBytes(site.state->PaymentDownloadName);
        QVERIFY(UpdateLedgers::run(*site.state, rows, PostingChoices{}));

        QVERIFY(site.fileBytes(site.state->PaymentDownloadName).isNull());
        QCOMPARE(site.fileBytes(PaymentFile::LastDownloadName), file);
        QDir backups(site.path(u"backups"_qs));
        const QStringList kept = backups.entryList({u"dxdatafl-*.db"_qs}, QDir::Files, QDir::Name);
        QCOMPARE(kept.size(), 10);
        QVERIFY(!kept.contains(u"dxdatafl-20200101-000002-000.db"_qs));
        QVERIFY(backups.exists(u"notes.txt"_qs));
        // The newest copy is a whole database taken before the posting.
        auto copy = HostDb::openSqlite(backups.filePath(kept.last()));
        QSqlQuery q(copy->database());
        QVERIFY(q.exec(u"SELECT count(*) FROM Tenants"_qs) && q.next());
        QCOMPARE(q.value(0).toInt(), 4);
        QVERIFY(q.exec(u"SELECT count(*) FROM Transactions"_qs) && q.next());
        QCOMPARE(q.value(0).toInt(), 0);
    }

    void failureMidRunLeavesNoHalfBatch()
    {
        TestSite site;
        RentSupport::seedPortfolio(site);
        site.db().execText(u"CREATE TRIGGER fail BEFORE INSERT ON SplitPrintedChecks "
                           "WHEN NEW.CkPostToID = 200 BEGIN SELECT RAISE(ABORT, 'disk I/O error'); END"_qs,
                           "test");
        const PaymentRows rows = loadRows(site, {line(10, 100, u"10"_qs), line(20, 200, u"20"_qs)});
        QVERIFY_THROWS_EXCEPTION(RuntimeError, UpdateLedgers::run(*site.state, rows, PostingChoices{}));
        QCOMPARE(count(site, u"Transactions"_qs), 0);
        QCOMPARE(count(site, u"CheckDepPrinted"_qs), 0);
        QCOMPARE(balance(site, "Tenants", 100), 0.0);
        QVERIFY(!site.fileBytes(site.state->PaymentDownloadName).isNull());
    }

    void accountSettingParts()
    {
        const AccountSetting s = AccountSetting::fromItem(u"Rent Income; 4000 ;Extra; B "_qs);
        QVERIFY(s.valid);
        QCOMPARE(s.text, u"Rent Income"_qs);
        QCOMPARE(s.accountId, 4000.0);
        QCOMPARE(s.postingCode, u"B"_qs);
        QCOMPARE(AccountSetting::defaultText(u"Rent received;1;x"_qs), u"Rent received"_qs);
        QCOMPARE(AccountSetting::defaultText(QString()), u""_qs);
    }
};

QTEST_GUILESS_MAIN(TestPosting)
#include "tst_posting.moc"
