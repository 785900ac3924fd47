// The rent payment download over HTTP against a quenta-sandbox.

#include "SandboxProcess.h"
#include "TestSupport.h"

#include "processor/HttpProcessorClient.h"
#include "processor/RentDownload.h"

#include <QDir>
#include <QTest>

namespace {

const QString kPaymentFile = u"DX_Quenta_PaymentFile.txt"_qs;
const QString kSuccess = u"Successful connection to Quenta Payment Services!"_qs;
const QString kNone = u"There were no Remita Tenant transactions found"_qs;
const QString kNoAnswer = u"The action could not be performed because the server is unavailable or busy. Please try again later."_qs;

} // namespace

class TestRentDownloadHttp : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<SandboxProcess> sandbox;

    std::unique_ptr<TestSite> site()
    {
        auto s = std::make_unique<TestSite>();
        sandbox->useFor(*s->state, 2);
        s->writeIdFile({u"RENT"_qs, u"Rent income"_qs, u"MGMT"_qs, u"Fee"_qs, u"LATE"_qs, u"Late fee"_qs});
        return s;
    }

private slots:
    void initTestCase()
    {
        sandbox = std::make_unique<SandboxProcess>();
        QVERIFY(sandbox->isRunning());
        // Two active tenants and one that is switched off.
        HttpProcessorClient client;
        client.setUrl(sandbox->url());
        client.setUserName(sandbox->user());
        client.setPassword(sandbox->password());
        QVERIFY(client.Transmit(QString(),
                                u"DXRM|O1|P2|U3|T3|125.5|1/2/2020|Rent|T3|Ann|Lee|1 Main|Town|ST|1|activate|\r\n"
                                "DXRM|O1|P2|U4|T4|80|1/2/2020|Rent|T4|Bo|Ray|2 Main|Town|ST|1|activate|\r\n"
                                "DXRM|O1|P2|U5|T5|90|1/2/2020|Rent|T5|Cy|Fox|3 Main|Town|ST|1|deactivate|\r\n"_qs));
        QCOMPARE(client.ResultCode(), 200);
    }
    void init() { sandbox->clearReceived(); }
    void cleanupTestCase() { sandbox.reset(); }

    void startUpDownloadsTheWaitingPayments()
    {
        const QStringList lines = sandbox->queueRent(QString(), u"Rent"_qs, u"3/1/2026"_qs);
        QCOMPARE(lines.size(), 2);

        auto s = site();
        s->state->IdItems = {};
        CheckForPaymentFile(*s->state);
        QCOMPARE(s->prompter.texts(), QStringList{kSuccess});
        QCOMPARE(s->state->IdItems[5], u"Late fee"_qs); // the account settings are read first
        // The processor's text, then the line end the download adds.
        const QByteArray expected = (lines.join(u"\r\n"_qs) + u"\r\n\r\n"_qs).toLatin1();
        QCOMPARE(s->fileBytes(kPaymentFile), expected);
        const QStringList archive = QDir(s->path(u"archive"_qs)).entryList(QDir::Files);
        QCOMPARE(archive.size(), 1);
        QCOMPARE(s->fileBytes(u"archive/"_qs + archive[0]), expected);

        // The next start finds the file waiting and asks the processor nothing.
        s->prompter.clear();
        sandbox->queueRent(u"25"_qs, u"Late Fee"_qs);
        CheckForPaymentFile(*s->state);
        QCOMPARE(s->prompter.titles(), QStringList{u"Remitra Notice"_qs});
        QCOMPARE(sandbox->requestCount(), 1);
        QCOMPARE(s->fileBytes(kPaymentFile), expected);

        // Once it is dealt with, the menu fetches the late fees.
        QFile::remove(s->path(kPaymentFile));
        s->prompter.clear();
        DownloadPaymentFile(*s->state);
        QCOMPARE(s->prompter.texts(), QStringList{kSuccess});
        const QByteArray fees = s->fileBytes(kPaymentFile);
        QCOMPARE(fees.count("\r\n"), 3);
        QVERIFY(fees.startsWith("P2,U3,T3,25,"));
        QVERIFY(fees.contains(",ACH,Late Fee\r\n"));
        QCOMPARE(QDir(s->path(u"archive"_qs)).entryList(QDir::Files).size(), 2);
    }

    void callsThatBringNoPayments_data()
    {
        QTest::addColumn<QString>("how");
        QTest::addColumn<QStringList>("notices");
        QTest::addColumn<QByteArray>("file");
        QTest::newRow("nothing waiting") << QString() << QStringList{kSuccess, kNone} << QByteArray();
        QTest::newRow("lost answer") << u"drop"_qs << QStringList{kNoAnswer, kNone} << QByteArray();
        // A failed call with a body still writes it.
        QTest::newRow("503 with a body")
            << u"503"_qs
            << QStringList{u"The action could not be performed because of a technical problem with the Internet server. Please notify us of this error."_qs}
            << QByteArray("P9,U9,T9,1,1/1/2026,1,1/1/2026,ACH,Rent\r\n");
    }
    void callsThatBringNoPayments()
    {
        QFETCH(QString, how);
        QFETCH(QStringList, notices);
        QFETCH(QByteArray, file);
        auto s = site();
        if (how == u"drop"_qs)
            sandbox->forceDrop();
        else if (how == u"503"_qs)
            sandbox->forceStatus(503, "P9,U9,T9,1,1/1/2026,1,1/1/2026,ACH,Rent");
        DownloadPaymentFile(*s->state);
        QCOMPARE(s->prompter.texts(), notices);
        QCOMPARE(s->fileBytes(kPaymentFile), file);
        QCOMPARE(s->fileBytes(kPaymentFile).isNull(), file.isNull());
        QCOMPARE(sandbox->requestCount(u"/qps/upload.php"_qs), 1);
    }
};

QTEST_MAIN(TestRentDownloadHttp)
#include "tst_rent_download_http.moc"
