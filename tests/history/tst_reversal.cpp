#include "RentSupport.h"

#include "history/RunText.h"
#include "hostdb/Journal.h"
#include "hostdb/RentPostingRecord.h"
#include "hostdb/WrittenRows.h"
#include "rent/DuplicateGuard.h"
#include "rent/PaymentFile.h"
#include "rent/ReversePosting.h"
#include "rent/UpdateLedgers.h"

#include <QScopeGuard>
#include <QSqlQuery>
#include <QTest>

using RentSupport::line;

// Reversal of a rent posting on a real SQLite host, end to end: the posting
// and its reversal through the jobs the History screen calls, with the
// store attached to the host (one commit) and on a connection of its own
// (the order of writes of the Access host).
namespace {

const QStringList kPayments = {
    line(10, 100, u"-1000.00"_qs, u"11/02/2026"_qs, u"000123"_qs), // fee 8%: -80
    line(10, 101, u"30"_qs, u"11/03/2026"_qs, u""_qs, u"Card"_qs, u"Late Fee"_qs),
    line(20, 200, u"400"_qs, u"11/04/2026"_qs, u"5"_qs), // fee 25
};

// A site with balances that are not all zero, owned by the store mode given.
struct Site
{
    explicit Site(bool ownConnection)
    {
        if (ownConnection) {
            site.state->setHostDb(HostDb::openSqlite(site.state->databasePath),
                RemitraStore::Connection::OwnConnection);
        }
        RentSupport::seedPortfolio(site);
        site.db().execText(u"UPDATE Tenants SET TCurrBal = TenantID / 100.0 + 0.0125"_qs, "test");
        site.db().execText(u"UPDATE Units SET UCurrBal = -7.5"_qs, "test");
        RentSupport::writePaymentFile(site, kPayments);
        file = site.fileBytes(site.state->files.paymentDownload);
    }

    Journal journal() { return Journal(site.state->store()); }
    qint64 lastRun() { return journal().runs().first().id; }
    bool reverse(qint64 runId, Prompter::Answer answer = Prompter::Answer::Yes)
    {
        site.prompter.clear();
        site.prompter.queueAnswer(answer);
        return ReversePosting::run(*site.state, runId);
    }

    TestSite site;
    QByteArray file;
};

} // namespace

class TestReversal : public QObject
{
    Q_OBJECT

private slots:
    void reversalLeavesTheHostAsBeforeAndTheFileCanBePostedAgain_data()
    {
        QTest::addColumn<bool>("ownConnection");
        QTest::addColumn<int>("blockRows"); // packed journal rows a block
        QTest::newRow("store attached") << false << 1024;
        QTest::newRow("store attached, two rows a block") << false << 2;
        QTest::newRow("store on its own connection") << true << 1024;
    }
    void reversalLeavesTheHostAsBeforeAndTheFileCanBePostedAgain()
    {
        QFETCH(bool, ownConnection);
        QFETCH(int, blockRows);
        const auto restore = qScopeGuard(
            [was = HostWriteLog::blockRows] { HostWriteLog::blockRows = was; });
        HostWriteLog::blockRows = blockRows;
        Site s(ownConnection);
        // Text the journal must quote.
        const QString address = u"Flat \"B\" \\ 2 Rue Lépine\t"_qs;
        QSqlQuery unit = s.site.db().prepare(
            u"UPDATE Units SET UAddress = :address WHERE UTenantID = 100"_qs);
        unit.bindValue(u":address"_qs, address);
        HostDb::exec(unit, "test");
        const QStringList before = RentSupport::hostRows(s.site);
        QVERIFY(RentSupport::post(s.site, RentSupport::load(s.site), RentSupport::everything()));
        const QStringList posted = RentSupport::hostRows(s.site);
        QVERIFY(posted != before);
        // No earlier posting of these payments: the product's one message.
        QCOMPARE(s.site.prompter.texts(), { ProductTexts::ledgersUpdated });
        const qint64 run = s.lastRun();
        QStringList addresses;
        s.journal().forEachRow(run, [&](const Journal::Row &row) {
            if (row.table == u"Units"_qs)
                addresses << row.fields.value(u"UAddress"_qs).toString();
            return true;
        });
        QVERIFY(addresses.contains(address));

        // Declining the confirmation changes nothing.
        QVERIFY(!s.reverse(run, Prompter::Answer::No));
        QCOMPARE(RentSupport::hostRows(s.site), posted);

        QVERIFY(s.reverse(run));
        const Journal::Run original = *s.journal().run(run);
        QCOMPARE(s.site.prompter.titles(), QStringList(2, u"Reverse Posting"_qs));
        // The question names the run and what it wrote; the notice what went.
        QVERIFY(s.site.prompter.texts().first().startsWith(u"Reverse the rent posting of "_qs
            + RunText::when(original.at)
            + u"?\r\rIt posted 3 payment(s) totalling $1,430.00 to the Dwellix ledgers, charged "
              "management fees of $105.00, and made deposit number 77 of $1,430.00.\r\r"_qs));
        QVERIFY(s.site.prompter.texts().last().startsWith(
            u"The rent posting was reversed: 3 payment(s) totalling $1,430.00 were taken out of "
            "the Dwellix ledgers. Its deposit was removed."_qs));
        QCOMPARE(RentSupport::hostRows(s.site), before);
        QCOMPARE(original.result.state, Journal::Reversed);
        QCOMPARE(s.site.fileBytes(s.site.state->files.paymentDownload), s.file);

        // Reviewed again, nothing is marked; posted again, the ledgers hold
        // what the first posting wrote (the deposit under a new CkID).
        const RentPayments again = RentSupport::load(s.site);
        QVERIFY(std::all_of(again.cbegin(), again.cend(),
            [](const RentPayment &r) { return r.postedNote.isEmpty(); }));
        QVERIFY(RentSupport::post(s.site, again, RentSupport::everything()));
        QCOMPARE(s.site.prompter.texts(), { ProductTexts::ledgersUpdated });
        const QStringList reposted = RentSupport::hostRows(s.site);
        for (const QString &table : { u"Tenants|"_qs, u"Units|"_qs, u"Owners|"_qs })
            QCOMPARE(reposted.filter(table), posted.filter(table));
        QCOMPARE(
            reposted.filter(u"Transactions|"_qs).size(), posted.filter(u"Transactions|"_qs).size());

        // A reversed posting is not reversed twice.
        QVERIFY(!s.reverse(run));
        QVERIFY(s.site.prompter.texts().first().startsWith(
            u"This posting cannot be reversed. It was already reversed (run "_qs));
    }

    void refusedWhenDwellixChangedWhatWasPosted_data()
    {
        QTest::addColumn<QString>("edit");
        QTest::addColumn<QString>("reason");
        QTest::newRow("ledger line edited")
            << u"UPDATE Transactions SET TransRemark = 'fixed' WHERE rowid = 1"_qs
            << u"The ledger transaction of tenant 100 for $1,000.00 dated 2 Nov 2026 (line 1 "
               "of the payment file) was changed in Dwellix after it was posted (its "
               "TransRemark is now fixed)."_qs;
        QTest::newRow("fee line removed")
            << u"DELETE FROM Transactions WHERE TransType = 'E' AND TransTID = 200"_qs
            << u"The ledger transaction of tenant 200 for ($25.00) dated 4 Nov 2026 (line 3 of "
               "the payment file) was changed or removed in Dwellix after it was posted."_qs;
        QTest::newRow("deposit amount edited")
            << u"UPDATE CheckDepPrinted SET CkAmount = 1 WHERE CkType = 'D'"_qs
            << u"The deposit number 77 of $1,430.00 dated %1 was changed in Dwellix after it "
               "was posted (its CkAmount is now 1)."_qs;
        QTest::newRow("deposit line removed")
            << u"DELETE FROM SplitPrintedChecks WHERE CkPostToID = 101"_qs
            << u"The deposit line of tenant 101 for $30.00 (line 2 of the payment file) was "
               "changed or removed in Dwellix after it was posted."_qs;
        QTest::newRow("unit moved to another tenant")
            << u"UPDATE Units SET UTenantID = 999 WHERE UTenantID = 200"_qs
            << u"The unit of tenant 200 (line 3 of the payment file) is no longer in Dwellix as "
               "it was, or holds no balance, so its balance cannot be taken back."_qs;
    }
    void refusedWhenDwellixChangedWhatWasPosted()
    {
        QFETCH(QString, edit);
        QFETCH(QString, reason);
        Site s(false);
        QVERIFY(RentSupport::post(s.site, RentSupport::load(s.site), RentSupport::everything()));
        const qint64 run = s.lastRun();
        s.site.db().execText(edit, "test");
        const QStringList edited = RentSupport::hostRows(s.site);

        QVERIFY(!s.reverse(run));
        QCOMPARE(s.site.prompter.texts().size(), 2); // the confirmation, then why not
        QCOMPARE(s.site.prompter.texts().last(),
            u"This posting cannot be reversed. "_qs
                + QString(reason).replace(u"%1"_qs, VbText::shortDate(QDate::currentDate()))
                + u" Nothing was changed."_qs);
        QCOMPARE(RentSupport::hostRows(s.site), edited);
        QCOMPARE(s.journal().run(run)->result.state, Journal::Posted);
        QVERIFY(!s.site.fileBytes(s.site.state->files.paymentDownload).size());
        // The refused attempt is on record, with what the user was told.
        const Journal::Run attempt = *s.journal().run(s.lastRun());
        QCOMPARE(attempt.kind, Journal::Kind::Reversal);
        QCOMPARE(attempt.result.state, Journal::Refused);
        // The question, its answer and the refusal.
        QCOMPARE(s.journal().messages(attempt.id).size(), 3);
    }

    // Dwellix's own later work on a balance is kept: only what the posting
    // added is taken back.
    void laterBalanceChangesStay()
    {
        Site s(false);
        QVERIFY(RentSupport::post(s.site, RentSupport::load(s.site), RentSupport::everything()));
        s.site.db().execText(
            u"UPDATE Tenants SET TCurrBal = TCurrBal + 50 WHERE TenantID = 100"_qs, "test");
        QVERIFY(s.reverse(s.lastRun()));
        QCOMPARE(s.site.scalar(u"SELECT TCurrBal FROM Tenants WHERE TenantID = 100"_qs).toString(),
            u"51.0125"_qs);
        QCOMPARE(s.site.scalar(u"SELECT count(*) FROM Transactions"_qs).toInt(), 0);
    }

    // A file posted in two runs (the first stopped at a missing tenant):
    // the later run goes first, then the earlier one; each reversal gives
    // the posting record back exactly the lines it took.
    void runsOfOneFileAreReversedLastFirst()
    {
        Site s(false);
        s.site.db().execText(u"DELETE FROM Tenants WHERE TenantID = 200"_qs, "test");
        const QStringList before = RentSupport::hostRows(s.site);
        const RentPayments rows = RentSupport::load(s.site);
        QVERIFY(!RentSupport::post(s.site, rows, RentSupport::everything()));
        const qint64 first = s.lastRun();
        QCOMPARE(s.journal().run(first)->result.state, Journal::Stopped);
        s.site.insert(u"Tenants"_qs,
            { { u"TenantID"_qs, 200 }, { u"TPropID"_qs, 20 }, { u"TCurrBal"_qs, 0 } });
        const QStringList repaired = RentSupport::hostRows(s.site);
        QVERIFY(RentSupport::post(s.site, rows, RentSupport::everything()));
        const qint64 second = s.lastRun();

        QVERIFY(!s.reverse(first));
        QVERIFY(s.site.prompter.texts().first().contains(
            u"The same payment file was posted again afterwards (run "_qs
            + QString::number(second)));
        QVERIFY(s.reverse(second));
        // The file is back, its first run's lines still recorded as posted.
        QCOMPARE(RentPostingRecord(s.site.state->store())
                     .lines(PaymentFile::fileSha256(*s.site.state))
                     .size(),
            3);
        QVERIFY(s.reverse(first));
        QVERIFY(s.site.prompter.texts().last().contains(u"The payments are waiting again"_qs));
        // As before the first posting, with the tenant added meanwhile.
        QStringList expected = before + repaired.filter(u"Tenants|"_qs).filter(u"|200|20|"_qs);
        QStringList now = RentSupport::hostRows(s.site);
        expected.sort();
        now.sort();
        QCOMPARE(now, expected);
        QVERIFY(RentPostingRecord(s.site.state->store())
                    .lines(PaymentFile::fileSha256(*s.site.state))
                    .isEmpty());
    }

    // Without row handles (the Access host) a written row is found by its
    // values: rows alike in every field are counted and removed together.
    // The statements are plain SQL, run here on SQLite.
    void rowsFoundByTheirValues()
    {
        Site s(false);
        QVERIFY(RentSupport::post(s.site, RentSupport::load(s.site), RentSupport::everything()));
        QList<Journal::Row> rows = s.journal().rows(s.lastRun());
        Journal::Row line = rows.first();
        Journal::Row unit = rows.at(1);
        QCOMPARE(unit.table, u"Units"_qs);
        line.handle = unit.handle = QVariant();

        HostDb::Transaction tx(s.site.db());
        WrittenRows host(s.site.db());
        QCOMPARE(host.added(line).state, WrittenRows::State::Same);
        QCOMPARE(host.balance(unit)->toPlainText(), u"912.5"_qs);
        s.site.db().execText(
            u"INSERT INTO Transactions SELECT * FROM Transactions WHERE rowid = 1"_qs, "test");
        QCOMPARE(host.added(line).state, WrittenRows::State::Alike);
        QCOMPARE(host.added(line, 2).state, WrittenRows::State::Same);
        host.remove(line, 2);
        QCOMPARE(host.added(line).state, WrittenRows::State::Gone);
        s.site.db().execText(u"UPDATE Units SET UNumber = '2B' WHERE UTenantID = 100"_qs, "test");
        QVERIFY(!host.balance(unit));
    }

    // A payment the journal shows as posted, in another file: marked on the
    // review screen, and one question on Update.
    void paymentsPostedBeforeAreMarkedAndAskedAbout_data()
    {
        QTest::addColumn<bool>("leaveOut");
        QTest::newRow("left out") << true;
        QTest::newRow("posted anyway") << false;
    }
    void paymentsPostedBeforeAreMarkedAndAskedAbout()
    {
        QFETCH(bool, leaveOut);
        Site s(false);
        QVERIFY(RentSupport::post(s.site, RentSupport::load(s.site), RentSupport::everything()));
        const qint64 run = s.lastRun();
        // The processor hands two of them over again, with a new one.
        RentSupport::writePaymentFile(
            s.site, { kPayments[2], line(30, 300, u"12.5"_qs), kPayments[0] });
        const RentPayments rows = RentSupport::load(s.site);
        const QString note = DuplicateGuard::noteFor({ run, s.journal().run(run)->at, 3 });
        QCOMPARE(rows[0].postedNote.section(u'\n', 0, 0), note);
        QVERIFY(rows[1].postedNote.isEmpty());

        s.site.prompter.clear();
        s.site.prompter.queueAnswer(leaveOut ? Prompter::Answer::Yes : Prompter::Answer::No);
        QVERIFY(UpdateLedgers::run(*s.site.state, rows, RentSupport::everything()));
        QCOMPARE(s.site.prompter.texts(),
            QStringList({ DuplicateGuard::questionText(2, Currency::fromWhole(1400)),
                ProductTexts::ledgersUpdated }));
        QCOMPARE(
            s.site.scalar(u"SELECT count(*) FROM Transactions WHERE TransType = 'I'"_qs).toInt(),
            leaveOut ? 4 : 6);
        const QList<Journal::Line> lines = s.journal().lines(s.lastRun());
        QCOMPARE(lines.size(), 3);
        QCOMPARE(lines[0].outcome, leaveOut ? u"left out"_qs : u"posted"_qs);
        QCOMPARE(lines[1].outcome, u"posted"_qs);
    }
};

QTEST_GUILESS_MAIN(TestReversal)
#include "tst_reversal.moc"
