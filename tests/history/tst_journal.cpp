#include "DisburseFixture.h"
#include "RentSupport.h"
#include "UploadsFixture.h"

#include "core/FileArchive.h"
#include "core/RuntimeError.h"
#include "disburse/DistributionRun.h"
#include "hostdb/Journal.h"
#include "processor/RentDownload.h"
#include "uploads/OwnerFile.h"
#include "uploads/TenantUpload.h"
#include "uploads/UploadAll.h"
#include "uploads/VendorFile.h"

#include <QFile>
#include <QSqlError>
#include <QSqlQuery>
#include <QTest>

// What the journal holds after each kind of run: the exchanges with the
// processor (files with their archived copies, the answer, the messages
// shown) and the postings (the payments, the host rows with their keys and
// the balances before and after).
namespace {

const QString kPassword = u"pa55-Quenta-8871"_qs;
const QString kDownloaded = u"P10,U100,T100,125.50,11/02/2026,1001,11/03/2026,ACH,Rent\r\n"
                            "P20,U200,T200,-74.5,11/02/2026,,11/03/2026,ACH,Rent"_qs;

Journal journal(TestSite &site)
{
    return Journal(site.state->store());
}

// A client that fails the way a broken connection does inside the call.
class ThrowingClient : public ScriptedProcessorClient
{
public:
    using ScriptedProcessorClient::ScriptedProcessorClient;
    bool transmit(const CallText &, const CallText &) override { throw RuntimeError::deviceIo(); }
};

} // namespace

class TestJournal : public QObject
{
    Q_OBJECT

private slots:
    void exchanges_data()
    {
        QTest::addColumn<QString>("job");
        QTest::addColumn<int>("kind");
        QTest::addColumn<QString>("files"); // the role and name of each, in order
        QTest::addColumn<QString>("result");
        const QString ok = u"Successful (200)"_qs;
        QTest::newRow("upload all") << u"upload all"_qs << int(Journal::Kind::UploadAll)
                                    << u"sent DX_Quenta_Setup_DXRM.txt, "
                                       "sent DX_Quenta_Tenant_DXRM.txt"_qs
                                    << ok;
        QTest::newRow("tenant upload") << u"tenants"_qs << int(Journal::Kind::TenantUpload)
                                       << u"sent DX_Quenta_Tenant_DXRM.txt"_qs << ok;
        QTest::newRow("owner upload") << u"owners"_qs << int(Journal::Kind::OwnerUpload)
                                      << u"sent DX_Quenta_Owner_DXRM.txt"_qs << u"Error 403"_qs;
        QTest::newRow("vendor upload") << u"vendors"_qs << int(Journal::Kind::VendorUpload)
                                       << u"sent DX_Quenta_Vendor_DXRM.txt"_qs << ok;
        QTest::newRow("rent download") << u"download"_qs << int(Journal::Kind::RentDownload)
                                       << u"received DX_Quenta_PaymentFile.txt"_qs << ok;
        QTest::newRow("interrupted download")
            << u"interrupted"_qs << int(Journal::Kind::RentDownload) << QString()
            << u"No answer recorded"_qs;
        QTest::newRow("distribution") << u"distribution"_qs << int(Journal::Kind::Distribution)
                                      << u"sent DX_Quenta_DisbursementPayment.txt, "
                                         "received DX_Quenta_Distribution_Response.txt"_qs
                                      << ok;
    }
    void exchanges()
    {
        QFETCH(QString, job);
        QFETCH(int, kind);
        QFETCH(QString, result);
        TestSite site;
        site.state->login.password = kPassword;
        UploadsFixture::addAll(site);
        auto script = site.scriptProcessor();
        if (job == u"upload all"_qs) {
            uploadAll(*site.state);
        } else if (job == u"tenants"_qs) {
            buildTenantUpload(*site.state);
            sendTenantUpload(*site.state);
        } else if (job == u"owners"_qs) {
            script->replies.append({ true, 403, {} });
            uploadOwnerFile(*site.state);
        } else if (job == u"vendors"_qs) {
            uploadVendorFile(*site.state);
        } else if (job == u"download"_qs) {
            script->replies.append({ true, 200, kDownloaded });
            downloadPaymentFile(*site.state);
        } else if (job == u"distribution"_qs) {
            DisburseFixture::populate(site);
            script->replies.append({ true, 200, u"V8,B3,0,\r\n"_qs });
            bool stop = true;
            DistributionRun(*site.state, stop)
                .makePaymentsNow(DisburseFixture::rowsFor(site, { { 3, 8 } }), {});
        } else {
            site.state->clientFactory
                = [script] { return std::make_unique<ThrowingClient>(script); };
            QCOMPARE(raisedError([&] { downloadPaymentFile(*site.state); }), 57);
        }

        // The exchange is the first run; a distribution's posting follows.
        const QList<Journal::Run> runs = journal(site).runs();
        QCOMPARE(runs.size(), job == u"distribution"_qs ? 2 : 1);
        const Journal::Run &run = runs.last();
        QCOMPARE(int(run.kind), kind);
        QCOMPARE(Journal::resultText(run), result);

        // Each file: its name, and a copy in the archive of the size and
        // SHA-256 recorded, the very bytes on disk (a distribution's file
        // is moved aside once answered).
        QStringList names;
        for (const Journal::File &file : journal(site).files(run.id)) {
            names << file.role + u' ' + file.name;
            QVERIFY(file.archive.startsWith(u"archive/"_qs));
            const QByteArray bytes = site.fileBytes(file.archive);
            QCOMPARE(file.size, bytes.size());
            QCOMPARE(file.sha256, FileArchive::sha256(bytes));
            QVERIFY(site.fileBytes(file.name) == bytes
                || (job == u"distribution"_qs && site.fileBytes(file.name).isNull()));
        }
        QTEST(names.join(u", "_qs), "files");
        if (job == u"download"_qs) {
            QCOMPARE(run.count, 2);
            QCOMPARE(run.total->toPlainText(), u"200"_qs);
        }
        // What the user saw, in order.
        QStringList seen;
        for (const Journal::Message &m : journal(site).messages(run.id))
            seen << m.text;
        QCOMPARE(seen, site.prompter.texts());

        // No credential reaches the journal.
        QFile store(site.path(u"remitra.db"_qs));
        QVERIFY(store.open(QIODevice::ReadOnly));
        QVERIFY(!store.readAll().contains(kPassword.toLatin1()));
    }
    // An upload of a file identical to one already archived names the
    // archived copy again rather than copying it once more.
    void identicalFilesAreArchivedOnce()
    {
        TestSite site;
        UploadsFixture::addAll(site);
        site.scriptProcessor();
        uploadVendorFile(*site.state);
        uploadVendorFile(*site.state);
        const QList<Journal::Run> runs = journal(site).runs();
        QCOMPARE(runs.size(), 2);
        QCOMPARE(journal(site).files(runs[0].id).first().archive,
            journal(site).files(runs[1].id).first().archive);
    }

    void rentPosting()
    {
        TestSite site;
        RentSupport::seedPortfolio(site);
        RentSupport::writePaymentFile(site,
            { RentSupport::line(10, 100, u"1000"_qs),
                RentSupport::line(
                    10, 101, u"30"_qs, u"11/03/2026"_qs, u""_qs, u"ACH"_qs, u"Late Fee"_qs) });
        PostingChoices c;
        c.postMgmtFees = true;
        c.depositNumber = u"9"_qs;
        QVERIFY(RentSupport::post(site, RentSupport::load(site), c));

        const Journal::Run run = journal(site).runs().first();
        QCOMPARE(run.kind, Journal::Kind::RentPosting);
        QCOMPARE(run.result.state, Journal::Posted);
        QCOMPARE(run.count, 2);
        QCOMPARE(run.total->toPlainText(), u"1030"_qs);
        QStringList lines;
        for (const Journal::Line &l : journal(site).lines(run.id))
            lines << u"%1 %2 %3 %4 %5 %6 %7"_qs.arg(l.line)
                         .arg(l.tenantId.toString(), l.amount, l.date, l.transType, l.outcome)
                         .arg(l.deposited);
        QCOMPARE(lines,
            (QStringList { u"1 100 1000 2026-11-02 Rent posted 1"_qs,
                u"2 101 30 2026-11-03 Late Fee posted 1"_qs }));

        // Every host row it wrote, by rowid, as the host holds it; each
        // balance with its value before and after.
        QStringList rows;
        for (const Journal::Row &r : journal(site).rows(run.id)) {
            QString text = u"%1 %2 %3 %4"_qs.arg(r.line).arg(
                r.table, HostWriteLog::changeName(r.change), r.handle.toString());
            if (r.change == HostWriteLog::Change::Balance)
                text += u' ' + r.field + u' ' + r.before.toString() + u'>' + r.after.toString();
            rows << text;
        }
        QCOMPARE(rows,
            (QStringList { u"1 Transactions added 1"_qs, u"1 Units balance 1 UCurrBal 0>1000"_qs,
                u"1 Tenants balance 1 TCurrBal 0>1000"_qs, u"1 Transactions added 2"_qs,
                u"1 Units balance 1 UCurrBal 1000>920"_qs, u"2 Transactions added 3"_qs,
                u"2 Tenants balance 2 TCurrBal 0>30"_qs, u"0 CheckDepPrinted added 1"_qs,
                u"1 SplitPrintedChecks added 1"_qs, u"2 SplitPrintedChecks added 2"_qs }));
        const Journal::Row fee = journal(site).rows(run.id).at(3);
        QCOMPARE(fee.fields.value(u"TransAmount"_qs).toString(),
            site.scalar(u"SELECT TransAmount FROM Transactions WHERE rowid = 2"_qs).toString());
        const Journal::Row deposit = journal(site).rows(run.id).at(7);
        QCOMPARE(deposit.fields.value(u"CkAmount"_qs).toString(), u"1030"_qs);
        QCOMPARE(journal(site).files(run.id).first().role, u"posted"_qs);
        QCOMPARE(journal(site).messages(run.id).first().text, ProductTexts::ledgersUpdated);
    }

    // A distribution's posting: each check's outcome and the rows written.
    void checkPosting()
    {
        TestSite site;
        DisburseFixture::populate(site);
        DisburseFixture::addSplit(site, 3, u"O"_qs, 1, 82.4);
        DisburseFixture::answering(site, 200, u"V8,B3,0,\r\nO1,B1,7,limit\r\n"_qs);
        bool stop = true;
        QVERIFY(DistributionRun(*site.state, stop)
                    .makePaymentsNow(DisburseFixture::rowsFor(site, { { 3, 8 }, { 1, -1 } }), {}));
        const Journal::Run posting = journal(site).runs().first();
        QCOMPARE(posting.kind, Journal::Kind::CheckPosting);
        QCOMPARE(posting.count, 1);
        QStringList outcomes;
        for (const Journal::Line &l : journal(site).lines(posting.id))
            outcomes << l.checkNumber + u' ' + l.outcome;
        QCOMPARE(outcomes,
            (QStringList {
                u"3 posted"_qs, u"1 rejected: Reason for Rejection: (Error 7) limit"_qs }));
        QStringList rows;
        for (const Journal::Row &r : journal(site).rows(posting.id))
            rows << r.table + u' ' + HostWriteLog::changeName(r.change);
        QCOMPARE(rows,
            (QStringList { u"CheckDepPrinted added"_qs, u"SplitPrintedChecks added"_qs,
                u"Owners balance"_qs, u"Transactions added"_qs, u"SplitChecks removed"_qs,
                u"CheckEntered removed"_qs }));
    }

    void theJournalKeepsWhatItHolds()
    {
        TestSite site;
        RentSupport::seedPortfolio(site);
        RentSupport::writePaymentFile(site, { RentSupport::line(10, 100, u"5"_qs) });
        QVERIFY(RentSupport::post(site, RentSupport::load(site), {}));
        for (const QString &sql : { u"UPDATE remitra.journal_runs SET kind = 'x'"_qs,
                 u"DELETE FROM remitra.journal_rows"_qs,
                 u"UPDATE remitra.journal_lines SET amount = '1'"_qs,
                 u"DELETE FROM remitra.journal_results"_qs }) {
            QSqlQuery q(site.db().database());
            QVERIFY2(!q.exec(sql), qPrintable(sql));
            QVERIFY(q.lastError().text().contains(u"the journal keeps what it holds"_qs));
        }
    }
};

QTEST_GUILESS_MAIN(TestJournal)
#include "tst_journal.moc"
