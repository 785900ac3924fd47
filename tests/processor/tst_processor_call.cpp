// The call sequence, the reporting of results and the whole-file reader,
// with a scripted client.

#include "ScriptedProcessorClient.h"
#include "TestSupport.h"

#include "core/RuntimeError.h"
#include "core/TransferFile.h"
#include "processor/HttpProcessorClient.h"
#include "processor/ProcessorCall.h"
#include "processor/ReportResult.h"

#include <QTest>

namespace {

const QString kSuccess = u"Successful connection to Quenta Payment Services!"_qs;

QString catchAll(int code)
{
    return u"The action could not be performed because of the following error: "_qs
        + QString::number(code) + u"\r\rPlease notify us of this error."_qs;
}

} // namespace

class TestProcessorCall : public QObject
{
    Q_OBJECT

private slots:
    void reportResultShowsTheMessageForTheCode_data()
    {
        QTest::addColumn<QString>("flag");
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("title");
        const QString error = u"Remitra error"_qs;
        QTest::newRow("True 200") << u"True"_qs << 200 << kSuccess << u"Dwellix Remitra"_qs;
        QTest::newRow("False 200") << u"False"_qs << 200 << catchAll(200) << error;
        QTest::newRow("True 401")
            << u"True"_qs << 401
            << u"The action could not be performed because of the authorization failed for the user name, URL, or password. Please reset your URL, User Name and Password from the main Remitra screen"_qs
            << error;
        QTest::newRow("True 403")
            << u"True"_qs << 403
            << u"The action could not be performed because of a wrong user name, URL or password. Please reset your URL, User Name and Password from the main Remitra screen."_qs
            << error;
        QTest::newRow("True 404")
            << u"True"_qs << 404
            << u"The action could not be performed because the URL was not found. Please reset your URL, User Name and Password from the main Remitra screen"_qs
            << error;
        QTest::newRow("False 404")
            << u"False"_qs << 404
            << u"The action could not be performed because the URL was not found. Please reset your URL, User Name and Password from the main Remitra screen"_qs
            << error;
        QTest::newRow("False 501")
            << u"False"_qs << 501
            << u"The action could not be performed because the server is unavailable or busy. Please try again later."_qs
            << error;
        QTest::newRow("True 503")
            << u"True"_qs << 503
            << u"The action could not be performed because of a technical problem with the Internet server. Please notify us of this error."_qs
            << error;
        QTest::newRow("True 302") << u"True"_qs << 302 << catchAll(302) << error;
        QTest::newRow("negative") << u"True"_qs << -7 << catchAll(-7) << error;
    }
    void reportResultShowsTheMessageForTheCode()
    {
        QFETCH(QString, flag);
        QFETCH(int, code);
        QFETCH(QString, text);
        QFETCH(QString, title);
        TestSite site;
        site.state->ResultText = flag;
        site.prompter.beginBusy();
        ReportResult(*site.state, qint16(code));
        QCOMPARE(site.prompter.shown().size(), 1);
        QCOMPARE(site.prompter.shown()[0].text, text);
        QCOMPARE(site.prompter.shown()[0].title, title);
        QCOMPARE(site.prompter.shown()[0].icon, Prompter::Icon::Information);
        // An error puts the pointer back before it is shown.
        if (title == u"Remitra error"_qs)
            QCOMPARE(site.prompter.busyDepth(), 0);
    }

    void theCallSequenceFillsTheStateAndReports()
    {
        TestSite site;
        auto script = std::make_shared<ScriptedProcessorClient::Script>();
        script->replies = { { false, 503, u"busy"_qs } };
        site.state->ClientFactory = ScriptedProcessorClient::factory(script);
        const auto outcome = ProcessorCall::transmit(*site.state, u"setup"_qs, u"tenant"_qs);
        QCOMPARE(script->calls.size(), 1);
        const auto &call = script->calls[0];
        QCOMPARE(call.operation, u"Transmit"_qs);
        QCOMPARE(call.url, site.state->ProcessorUrl);
        QCOMPARE(call.user, u"user"_qs);
        QCOMPARE(call.password, u"secret"_qs);
        QCOMPARE(call.texts, (QStringList { u"setup"_qs, u"tenant"_qs }));
        QCOMPARE(site.state->ResultText, u"False"_qs);
        QCOMPARE(site.state->ResultCode, qint16(503));
        QCOMPARE(outcome.flag, false);
        QCOMPARE(outcome.response, u"busy"_qs);
        QCOMPARE(site.prompter.busyCount(), 1);
        QCOMPARE(site.prompter.busyDepth(), 0);
        QCOMPARE(site.prompter.titles(), QStringList { u"Remitra error"_qs });
    }

    void payeeCallsGoToTheRewrittenUrl_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<QString>("payeeUrl"); // empty: invalid argument, nothing sent
        QTest::newRow("script of 10") << u"https://pay.example/qps/upload.php"_qs
                                      << u"https://pay.example/qps/evendorpay.php"_qs;
        QTest::newRow("other length") << u"https://pay.example/qps/transfer.php"_qs
                                      << u"https://pay.example/qps/trevendorpay.php"_qs;
        QTest::newRow("exactly 10") << u"upload.php"_qs << u"evendorpay.php"_qs;
        QTest::newRow("too short") << u"short.php"_qs << QString();
    }
    void payeeCallsGoToTheRewrittenUrl()
    {
        QFETCH(QString, url);
        QFETCH(QString, payeeUrl);
        TestSite site;
        auto script = std::make_shared<ScriptedProcessorClient::Script>();
        site.state->ClientFactory = ScriptedProcessorClient::factory(script);
        site.state->ProcessorUrl = url;
        int error = 0;
        try {
            ProcessorCall::transmitPayees(*site.state, u"payees"_qs, QString());
        } catch (const RuntimeError &e) {
            error = e.number();
        }
        QCOMPARE(site.prompter.busyDepth(), 0);
        if (payeeUrl.isEmpty()) {
            QCOMPARE(error, 5);
            QVERIFY(script->calls.isEmpty());
            return;
        }
        QCOMPARE(script->calls.size(), 1);
        QCOMPARE(script->calls[0].operation, u"TransmitPayees"_qs);
        QCOMPARE(script->calls[0].url, payeeUrl);
        QCOMPARE(script->calls[0].texts, (QStringList { u"payees"_qs, QString(), QString() }));
        QCOMPARE(site.prompter.texts(), QStringList { kSuccess });
    }

    void aCodeOutside16BitsOverflows_data()
    {
        QTest::addColumn<int>("code");
        QTest::addColumn<bool>("overflows");
        QTest::newRow("32767") << 32767 << false;
        QTest::newRow("32768") << 32768 << true;
        QTest::newRow("-32769") << -32769 << true;
    }
    void aCodeOutside16BitsOverflows()
    {
        QFETCH(int, code);
        QFETCH(bool, overflows);
        TestSite site;
        auto script = std::make_shared<ScriptedProcessorClient::Script>();
        script->replies = { { true, code, QString() } };
        site.state->ClientFactory = ScriptedProcessorClient::factory(script);
        try {
            const auto outcome = ProcessorCall::transmit(*site.state, QString(), QString());
            QVERIFY(!overflows);
            QCOMPARE(outcome.code, qint16(code));
            QCOMPARE(site.prompter.texts(), QStringList { catchAll(code) });
        } catch (const RuntimeError &e) {
            QVERIFY(overflows);
            QCOMPARE(e.number(), 6);
            // The flag was already kept; nothing was reported.
            QCOMPARE(site.state->ResultText, u"True"_qs);
            QVERIFY(site.prompter.shown().isEmpty());
            QCOMPARE(site.prompter.busyDepth(), 0);
        }
    }

    void onlyHttpsOrLoopbackUrlsAreUsed_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<bool>("allowed");
        QTest::newRow("https") << u"https://pay.example/qps/upload.php"_qs << true;
        QTest::newRow("http remote") << u"http://pay.example/qps/upload.php"_qs << false;
        QTest::newRow("http 127.0.0.1") << u"http://127.0.0.1:8080/qps/upload.php"_qs << true;
        QTest::newRow("http localhost") << u"http://LocalHost:81/qps/upload.php"_qs << true;
        QTest::newRow("http ::1") << u"http://[::1]:81/qps/upload.php"_qs << true;
        QTest::newRow("http 128.0.0.1") << u"http://128.0.0.1/qps/upload.php"_qs << false;
        QTest::newRow("http 127.0.0.1 lookalike")
            << u"http://127.0.0.1.example/qps/upload.php"_qs << false;
        QTest::newRow("http localhost lookalike")
            << u"http://localhost.example/qps/upload.php"_qs << false;
        QTest::newRow("file") << u"file:///etc/passwd"_qs << false;
        QTest::newRow("no host") << u"https:///qps/upload.php"_qs << false;
        QTest::newRow("not a URL") << u"upload.php"_qs << false;
    }
    void onlyHttpsOrLoopbackUrlsAreUsed()
    {
        QFETCH(QString, url);
        QFETCH(bool, allowed);
        QCOMPARE(HttpProcessorClient::isAllowedUrl(url), allowed);
    }

    // The window says what a call sends, counted from the texts (or from
    // their files, read a block at a time), and the status is gone before
    // the result is reported.
    void eachCallSaysWhatItSends_data()
    {
        QTest::addColumn<bool>("payees");
        QTest::addColumn<QString>("first");
        QTest::addColumn<QString>("second");
        QTest::addColumn<QString>("status");
        QTest::addColumn<bool>("fromFiles");
        QString many;
        for (int i = 0; i < 12345; ++i)
            many += u"DXRM|T%1|x\r\n"_qs.arg(i);
        for (const bool files : { false, true }) {
            const char *from = files ? "from files" : "from texts";
            QTest::addRow("portfolio, %s", from)
                << false << u"S1\r\nS2\r\n"_qs << many
                << u"Sending the portfolio: 12,345 tenants…"_qs << files;
            QTest::addRow("tenants alone, no last line end, %s", from)
                << false << QString() << u"DXRM|T1|x"_qs
                << u"Sending the tenants' enrolment: 1 tenant…"_qs << files;
            QTest::addRow("rent request, %s", from)
                << false << QString() << QString() << u"Asking the processor for rent payments…"_qs
                << files;
            QTest::addRow("owners, %s", from)
                << true << u"O1|Owner|a\r\nO%1|Owner|b\r\n"_qs << QString()
                << u"Sending the owners' enrolment: 2 owners…"_qs << files;
            QTest::addRow("vendors, %s", from)
                << true << u"V5|Vendor|a\r\n"_qs << QString()
                << u"Sending the vendors' enrolment: 1 vendor…"_qs << files;
            QTest::addRow("payments, %s", from)
                << true << QString() << u"B1|O1|r|5\r\nB2|V3|r|6\r\n"_qs
                << u"Sending the owner and vendor payments: 2 checks…"_qs << files;
        }
    }
    void eachCallSaysWhatItSends()
    {
        QFETCH(bool, payees);
        QFETCH(QString, first);
        QFETCH(QString, second);
        QFETCH(QString, status);
        QFETCH(bool, fromFiles);
        TestSite site;
        auto script = std::make_shared<ScriptedProcessorClient::Script>();
        site.state->ClientFactory = ScriptedProcessorClient::factory(script);
        auto text = [&](const QString &content, const QString &name) {
            if (!fromFiles)
                return CallText(content);
            const QString path = site.state->pathOf(name);
            TransferFile::writeAtomic(path, content);
            return CallText::file(path);
        };
        const CallText a = text(first, u"first.txt"_qs);
        const CallText b = text(second, u"second.txt"_qs);
        if (payees)
            ProcessorCall::transmitPayees(*site.state, a, b);
        else
            ProcessorCall::transmit(*site.state, a, b);
        QCOMPARE(site.prompter.statuses(), (QStringList { status, QString() }));
        QCOMPARE(site.prompter.shown().size(), 1); // the report, after the status went
        QCOMPARE(script->calls.size(), 1);
        QCOMPARE(script->calls[0].texts.mid(0, 2), (QStringList { first, second }));
    }
};

QTEST_MAIN(TestProcessorCall)
#include "tst_processor_call.moc"
