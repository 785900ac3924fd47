// The call sequence and the reporting of results, with a scripted client.

#include "TestSupport.h"

#include "core/RuntimeError.h"
#include "core/TransferFile.h"
#include "processor/ProcessorCall.h"
#include "processor/ReportResult.h"

#include <QTest>

class TestProcessorCall : public QObject
{
    Q_OBJECT

private slots:
    // The messages for each status over HTTP: tests/reliability/tst_faults.
    void reportResultShowsTheMessageForTheCode_data()
    {
        QTest::addColumn<QString>("flag");
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("text");
        QTest::newRow("True 200") << u"True"_qs << 200 << ProductTexts::success;
        QTest::newRow("False 200") << u"False"_qs << 200 << ProductTexts::forStatus(200);
        QTest::newRow("False 404") << u"False"_qs << 404 << ProductTexts::forStatus(404);
        QTest::newRow("False 501") << u"False"_qs << 501 << ProductTexts::forStatus(501);
        QTest::newRow("negative") << u"True"_qs << -7 << ProductTexts::forStatus(-7);
    }
    void reportResultShowsTheMessageForTheCode()
    {
        QFETCH(QString, flag);
        QFETCH(int, code);
        QFETCH(QString, text);
        TestSite site;
        site.prompter.beginBusy();
        reportResult(site.prompter, { qint16(code), flag });
        QCOMPARE(site.prompter.shown().size(), 1);
        QCOMPARE(site.prompter.shown()[0].text, text);
        const bool success = text == ProductTexts::success;
        QCOMPARE(
            site.prompter.shown()[0].title, success ? u"Dwellix Remitra"_qs : u"Remitra error"_qs);
        QCOMPARE(site.prompter.shown()[0].icon, Prompter::Icon::Information);
        // An error puts the pointer back before it is shown.
        QVERIFY(success || site.prompter.busyDepth() == 0);
    }

    void theCallSequenceFillsTheStateAndReports()
    {
        TestSite site;
        auto script = site.scriptProcessor({ { false, 503, u"busy"_qs } });
        const auto outcome = ProcessorCall::transmit(*site.state, u"setup"_qs, u"tenant"_qs);
        QCOMPARE(script->calls.size(), 1);
        const auto &call = script->calls[0];
        QCOMPARE(call.operation, u"Transmit"_qs);
        QCOMPARE(call.url, site.state->login.url);
        QCOMPARE(call.user, u"user"_qs);
        QCOMPARE(call.password, u"secret"_qs);
        QCOMPARE(call.texts, (QStringList { u"setup"_qs, u"tenant"_qs }));
        QCOMPARE(site.state->lastResult.text, u"False"_qs);
        QCOMPARE(site.state->lastResult.code, qint16(503));
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
        auto script = site.scriptProcessor();
        site.state->login.url = url;
        const int error = raisedError(
            [&] { ProcessorCall::transmitPayees(*site.state, u"payees"_qs, QString()); });
        QCOMPARE(site.prompter.busyDepth(), 0);
        QCOMPARE(error, payeeUrl.isEmpty() ? 5 : 0);
        QCOMPARE(script->calls.size(), payeeUrl.isEmpty() ? 0 : 1);
        if (payeeUrl.isEmpty())
            return;
        QCOMPARE(script->calls[0].operation, u"TransmitPayees"_qs);
        QCOMPARE(script->calls[0].url, payeeUrl);
        QCOMPARE(script->calls[0].texts, (QStringList { u"payees"_qs, QString(), QString() }));
        QCOMPARE(site.prompter.texts(), QStringList { ProductTexts::success });
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
        auto script = site.scriptProcessor({ { true, code, QString() } });
        QCOMPARE(raisedError([&] { ProcessorCall::transmit(*site.state, QString(), QString()); }),
            overflows ? 6 : 0);
        // On overflow the flag was already kept, and nothing was reported.
        QCOMPARE(site.state->lastResult.text, u"True"_qs);
        QCOMPARE(site.prompter.texts(),
            overflows ? QStringList() : QStringList { ProductTexts::forStatus(code) });
        QCOMPARE(site.prompter.busyDepth(), 0);
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
        auto script = site.scriptProcessor();
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
