#include "ScriptedProcessorClient.h"
#include "TestSupport.h"
#include "UploadsFixture.h"

#include "core/RuntimeError.h"
#include "core/TransferFile.h"
#include "core/VbText.h"
#include "uploads/OwnerFile.h"
#include "uploads/SetupFile.h"
#include "uploads/TenantUpload.h"
#include "uploads/UploadAll.h"
#include "uploads/VendorFile.h"

#include <QFile>
#include <QRegularExpression>
#include <QTest>

namespace {

// The expected bytes of a file under tests/data/uploads; "{YYYY-MM-DD}"
// stands for that date in the system's short date form.
QByteArray expected(const QString &name)
{
    QFile file(testData(u"uploads/"_qs + name));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("missing expected file %s", qPrintable(name));
    QString text = TransferFile::fromAnsi(file.readAll());
    static const QRegularExpression date(u"\\{(\\d{4}-\\d{2}-\\d{2})\\}"_qs);
    QRegularExpressionMatch m;
    while ((m = date.match(text)).hasMatch())
        text.replace(m.capturedStart(), m.capturedLength(),
            VbText::shortDate(QDate::fromString(m.captured(1), Qt::ISODate)));
    return TransferFile::toAnsi(text);
}

// Compares line by line first, so a failure names the line.
void compareBytes(const QByteArray &actual, const QByteArray &wanted)
{
    const QList<QByteArray> a = actual.split('\n');
    const QList<QByteArray> b = wanted.split('\n');
    for (qsizetype i = 0; i < qMin(a.size(), b.size()); ++i)
        QCOMPARE(TransferFile::fromAnsi(a[i]), TransferFile::fromAnsi(b[i]));
    QCOMPARE(a.size(), b.size());
    QCOMPARE(actual, wanted);
}

std::shared_ptr<ScriptedProcessorClient::Script> scripted(TestSite &site)
{
    auto script = std::make_shared<ScriptedProcessorClient::Script>();
    site.state->ClientFactory = ScriptedProcessorClient::factory(script);
    return script;
}

} // namespace

class TestUploads : public QObject
{
    Q_OBJECT

private slots:
    void filesMatchTheirLayouts_data()
    {
        QTest::addColumn<QString>("which");
        QTest::newRow("setup") << u"setup"_qs;
        QTest::newRow("tenant") << u"tenant"_qs;
        QTest::newRow("owner") << u"owner"_qs;
        QTest::newRow("vendor") << u"vendor"_qs;
    }

    // Field order, separators, trimming, Null handling, the action rules,
    // second owners, joiners, the company fields, ANSI bytes and CR LF, and
    // the row order of each file, against bytes written out by hand.
    void filesMatchTheirLayouts()
    {
        QFETCH(QString, which);
        TestSite site;
        UploadsFixture::addAll(site);
        // An older, longer file is replaced, not appended to.
        for (const QString &old : { site.state->SetupUploadName, site.state->TenantUploadName,
                 site.state->OwnerUploadName, site.state->VendorUploadName })
            site.writeFile(old, QByteArray(5000, 'x'));
        QString name;
        if (which == u"setup"_qs) {
            BuildSetupFile(*site.state);
            name = site.state->SetupUploadName;
        } else if (which == u"tenant"_qs) {
            BuildTenantUpload(*site.state);
            name = site.state->TenantUploadName;
        } else if (which == u"owner"_qs) {
            BuildOwnerFile(*site.state);
            name = site.state->OwnerUploadName;
        } else {
            BuildVendorFile(*site.state);
            name = site.state->VendorUploadName;
        }
        compareBytes(site.fileBytes(name), expected(which + u".txt"_qs));
        QVERIFY(site.prompter.shown().isEmpty());
        QCOMPARE(site.prompter.busyDepth(), 0);
    }

    void setupNeedsACompanyRowAndKeepsAnEmptyJoin()
    {
        TestSite site;
        UploadsFixture::addPortfolio(site);
        site.writeFile(site.state->SetupUploadName, "old");
        QCOMPARE(raisedError([&] { BuildSetupFile(*site.state); }), 3021);
        QCOMPARE(site.fileBytes(site.state->SetupUploadName), QByteArray("old"));

        TestSite empty;
        UploadsFixture::addCompany(empty);
        BuildSetupFile(*empty.state);
        QCOMPARE(empty.fileBytes(empty.state->SetupUploadName), QByteArray(""));
    }

    void tenantUploadWithoutRowsLeavesNoFile()
    {
        TestSite site;
        UploadsFixture::addCompany(site);
        site.writeFile(site.state->TenantUploadName, "old");
        BuildTenantUpload(*site.state);
        QVERIFY(site.fileBytes(site.state->TenantUploadName).isNull());

        auto script = scripted(site);
        SendTenantUpload(*site.state);
        QVERIFY(script->calls.isEmpty());
        QCOMPARE(site.prompter.texts(),
            QStringList {
                u"The Tenant Remitra file was not found. Please make sure that you have set "
                "up the Tenants that are participating in the Remitra system."_qs });
        QCOMPARE(site.prompter.titles(), QStringList { u"Tenant Remitra"_qs });
    }

    void tenantUploadNeedsTheLogin()
    {
        TestSite site;
        UploadsFixture::addAll(site);
        site.state->LoginMissing = true;
        site.writeFile(site.state->TenantUploadName, "old");
        BuildTenantUpload(*site.state);
        QVERIFY(!UploadAll(*site.state));
        QCOMPARE(site.fileBytes(site.state->TenantUploadName), QByteArray("old"));
        QVERIFY(site.fileBytes(site.state->SetupUploadName).isNull());
        QCOMPARE(
            site.prompter.titles(), (QStringList { u"Login Message"_qs, u"Login Message"_qs }));
    }

    // The files themselves are checked above and through the enrolment
    // screens; empty tables are still sent.
    void emptyPayeeTablesAreStillSent()
    {
        TestSite site;
        auto script = scripted(site);
        UploadOwnerFile(*site.state);
        UploadVendorFile(*site.state);
        QCOMPARE(script->calls.size(), 2);
        for (const auto &call : script->calls) {
            QCOMPARE(call.url, u"http://127.0.0.1:9/qps/evendorpay.php"_qs);
            QCOMPARE(call.texts, (QStringList { u""_qs, u""_qs, u""_qs }));
        }
        QCOMPARE(site.fileBytes(site.state->OwnerUploadName), QByteArray(""));
        QCOMPARE(site.fileBytes(site.state->VendorUploadName), QByteArray(""));
        QCOMPARE(
            site.prompter.texts(), (QStringList { ProductTexts::success, ProductTexts::success }));
    }

    // What a successful Upload All sends is checked over HTTP.
    void uploadAllReportsAFailedCall()
    {
        TestSite site;
        UploadsFixture::addAll(site);
        auto script = scripted(site);
        script->replies.append({ false, 501, {} });
        QVERIFY(UploadAll(*site.state));
        QCOMPARE(script->calls.size(), 1);
        QCOMPARE(site.state->ResultText, u"False"_qs);
        QCOMPARE(site.prompter.titles(), QStringList { u"Remitra error"_qs });
        QCOMPARE(site.prompter.busyDepth(), 0);
        // The files stay for inspection.
        QVERIFY(!site.fileBytes(site.state->SetupUploadName).isNull());
        QVERIFY(!site.fileBytes(site.state->TenantUploadName).isNull());
    }

    void uploadAllWithoutTenantsIsFileNotFound()
    {
        TestSite site;
        UploadsFixture::addCompany(site);
        UploadsFixture::addVendors(site);
        auto script = scripted(site);
        QCOMPARE(raisedError([&] { UploadAll(*site.state); }), 53);
        QVERIFY(script->calls.isEmpty());
        QCOMPARE(site.fileBytes(site.state->SetupUploadName), QByteArray(""));
    }
};

QTEST_GUILESS_MAIN(TestUploads)
#include "tst_uploads.moc"
