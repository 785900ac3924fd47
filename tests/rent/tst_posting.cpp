#include "RentSupport.h"

#include "core/RuntimeError.h"
#include "core/ScriptedPrompter.h"
#include "hostdb/RentBackup.h"
#include "rent/PaymentFile.h"
#include "rent/PostPayments.h"
#include "rent/UpdateLedgers.h"

#include <QDir>
#include <QScopeGuard>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QTest>

using RentSupport::line;

namespace {

RentPayments loadRows(TestSite &site, const QStringList &lines)
{
    RentSupport::writePaymentFile(site, lines);
    RentPayments rows = PaymentFile::load(*site.state).rows;
    site.prompter.clear();
    return rows;
}

// The rows of a query, fields joined by blanks, Null shown as "Null".
QStringList table(TestSite &site, const QString &sql)
{
    QSqlQuery q(site.db().database());
    if (!q.exec(sql))
        qFatal("%s", qPrintable(sql));
    QStringList rows;
    while (q.next()) {
        QStringList f;
        for (int i = 0; i < q.record().count(); ++i)
            f << (q.isNull(i) ? u"Null"_qs : q.value(i).toString());
        rows << f.join(u' ');
    }
    return rows;
}

// "tenant balance unit balance" of each tenant, by tenant id.
QString balances(TestSite &site)
{
    return table(site,
        u"SELECT TenantID, TCurrBal, UCurrBal FROM Tenants JOIN Units ON UTenantID = TenantID "
        "ORDER BY TenantID"_qs)
        .join(u", "_qs);
}

PostingChoices choices(int remark, bool fees, bool deposit)
{
    PostingChoices c;
    c.remark = remark;
    c.postMgmtFees = fees;
    c.createDeposit = deposit;
    return c;
}

// A prompter that, each time it shows a message, tries to take the host
// database's write lock from a connection of its own.
class LockProbe : public ScriptedPrompter
{
public:
    explicit LockProbe(QString path)
        : m_path(std::move(path))
    {
    }
    void notice(const QString &text, const QString &title, Icon icon) override
    {
        databaseFree << canWrite();
        ScriptedPrompter::notice(text, title, icon);
    }
    QList<bool> databaseFree;

private:
    bool canWrite() const
    {
        bool free = false;
        {
            QSqlDatabase db = QSqlDatabase::addDatabase(u"QSQLITE"_qs, u"probe"_qs);
            db.setDatabaseName(m_path);
            db.setConnectOptions(u"QSQLITE_BUSY_TIMEOUT=0"_qs);
            if (db.open()) {
                QSqlQuery q(db);
                free = q.exec(u"BEGIN IMMEDIATE"_qs);
                if (free)
                    q.exec(u"ROLLBACK"_qs);
            }
        }
        QSqlDatabase::removeDatabase(u"probe"_qs);
        return free;
    }
    QString m_path;
};

} // namespace

class TestPosting : public QObject
{
    Q_OBJECT

    static int tenantsIn(const QString &path)
    {
        auto copy = HostDb::openSqlite(path);
        QSqlQuery q(copy->database());
        if (!q.exec(u"SELECT count(*) FROM Tenants"_qs) || !q.next())
            return -1;
        return q.value(0).toInt();
    }

    static void addTenant(QSqlDatabase db, int id)
    {
        QSqlQuery q(db);
        q.prepare(u"INSERT INTO Tenants (TenantID, TPropID, TCurrBal) VALUES (?, 1, 0)"_qs);
        q.addBindValue(id);
        QVERIFY(q.exec());
    }

private slots:
    void paymentsAndFees_data()
    {
        QTest::addColumn<int>("chunk");
        QTest::newRow("read at once") << 8192;
        // Tenants 100 and 200 and owner 1 are read again in the second
        // chunk, with what the first one wrote.
        QTest::newRow("in chunks of 3") << 3;
    }

    void paymentsAndFees()
    {
        QFETCH(int, chunk);
        const auto restore
            = qScopeGuard([was = PostPayments::readAheadChunk] { PostPayments::readAheadChunk = was; });
        PostPayments::readAheadChunk = std::size_t(chunk);
        TestSite site;
        RentSupport::seedPortfolio(site);
        site.db().execText(u"UPDATE Owners SET OMgmtFee = '7.125 %' WHERE OwnerID = 3"_qs, "test");
        const RentPayments rows = loadRows(site,
            { line(10, 100, u"-1000.00"_qs, u"11/02/2026"_qs, u"000123"_qs), // 8%: -80
                line(10, 101, u"30"_qs, u"11/03/2026"_qs, u""_qs, u"Card"_qs, u"Late Fee"_qs),
                line(20, 200, u"400"_qs, u"11/04/2026"_qs, u"5"_qs, u"ACH"_qs, u"Rent Payment"_qs),
                line(20, 200, u"60"_qs, u"11/04/2026"_qs, u"6"_qs, u"ACH"_qs, u"Other"_qs),
                line(30, 300, u"333.33"_qs), // 7.125%: -23.7498
                line(10, 100, u"50"_qs) }); // 8%: -4
        QVERIFY(UpdateLedgers::run(
            *site.state, rows, choices(PostingChoices::DefaultRemark, true, false)));
        QCOMPARE(site.prompter.texts(), QStringList { ProductTexts::ledgersUpdated });
        QCOMPARE(site.prompter.titles(), QStringList { u"Dwellix Remitra"_qs });
        QCOMPARE(table(site,
                     u"SELECT TransAccountID, TransPostToID, TransAmount, TransDate, "
                     "TransCheckNumber, TransRemark, TransType, TransStatus, TransTax, TransOID, "
                     "TransPID, TransUID, TransTID FROM Transactions ORDER BY rowid"_qs),
            (QStringList { u"4000 100 1000 2026-11-02 123 Rent received I B N 1 10 100 100"_qs,
                u"6100 100 -80 2026-11-02 Null Management Fee E U N 1 10 100 100"_qs,
                u"4100 101 30 2026-11-03 Null Late fee I T N 1 10 101 101"_qs,
                u"4000 200 400 2026-11-04 5 Rent received I B N 2 20 200 200"_qs,
                u"6100 200 -25 2026-11-04 Null Management Fee E U N 2 20 200 200"_qs,
                u"4000 200 60 2026-11-04 6 Rent received I B N 2 20 200 200"_qs,
                u"4000 300 333.33 2026-11-02 1001 Rent received I B N 3 30 300 300"_qs,
                u"6100 300 -23.7498 2026-11-02 Null Management Fee E U N 3 30 300 300"_qs,
                u"4000 100 50 2026-11-02 1001 Rent received I B N 1 10 100 100"_qs,
                u"6100 100 -4 2026-11-02 Null Management Fee E U N 1 10 100 100"_qs }));
        // Payments raise what their code names ("B" both, "T" the tenant);
        // fees lower the unit only.
        const QString after = u"100 1050 966, 101 30 0, 200 460 435, 300 333.33 309.5802"_qs;
        QCOMPARE(balances(site), after);

        // With code "U" a payment changes no balance.
        site.state->account.idItems[0] = u"Rent Income;4000;U"_qs;
        QVERIFY(UpdateLedgers::run(*site.state, loadRows(site, { line(10, 100, u"5"_qs) }), {}));
        QCOMPARE(balances(site), after);
    }

    void remarkChoices_data()
    {
        QTest::addColumn<int>("choice");
        QTest::addColumn<QStringList>("remarks"); // rent, late fee, split of the late fee
        const QString cut(60, u'm');
        QTest::newRow("none chosen") << -1 << QStringList(3, u"Null"_qs);
        QTest::newRow("defaults") << 0
                                  << QStringList { u"Rent received"_qs, u"Late fee"_qs,
                                         u"Rent received"_qs };
        QTest::newRow("method") << 1 << QStringList(3, cut);
        QTest::newRow("own text") << 2 << QStringList(3, u"Paid via Remitra"_qs);
    }

    void remarkChoices()
    {
        QFETCH(int, choice);
        TestSite site;
        RentSupport::seedPortfolio(site);
        const QString method = u"  "_qs + QString(70, u'm');
        PostingChoices c = choices(choice, false, true);
        c.remarkText = u"  Paid via Remitra  "_qs;
        QVERIFY(UpdateLedgers::run(*site.state,
            loadRows(site,
                { line(10, 100, u"10"_qs, u"11/02/2026"_qs, u"1"_qs, method),
                    line(10, 100, u"5"_qs, u"11/02/2026"_qs, u"2"_qs, method, u"Late Fee"_qs) }),
            c));
        QTEST(table(site,
                  u"SELECT TransRemark FROM Transactions UNION ALL "
                  "SELECT CkRemark FROM SplitPrintedChecks WHERE rowid = 2"_qs),
            "remarks");
        // A blank deposit number gives deposit number 0.
        QCOMPARE(site.scalar(u"SELECT CkNumber FROM CheckDepPrinted"_qs).toInt(), 0);
    }

    void stops_data()
    {
        QTest::addColumn<int>("item"); // account.idItems entry to change, -1 none
        QTest::addColumn<QString>("setting");
        QTest::addColumn<QString>("secondLine");
        QTest::addColumn<QString>("message"); // its beginning
        QTest::addColumn<int>("written"); // Transactions rows kept
        QTest::addColumn<bool>("fixable"); // the cause can be put right in Dwellix
        const QString fine = line(20, 200, u"20"_qs);
        const QString valid = u"You do not have a valid Account Category set up for '"_qs;
        QTest::newRow("unknown tenant")
            << -1 << QString()
            << line(10, 555, u"-60.5"_qs, u"11/02/2026"_qs, u"000777"_qs, u"Card"_qs)
            << u"Not found: Tenant ID #555\nAmount: -60.5\nDate: 11/02/2026\nCheck Number: "
               "000777\nRemark: Card\nThe above Remitra deposit"_qs
            << 2 << true;
        QTest::newRow("no rent category")
            << 0 << u"  "_qs << fine << valid + u"Rent Income'. Nothing was posted"_qs << 0 << true;
        QTest::newRow("rent account no number")
            << 0 << u"Rent Income;abc;B"_qs << fine << valid + u"Rent Income'."_qs << 0 << true;
        QTest::newRow("no late category")
            << 4 << u"Late Fee Received"_qs << fine
            << valid + u"Late Fee Received'. Nothing was posted"_qs << 0 << true;
        // The late fee of line 1 and the rent payment itself are in; no fee.
        QTest::newRow("no fee category")
            << 2 << QString() << fine
            << valid + u"Management Fee'. The management fee was not posted."_qs << 2 << true;
        QTest::newRow("amount unreadable")
            << -1 << QString() << line(20, 200, u"twelve"_qs)
            << u"The amount \"twelve\" on line 2 of the Remitra Payment File cannot be read. "
               "Nothing was posted"_qs
            << 0 << false;
        QTest::newRow("date unreadable")
            << -1 << QString() << line(20, 200, u"1"_qs, u"31/31/2026"_qs)
            << u"The date \"31/31/2026\" on line 2 of the Remitra"_qs << 0 << false;
        QTest::newRow("owner fee unreadable")
            << -1 << QString() << line(30, 300, u"12"_qs)
            << u"The management fee \"ten%\" of owner 3 (for the payment on line 2 of the Remitra "
               "Payment File) cannot be read. Nothing was posted"_qs
            << 0 << false;
    }

    // A stop names its cause and keeps what the run wrote before it, and the
    // payment file for another run. Put right in Dwellix and posted again,
    // the ledgers end exactly as one clean run leaves them: nothing posted
    // twice.
    void stops()
    {
        QFETCH(int, item);
        QFETCH(QString, setting);
        QFETCH(QString, secondLine);
        QFETCH(QString, message);
        QFETCH(bool, fixable);
        const QStringList lines
            = { line(10, 100, u"7"_qs, u"11/02/2026"_qs, u"1"_qs, u"ACH"_qs, u"Late Fee"_qs),
                  secondLine, line(10, 101, u"100"_qs) };
        const PostingChoices c = choices(PostingChoices::MethodRemark, true, false);
        const auto seed = [](TestSite &s) {
            RentSupport::seedPortfolio(s);
            s.db().execText(u"UPDATE Owners SET OMgmtFee = 'ten%' WHERE OwnerID = 3"_qs, "test");
        };
        const auto addTenant555 = [](TestSite &s) {
            s.insert(u"Tenants"_qs,
                { { u"TenantID"_qs, 555 }, { u"TPropID"_qs, 10 }, { u"TCurrBal"_qs, 0 } });
            s.insert(u"Units"_qs, { { u"UTenantID"_qs, 555 }, { u"UCurrBal"_qs, 0 } });
        };
        TestSite site;
        seed(site);
        if (item >= 0)
            site.state->account.idItems[std::size_t(item)] = setting;
        const RentPayments rows = loadRows(site, lines);
        QVERIFY(!UpdateLedgers::run(*site.state, rows, c));
        QCOMPARE(site.prompter.titles(), QStringList { u"Remitra"_qs });
        QVERIFY2(site.prompter.texts().first().startsWith(message),
            qPrintable(site.prompter.texts().first()));
        QTEST(site.scalar(u"SELECT count(*) FROM Transactions"_qs).toInt(), "written");
        QVERIFY(balances(site).contains(u"101 0 0"_qs));
        QVERIFY(!site.fileBytes(site.state->files.paymentDownload).isNull());
        // What stops before anything is written leaves no backup either.
        QCOMPARE(QDir(site.path(u"backups"_qs)).exists(), !message.startsWith(u"The "_qs));
        if (!fixable)
            return;

        if (item >= 0)
            site.state->account.idItems[std::size_t(item)] = RentSupport::accountItems()[item];
        addTenant555(site);
        QVERIFY(RentSupport::post(site, rows, c));
        TestSite clean;
        seed(clean);
        addTenant555(clean);
        QVERIFY(UpdateLedgers::run(*clean.state, loadRows(clean, lines), c));
        const QString ledger = u"SELECT TransAccountID, TransPostToID, TransAmount, TransType, "
                               "TransStatus FROM Transactions ORDER BY 1, 2, 3, 4, 5"_qs;
        QCOMPARE(table(site, ledger), table(clean, ledger));
        QCOMPARE(balances(site), balances(clean));
    }

    void depositAndSplits()
    {
        TestSite site;
        RentSupport::seedPortfolio(site);
        const RentPayments rows = loadRows(site,
            { line(10, 100, u"-1250.5"_qs, u"11/02/2026"_qs, u"123456789012"_qs),
                line(10, 101, u"35"_qs, u"11/02/2026"_qs, u""_qs, u"Card"_qs, u"Late Fee"_qs),
                line(20, 555, u"0.0101"_qs) }); // unknown tenant: posting stops here
        PostingChoices c;
        c.depositNumber = u"2045"_qs;
        QVERIFY(!UpdateLedgers::run(*site.state, rows, c));

        // The deposit is still made, with all rows, after the posting stopped.
        QCOMPARE(table(site,
                     u"SELECT CkPayee, CkAccountID, CkAmount, CkInvoice, CkRemark, CkStatus, "
                     "CkVendorID, CkPostTo, CkNumber, CkType, CkSplit, CkPostToText, "
                     "CkDate = date('now', 'localtime') FROM CheckDepPrinted"_qs),
            QStringList { u"DEPOSIT 0 1285.5101  REMITRA DEPOSIT P -1 Null 2045 D Y Y 1"_qs });
        QCOMPARE(
            table(site,
                u"SELECT s.CkCheckNumber, s.CkAmount, s.CkAccountID, s.CkPostToID, s.CkStatus, "
                "s.CkType, s.CkPostTo FROM SplitPrintedChecks s JOIN CheckDepPrinted d "
                "ON s.CkNumber = d.CkID ORDER BY s.rowid"_qs),
            (QStringList { u"123456789 1250.5 4000 100 P D B"_qs, u"Null 35 4000 101 P D T"_qs,
                u"1001 0.0101 4000 555 P D B"_qs }));

        // Updating again stops at the same payment, and posts and deposits
        // nothing a second time.
        const QStringList before = table(site,
            u"SELECT count(*) FROM Transactions UNION ALL "
            "SELECT count(*) FROM CheckDepPrinted"_qs);
        QVERIFY(!UpdateLedgers::run(*site.state, rows, c));
        QCOMPARE(table(site,
                     u"SELECT count(*) FROM Transactions UNION ALL "
                     "SELECT count(*) FROM CheckDepPrinted"_qs),
            before);
    }

    void depositLostBehindThePostingIsToldOnceTheDatabaseIsFree()
    {
        TestSite site;
        RentSupport::seedPortfolio(site);
        const RentPayments rows = loadRows(site, { line(10, 100, u"500"_qs) });
        site.db().execText(u"CREATE TRIGGER lost AFTER INSERT ON CheckDepPrinted "
                           "WHEN NEW.CkPayee = 'DEPOSIT' BEGIN "
                           "DELETE FROM CheckDepPrinted WHERE rowid = NEW.rowid; END"_qs,
            "test");
        LockProbe probe(site.state->pathOf(QString::fromLatin1(HostDb::SqliteFileName)));
        site.state->setPrompter(probe);
        const auto restore = qScopeGuard([&] { site.state->setPrompter(site.prompter); });
        QVERIFY(UpdateLedgers::run(
            *site.state, rows, choices(PostingChoices::DefaultRemark, false, true)));
        QCOMPARE(
            probe.texts(), (QStringList { u"Deposit Not found"_qs, ProductTexts::ledgersUpdated }));
        QCOMPARE(probe.databaseFree, (QList<bool> { true, true }));
        QVERIFY(!QFile::exists(site.state->pathOf(site.state->files.paymentDownload)));
    }

    void successMovesTheFileAsideAndKeepsTenBackups()
    {
        TestSite site;
        RentSupport::seedPortfolio(site);
        site.writeFile(PaymentFile::LastDownloadName, "older");
        QDir(site.folder()).mkpath(u"backups"_qs);
        for (int i = 0; i < 12; ++i)
            site.writeFile(
                u"backups/dxdatafl-20200101-0000%1-000.db"_qs.arg(i, 2, 10, QChar(u'0')), "x");
        const RentPayments rows = loadRows(site, { line(10, 100, u"10"_qs) });
        const QByteArray file = site.fileBytes(site.state->files.paymentDownload);
        QVERIFY(UpdateLedgers::run(*site.state, rows, {}));
        QVERIFY(site.fileBytes(site.state->files.paymentDownload).isNull());
        QCOMPARE(site.fileBytes(PaymentFile::LastDownloadName), file);

        const QStringList kept = QDir(site.path(u"backups"_qs)).entryList(QDir::Files, QDir::Name);
        QCOMPARE(kept.size(), 10);
        QCOMPARE(kept.first(), u"dxdatafl-20200101-000003-000.db"_qs);
        // The newest copy is the whole database as it was before the posting.
        auto copy = HostDb::openSqlite(site.path(u"backups/"_qs + kept.last()));
        QSqlQuery q(copy->database());
        QVERIFY(q.exec(
            u"SELECT (SELECT count(*) FROM Tenants), (SELECT count(*) FROM Transactions)"_qs));
        QVERIFY(q.next());
        QCOMPARE(q.value(0).toInt() * 10 + q.value(1).toInt(), 40);
    }

    // A database failure in the middle of a run undoes the whole batch.
    void failureMidRunLeavesNoHalfBatch()
    {
        TestSite site;
        RentSupport::seedPortfolio(site);
        site.db().execText(
            u"CREATE TRIGGER fail BEFORE INSERT ON SplitPrintedChecks WHEN "
            "NEW.CkPostToID = 200 BEGIN SELECT RAISE(ABORT, 'disk I/O error'); END"_qs,
            "test");
        const RentPayments rows
            = loadRows(site, { line(10, 100, u"10"_qs), line(20, 200, u"20"_qs) });
        QVERIFY_THROWS_EXCEPTION(RuntimeError, UpdateLedgers::run(*site.state, rows, {}));
        QCOMPARE(site.scalar(u"SELECT (SELECT count(*) FROM Transactions) + "
                             "(SELECT count(*) FROM CheckDepPrinted) + (SELECT sum(TCurrBal) "
                             "FROM Tenants)"_qs)
                     .toInt(),
            0);
        QVERIFY(!site.fileBytes(site.state->files.paymentDownload).isNull());
        QCOMPARE(site.prompter.busyDepth(), 0);
    }

    // The backup written before a posting run is a consistent snapshot of
    // the host database whatever other connections are doing: rows another
    // writer has not committed stay out, and rows still in a write-ahead
    // log are in.
    void snapshotLeavesOutAnotherWritersOpenTransaction()
    {
        TestSite site;
        addTenant(site.db().database(), 1);
        auto other = HostDb::openSqlite(site.db().path());
        QSqlQuery begin(other->database());
        QVERIFY(begin.exec(u"BEGIN IMMEDIATE"_qs));
        addTenant(other->database(), 2);

        const QString copy = RentBackup::write(site.db(), site.folder());
        QCOMPARE(tenantsIn(copy), 1);

        // The writer is not kept out once the copy is written.
        QSqlQuery commit(other->database());
        QVERIFY(commit.exec(u"COMMIT"_qs));
        QCOMPARE(site.scalar(u"SELECT count(*) FROM Tenants"_qs).toInt(), 2);
    }

    void writeAheadLogIsCopiedThroughTheEngine()
    {
        TestSite site;
        site.db().execText(u"PRAGMA journal_mode = WAL"_qs, "test");
        site.db().execText(u"PRAGMA wal_autocheckpoint = 0"_qs, "test");
        for (int id = 1; id <= 3; ++id)
            addTenant(site.db().database(), id);

        const QString copy = RentBackup::write(site.db(), site.folder());
        QCOMPARE(tenantsIn(copy), 3);
    }
};

QTEST_GUILESS_MAIN(TestPosting)
#include "tst_posting.moc"
