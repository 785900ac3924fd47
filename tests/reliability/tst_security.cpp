#include "DisburseFixture.h"
#include "RentSupport.h"
#include "SandboxProcess.h"

#include "app/Credentials.h"
#include "core/TransferFile.h"
#include "core/VbText.h"
#include "disburse/DistributionFile.h"
#include "disburse/DistributionRun.h"
#include "hostdb/DisburseList.h"
#include "processor/HttpProcessorClient.h"
#include "processor/RentDownload.h"
#include "rent/PaymentFile.h"
#include "rent/UpdateLedgers.h"
#include "uploads/OwnerFile.h"
#include "uploads/SetupFile.h"
#include "uploads/TenantUpload.h"

#include <QDirIterator>
#include <QElapsedTimer>
#include <QFile>
#include <QSettings>
#include <QTest>

// Credentials stay in the settings store, plain http goes nowhere but the
// loopback, hostile texts in the host database are data and never SQL, and
// transfer files stay in the program's folder.
namespace {

QStringList g_log;

void keepLog(QtMsgType, const QMessageLogContext &, const QString &message)
{
    g_log << message;
}

const QString kUser = u"ops-7Kq2-user"_qs;
const QString kPassword = u"Pw!9xZ-\"quoted\";secret"_qs;

// Every file under a folder, with its bytes.
QMap<QString, QByteArray> filesUnder(const QString &folder)
{
    QMap<QString, QByteArray> out;
    QDirIterator it(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        QFile f(path);
        if (f.open(QIODevice::ReadOnly))
            out.insert(path, f.readAll());
    }
    return out;
}

} // namespace

class TestSecurity : public QObject
{
    Q_OBJECT

    QTemporaryDir config;

private slots:
    void initTestCase()
    {
        // The user's own settings store goes to a folder of this test.
        qputenv("XDG_CONFIG_HOME", config.path().toLocal8Bit());
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, config.path());
    }

    // A whole rent cycle and a distribution through the HTTP client, with a
    // failed call before each, run from an empty working directory: the user
    // name and the password (plain, encoded, or in the authorization
    // header's form) are in no message, no log line and no file but the
    // settings file, and the transfer files are in the program's folder
    // only, nothing next to it or in the working directory.
    void aCycleKeepsCredentialsAndFilesInTheirPlace()
    {
        QTemporaryDir cwd;
        const QString oldCwd = QDir::currentPath();
        QDir::setCurrent(cwd.path());
        SandboxProcess sandbox(kUser, kPassword);
        QVERIFY(sandbox.isRunning());
        TestSite rent;
        RentSupport::seedPortfolio(rent);
        TestSite disb;
        DisburseFixture::populate(disb);
        for (TestSite *site : { &rent, &disb }) {
            sandbox.useFor(*site->state);
            site->state->settingsFile = site->path(u"remitra.ini"_qs);
            Credentials::saveLogin(site->state->settingsFile, site->state->login);
        }

        g_log.clear();
        const QtMessageHandler previous = qInstallMessageHandler(keepLog);
        sandbox.forceStatus(401);
        downloadPaymentFile(*rent.state);
        sandbox.queueLines({ RentSupport::line(10, 100, u"100.00"_qs) });
        downloadPaymentFile(*rent.state);
        PaymentFile::LoadResult loaded = PaymentFile::load(*rent.state);
        QVERIFY(UpdateLedgers::run(*rent.state, loaded.rows, PostingChoices()));
        sandbox.forceStatus(403);
        bool stop = false;
        DistributionRun(*disb.state, stop)
            .makePaymentsNow(DisburseList::load(disb.db(), u"Payee"_qs), {});
        DistributionRun(*disb.state, stop)
            .makePaymentsNow(DisburseList::load(disb.db(), u"Payee"_qs), {});
        qInstallMessageHandler(previous);
        QCOMPARE(sandbox.requestCount(), 4);

        const QList<QByteArray> secrets = { kUser.toLatin1(), kPassword.toLatin1(),
            encodeSetting(kPassword).toLatin1(), encodeSetting(kUser).toLatin1(),
            (kUser + u':' + kPassword).toLatin1().toBase64() };
        for (TestSite *site : { &rent, &disb }) {
            const QStringList said = site->prompter.texts() + site->prompter.titles() + g_log;
            for (const QString &text : said)
                for (const QByteArray &secret : secrets)
                    QVERIFY2(!text.toLatin1().contains(secret), qPrintable(text));
            const auto files = filesUnder(site->folder());
            QVERIFY(files.size() > 3);
            for (auto it = files.cbegin(); it != files.cend(); ++it) {
                if (it.key() == site->state->settingsFile)
                    continue;
                for (const QByteArray &secret : secrets)
                    QVERIFY2(!it.value().contains(secret), qPrintable(it.key()));
            }
            for (const QString &name :
                QDir(QFileInfo(site->folder()).path()).entryList(QDir::Files))
                QVERIFY2(
                    !name.startsWith(u"DX_"_qs) && !name.contains(u"IDFILE"_qs), qPrintable(name));
        }
        QVERIFY(QFile::exists(disb.path(DistributionFile::LastUploadName)));
        QVERIFY(QFile::exists(rent.path(PaymentFile::LastDownloadName)));
        QDir::setCurrent(oldCwd);
        QCOMPARE(QDir(cwd.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden),
            QStringList());
    }

    // The settings file is its owner's alone: a new one, one that was there
    // with wider rights, and the user's own store.
    void theSettingsFileIsReadableByItsOwnerOnly()
    {
        const QFileDevice::Permissions ownerOnly = QFileDevice::ReadOwner | QFileDevice::WriteOwner
            | QFileDevice::ReadUser | QFileDevice::WriteUser;
        TestSite site;
        site.state->login.user = kUser;
        site.state->login.password = kPassword;

        site.state->settingsFile = site.path(u"new.ini"_qs);
        Credentials::saveLogin(site.state->settingsFile, site.state->login);
        QCOMPARE(QFile(site.state->settingsFile).permissions(), ownerOnly);

        site.state->settingsFile = site.path(u"old.ini"_qs);
        site.writeFile(u"old.ini"_qs, "[Parameters]\n");
        QFile::setPermissions(
            site.state->settingsFile, ownerOnly | QFileDevice::ReadGroup | QFileDevice::ReadOther);
        Credentials::saveLogin(site.state->settingsFile, site.state->login);
        QCOMPARE(QFile(site.state->settingsFile).permissions(), ownerOnly);

        site.state->settingsFile.clear();
        Credentials::saveLogin(site.state->settingsFile, site.state->login);
        const QString store
            = QSettings(QSettings::UserScope, u"Dwellix"_qs, u"Dwellix"_qs).fileName();
        QVERIFY2(store.startsWith(config.path()), qPrintable(store));
        QVERIFY(QFile::exists(store));
        QCOMPARE(QFile(store).permissions(), ownerOnly);
        const Credentials::Stored stored = Credentials::read(site.state->settingsFile);
        QCOMPARE(decodeSetting(stored.password), kPassword);
    }

    void plainHttpOnlyOnTheLoopback_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<bool>("allowed");
        QTest::newRow("https") << u"https://pay.example.com/qps/upload.php"_qs << true;
        QTest::newRow("loopback") << u"http://127.0.0.1:8080/qps/upload.php"_qs << true;
        QTest::newRow("loopback range") << u"http://127.3.4.5/qps/upload.php"_qs << true;
        QTest::newRow("localhost") << u"http://LocalHost:81/qps/upload.php"_qs << true;
        QTest::newRow("ipv6 loopback") << u"http://[::1]:9/qps/upload.php"_qs << true;
        QTest::newRow("http elsewhere") << u"http://pay.example.com/qps/upload.php"_qs << false;
        QTest::newRow("past the loopback") << u"http://128.0.0.1/qps/upload.php"_qs << false;
        QTest::newRow("https without a host") << u"https:///qps/upload.php"_qs << false;
        QTest::newRow("private address") << u"http://192.168.1.10/qps/upload.php"_qs << false;
        QTest::newRow("loopback lookalike")
            << u"http://127.0.0.1.example.com/qps/upload.php"_qs << false;
        QTest::newRow("localhost lookalike")
            << u"http://localhost.example.com/qps/upload.php"_qs << false;
        QTest::newRow("credentials before a host")
            << u"http://127.0.0.1@example.com/qps/upload.php"_qs << false;
        QTest::newRow("ftp") << u"ftp://127.0.0.1/qps/upload.php"_qs << false;
        QTest::newRow("file") << u"file:///etc/passwd"_qs << false;
        QTest::newRow("no scheme") << u"pay.example.com/qps/upload.php"_qs << false;
    }
    void plainHttpOnlyOnTheLoopback()
    {
        QFETCH(QString, url);
        QFETCH(bool, allowed);
        QCOMPARE(HttpProcessorClient::isAllowedUrl(url), allowed);
        if (allowed)
            return;
        // Refused at once, without a connection: the URL is not found.
        TestSite site;
        site.state->login.url = url;
        site.state->clientFactory = [] { return std::make_unique<HttpProcessorClient>(30); };
        QElapsedTimer timer;
        timer.start();
        downloadPaymentFile(*site.state);
        QVERIFY(timer.elapsed() < 2000);
        QCOMPARE(site.state->lastResult.code, qint16(404));
    }

    // Names and remarks made of quotes, semicolons, SQL, control characters
    // and great length: the rows are found and written like any other, the
    // texts reach the distribution file as they stand, and no table changes
    // but the ones the posting writes.
    void hostileTextsAreOnlyData()
    {
        TestSite site;
        RentSupport::seedPortfolio(site);
        const QString longName = QString(5000, u'L');
        const QStringList hostile = { u"O'Brien \"Bob\""_qs, u"a; DROP TABLE Tenants; --"_qs,
            u"x' OR '1'='1"_qs, u"Robert'); DELETE FROM Owners; --"_qs, longName,
            u"tab\there \x01\x02\x7f bell\a"_qs, u"% _ [ ] * ? \\"_qs, u"pipe|in|remark"_qs };
        site.db().execText(u"UPDATE Tenants SET TLastName1 = 'x'' OR ''1''=''1', "
                           "TFirstName1 = 'a; DROP TABLE Units; --' WHERE TenantID = 100"_qs,
            "test");
        site.insert(u"Company"_qs, { { u"CName1"_qs, u"O'Hare \"Homes\"; --"_qs } });
        site.db().execText(
            u"UPDATE Units SET UAddress = 'Apt ''1''; DELETE FROM Units; --' WHERE UTenantID = 100"_qs,
            "test");
        int n = 0;
        QList<qint64> checks;
        for (const QString &text : hostile) {
            const int owner = 50 + n++;
            site.insert(u"Owners"_qs,
                { { u"OwnerID"_qs, owner }, { u"OFirstName1"_qs, text },
                    { u"OLastName1"_qs, u"Z"_qs }, { u"OACH"_qs, u"Y"_qs },
                    { u"OCurrBal"_qs, 0 } });
            checks << DisburseFixture::addCheck(
                site, text + u" Z"_qs, 10 + n, { { u"CkRemark"_qs, text } });
        }
        // The schema and the row counts of the tables no posting writes.
        const auto untouched = [&] {
            return DisburseFixture::dump(site,
                u"SELECT name, sql FROM sqlite_master UNION ALL SELECT (SELECT count(*) FROM "
                "Owners), (SELECT count(*) FROM Tenants) || (SELECT count(*) FROM Units) || "
                "(SELECT count(*) FROM Properties) ORDER BY 1"_qs);
        };
        const QString before = untouched();

        // Rent: the tenant with the hostile name is matched and posted, with
        // a hostile remark of the user's own.
        RentSupport::writePaymentFile(
            site, { RentSupport::line(10, 100, u"125.00"_qs, u"11/02/2026"_qs, u"9'; --"_qs) });
        PaymentFile::LoadResult loaded = PaymentFile::load(*site.state);
        QCOMPARE(loaded.rows.size(), 1);
        PostingChoices choices;
        choices.remark = PostingChoices::OwnRemark;
        choices.remarkText = u"'); UPDATE Tenants SET TCurrBal = 1e9; --"_qs;
        QVERIFY(UpdateLedgers::run(*site.state, loaded.rows, choices));
        QCOMPARE(
            site.scalar(
                    u"SELECT TransRemark FROM Transactions WHERE TransTID = 100 AND TransAmount > 0"_qs)
                .toString(),
            choices.remarkText.left(60));
        QCOMPARE(
            site.scalar(u"SELECT total(TCurrBal) FROM Tenants WHERE TenantID <> 100"_qs).toDouble(),
            0.0);

        // Distribution file: one line per check, remarks as they stand.
        const QList<PaymentRow> rows = DisburseList::load(site.db(), u"Payee"_qs);
        QCOMPARE(rows.size(), hostile.size());
        DistributionFile::write(site.db(), site.path(u"probe.txt"_qs), rows);
        const QString written = TransferFile::fromAnsi(site.fileBytes(u"probe.txt"_qs));
        for (int i = 0; i < hostile.size(); ++i) {
            const QString expected = u"B%1|O%2|"_qs.arg(checks[i]).arg(50 + i)
                + VbText::trim(hostile[i]) + u'|' + QString::number(11 + i) + u"\r\n"_qs;
            QVERIFY2(written.contains(expected), qPrintable(hostile[i].left(40)));
        }
        // Upload files: the texts as they stand, trimmed.
        buildOwnerFile(*site.state);
        buildSetupFile(*site.state);
        buildTenantUpload(*site.state);
        const QString owners
            = TransferFile::fromAnsi(site.fileBytes(site.state->files.ownerUpload));
        for (const QString &text : hostile)
            QVERIFY2(
                owners.contains(u'|' + VbText::trim(text) + u" Z|"_qs), qPrintable(text.left(40)));
        QVERIFY(TransferFile::fromAnsi(site.fileBytes(site.state->files.tenantUpload))
                    .contains(u"|a; DROP TABLE Units; --|x' OR '1'='1|"_qs));
        QVERIFY(TransferFile::fromAnsi(site.fileBytes(site.state->files.setupUpload))
                    .contains(u"|Apt '1'; DELETE FROM Units; --|"_qs));
        QCOMPARE(untouched(), before);
    }
};

QTEST_MAIN(TestSecurity)
#include "tst_security.moc"
