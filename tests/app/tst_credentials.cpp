#include "TestSupport.h"

#include "app/Credentials.h"
#include "app/IdFile.h"
#include "core/RuntimeError.h"
#include "core/TransferFile.h"

#include <QFile>
#include <QStandardPaths>
#include <QTest>

class TestCredentials : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }

    void encodingShiftsAnsiCodes()
    {
        QCOMPARE(EncodeSetting(u"abc"_qs), u"def"_qs);
        QCOMPARE(EncodeSetting(u""_qs), u""_qs);
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
        QCOMPARE(raisedError([] { EncodeSetting(u"ab\u00FD"_qs); }), 5);
        QCOMPARE(raisedError([] { EncodeSetting(u"\u00FF"_qs); }), 5);
        QCOMPARE(raisedError([] { EncodeSetting(u"\u00FC"_qs); }), 0);
        QCOMPARE(raisedError([] { DecodeSetting(u"ok\u0002"_qs); }), 5);
        QCOMPARE(raisedError([] { DecodeSetting(u"\u0003"_qs); }), 0);
    }

    // The values themselves are checked through the login screen's tests.
    void storeIsReadableByItsOwnerOnly()
    {
        TestSite site;
        ProgramState &state = *site.state;
        state.SettingsFile = site.path(u"settings/remitra.ini"_qs);
        QDir().mkpath(site.path(u"settings"_qs));
        const Credentials::Stored empty = Credentials::read(state);
        QVERIFY(empty.username.isEmpty() && empty.password.isEmpty() && empty.url.isEmpty());

        state.ProcessorPassword = u"pass"_qs;
        Credentials::saveFromState(state);
        QVERIFY(!site.fileBytes(u"settings/remitra.ini"_qs).contains("=pass"));
        const QFile::Permissions ownerAndUser
            = QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser;
        QCOMPARE(QFile::permissions(state.SettingsFile) | ownerAndUser, ownerAndUser);
        QCOMPARE(Credentials::read(state).password, u"sdvv"_qs);
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
        QCOMPARE(raisedError([&] { LoadIDFile(*site.state); }), 53);
    }
};

QTEST_GUILESS_MAIN(TestCredentials)
#include "tst_credentials.moc"
