#include "TestSupport.h"

#include "app/Credentials.h"
#include "app/IdFile.h"
#include "app/LoginScreen.h"
#include "app/Startup.h"
#include "core/RuntimeError.h"
#include "core/TransferFile.h"

#include <QDir>
#include <QFile>
#include <QSettings>
#include <QStandardPaths>
#include <QTest>

namespace {

// Stands in for the login screen: counts its showings and leaves the state
// as "Save and Exit" with the given entries, or "Cancel", would.
class FakeLogin : public LoginScreen
{
public:
    void showLogin(ProgramState &state) override
    {
        ++shown;
        if (cancel)
            return;
        state.login.user = user.trimmed();
        state.login.password = password.trimmed();
        state.login.url = url.trimmed();
        state.login.missing = state.login.user.isEmpty() || state.login.password.isEmpty()
            || state.login.url.isEmpty();
    }
    int shown = 0;
    bool cancel = false;
    QString user = u"acme"_qs;
    QString password = u"pass"_qs;
    QString url = u"http://127.0.0.1:9/qps/upload.php"_qs;
};

// A program folder as start-up finds it: the site's host database, and a
// state that start-up has not touched yet.
struct StartupSite
{
    StartupSite()
    {
        state = std::make_unique<ProgramState>(prompter, site.folder());
        state->settingsFile = site.path(u"remitra.ini"_qs);
    }
    void storeCredentials(const QString &user, const QString &password, const QString &url)
    {
        QSettings ini(state->settingsFile, QSettings::IniFormat);
        ini.setValue(u"Parameters/username"_qs, encodeSetting(user));
        ini.setValue(u"Parameters/password"_qs, encodeSetting(password));
        ini.setValue(u"Parameters/url"_qs, encodeSetting(url));
    }
    QVariant stored(const char *key) const
    {
        return QSettings(state->settingsFile, QSettings::IniFormat)
            .value(u"Parameters/"_qs + QString::fromLatin1(key));
    }
    Startup::Outcome run()
    {
        return Startup::run(*state, login, [this](ProgramState &) { ++paymentChecks; });
    }
    QStringList fileNames() const
    {
        return { state->files.setupUpload, state->files.tenantUpload, state->files.paymentDownload,
            state->files.ownerUpload, state->files.vendorUpload, state->files.disbursementUpload };
    }

    TestSite site;
    ScriptedPrompter prompter;
    std::unique_ptr<ProgramState> state;
    FakeLogin login;
    int paymentChecks = 0;
};

} // namespace

class TestStartup : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }

    // Characters are shifted on the ANSI code page, not on Unicode: "~"
    // (126) becomes 129, which the page leaves undefined, and the euro sign
    // (128) becomes 131, the florin. Every code that can be shifted comes
    // back unchanged; the last three cannot be.
    void storedCredentialsAreShiftedAnsiCodes()
    {
        QCOMPARE(encodeSetting(u"abc"_qs), u"def"_qs);
        QCOMPARE(encodeSetting(u"~\u20AC\u00E9"_qs), u"\u0081\u0192\u00EC"_qs);
        QByteArray all;
        for (int c = 0; c < 253; ++c)
            all.append(char(c));
        const QString text = TransferFile::fromAnsi(all);
        QCOMPARE(decodeSetting(encodeSetting(text)), text);
        QCOMPARE(raisedError([] { encodeSetting(u"ab\u00FD"_qs); }), 5);
        QCOMPARE(raisedError([] { encodeSetting(u"\u00FF"_qs); }), 5);
        QCOMPARE(raisedError([] { encodeSetting(u"\u00FC"_qs); }), 0);
        QCOMPARE(raisedError([] { decodeSetting(u"ok\u0002"_qs); }), 5);
        QCOMPARE(raisedError([] { decodeSetting(u"\u0003"_qs); }), 0);
    }

    void idFileItemSelection_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("expected"); // the six items, joined by "|"
        auto items = [](int n) {
            QByteArray text;
            for (int i = 0; i < n; ++i)
                text += "\"item" + QByteArray::number(i) + "\"" + (i % 5 == 4 ? "\r\n" : ",");
            return text + "\r\n";
        };
        QTest::newRow("no file") << QByteArray() << QString(); // file not found
        QTest::newRow("empty file") << QByteArray("") << u"|||||"_qs;
        QTest::newRow("nine items") << items(9) << u"|||||"_qs;
        QTest::newRow("ten items") << items(10) << u"item9|||||"_qs;
        QTest::newRow("sixteen items") << items(16) << u"item9|item10|item15|||"_qs;
        QTest::newRow("thirty items")
            << items(30) << u"item9|item10|item15|item16|item17|item18"_qs;
        // Quoted items keep their commas; unquoted ones end at a comma and
        // lose the blanks around them; an empty line is an empty item; LF
        // alone ends a line too.
        QTest::newRow("free-format items")
            << QByteArray("\"Sunrise, Inc.\",2,3\n"
                          "4,  five  ,\"6\"\r\n"
                          "\r\n"
                          "7,8,\"Rent Income;4000;B\",Rent payment, received\r\n"
                          "\"a,b\"junk,13,14,\"Mgmt Fee;5200;U\",\"Fee, 8%\",,\"Late;4100;T\"\r\n")
            << u"Rent Income;4000;B|Rent payment|Mgmt Fee;5200;U|Fee, 8%||Late;4100;T"_qs;
        QTest::newRow("ANSI text")
            << QByteArray(",,,,,,,,,\"Caf\xE9 \x80\",x") << u"Caf\u00E9 \u20AC|x||||"_qs;
    }

    void idFileItemSelection()
    {
        QFETCH(QByteArray, content);
        TestSite site;
        site.state->account.idItems = {};
        if (content.isNull()) {
            QCOMPARE(
                raisedError([&] { loadIdFile(site.state->folder(), site.state->account); }), 53);
            return;
        }
        site.writeFile(u"IDFILE.DAT"_qs, content);
        loadIdFile(site.state->folder(), site.state->account);
        QTEST(QStringList(site.state->account.idItems.begin(), site.state->account.idItems.end())
                  .join(u'|'),
            "expected");
    }

    void completeCredentialsBuildNamesAndCheckPayments()
    {
        StartupSite s;
        s.storeCredentials(u"acme"_qs, u"pass"_qs, u"http://127.0.0.1:9/qps/upload.php"_qs);
        s.state->login.missing = true;
        s.state->disbursementEnabled = false;

        QCOMPARE(s.run(), Startup::Outcome::ShowMainMenu);
        QCOMPARE(s.login.shown, 0);
        QVERIFY(s.prompter.shown().isEmpty());
        QVERIFY(!s.state->login.missing);
        QVERIFY(s.state->disbursementEnabled);
        QVERIFY(s.state->hasDb());
        QCOMPARE(s.state->databasePath, s.site.path(u"dxdatafl.db"_qs));
        QCOMPARE(QStringList({ s.state->login.user, s.state->login.password, s.state->login.url,
                     s.state->siteCode })
                + s.fileNames(),
            (QStringList { u"acme"_qs, u"pass"_qs, u"http://127.0.0.1:9/qps/upload.php"_qs,
                u"DXRM"_qs, u"DX_Quenta_Setup_DXRM.txt"_qs, u"DX_Quenta_Tenant_DXRM.txt"_qs,
                u"DX_Quenta_PaymentFile.txt"_qs, u"DX_Quenta_Owner_DXRM.txt"_qs,
                u"DX_Quenta_Vendor_DXRM.txt"_qs, u"DX_Quenta_DisbursementPayment.txt"_qs }));
        QCOMPARE(s.paymentChecks, 1);
    }

    void incompleteCredentialsStopBeforeNamesAndPayments_data()
    {
        QTest::addColumn<bool>("cancel");
        QTest::addColumn<QString>("password");
        QTest::addColumn<bool>("storeWritten");
        // Cancel leaves login.missing false, so the empty entries are saved
        // and found missing afterwards; blank entries are refused at once.
        QTest::newRow("cancelled") << true << u"pass"_qs << true;
        QTest::newRow("blank password") << false << u"   "_qs << false;
    }

    void incompleteCredentialsStopBeforeNamesAndPayments()
    {
        QFETCH(bool, cancel);
        QFETCH(QString, password);
        QFETCH(bool, storeWritten);
        StartupSite s;
        s.login.cancel = cancel;
        s.login.password = password;

        QCOMPARE(s.run(), Startup::Outcome::ShowMainMenu);
        QCOMPARE(s.login.shown, 1);
        QVERIFY(s.state->login.missing);
        QCOMPARE(s.prompter.texts(), QStringList { Credentials::loginNoticeText() });
        QCOMPARE(s.prompter.titles(), QStringList { u"Login Message"_qs });
        QCOMPARE(s.fileNames(), QStringList(6, QString()));
        QVERIFY(s.state->siteCode.isEmpty());
        QCOMPARE(s.paymentChecks, 0);
        QCOMPARE(s.stored("username").isValid(), storeWritten);
        QCOMPARE(s.stored("username").toString() + s.stored("password").toString()
                + s.stored("url").toString(),
            u""_qs);
    }

    void fatalErrorsEndTheProgram_data()
    {
        QTest::addColumn<QString>("how");
        QTest::addColumn<QString>("textStart");
        QTest::addColumn<QString>("title");
        QTest::newRow("no database")
            << u"database"_qs << u"Dwellix data file not found - "_qs << u"Remitra"_qs;
        // A data file that is no database, or an empty one, is named with
        // what is wrong with it. (A missing field stops only the command
        // that needs it: tests/hostdb.)
        QTest::newRow("empty file") << u"empty"_qs << u"The Dwellix data file "_qs << u"Remitra"_qs;
        QTest::newRow("not a database")
            << u"garbage"_qs << u"The Dwellix data file "_qs << u"Remitra"_qs;
        // Any other error shows its number and description.
        QTest::newRow("other error") << u"other"_qs << u"53"_qs << u"Remitra Error Message"_qs;
    }

    void fatalErrorsEndTheProgram()
    {
        QFETCH(QString, how);
        QFETCH(QString, textStart);
        QFETCH(QString, title);
        StartupSite s;
        s.storeCredentials(u"acme"_qs, u"pass"_qs, u"http://x"_qs);
        const QString file = s.site.path(u"dxdatafl.db"_qs);
        if (how == u"database"_qs)
            QVERIFY(QFile::remove(file));
        else if (how == u"empty"_qs)
            s.site.writeFile(u"dxdatafl.db"_qs, QByteArray(""));
        else if (how == u"garbage"_qs)
            s.site.writeFile(u"dxdatafl.db"_qs, QByteArray(4096, 'x'));
        s.prompter.beginBusy();
        const auto outcome = Startup::run(*s.state, s.login, [&](ProgramState &) {
            if (how == u"other"_qs)
                throw RuntimeError::fileNotFound(); // IDFILE.DAT missing, say
            ++s.paymentChecks;
        });
        QCOMPARE(outcome, Startup::Outcome::EndProgram);
        QCOMPARE(s.prompter.titles(), QStringList { title });
        QVERIFY(s.prompter.texts().front().startsWith(textStart));
        if (how == u"empty"_qs || how == u"garbage"_qs) {
            const QString text = s.prompter.texts().front();
            QVERIFY2(text.contains(QDir::toNativeSeparators(file)), qPrintable(text));
            QVERIFY(text.contains(how == u"empty"_qs ? u"is empty"_qs : u"is not a database"_qs));
        }
        QCOMPARE(s.prompter.busyDepth(), 0);
        QCOMPARE(s.login.shown, 0);
        QCOMPARE(s.paymentChecks, 0);
        if (how == u"database"_qs)
            QVERIFY(!s.state->hasDb());
    }
};

QTEST_GUILESS_MAIN(TestStartup)
#include "tst_startup.moc"
