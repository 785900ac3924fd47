#include "TestSupport.h"

#include "app/Credentials.h"
#include "app/IdFile.h"
#include "core/RuntimeError.h"
#include "core/TransferFile.h"

#include <QFile>
#include <QSettings>
#include <QStandardPaths>
#include <QTest>

namespace {

int errorNumber(const std::function<void()> &body)
{
    try {
        body();
    } catch (const RuntimeError &e) {
        return e.number();
    }
    return 0;
}

} // namespace

class TestCredentials : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }

    void encodingShiftsAnsiCodes()
    {
        QCOMPARE(EncodeSetting(u"abc"_qs), u"def"_qs);
        QCOMPARE(EncodeSetting(u"pass"_qs), u"sdvv"_qs);
        QCOMPARE(EncodeSetting(u""_qs), u""_qs);
        QCOMPARE(DecodeSetting(u"sdvv"_qs), u"pass"_qs);
        // Characters are shifted on the ANSI code page, not on Unicode:
        // "~" (126) becomes 129, which the page leaves undefined, and the
        // euro sign (128) becomes 131, the florin.
        QCOMPARE(EncodeSetting(u"~\u20AC\u00E9"_qs), u"\u0081\u0192\u00EC"_qs);
        const QString url = u"https://pay.quenta.example/qps/upload.php?site=7&x=Z"_qs;
        QCOMPARE(DecodeSetting(EncodeSetting(url)), url);

        // Every code that can be shifted comes back unchanged.
        QByteArray all;
        for (int c = 0; c < 253; ++c)
            all.append(char(c));
        const QString text = TransferFile::fromAnsi(all);
        QCOMPARE(DecodeSetting(EncodeSetting(text)), text);
    }

    void codesThatCannotShiftAreInvalidArguments()
    {
        QCOMPARE(errorNumber([] { EncodeSetting(u"ab\u00FD"_qs); }), 5);
        QCOMPARE(errorNumber([] { EncodeSetting(u"\u00FF"_qs); }), 5);
        QCOMPARE(errorNumber([] { EncodeSetting(u"\u00FC"_qs); }), 0);
        QCOMPARE(errorNumber([] { DecodeSetting(u"ok\u0002"_qs); }), 5);
        QCOMPARE(errorNumber([] { DecodeSetting(u"\u0003"_qs); }), 0);
    }

    void storeKeepsEncodedValuesInItsIniFile()
    {
        TestSite site;
        ProgramState &state = *site.state;
        state.SettingsFile = site.path(u"settings/remitra.ini"_qs);
        QDir().mkpath(site.path(u"settings"_qs));

        // Nothing stored yet: every key reads as empty.
        const Credentials::Stored empty = Credentials::read(state);
        QVERIFY(empty.username.isEmpty() && empty.password.isEmpty() && empty.url.isEmpty());
        QVERIFY(!QFile::exists(state.SettingsFile));

        state.ProcessorUser = u"acme"_qs;
        state.ProcessorPassword = u"pass"_qs;
        state.ProcessorUrl = u"http://127.0.0.1:8080/qps/upload.php"_qs;
        Credentials::saveFromState(state);

        QSettings raw(state.SettingsFile, QSettings::IniFormat);
        QCOMPARE(raw.value(u"Parameters/username"_qs).toString(), u"dfph"_qs);
        QCOMPARE(raw.value(u"Parameters/password"_qs).toString(), u"sdvv"_qs);
        QCOMPARE(raw.value(u"Parameters/url"_qs).toString(), EncodeSetting(state.ProcessorUrl));
        QFile ini(state.SettingsFile);
        QVERIFY(ini.open(QIODevice::ReadOnly));
        QVERIFY(!ini.readAll().contains("=pass"));
        // Readable by its owner only.
        const QFile::Permissions ownerAndUser
            = QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser;
        QCOMPARE(QFile::permissions(state.SettingsFile) | ownerAndUser, ownerAndUser);
        QVERIFY(QFile::permissions(state.SettingsFile) & QFile::ReadOwner);

        const Credentials::Stored stored = Credentials::read(state);
        QCOMPARE(stored.username, u"dfph"_qs);
        QCOMPARE(stored.password, u"sdvv"_qs);
    }

    void idFileItemSelection_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QStringList>("expected");

        auto items = [](int n) {
            QByteArray text;
            for (int i = 0; i < n; ++i)
                text += "\"item" + QByteArray::number(i) + "\"" + (i % 5 == 4 ? "\r\n" : ",");
            return text + "\r\n";
        };
        const QStringList none = { u""_qs, u""_qs, u""_qs, u""_qs, u""_qs, u""_qs };
        QTest::newRow("empty file") << QByteArray() << none;
        QTest::newRow("nine items") << items(9) << none;
        QTest::newRow("ten items")
            << items(10) << QStringList { u"item9"_qs, u""_qs, u""_qs, u""_qs, u""_qs, u""_qs };
        QTest::newRow("sixteen items") << items(
            16) << QStringList { u"item9"_qs, u"item10"_qs, u"item15"_qs, u""_qs, u""_qs, u""_qs };
        QTest::newRow("thirty items") << items(30)
                                      << QStringList { u"item9"_qs, u"item10"_qs, u"item15"_qs,
                                             u"item16"_qs, u"item17"_qs, u"item18"_qs };
        // Quoted items keep their commas; unquoted ones end at a comma and
        // lose the blanks around them; an empty line is an empty item; LF
        // alone ends a line too.
        QTest::newRow("free-format items")
            << QByteArray("\"Sunrise, Inc.\",2,3\n"
                          "4,  five  ,\"6\"\r\n"
                          "\r\n"
                          "7,8,\"Rent Income;4000;B\",Rent payment, received\r\n"
                          "\"a,b\"junk,13,14,\"Mgmt Fee;5200;U\",\"Fee, 8%\",,\"Late;4100;T\"\r\n")
            << QStringList { u"Rent Income;4000;B"_qs, u"Rent payment"_qs, u"Mgmt Fee;5200;U"_qs,
                   u"Fee, 8%"_qs, u""_qs, u"Late;4100;T"_qs };
        QTest::newRow("ANSI text")
            << QByteArray(",,,,,,,,,\"Caf\xE9 \x80\",x")
            << QStringList { u"Caf\u00E9 \u20AC"_qs, u"x"_qs, u""_qs, u""_qs, u""_qs, u""_qs };
    }

    void idFileItemSelection()
    {
        QFETCH(QByteArray, content);
        QFETCH(QStringList, expected);
        TestSite site;
        site.writeFile(u"IDFILE.DAT"_qs, content);
        site.state->IdItems = {};
        LoadIDFile(*site.state);
        QCOMPARE(QStringList(site.state->IdItems.begin(), site.state->IdItems.end()), expected);
    }

    void missingIdFileIsFileNotFound()
    {
        TestSite site;
        QCOMPARE(errorNumber([&] { LoadIDFile(*site.state); }), 53);
    }
};

QTEST_GUILESS_MAIN(TestCredentials)
#include "tst_credentials.moc"
